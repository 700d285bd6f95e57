// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_UNIT_SIMULATOR_TIME_ZONE_H
#define KORVO_TESTS_UNIT_SIMULATOR_TIME_ZONE_H

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace simulator::tests {

// With their rules, so that no table of zones need be installed.
inline constexpr char const *utc = "UTC0";
/// Clocks go from 2:00 to 3:00 on the last Sunday in March, from 3:00 to 2:00 on the last one in October.
inline constexpr char const *berlin = "CET-1CEST,M3.5.0,M10.5.0/3";
/// From 2:00 to 3:00 on the second Sunday in March, from 2:00 to 1:00 on the first one in November.
inline constexpr char const *new_york = "EST5EDT,M3.2.0,M11.1.0";
/// From 2:00 to 2:30 on the first Sunday in October, from 2:00 to 1:30 on the first one in April.
inline constexpr char const *lord_howe = "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0";
inline constexpr char const *kolkata = "IST-5:30";

/// The time zone of the process, for as long as it lives.
class TimeZone {
  public:
    explicit TimeZone(char const *zone) {
        if (char const *const before = std::getenv("TZ")) {
            before_ = before;
        }
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
    ~TimeZone() {
        if (before_) {
            ::setenv("TZ", before_->c_str(), 1);
        } else {
            ::unsetenv("TZ");
        }
        ::tzset();
    }
    TimeZone(TimeZone const &) = delete;
    TimeZone &operator=(TimeZone const &) = delete;

  private:
    std::optional<std::string> before_;
};

}  // namespace simulator::tests

#endif
