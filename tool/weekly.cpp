// SPDX-License-Identifier: Apache-2.0
#include "tool/weekly.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <charconv>
#include <cstdio>
#include <iterator>
#include <optional>
#include <set>

#include "tool/failure.h"
#include "tool/members.h"

namespace tool {
namespace {

namespace json = boost::json;

constexpr char const *names[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr unsigned int days = 7;
constexpr unsigned int every_day = 127;
constexpr unsigned int day_seconds = 86'400;

/// From Monday on, as people count.
unsigned int dayAt(unsigned int place) {
    return (place + 1) % days;
}

std::string daysInWords(unsigned int weekdays) {
    if ((weekdays & every_day) == every_day) {
        return "daily";
    }
    std::string text;
    for (unsigned int place = 0; place < days; ++place) {
        auto const has = [&](unsigned int at) { return at < days && (weekdays >> dayAt(at) & 1U) != 0; };
        if (!has(place)) {
            continue;
        }
        unsigned int last = place;
        while (has(last + 1)) {
            ++last;
        }
        text += (text.empty() ? "" : ",") + std::string(names[dayAt(place)]);
        if (last > place) {
            text += (last == place + 1 ? "," : "-") + std::string(names[dayAt(last)]);
        }
        place = last;
    }
    return text.empty() ? "never" : text;
}

std::optional<unsigned int> placeOf(std::string const &name) {
    for (unsigned int place = 0; place < days; ++place) {
        if (name == names[dayAt(place)]) {
            return place;
        }
    }
    return {};
}

std::vector<std::string> split(std::string const &text, char separator) {
    std::vector<std::string> parts(1);
    for (char const character : text) {
        if (character == separator) {
            parts.emplace_back();
        } else {
            parts.back() += character;
        }
    }
    return parts;
}

std::optional<unsigned int> weekdaysOf(std::string const &words) {
    if (words == "daily") {
        return every_day;
    }
    unsigned int weekdays = 0;
    for (std::string const &part : split(words, ',')) {
        auto const ends = split(part, '-');
        auto const first = placeOf(ends.front());
        auto const last = placeOf(ends.back());
        if (ends.size() > 2 || !first || !last) {
            return {};
        }
        for (unsigned int place = *first;; place = (place + 1) % days) {
            weekdays |= 1U << dayAt(place);
            if (place == *last) {
                break;
            }
        }
    }
    return weekdays;
}

std::optional<unsigned int> secondsOf(std::string const &words) {
    auto const parts = split(words, ':');
    unsigned int seconds = 0;
    for (std::size_t place = 0; place < 3; ++place) {
        unsigned int number = 0;
        if (place < parts.size()) {
            char const *const end = parts[place].data() + parts[place].size();
            auto const read = std::from_chars(parts[place].data(), end, number);
            if (read.ec != std::errc() || read.ptr != end || parts[place].size() > 2 ||
                number > (place == 0 ? 24U : 59U)) {
                return {};
            }
        }
        seconds = seconds * 60 + number;
    }
    return parts.size() < 2 || parts.size() > 3 || seconds > day_seconds ? std::nullopt
                                                                         : std::make_optional(seconds);
}

}  // namespace

std::string clockTime(unsigned int seconds) {
    char text[32];
    unsigned int const minutes = seconds / 60;
    if (seconds % 60 == 0) {
        (void)std::snprintf(text, sizeof text, "%02u:%02u", minutes / 60, minutes % 60);
    } else {
        (void)std::snprintf(text, sizeof text, "%02u:%02u:%02u", minutes / 60, minutes % 60, seconds % 60);
    }
    return text;
}

char const *weekdayName(unsigned int weekday) {
    return names[weekday % days];
}

std::vector<Window> windowsIn(json::object const &filters) {
    auto const &weekdays = listIn(filters, "weekday_filters");
    auto const &starts = listIn(filters, "time_filters_start");
    auto const &ends = listIn(filters, "time_filters_end");
    std::vector<Window> windows;
    for (std::size_t place = 0; place < std::min({weekdays.size(), starts.size(), ends.size()}); ++place) {
        windows.push_back({weekdays[place].to_number<unsigned int>(), starts[place].to_number<unsigned int>(),
                           ends[place].to_number<unsigned int>()});
    }
    return windows;
}

json::object filtersOf(std::vector<Window> const &windows) {
    json::array weekdays;
    json::array starts;
    json::array ends;
    for (Window const &window : windows) {
        weekdays.emplace_back(window.weekdays);
        starts.emplace_back(window.start);
        ends.emplace_back(window.end);
    }
    return {{"weekday_filters", std::move(weekdays)},
            {"time_filters_start", std::move(starts)},
            {"time_filters_end", std::move(ends)}};
}

std::string inWords(Window const &window) {
    return daysInWords(window.weekdays) + " " + clockTime(window.start) + "-" + clockTime(window.end);
}

std::string filtersInWords(json::object const &filters) {
    std::string text;
    for (Window const &window : windowsIn(filters)) {
        text += (text.empty() ? "" : "; ") + inWords(window);
    }
    return text.empty() ? "always" : text;
}

Window windowOf(std::string const &option, std::string const &words) {
    auto const parts = split(words, ' ');
    auto const times = split(parts.back(), '-');
    auto const weekdays = parts.size() == 2 ? weekdaysOf(parts.front()) : std::nullopt;
    auto const start = times.size() == 2 ? secondsOf(times.front()) : std::nullopt;
    auto const end = times.size() == 2 ? secondsOf(times.back()) : std::nullopt;
    if (!weekdays || !start || !end) {
        throw Failure(
            Exit::usage, option + " is weekdays and a window, and not \"" + words + "\"",
            "write something like \"Mon-Fri 08:00-18:00\", \"Sat,Sun 22:00-06:00\" or \"daily 00:00-24:00\"");
    }
    return {*weekdays, *start, *end};
}

/// A window has its start and not its end; it belongs to the day on which it starts; equal ends are the whole day.
bool isOpen(std::vector<Window> const &windows, unsigned int weekday, unsigned int second) {
    return std::any_of(windows.begin(), windows.end(), [&](Window const &window) {
        bool const today = (window.weekdays >> weekday & 1U) != 0;
        bool const yesterday = (window.weekdays >> ((weekday + days - 1) % days) & 1U) != 0;
        if (window.start < window.end) {
            return today && window.start <= second && second < window.end;
        }
        if (window.start == window.end) {
            return today;
        }
        return (today && window.start <= second) || (yesterday && second < window.end);
    });
}

std::vector<std::pair<unsigned int, unsigned int>> openTimes(std::vector<Window> const &windows,
                                                             unsigned int weekday) {
    // Between two of these nothing changes.
    std::set<unsigned int> changes = {0};
    for (Window const &window : windows) {
        changes.insert({window.start, window.end});
    }
    changes.erase(changes.lower_bound(day_seconds), changes.end());
    changes.insert(day_seconds);
    std::vector<std::pair<unsigned int, unsigned int>> times;
    for (auto begin = changes.begin(); *begin < day_seconds; ++begin) {
        if (!isOpen(windows, weekday, *begin)) {
            continue;
        }
        unsigned int const end = *std::next(begin);
        if (!times.empty() && times.back().second == *begin) {
            times.back().second = end;
        } else {
            times.emplace_back(*begin, end);
        }
    }
    return times;
}

}  // namespace tool
