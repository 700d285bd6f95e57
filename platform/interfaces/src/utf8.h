// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_INTERFACES_UTF8_H
#define KORVO_INTERFACES_UTF8_H

#include <string_view>

namespace json_text {

/// Whether the bytes are UTF-8: no stray or missing continuation bytes, no longer form than needed, no
/// surrogates, nothing above U+10FFFF.
bool isUtf8(std::string_view text);

}  // namespace json_text

#endif
