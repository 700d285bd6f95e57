// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_STATE_FOLDER_H
#define KORVO_PLATFORM_STATE_FOLDER_H

#include <string>

#include "base/process.h"

namespace platform {

/// Where the user's state is kept, from the environment as it is now: KORVO_STATE_DIR; else "korvo" in
/// XDG_STATE_HOME; else in .local/state of HOME. Throws std::runtime_error when none of them is set.
std::string stateFolder();

/// Makes the folder and those above it where they are missing, for the user alone, and opens it. Throws
/// std::runtime_error.
process::Descriptor openStateFolder(std::string const &path);

}  // namespace platform

#endif
