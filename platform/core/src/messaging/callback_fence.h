// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_CALLBACK_FENCE_H
#define KORVO_PLATFORM_CALLBACK_FENCE_H

#include <condition_variable>
#include <cstdint>

#include "base/notes.h"

namespace platform {

/// Knows which callback of a thread is running, for those who must wait until it is over. Its functions are called with
/// the owner's mutex held.
class CallbackFence {
  public:
    /// Runs `callback` without `mutex`, the owner's, and has it again afterwards. `callback` must not throw.
    template <typename Callback>
    void run(Hold &hold, Mutex &mutex, void const *context, Callback callback) KORVO_REQUIRES(mutex) {
        is_running_ = true;
        context_ = context;
        ++number_;
        hold.unlock(mutex);
        callback();
        hold.lock(mutex);
        is_running_ = false;
        over_.notify_all();
    }

    bool isRunning() const { return is_running_; }

    /// Waits until the callback that is just running with `context`, or with any where that is NULL, has returned; not
    /// for one that begins later.
    void wait(Hold &hold, void const *context) {
        std::uint64_t const number = number_;
        over_.wait(hold.mutex(), [&] {
            return !is_running_ || number_ != number || (context != nullptr && context_ != context);
        });
    }

  private:
    std::condition_variable over_;
    bool is_running_ = false;
    void const *context_ = nullptr;
    std::uint64_t number_ = 0;
};

}  // namespace platform

#endif
