// SPDX-License-Identifier: Apache-2.0
#include "messaging/addressing.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/uuid/name_generator_sha1.hpp>
#include <boost/uuid/uuid.hpp>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

#include "base/text.h"

namespace platform {

namespace {

constexpr std::size_t digest_length = 24;

/// The name space of the digests; any constant would do that nothing else uses.
constexpr boost::uuids::uuid name_space = {
    {0x3b, 0x5e, 0x0d, 0x91, 0x7c, 0x42, 0x4f, 0x6a, 0x9d, 0x18, 0xe2, 0x6b, 0x54, 0xc0, 0x7f, 0x35}};

std::string digest(std::string_view text) {
    boost::uuids::name_generator_sha1 generator(name_space);
    boost::uuids::uuid const id = generator(std::string(text));
    constexpr char digits[] = "0123456789abcdef";
    std::string hexadecimal;
    for (std::uint8_t const byte : id) {
        hexadecimal += digits[byte >> 4];
        hexadecimal += digits[byte & 0x0f];
    }
    hexadecimal.resize(digest_length);
    return hexadecimal;
}

bool isAbsolute(std::string_view path) {
    return !path.empty() && path.front() == '/';
}

std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

}  // namespace

RuntimeFolder RuntimeFolder::fromEnvironment() {
    std::string_view const chosen = orEmpty(std::getenv("KORVO_RUNTIME_DIR"));
    if (!chosen.empty()) {
        // Made absolute, since the process may change its folder later.
        return {withoutTrailingSlashes(std::filesystem::absolute(chosen).string()), false};
    }
    std::string_view const session = orEmpty(std::getenv("XDG_RUNTIME_DIR"));
    std::error_code ignored;
    if (isAbsolute(session) && std::filesystem::is_directory(session, ignored)) {
        return {withoutTrailingSlashes(std::string(session)) + "/korvo", false};
    }
    std::string_view const temporary = orEmpty(std::getenv("TMPDIR"));
    std::string const parent = isAbsolute(temporary) ? std::string(temporary) : "/tmp";
    return {withoutTrailingSlashes(parent) + "/korvo-" + std::to_string(geteuid()), true};
}

process::Descriptor RuntimeFolder::open(Log const &log) const {
    if (mkdir(path_.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        log.error(
            "cannot make the runtime folder %s: %s; create it, or name another one in KORVO_RUNTIME_DIR",
            path_.c_str(), errorText(errno).c_str());
        return {};
    }
    int const flags = O_PATH | O_DIRECTORY | O_CLOEXEC | (shared_parent_ ? O_NOFOLLOW : 0);
    auto folder = process::Descriptor::madeBy([&] { return ::open(path_.c_str(), flags); });
    struct stat found = {};
    if (!folder || fstat(folder.get(), &found) != 0) {
        log.error("cannot open the runtime folder %s: %s; name another one in KORVO_RUNTIME_DIR",
                  path_.c_str(), errorText(errno).c_str());
        return {};
    }
    if (found.st_uid != geteuid()) {
        log.error(
            "refused the runtime folder %s: it belongs to user %u and not to user %u, who runs this process; "
            "name another one in KORVO_RUNTIME_DIR",
            path_.c_str(), found.st_uid, geteuid());
        return {};
    }
    if ((found.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        log.error(
            "refused the runtime folder %s: others can write to it (mode %04o); "
            "run \"chmod 700\" on it, or name another one in KORVO_RUNTIME_DIR",
            path_.c_str(), found.st_mode & 07777U);
        return {};
    }
    return folder;
}

std::optional<std::vector<std::string>> RuntimeFolder::names(Log const &log) const {
    // Not by std::filesystem, whose iterators end the process when memory is short.
    struct Close {
        void operator()(DIR *folder) const { (void)closedir(folder); }
    };
    std::unique_ptr<DIR, Close> const folder(opendir(path_.c_str()));
    std::vector<std::string> names;
    errno = folder != nullptr ? 0 : errno;
    while (dirent const *const entry = folder != nullptr ? readdir(folder.get()) : nullptr) {
        names.emplace_back(entry->d_name);
        errno = 0;
    }
    if (errno != 0) {
        log.warning("cannot read the runtime folder %s: %s", path_.c_str(), ErrorText(errno).get());
        return std::nullopt;
    }
    return names;
}

sockaddr_un RuntimeFolder::address(process::Descriptor const &folder, std::string const &name) const {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::string path = path_ + "/" + name;
    if (path.size() >= sizeof address.sun_path) {
        // A way to the same folder that is always short.
        path = "/proc/self/fd/" + std::to_string(folder.get()) + "/" + name;
    }
    if (path.size() >= sizeof address.sun_path) {
        // Names of sockets are short, and so is that way to them. GCOV_EXCL_START
        throw std::length_error(path);
        // GCOV_EXCL_STOP
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

std::string socketName(std::string_view service, std::string_view target) {
    return digest(service) + "." + digest(target);
}

bool isSocketOf(std::string_view name, std::string_view service) {
    return name.size() == 2 * digest_length + 1 && name[digest_length] == '.' &&
           name.find_first_not_of("0123456789abcdef.") == std::string_view::npos &&
           name.substr(0, digest_length) == digest(service);
}

bool isTrustedPeer(int connection, Log const &log, Flood &refusals) {
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        int const failure = errno;
        if (refusals.count()) {
            log.error("cannot tell who is at the other end of a connection: %s", ErrorText(failure).get());
        }
        return false;
    }
    if (peer.uid != geteuid() && peer.uid != 0) {
        if (refusals.count()) {
            log.error("refused a connection with process %d of user %u: only user %u and root are let in",
                      peer.pid, peer.uid, geteuid());
        }
        return false;
    }
    return true;
}

}  // namespace platform
