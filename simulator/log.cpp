// SPDX-License-Identifier: Apache-2.0
#include "simulator/log.h"

#include <algorithm>

namespace simulator {

std::string beginningOf(std::string_view text, std::size_t longest) {
    std::size_t end = std::min(longest, text.size());
    while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0U) == 0x80U) {
        --end;
    }
    return std::string(text.substr(0, end));
}

std::string quoted(std::string_view text) {
    constexpr std::size_t longest = 160;
    std::string shown = "\"";
    for (char const c : beginningOf(text, longest)) {
        bool const control = static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
        shown += control ? '?' : c;
    }
    shown += '"';
    if (text.size() > longest) {
        shown += " (cut; " + std::to_string(text.size()) + " bytes)";
    }
    return shown;
}

}  // namespace simulator
