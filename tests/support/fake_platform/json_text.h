// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_FAKE_PLATFORM_JSON_TEXT_H
#define KORVO_TESTS_FAKE_PLATFORM_JSON_TEXT_H

// JSON objects as texts, for the loop-back mode.

#include <string>

#include "json/json.h"

namespace fake_platform {

std::string textOf(json::Object const &object);

/// False when the text is no JSON object.
bool parse(std::string const &text, json::Object &object);

}  // namespace fake_platform

#endif
