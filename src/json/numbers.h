// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_JSON_NUMBERS_H
#define KORVO_JSON_NUMBERS_H

#include <limits>

namespace json {

/// A JSON number as an unsigned int: truncated toward zero; a negative value or what is no number gives 0, what
/// is too large gives the largest value.
inline unsigned int ToUnsigned(double number) {
    if (!(number > 0.0)) {
        return 0;
    }
    constexpr unsigned int largest = std::numeric_limits<unsigned int>::max();
    return number >= static_cast<double>(largest) ? largest : static_cast<unsigned int>(number);
}

}  // namespace json

#endif
