// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_RUNNERS_FILE_H
#define KORVO_SIMULATOR_RUNNERS_FILE_H

#include <string>
#include <string_view>

namespace simulator::runners {

/// Why this cannot be the name of a file in a folder: empty, too long, with a "/" or a NUL, or with a dot at its
/// beginning (which "." and ".." have, and the files that are just being written). NULL when it can.
char const *nameFault(std::string_view name);

/// Puts a file with these contents into the folder, in place of a plain file of that name. Others see the old contents or
/// all of the new ones. The file is always within the folder: names that could lead elsewhere and symbolic links
/// are refused. Throws std::runtime_error with the reason.
void writeFile(std::string const &folder, std::string const &name, std::string_view contents);

}  // namespace simulator::runners

#endif
