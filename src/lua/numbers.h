// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_NUMBERS_H
#define KORVO_LUA_NUMBERS_H

// Lua's numbers as C numbers. The host's own conversion is not used: its integers are 32 bits wide on the camera and
// 64 elsewhere, and scripts get the same values everywhere.

#include <limits>

#include "json/numbers.h"

namespace korvo::lua {

/// Truncated toward zero; what does not fit gives the nearest value, what is no number gives 0.
inline int toInt(double number) {
    constexpr int largest = std::numeric_limits<int>::max();
    constexpr int smallest = std::numeric_limits<int>::min();
    if (!(number > smallest)) {
        return number <= smallest ? smallest : 0;
    }
    return number >= largest ? largest : static_cast<int>(number);
}

/// On purpose: elements of lists of unsigned numbers are 32-bit integers in Lua, signed on the way out, signed or
/// unsigned on the way in. So -1 goes in as 4294967295, and 4294967295 comes out as -1.
inline unsigned int toListElement(double number) {
    return number < 0 ? static_cast<unsigned int>(toInt(number)) : json::ToUnsigned(number);
}

inline int fromListElement(unsigned int element) {
    return static_cast<int>(element);
}

}  // namespace korvo::lua

#endif
