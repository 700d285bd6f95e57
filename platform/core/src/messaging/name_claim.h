// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_NAME_CLAIM_H
#define KORVO_PLATFORM_NAME_CLAIM_H

#include <string>

#include "base/logging.h"
#include "base/process.h"
#include "messaging/addressing.h"

namespace platform {

/// A service's hold on its name: a lock file that says that the name is taken, and the socket that listens
/// under it. A process that dies loses the lock by itself; the socket file it leaves is replaced by the next
/// one.
class NameClaim {
  public:
    NameClaim() = default;
    ~NameClaim() { release(); }

    NameClaim(NameClaim const &) = delete;
    NameClaim &operator=(NameClaim const &) = delete;

    /// Locks the name and listens. Returns false, and logs why in terms of `owner`, when that fails; another
    /// live process that has the name is one reason. A socket that can be seen in the folder always listens.
    bool take(RuntimeFolder const &folder, std::string const &socket_name, std::string const &owner,
              Log const &log);

    /// Removes the socket and gives the name back.
    void release() noexcept;

    int listener() const { return listener_.get(); }

  private:
    bool lock(std::string const &owner, Log const &log);

    process::Descriptor folder_;
    process::Descriptor lock_;
    process::Descriptor listener_;
    std::string socket_name_;
    std::string lock_name_;
};

}  // namespace platform

#endif
