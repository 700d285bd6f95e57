// SPDX-License-Identifier: Apache-2.0
#include "simulator/log.h"

#include <algorithm>

#include "visible_text.h"

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
    platform::visible_text::append(shown, beginningOf(text, longest));
    shown += '"';
    if (text.size() > longest) {
        shown += " (cut; " + std::to_string(text.size()) + " bytes)";
    }
    return shown;
}

}  // namespace simulator
