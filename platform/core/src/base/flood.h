// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_FLOOD_H
#define KORVO_PLATFORM_FLOOD_H

#include <optional>

#include "base/deadline.h"

namespace platform {

/// Says which of many log lines that are alike are written: one a second. Those in between are counted, and their number is
/// told when the second is over, so that the log has the total at the end of a flood too. No lock of its own.
class Flood {
  public:
    static constexpr std::chrono::milliseconds pause{1000};

    /// One more has happened: whether its line is to be written.
    bool count(Clock::time_point now = Clock::now()) noexcept {
        ++total_;
        if (total_ == 1 || now - told_ >= pause) {
            told_ = now;
            return true;
        }
        ++untold_;
        return false;
    }

    /// When the number of those that were only counted is to be told; nothing while there are none.
    std::optional<Clock::time_point> due() const noexcept {
        return untold_ == 0 ? std::nullopt : std::optional<Clock::time_point>(told_ + pause);
    }

    /// That number, which counts as told now.
    unsigned long long takeUntold(Clock::time_point now = Clock::now()) noexcept {
        unsigned long long const untold = untold_;
        untold_ = 0;
        told_ = now;
        return untold;
    }

    unsigned long long total() const noexcept { return total_; }

  private:
    Clock::time_point told_{};
    unsigned long long total_ = 0;
    unsigned long long untold_ = 0;
};

}  // namespace platform

#endif
