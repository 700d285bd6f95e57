// SPDX-License-Identifier: Apache-2.0
#include "simulator/log.h"

namespace simulator {

std::string quoted(std::string_view text) {
    constexpr std::size_t longest = 160;
    std::string shown = "\"";
    for (char const c : text.substr(0, longest)) {
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
