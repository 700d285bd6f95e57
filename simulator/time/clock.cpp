// SPDX-License-Identifier: Apache-2.0
#include "simulator/time/clock.h"

#include <algorithm>
#include <utility>

namespace simulator {

namespace {

/// Where the monotonic time of a virtual clock begins. Any time would do.
constexpr std::chrono::hours beginning{1};

}  // namespace

Clock::Clock(Settings const &settings, std::function<Time()> real, std::function<Wall()> real_wall)
    : virtual_(settings.is_virtual),
      real_(std::move(real)),
      real_wall_(std::move(real_wall)),
      rate_(settings.rate),
      base_(beginning),
      base_real_(real_()),
      wall_offset_(settings.start.value_or(real_wall_()).time_since_epoch() - beginning),
      last_(base_ + farthest) {}

unsigned int Clock::rate() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return virtual_ ? rate_ : 1;
}

Clock::Time Clock::now() const {
    if (!virtual_) {
        return real_();
    }
    std::lock_guard<std::mutex> const lock(mutex_);
    return nowLocked();
}

Clock::Time Clock::nowLocked() const {
    // A clock at the farthest time stops there.
    auto const passed = real_() - base_real_;
    return rate_ == 0 || passed > (last_ - base_) / rate_ ? (rate_ == 0 ? base_ : last_)
                                                          : base_ + passed * rate_;
}

Wall Clock::wall() const {
    if (!virtual_) {
        return real_wall_();
    }
    std::lock_guard<std::mutex> const lock(mutex_);
    return Wall(std::chrono::duration_cast<Wall::duration>(nowLocked().time_since_epoch()) + wall_offset_);
}

std::optional<Clock::Time> Clock::realTimeOf(Time when) const {
    if (!virtual_) {
        return when;
    }
    std::lock_guard<std::mutex> const lock(mutex_);
    if (when <= nowLocked()) {
        return real_();
    }
    if (rate_ == 0 || when > last_) {
        return std::nullopt;
    }
    // Rounded up, so that the time has come when it is looked at.
    return base_real_ + (when - base_) / rate_ + Time::duration(1);
}

void Clock::advanceTo(Time when) {
    std::lock_guard<std::mutex> const lock(mutex_);
    Time const now = nowLocked();
    base_real_ = real_();
    base_ = std::min(std::max(when, now), last_);
}

void Clock::set(Wall wall) {
    std::lock_guard<std::mutex> const lock(mutex_);
    wall_offset_ =
        wall.time_since_epoch() - std::chrono::duration_cast<Wall::duration>(nowLocked().time_since_epoch());
}

void Clock::setRate(unsigned int rate) {
    std::lock_guard<std::mutex> const lock(mutex_);
    base_ = nowLocked();
    base_real_ = real_();
    rate_ = std::min(rate, fastest);
}

}  // namespace simulator
