// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_INTERFACES_JSON_READER_H
#define KORVO_INTERFACES_JSON_READER_H

#include <string>
#include <string_view>

#include "json/json.h"

namespace json_text {

// What a text may hold. Scalars are bounded by the length of the text alone: what a message can carry can be read.
// An empty array takes two bytes of text and two hundred times as many of memory, so arrays and objects have a
// bound of their own; the members of one object are looked up one after the other, so they have one too.
constexpr std::size_t longest_text = 1024 * 1024;
constexpr std::size_t deepest_nesting = 32;
constexpr std::size_t most_members = 1024;
constexpr std::size_t most_containers = 65536;

/// Reads a JSON object. Returns an empty text, or says in a few words what is wrong with `text`: broken JSON,
/// anything beyond the bounds, a name that stands twice in an object, a number that no double can hold, or a
/// value that is no object. `object` must be empty; after a failure its contents mean nothing.
std::string read(std::string_view text, json::Object &object);

}  // namespace json_text

#endif
