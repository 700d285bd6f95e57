// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_STATE_FOLDER_H
#define KORVO_SIMULATOR_STATE_FOLDER_H

#include <string>

namespace simulator {

/// The folder that the service keeps its files in unless told otherwise: one of its own in the platform core's state
/// folder. The core must have been started. Throws std::runtime_error when no state folder is known.
std::string stateFolder();

}  // namespace simulator

#endif
