// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_EXACT_JSON_H
#define KORVO_PLATFORM_EXACT_JSON_H

#include <boost/json/value.hpp>
#include <cstddef>
#include <string>
#include <string_view>

namespace platform::exact_json {

/// Reads a JSON text whose numbers come back exactly. Returns an empty text, or says in a few words what is
/// wrong with `text`: broken JSON, bytes that are no UTF-8, deeper nesting than `depth`, a name that stands
/// twice in an object, or a number that no double can hold. `value` is untouched then.
std::string read(std::string_view text, std::size_t depth, boost::json::value &value);

/// Whether `text` is UTF-8, and so can be kept in a JSON text.
bool isUtf8(std::string_view text);

}  // namespace platform::exact_json

#endif
