// SPDX-License-Identifier: Apache-2.0
#include "simulator/state_folder.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "korvo_core.h"

namespace simulator {

std::string stateFolder() {
    // The core decides where state is kept, and logs what it has passed over.
    std::unique_ptr<char, void (*)(void *)> const settings(korvo_core_debug_get_setting_path(), &std::free);
    if (!settings) {
        throw std::runtime_error(
            "there is no folder for pictures and mails: neither KORVO_STATE_DIR nor HOME is set to an "
            "absolute path. Set one of them, or give --snapshots and --outbox.");
    }
    return (std::filesystem::path(settings.get()).parent_path() / "action-engine-simulator").string();
}

}  // namespace simulator
