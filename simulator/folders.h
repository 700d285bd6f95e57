// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_FOLDERS_H
#define KORVO_SIMULATOR_FOLDERS_H

#include <string>

namespace simulator {

/// The folder that the service keeps its files in unless told otherwise: a folder of its own under KORVO_STATE_DIR, or
/// under the user's state folder. Throws std::runtime_error when neither is known.
std::string stateFolder();

/// Makes the folder and those above it where they do not exist. Throws std::runtime_error with the reason.
void makeFolder(std::string const &path);

}  // namespace simulator

#endif
