// SPDX-License-Identifier: Apache-2.0
#include "simulator/time/moment.h"

#include <array>
#include <charconv>
#include <ctime>

namespace simulator {

namespace {

std::tm brokenDown(std::time_t seconds) {
    std::tm local{};
    localtime_r(&seconds, &local);
    return local;
}

bool sameFields(std::tm const &first, std::tm const &second) {
    return first.tm_year == second.tm_year && first.tm_mon == second.tm_mon &&
           first.tm_mday == second.tm_mday && first.tm_hour == second.tm_hour &&
           first.tm_min == second.tm_min && first.tm_sec == second.tm_sec;
}

/// Takes so many digits away from the beginning.
std::optional<int> takeDigits(std::string_view &text, std::size_t count) {
    int number = 0;
    if (text.size() < count || text.front() < '0' || text.front() > '9') {
        return std::nullopt;
    }
    auto const read = std::from_chars(text.data(), text.data() + count, number);
    if (read.ec != std::errc() || read.ptr != text.data() + count) {
        return std::nullopt;
    }
    text.remove_prefix(count);
    return number;
}

/// Reads the calendar's and the clock's fields, and leaves in `text` what stands behind them.
std::optional<std::tm> takeFields(std::string_view &text) {
    struct Field {
        std::size_t digits;
        char behind;
    };
    constexpr std::array<Field, 6> layout = {{{4, '-'}, {2, '-'}, {2, 'T'}, {2, ':'}, {2, ':'}, {2, '\0'}}};
    std::array<int, 6> values{};
    for (std::size_t n = 0; n < layout.size(); ++n) {
        auto const value = takeDigits(text, layout[n].digits);
        if (!value) {
            return std::nullopt;
        }
        values[n] = *value;
        if (layout[n].behind != '\0') {
            if (text.empty() || text.front() != layout[n].behind) {
                return std::nullopt;
            }
            text.remove_prefix(1);
        }
    }
    if (values[0] < first_year || values[0] >= beyond_years) {
        return std::nullopt;
    }
    std::tm fields{};
    fields.tm_year = values[0] - 1900;
    fields.tm_mon = values[1] - 1;
    fields.tm_mday = values[2];
    fields.tm_hour = values[3];
    fields.tm_min = values[4];
    fields.tm_sec = values[5];
    return fields;
}

std::optional<std::time_t> inUtc(std::tm const &fields) {
    std::tm made = fields;
    std::time_t const seconds = timegm(&made);
    return sameFields(made, fields) ? std::optional<std::time_t>(seconds) : std::nullopt;
}

std::optional<std::time_t> inLocalZone(std::tm const &fields) {
    std::optional<std::time_t> first;
    for (int const daylight_saving : {1, 0}) {
        std::tm made = fields;
        made.tm_isdst = daylight_saving;
        std::time_t const seconds = std::mktime(&made);
        // A time that does not exist, or not so, has become another one.
        if (sameFields(brokenDown(seconds), fields) && (!first || seconds < *first)) {
            first = seconds;
        }
    }
    return first;
}

/// Seconds east of Greenwich.
std::optional<int> readOffset(std::string_view text) {
    if (text == "Z") {
        return 0;
    }
    if (text.empty() || (text.front() != '+' && text.front() != '-')) {
        return std::nullopt;
    }
    int const sign = text.front() == '-' ? -1 : 1;
    text.remove_prefix(1);
    auto const hours = takeDigits(text, 2);
    if (!hours || text.empty() || text.front() != ':') {
        return std::nullopt;
    }
    text.remove_prefix(1);
    auto const minutes = takeDigits(text, 2);
    if (!minutes || !text.empty() || *hours > 23 || *minutes > 59) {
        return std::nullopt;
    }
    return sign * (*hours * 60 + *minutes) * 60;
}

}  // namespace

LocalTime localTime(Wall moment) {
    std::tm const local =
        brokenDown(std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(moment)));
    return {static_cast<unsigned int>(local.tm_wday),
            static_cast<std::uint32_t>((local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec)};
}

std::string momentText(Wall moment) {
    std::tm const local =
        brokenDown(std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(moment)));
    char text[48];
    std::size_t const length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S%z", &local);
    std::string made(text, length);
    // strftime writes +0100.
    if (made.size() > 2) {
        made.insert(made.size() - 2, ":");
    }
    return made;
}

std::optional<Wall> readMoment(std::string_view text) {
    auto const fields = takeFields(text);
    if (!fields) {
        return std::nullopt;
    }
    std::optional<std::time_t> seconds;
    if (text.empty()) {
        seconds = inLocalZone(*fields);
    } else if (auto const offset = readOffset(text)) {
        seconds = inUtc(*fields);
        if (seconds) {
            *seconds -= *offset;
        }
    }
    return seconds ? std::optional<Wall>(std::chrono::system_clock::from_time_t(*seconds)) : std::nullopt;
}

namespace {
/// Where the fraction stands: behind 2026-11-23T07:59:00.
constexpr std::size_t fraction_place = 19;
}  // namespace

std::string preciseMomentText(Wall moment) {
    auto const second = std::chrono::floor<std::chrono::seconds>(moment);
    auto const milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(moment - second).count();
    std::string text = momentText(second);
    std::string const digits = std::to_string(1000 + milliseconds);
    return text.replace(fraction_place, 0, "." + digits.substr(1));
}

std::optional<Wall> readPreciseMoment(std::string_view text) {
    if (text.size() <= fraction_place || text[fraction_place] != '.') {
        return readMoment(text);
    }
    std::string_view fraction = text.substr(fraction_place + 1);
    auto const milliseconds = takeDigits(fraction, 3);
    auto const second = readMoment(std::string(text.substr(0, fraction_place)).append(fraction));
    return milliseconds && second ? std::optional<Wall>(*second + std::chrono::milliseconds(*milliseconds))
                                  : std::nullopt;
}

}  // namespace simulator
