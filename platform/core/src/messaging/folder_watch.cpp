// SPDX-License-Identifier: Apache-2.0
#include "messaging/folder_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <new>

namespace platform {

bool FolderWatch::start(RuntimeFolder const &folder, Log const &log) {
    if (!folder.open(log)) {
        return false;
    }
    auto inotify = process::Descriptor::madeBy([] { return inotify_init1(IN_CLOEXEC | IN_NONBLOCK); });
    // Sockets are moved into place when they are ready to be connected to.
    if (!inotify || inotify_add_watch(inotify.get(), folder.path().c_str(),
                                      IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR) < 0) {
        log.error("cannot watch the runtime folder %s: %s; services that start later will not be noticed",
                  folder.path().c_str(), errorText(errno).c_str());
        return false;
    }
    inotify_ = std::move(inotify);
    return true;
}

FolderWatch::Change FolderWatch::look() noexcept {
    Change change;
    alignas(inotify_event) std::array<char, 4096> buffer;
    for (;;) {
        ssize_t const size = read(inotify_.get(), buffer.data(), buffer.size());
        if (size <= 0) {
            return change;
        }
        char const *place = buffer.data();
        while (place < buffer.data() + size) {
            inotify_event event;
            std::memcpy(&event, place, sizeof event);
            if ((event.mask & IN_Q_OVERFLOW) != 0) {
                change.is_incomplete = true;
            } else if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0) {
                change.is_over = true;
            } else if (event.len != 0) {
                try {
                    change.names.emplace_back(place + sizeof event);
                } catch (std::bad_alloc const &) {
                    change.is_incomplete = true;
                }
            }
            place += sizeof event + event.len;
        }
    }
}

}  // namespace platform
