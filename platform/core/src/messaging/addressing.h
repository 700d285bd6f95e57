// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_ADDRESSING_H
#define KORVO_PLATFORM_ADDRESSING_H

#include <sys/un.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/flood.h"
#include "base/logging.h"
#include "base/process.h"

namespace platform {

/// The folder that holds the sockets of all services of the user.
class RuntimeFolder {
  public:
    /// Where the folder is, from the environment as it is now: KORVO_RUNTIME_DIR; else XDG_RUNTIME_DIR with
    /// "/korvo"; else a folder under the temporary folder that carries the user's number.
    static RuntimeFolder fromEnvironment();

    std::string const &path() const { return path_; }

    /// Makes the folder when it is missing, and opens it. Gives nothing, and logs why, when that fails or
    /// when anybody else could put sockets into it: it must belong to the user, and only the user may write
    /// to it.
    process::Descriptor open(Log const &log) const;

    /// The names of what is in it; nothing, and logs why, when it cannot be read.
    std::optional<std::vector<std::string>> names(Log const &log) const;

    /// The address of socket `name` in the folder that `folder` was opened on. Throws std::length_error for a name that
    /// is longer than those of sockets are.
    sockaddr_un address(process::Descriptor const &folder, std::string const &name) const;

  private:
    RuntimeFolder(std::string path, bool shared_parent)
        : path_(std::move(path)), shared_parent_(shared_parent) {}

    std::string path_;
    /// Anybody can put things beside the folder, symbolic links of its name included.
    bool shared_parent_;
};

/// The file name of the socket of a service's target. It is made of digests, since the texts may be long,
/// empty or hold anything that means something to a file system.
std::string socketName(std::string_view service, std::string_view target);

/// Whether `name` is the file name of a socket of any target of `service`.
bool isSocketOf(std::string_view name, std::string_view service);

/// Whether the process at the other end of `connection` belongs to the same user or to root; logs when not, unless
/// `refusals` has it that this is told already.
bool isTrustedPeer(int connection, Log const &log, Flood &refusals);

}  // namespace platform

#endif
