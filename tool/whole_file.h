// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_WHOLE_FILE_H
#define KORVO_TOOL_WHOLE_FILE_H

#include <string>

namespace tool {

/// Puts a text into a file, which is there as a whole or stays as it was. Throws a Failure that names the parameter.
void writeWhole(std::string const &parameter, std::string const &file, std::string const &text);

}  // namespace tool

#endif
