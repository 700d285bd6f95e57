// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_SERVING_ROLE_H
#define KORVO_PLATFORM_SERVING_ROLE_H

#include "messaging/target.h"

namespace platform {

// What an event of a target's epoll set is about, where it is not a peer's number.
constexpr std::uint64_t wake_tag = 0;
constexpr std::uint64_t listener_tag = 1;

/// Makes the calling thread the one that serves, which nobody else may be, while it lives. The mutex is held
/// at both ends; between them the thread releases it to serve.
class Target::ServingRole {
  public:
    ServingRole(Hold &hold, Target &target) : hold_(hold), target_(target) { target_.is_serving_ = true; }
    ~ServingRole() {
        if (!hold_.owns_lock()) {
            hold_.lock();
        }
        target_.is_serving_ = false;
        target_.served_.notify_all();
    }

    ServingRole(ServingRole const &) = delete;
    ServingRole &operator=(ServingRole const &) = delete;

  private:
    Hold &hold_;
    Target &target_;
};

}  // namespace platform

#endif
