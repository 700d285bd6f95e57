// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_TIME_MOMENT_H
#define KORVO_SIMULATOR_TIME_MOMENT_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace simulator {

/// What the calendar and the clock on the wall go by.
using Wall = std::chrono::system_clock::time_point;

/// A moment of the week as a clock on the wall shows it.
struct LocalTime {
    /// 0 is Sunday.
    unsigned int weekday;
    /// Seconds since midnight.
    std::uint32_t seconds;
};

inline constexpr std::uint32_t day_seconds = 24 * 60 * 60;

/// Years from the first and before the second can be told and read. A clock that is set to the last one can still be moved as far
/// ahead as clocks can (clock.h) before Wall ends, in 2262.
inline constexpr int first_year = 1970;
inline constexpr int beyond_years = 2160;

/// What a clock in the time zone of the process (TZ) shows at this moment.
LocalTime localTime(Wall moment);

/// 2026-11-23T07:59:00+01:00, in the time zone of the process.
std::string momentText(Wall moment);

/// Reads 2026-11-23T07:59:00, with Z or an offset like +01:00 behind it or without. Without one it is a time of the
/// zone of the process; where clocks are set back and show it twice, the first of the two. Nothing for what is no such
/// text, for a date or time that does not exist, which the hour has that clocks leave out in spring, and for
/// years out of range.
std::optional<Wall> readMoment(std::string_view text);

/// The same with milliseconds: 2026-11-23T07:59:00.250+01:00. What is read may also be without.
std::string preciseMomentText(Wall moment);
std::optional<Wall> readPreciseMoment(std::string_view text);

/// What to say of a text that readMoment() does not take, behind the text.
inline constexpr char const *no_moment =
    "is no time that the clock shows, written like 2026-11-23T07:59:00, with Z or +01:00 behind it or "
    "without";

}  // namespace simulator

#endif
