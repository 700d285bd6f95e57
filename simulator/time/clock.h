// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_TIME_CLOCK_H
#define KORVO_SIMULATOR_TIME_CLOCK_H

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

#include "simulator/time/moment.h"

namespace simulator {

/// The time that everything in the service goes by: timers and stability by a monotonic time, windows and weekdays,
/// and what is written into mails, file names and pictures, by the time on the wall.
///
/// A real clock is the machine's. A virtual one stands until it is moved, or runs at a rate; the machine's time zone
/// (TZ) holds for both. Any thread may use it.
class Clock {
  public:
    using Time = std::chrono::steady_clock::time_point;

    struct Settings {
        bool is_virtual = false;
        /// Where a virtual clock begins; the time of day when there is none.
        std::optional<Wall> start;
        /// So many times as fast as real time; 0 stands.
        unsigned int rate = 0;
    };
    static constexpr unsigned int fastest = 86'400;

    /// A virtual clock can be moved so far ahead in all.
    static constexpr std::chrono::hours farthest{100 * 366 * 24};

    /// `real` and `real_wall` are the machine's clocks.
    explicit Clock(Settings const &settings, std::function<Time()> real = std::chrono::steady_clock::now,
                   std::function<Wall()> real_wall = std::chrono::system_clock::now);

    bool isVirtual() const { return virtual_; }
    unsigned int rate() const;

    Time now() const;
    Wall wall() const;
    LocalTime local() const { return localTime(wall()); }

    /// When a time of this clock comes on the machine's monotonic clock; nothing while this one stands.
    std::optional<Time> realTimeOf(Time when) const;

    // The rest is for a virtual clock only.

    /// Whether the time can be moved to; it is not too far away.
    bool reaches(Time when) const { return when <= last_; }
    /// Moves the clock ahead; a time that has passed changes nothing.
    void advanceTo(Time when);
    /// Sets the time on the wall, as a person sets a clock: what is due in ten seconds still is.
    void set(Wall wall);
    void setRate(unsigned int rate);

  private:
    Time nowLocked() const;

    bool const virtual_;
    std::function<Time()> const real_;
    std::function<Wall()> const real_wall_;
    mutable std::mutex mutex_;
    unsigned int rate_;
    /// The virtual time at a real one, and how far the wall's is from it.
    Time base_;
    Time base_real_;
    Wall::duration wall_offset_;
    Time const last_;
};

/// The first of two moments, either of which may be none.
inline std::optional<Clock::Time> earlier(std::optional<Clock::Time> first,
                                          std::optional<Clock::Time> second) {
    return !first || (second && *second < *first) ? second : first;
}

}  // namespace simulator

#endif
