// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_SERVING_ROLE_H
#define KORVO_PLATFORM_SERVING_ROLE_H

#include "messaging/target.h"

namespace platform {

// What an event of a target's epoll set is about, where it is not a peer's number.
constexpr std::uint64_t wake_tag = 0;
constexpr std::uint64_t listener_tag = 1;

/// Makes the calling thread the one that serves, which nobody else may be, while it lives. The mutex is held
/// before and afterwards, and free in between.
class KORVO_SCOPED_CAPABILITY Target::ServingRole {
  public:
    ServingRole(Hold &hold, Target &target) KORVO_RELEASE(target.mutex_) : hold_(hold), target_(target) {
        target_.is_serving_ = true;
        hold_.unlock(target_.mutex_);
    }
    // As the analysis has it, this ends what the constructor did: it takes the mutex again.
    ~ServingRole() KORVO_RELEASE() {
        hold_.lock(target_.mutex_);
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
