// SPDX-License-Identifier: Apache-2.0
#include "simulator/filters.h"

#include <cstdio>
#include <iterator>

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

constexpr char const *day_names[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};

std::string timeText(std::uint32_t seconds) {
    char text[16];
    std::snprintf(text, sizeof text, "%02u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
    return text;
}

/// "on Monday, Tuesday, 08:00:00 to 18:00:00"
std::string windowText(std::uint32_t weekdays, std::uint32_t start, std::uint32_t end) {
    std::string text;
    for (unsigned int day = 0; day < std::size(day_names); ++day) {
        if ((weekdays >> day & 1U) != 0) {
            text.append(text.empty() ? "on " : ", ").append(day_names[day]);
        }
    }
    if (text.empty()) {
        text = "on no day";
    }
    if (weekdays == protocol::every_weekday) {
        text = "on each day";
    }
    return text + (start == end ? ", the whole day" : ", " + timeText(start) + " to " + timeText(end)) +
           (end < start ? " of the next" : "");
}

}  // namespace

std::string whyMayRun(Values const &filters, LocalTime now) {
    auto const &weekdays = valueOf<Numbers>(filters, filters_row, "weekday_filters");
    auto const &starts = valueOf<Numbers>(filters, filters_row, "time_filters_start");
    auto const &ends = valueOf<Numbers>(filters, filters_row, "time_filters_end");
    if (weekdays.empty()) {
        return "it has no filters";
    }
    constexpr std::size_t most_told = 5;
    std::string const moment = std::string(day_names[now.weekday]) + " " + timeText(now.seconds);
    std::string all;
    for (std::size_t n = 0; n < weekdays.size(); ++n) {
        std::string const window =
            n < most_told || fits(weekdays[n], starts[n], ends[n], now)
                ? "filter " + std::to_string(n + 1) + " (" + windowText(weekdays[n], starts[n], ends[n]) + ")"
                : "";
        if (fits(weekdays[n], starts[n], ends[n], now)) {
            return moment + " is in " + window;
        }
        if (n < most_told) {
            all += (n == 0 ? "" : ", ") + window;
        }
    }
    return moment + " is not in " + all + (weekdays.size() > most_told ? " and others" : "");
}

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
