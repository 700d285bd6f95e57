// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_FOLDER_WATCH_H
#define KORVO_PLATFORM_FOLDER_WATCH_H

#include <string>
#include <vector>

#include "base/logging.h"
#include "base/process.h"
#include "messaging/addressing.h"

namespace platform {

/// Notices sockets that appear in the runtime folder.
class FolderWatch {
  public:
    /// What appeared since the last look.
    struct Change {
        std::vector<std::string> names;
        /// Some names may be missing: the whole folder is to be looked at.
        bool is_incomplete = false;
        /// The folder itself is gone: the watch is to be started again.
        bool is_over = false;
    };

    /// Returns false, and logs why, when the folder cannot be watched.
    bool start(RuntimeFolder const &folder, Log const &log);

    /// Readable when something has changed; negative while not started.
    int descriptor() const { return inotify_.get(); }

    /// Never waits.
    Change look() noexcept;

  private:
    process::Descriptor inotify_;
};

}  // namespace platform

#endif
