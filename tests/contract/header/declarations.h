// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_HEADER_DECLARATIONS_H
#define KORVO_TESTS_HEADER_DECLARATIONS_H

// The public header as the tests of this folder look at it.

#include <string>
#include <vector>

#include "header/header_text.h"

namespace public_header {

inline constexpr char const prefix[] = "korvo_api_action_engine_";

/// The names of the 54 operations, in the order of the header.
std::vector<std::string> const &operationNames();

/// The header, read once.
header_text::Header const &header();

/// A function or callback type by its full name; throws std::runtime_error when the header lacks it.
header_text::Declaration const &declaration(std::string const &name);

/// The callback type of an operation; its comment is the operation's block.
header_text::Declaration const &callbackType(std::string const &operation);

/// The parameters of an operation: its inputs, and its results as the callback gets them.
std::vector<header_text::Parameter> inputs(std::string const &operation);
std::vector<header_text::Parameter> results(std::string const &operation);

}  // namespace public_header

#endif
