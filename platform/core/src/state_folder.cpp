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

/// Makes the folder, and waits until it is on the disk, since what will be in it is promised to be. Gives the
/// errno of a folder that is neither there nor could be made; else 0.
int make_folder(std::string const &path) {
    if (mkdir(path.c_str(), S_IRWXU) != 0) {
        return errno == EEXIST ? 0 : errno;
    }
    process::Descriptor const parent(open((path + "/..").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (parent) {
        (void)fsync(parent.get());
    }
    return 0;
}

/// Makes every folder on the way that is missing. Gives the errno of the first one that could not be made, which
/// is why those below it are missing; else 0.
int make_folders(std::string const &path) {
    int first_failure = 0;
    std::size_t end = 0;
    do {
        end = path.find('/', end + 1);
        int const failure = make_folder(path.substr(0, end));
        first_failure = first_failure == 0 ? failure : first_failure;
    } while (end != std::string::npos);
    return first_failure;
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
    int const why_missing = make_folders(path);
    process::Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        int const failure = errno == ENOENT && why_missing != 0 ? why_missing : errno;
        throw FileFailure("cannot make or open the state folder " + path + ": " + error_text(failure) +
                          "; create it, or name another one in KORVO_STATE_DIR");
    }
    return folder;
}

}  // namespace platform
