// SPDX-License-Identifier: Apache-2.0
#include "settings/state_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "base/logging.h"
#include "base/text.h"

namespace platform {

namespace {

std::string absolute(std::string_view path) {
    std::error_code failure;
    std::string made = std::filesystem::absolute(path, failure).string();
    if (failure) {
        throw std::runtime_error("cannot tell where the state folder " + std::string(path) +
                                 " is: " + failure.message() + "; give KORVO_STATE_DIR as an absolute path");
    }
    return made;
}

/// The folder that the variable names; empty where it names none, or a relative one, which is told of once.
std::string_view absoluteFolder(char const *variable, std::atomic<bool> &is_told) {
    std::string_view const path = orEmpty(std::getenv(variable));
    if (path.empty() || path.front() == '/') {
        return path;
    }
    if (!is_told.exchange(true)) {
        Log(nullptr).warning("%s is ignored: it names no absolute path", variable);
    }
    return {};
}

/// Makes the folder, and waits until it is on the disk, since what will be in it is promised to be. Gives the
/// errno of a folder that is neither there nor could be made; else 0.
int makeFolder(std::string const &path) {
    if (mkdir(path.c_str(), S_IRWXU) != 0) {
        return errno == EEXIST ? 0 : errno;
    }
    std::string const above = path + "/..";
    auto const parent =
        process::Descriptor::madeBy([&] { return open(above.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (parent) {
        (void)fsync(parent.get());
    }
    return 0;
}

/// Makes every folder on the way that is missing. Gives the errno of the first one that could not be made, which
/// is why those below it are missing; else 0.
int makeFolders(std::string const &path) {
    int first_failure = 0;
    std::size_t end = 0;
    do {
        end = path.find('/', end + 1);
        int const failure = makeFolder(path.substr(0, end));
        first_failure = first_failure == 0 ? failure : first_failure;
    } while (end != std::string::npos);
    return first_failure;
}

}  // namespace

std::string stateFolder() {
    std::string_view const chosen = orEmpty(std::getenv("KORVO_STATE_DIR"));
    if (!chosen.empty()) {
        // Made absolute, since the process may change its folder later.
        return absolute(chosen);
    }
    static std::atomic<bool> is_state_told{false};
    static std::atomic<bool> is_home_told{false};
    std::string_view const state = absoluteFolder("XDG_STATE_HOME", is_state_told);
    if (!state.empty()) {
        return std::string(state) + "/korvo";
    }
    std::string_view const home = absoluteFolder("HOME", is_home_told);
    if (!home.empty()) {
        return std::string(home) + "/.local/state/korvo";
    }
    throw std::runtime_error(
        "there is no folder for settings: neither KORVO_STATE_DIR nor HOME is set; set one of them to an "
        "absolute path");
}

process::Descriptor openStateFolder(std::string const &path) {
    int const why_missing = makeFolders(path);
    auto folder =
        process::Descriptor::madeBy([&] { return open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (!folder) {
        int const failure = errno == ENOENT && why_missing != 0 ? why_missing : errno;
        throw std::runtime_error("cannot make or open the state folder " + path + ": " + errorText(failure) +
                                 "; create it, or name another one in KORVO_STATE_DIR");
    }
    struct stat found = {};
    if (fstat(folder.get(), &found) != 0) {
        throw std::runtime_error("cannot look at the state folder " + path + ": " + errorText(errno));
    }
    if (found.st_uid != geteuid()) {
        throw std::runtime_error("refused the state folder " + path + ": it belongs to user " +
                                 std::to_string(found.st_uid) + " and not to user " +
                                 std::to_string(geteuid()) +
                                 ", who runs this process; name another one in KORVO_STATE_DIR");
    }
    if ((found.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        throw std::runtime_error("refused the state folder " + path +
                                 ": others can write to it; run \"chmod 700\" on it, or name another one in "
                                 "KORVO_STATE_DIR");
    }
    return folder;
}

}  // namespace platform
