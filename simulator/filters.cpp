// SPDX-License-Identifier: Apache-2.0
#include "simulator/filters.h"

#include "simulator/kinds.h"

namespace simulator {

namespace {

bool fits(std::uint32_t weekdays, std::uint32_t start, std::uint32_t end, LocalTime now) {
    auto const on = [weekdays](unsigned int weekday) { return (weekdays >> weekday & 1U) != 0; };
    if (start == end) {
        return on(now.weekday);
    }
    if (start < end) {
        return on(now.weekday) && start <= now.seconds && now.seconds < end;
    }
    unsigned int const yesterday = (now.weekday + 6) % 7;
    return (on(now.weekday) && start <= now.seconds) || (on(yesterday) && now.seconds < end);
}

}  // namespace

bool mayRun(Values const &filters, LocalTime now) {
    auto const &weekdays = valueOf<Numbers>(filters, filters_row, "weekday_filters");
    auto const &starts = valueOf<Numbers>(filters, filters_row, "time_filters_start");
    auto const &ends = valueOf<Numbers>(filters, filters_row, "time_filters_end");
    if (weekdays.empty()) {
        return true;
    }
    for (std::size_t n = 0; n < weekdays.size(); ++n) {
        if (fits(weekdays[n], starts[n], ends[n], now)) {
            return true;
        }
    }
    return false;
}

}  // namespace simulator
