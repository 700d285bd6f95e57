// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_DEADLINE_H
#define KORVO_PLATFORM_DEADLINE_H

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <limits>

namespace platform {

using Clock = std::chrono::steady_clock;

/// The end of a time-out in milliseconds: 0 has passed at once, a negative one never passes.
class Deadline {
  public:
    explicit Deadline(int timeout) : timeout_(timeout) {
        if (timeout > 0) {
            end_ = Clock::now() + std::chrono::milliseconds(timeout);
        }
    }

    bool isPoll() const { return timeout_ == 0; }

    bool hasPassed() const { return timeout_ == 0 || (timeout_ > 0 && Clock::now() >= end_); }

    /// What is left in milliseconds, rounded up, so that waiting so long does reach the end; -1 without an
    /// end.
    int remaining() const {
        if (timeout_ <= 0) {
            return timeout_ == 0 ? 0 : -1;
        }
        auto const left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now()).count();
        return static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
    }

    /// Waits for a notification or the end.
    template <typename Lock>
    void wait(std::condition_variable &condition, Lock &lock) const {
        if (timeout_ < 0) {
            condition.wait(lock);
        } else {
            (void)condition.wait_until(lock, end_);
        }
    }

  private:
    int timeout_;
    Clock::time_point end_{};
};

}  // namespace platform

#endif
