// SPDX-License-Identifier: Apache-2.0
#include "simulator/folders.h"

#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace simulator {

namespace {

std::string environment(char const *name) {
    char const *const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

}  // namespace

std::string stateFolder() {
    constexpr char const *own = "/action-engine-simulator";
    if (std::string const state = environment("KORVO_STATE_DIR"); !state.empty()) {
        return state + own;
    }
    if (std::string const state = environment("XDG_STATE_HOME"); !state.empty()) {
        return state + "/korvo" + own;
    }
    if (std::string const home = environment("HOME"); !home.empty()) {
        return home + "/.local/state/korvo" + own;
    }
    throw std::runtime_error(
        "there is no folder for pictures and mails: neither KORVO_STATE_DIR nor HOME is set. Set one of "
        "them, or give "
        "--snapshots and --outbox.");
}

void makeFolder(std::string const &path) {
    // Mails and pictures are their owner's; folders that are there keep their mode.
    mode_t const previous = ::umask(077);
    std::error_code error;
    std::filesystem::create_directories(path, error);
    ::umask(previous);
    if (!error && !std::filesystem::is_directory(path, error)) {
        error = std::make_error_code(std::errc::not_a_directory);
    }
    if (error) {
        throw std::runtime_error("cannot make the folder \"" + path + "\": " + error.message() +
                                 ". Name another one.");
    }
}

}  // namespace simulator
