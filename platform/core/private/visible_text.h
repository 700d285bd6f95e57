// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_VISIBLE_TEXT_H
#define KORVO_PLATFORM_VISIBLE_TEXT_H

#include <cstdio>
#include <string>
#include <string_view>

namespace platform::visible_text {

/// The character of UTF-8 at the beginning of `text`, and how many bytes it has; no bytes for what is no UTF-8.
struct Character {
    char32_t code = 0;
    std::size_t bytes = 0;
};

inline Character firstOf(std::string_view text) {
    auto const byte = [&text](std::size_t n) { return static_cast<unsigned char>(text[n]); };
    std::size_t const bytes = byte(0) < 0x80   ? 1
                              : byte(0) < 0xc2 ? 0
                              : byte(0) < 0xe0 ? 2
                              : byte(0) < 0xf0 ? 3
                              : byte(0) < 0xf5 ? 4
                                               : 0;
    if (bytes == 0 || bytes > text.size()) {
        return {};
    }
    char32_t code = bytes == 1 ? byte(0) : byte(0) & (0x7fU >> bytes);
    for (std::size_t n = 1; n < bytes; ++n) {
        if ((byte(n) & 0xc0U) != 0x80U) {
            return {};
        }
        code = code << 6U | (byte(n) & 0x3fU);
    }
    bool const too_long = (bytes == 3 && code < 0x800) || (bytes == 4 && code < 0x10000);
    bool const no_character = (code >= 0xd800 && code < 0xe000) || code > 0x10ffff;
    return too_long || no_character ? Character() : Character{code, bytes};
}

/// Whether a character shows nothing, or changes how what stands beside it is shown: controls, marks of direction,
/// separators of lines, characters without width.
constexpr bool isHidden(char32_t code) {
    return code < 0x20 || (code >= 0x7f && code < 0xa0) || code == 0xad || code == 0x61c ||
           (code >= 0x200b && code <= 0x200f) || (code >= 0x2028 && code <= 0x202e) ||
           (code >= 0x2060 && code <= 0x206f) || code == 0xfeff || (code >= 0xfff9 && code <= 0xfffb) ||
           (code >= 0xe0000 && code <= 0xe007f);
}

/// Appends a text of anybody's so that it is one line which shows what it holds: line ends become "\n", what is hidden
/// "\x1b" or "\u202e", and bytes that are no UTF-8 "\x9b".
inline void append(std::string &out, std::string_view text) {
    while (!text.empty()) {
        Character const first = firstOf(text);
        std::size_t const bytes = first.bytes == 0 ? 1 : first.bytes;
        if (first.code == '\n' && first.bytes == 1) {
            out += "\\n";
        } else if (first.bytes == 0 || (first.code < 0x80 && isHidden(first.code))) {
            char escape[8];
            (void)std::snprintf(escape, sizeof escape, "\\x%02x",
                                static_cast<unsigned int>(static_cast<unsigned char>(text[0])));
            out += escape;
        } else if (isHidden(first.code)) {
            char escape[16];
            (void)std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned int>(first.code));
            out += escape;
        } else {
            out.append(text.substr(0, bytes));
        }
        text.remove_prefix(bytes);
    }
}

}  // namespace platform::visible_text

#endif
