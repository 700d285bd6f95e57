// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_MARKUP_H
#define KORVO_TOOL_MARKUP_H

#include <string>

namespace tool {

/// A text as content or as an attribute's value of XML or HTML.
std::string escaped(std::string const &text);

}  // namespace tool

#endif
