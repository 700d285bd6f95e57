// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_NEAREST_H
#define KORVO_TOOL_NEAREST_H

#include <string>
#include <vector>

namespace tool {

/// What was probably meant by a word, or an empty text.
std::string nearest(std::string const &word, std::vector<std::string> const &known);

}  // namespace tool

#endif
