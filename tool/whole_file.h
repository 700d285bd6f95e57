// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_WHOLE_FILE_H
#define KORVO_TOOL_WHOLE_FILE_H

#include <string>

namespace tool {

/// Writes all of a text. 0, or the errno of what went wrong.
int writeAll(int descriptor, std::string const &text);

/// Puts a text into a file, which is there as a whole or stays as it was. Throws a Failure that names the parameter.
void writeWhole(std::string const &parameter, std::string const &file, std::string const &text);

}  // namespace tool

#endif
