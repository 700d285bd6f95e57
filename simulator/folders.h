// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_FOLDERS_H
#define KORVO_SIMULATOR_FOLDERS_H

#include <string>

namespace simulator {

/// Makes the folder and those above it where they do not exist. Throws std::runtime_error with the reason.
void makeFolder(std::string const &path);

}  // namespace simulator

#endif
