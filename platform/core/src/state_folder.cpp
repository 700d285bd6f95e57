// SPDX-License-Identifier: Apache-2.0
#include "state_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "file_failure.h"
#include "logging.h"
#include "text.h"

namespace platform {

namespace {

std::string absolute(std::string_view path) {
    std::error_code failure;
    std::string made = std::filesystem::absolute(path, failure).string();
    if (failure) {
        throw FileFailure("cannot tell where the state folder " + std::string(path) +
                          " is: " + failure.message() + "; give KORVO_STATE_DIR as an absolute path");
    }
    return made;
}

bool is_absolute(std::string_view path) {
    return !path.empty() && path.front() == '/';
}

/// Makes the folder, and waits until it is on the disk, since what will be in it is promised to be.
void make_folder(std::string const &path) {
    if (mkdir(path.c_str(), S_IRWXU) != 0) {
        return;
    }
    process::Descriptor const parent(open((path + "/..").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (parent) {
        (void)fsync(parent.get());
    }
}

/// Makes every folder on the way that is missing. A failure shows when the last one is opened.
void make_folders(std::string const &path) {
    for (std::size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
        make_folder(path.substr(0, end));
    }
    make_folder(path);
}

}  // namespace

std::string state_folder() {
    std::string_view const chosen = or_empty(std::getenv("KORVO_STATE_DIR"));
    if (!chosen.empty()) {
        // Made absolute, since the process may change its folder later.
        return absolute(chosen);
    }
    std::string_view const state = or_empty(std::getenv("XDG_STATE_HOME"));
    if (is_absolute(state)) {
        return std::string(state) + "/korvo";
    }
    std::string_view const home = or_empty(std::getenv("HOME"));
    if (is_absolute(home)) {
        return std::string(home) + "/.local/state/korvo";
    }
    throw FileFailure(
        "there is no folder for settings: neither KORVO_STATE_DIR nor HOME is set; set one of them to an "
        "absolute path");
}

process::Descriptor open_state_folder(std::string const &path) {
    make_folders(path);
    process::Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        throw FileFailure("cannot make or open the state folder " + path + ": " + error_text(errno) +
                          "; create it, or name another one in KORVO_STATE_DIR");
    }
    return folder;
}

}  // namespace platform
