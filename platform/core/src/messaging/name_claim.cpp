// SPDX-License-Identifier: Apache-2.0
#include "messaging/name_claim.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

namespace {

constexpr char const *lock_suffix = ".lock";
constexpr char const *unfinished_suffix = ".new";

}  // namespace

bool NameClaim::take(RuntimeFolder const &folder, std::string const &socket_name, std::string const &owner,
                     Log const &log) {
    folder_ = folder.open(log);
    if (!folder_) {
        return false;
    }
    socket_name_ = socket_name;
    lock_name_ = socket_name + lock_suffix;
    if (!lock(owner, log)) {
        return false;
    }
    // Whoever sees the socket under its own name can connect to it: it is moved there when it listens.
    std::string const unfinished = socket_name + unfinished_suffix;
    sockaddr_un const address = folder.address(folder_, unfinished);
    (void)unlinkat(folder_.get(), unfinished.c_str(), 0);
    auto listener = process::Descriptor::madeBy(
        [] { return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); });
    if (!listener ||
        bind(listener.get(), reinterpret_cast<sockaddr const *>(&address), sizeof address) != 0 ||
        listen(listener.get(), SOMAXCONN) != 0 ||
        renameat(folder_.get(), unfinished.c_str(), folder_.get(), socket_name.c_str()) != 0) {
        log.error("%s cannot listen in the runtime folder %s: %s", owner.c_str(), folder.path().c_str(),
                  errorText(errno).c_str());
        (void)unlinkat(folder_.get(), unfinished.c_str(), 0);
        return false;
    }
    listener_ = std::move(listener);
    return true;
}

bool NameClaim::lock(std::string const &owner, Log const &log) {
    for (;;) {
        auto file = process::Descriptor::madeBy([&] {
            return openat(folder_.get(), lock_name_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW,
                          S_IRUSR | S_IWUSR);
        });
        if (!file) {
            log.error("%s cannot make its lock file: %s", owner.c_str(), errorText(errno).c_str());
            return false;
        }
        if (flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
            if (errno == EWOULDBLOCK) {
                log.error(
                    "%s is already running; stop it, or choose another target or another KORVO_RUNTIME_DIR",
                    owner.c_str());
            } else {
                log.error("%s cannot lock its name: %s", owner.c_str(), errorText(errno).c_str());
            }
            return false;
        }
        // The one who had the name may have removed the file between the two calls; then this lock is on
        // nothing.
        struct stat locked = {};
        struct stat visible = {};
        if (fstat(file.get(), &locked) == 0 &&
            fstatat(folder_.get(), lock_name_.c_str(), &visible, AT_SYMLINK_NOFOLLOW) == 0 &&
            locked.st_ino == visible.st_ino && locked.st_dev == visible.st_dev) {
            lock_ = std::move(file);
            return true;
        }
    }
}

void NameClaim::release() noexcept {
    if (!lock_) {
        return;
    }
    if (listener_) {
        (void)unlinkat(folder_.get(), socket_name_.c_str(), 0);
        listener_.reset();
    }
    (void)unlinkat(folder_.get(), lock_name_.c_str(), 0);
    lock_.reset();
    folder_.reset();
}

}  // namespace platform
