// SPDX-License-Identifier: Apache-2.0
#include "utf8.h"

namespace json_text {

namespace {

/// The length of the character that begins with `lead`, and the range that its second byte must be in, which
/// is what rules out long forms, surrogates and what lies above the last character. Length 0: nothing begins
/// like that.
struct Form {
    std::size_t length;
    unsigned char least;
    unsigned char most;
};

Form formOf(unsigned char lead) {
    if (lead < 0x80) {
        return {1, 0, 0};
    }
    if (lead >= 0xc2 && lead <= 0xdf) {
        return {2, 0x80, 0xbf};
    }
    if (lead >= 0xe0 && lead <= 0xef) {
        return {3, static_cast<unsigned char>(lead == 0xe0 ? 0xa0 : 0x80),
                static_cast<unsigned char>(lead == 0xed ? 0x9f : 0xbf)};
    }
    if (lead >= 0xf0 && lead <= 0xf4) {
        return {4, static_cast<unsigned char>(lead == 0xf0 ? 0x90 : 0x80),
                static_cast<unsigned char>(lead == 0xf4 ? 0x8f : 0xbf)};
    }
    return {0, 0, 0};
}

}  // namespace

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        Form const form = formOf(static_cast<unsigned char>(text[0]));
        if (form.length == 0 || form.length > text.size()) {
            return false;
        }
        for (std::size_t index = 1; index < form.length; ++index) {
            auto const byte = static_cast<unsigned char>(text[index]);
            bool const is_second = index == 1;
            if (byte < (is_second ? form.least : 0x80) || byte > (is_second ? form.most : 0xbf)) {
                return false;
            }
        }
        text.remove_prefix(form.length);
    }
    return true;
}

}  // namespace json_text
