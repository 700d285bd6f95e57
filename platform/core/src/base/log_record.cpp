// SPDX-License-Identifier: Apache-2.0
#include "base/log_record.h"

#include <strings.h>
#include <time.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "visible_text.h"

namespace platform::log_record {

namespace {

constexpr std::size_t longest_text = 16 * 1024;

constexpr std::array<char const *, 10> names = {"emerg",  "alert", "crit",  "err",   "warning",
                                                "notice", "info",  "debug", "audit", "notset"};

}  // namespace

std::string format(char const *format, va_list arguments) {
    std::array<char, 512> brief;
    va_list again;
    va_copy(again, arguments);
    int const length = std::vsnprintf(brief.data(), brief.size(), format, arguments);
    std::string text;
    if (length < 0) {
        text = "(a record could not be formatted)";
    } else if (static_cast<std::size_t>(length) < brief.size()) {
        text.assign(brief.data(), static_cast<std::size_t>(length));
    } else {
        text.resize(std::min(static_cast<std::size_t>(length), longest_text) + 1);
        (void)std::vsnprintf(text.data(), text.size(), format, again);
        text.pop_back();
    }
    va_end(again);
    return text;
}

std::string oneLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    visible_text::append(line, text);
    return line;
}

std::string priorityName(korvo_core_log_priority priority) {
    return priority < names.size() ? names.at(priority) : "priority " + std::to_string(priority);
}

korvo_core_log_priority priorityFrom(char const *text, korvo_core_log_priority otherwise) {
    if (text == nullptr) {
        return otherwise;
    }
    if (text[0] >= '0' && text[0] <= '7' && text[1] == '\0') {
        return static_cast<korvo_core_log_priority>(text[0] - '0');
    }
    for (unsigned int value = KORVO_CORE_LOG_PRIORITY_EMERG; value <= KORVO_CORE_LOG_PRIORITY_DEBUG;
         ++value) {
        if (strcasecmp(text, names.at(value)) == 0) {
            return static_cast<korvo_core_log_priority>(value);
        }
    }
    return otherwise;
}

bool isWanted(korvo_core_log_priority priority, korvo_core_log_priority level) {
    if (priority == KORVO_CORE_LOG_PRIORITY_AUDIT) {
        return true;
    }
    return (priority > KORVO_CORE_LOG_PRIORITY_DEBUG ? KORVO_CORE_LOG_PRIORITY_DEBUG : priority) <= level;
}

std::string line(korvo_core_log_priority priority, std::string_view name, std::string_view text) {
    timespec now = {};
    (void)clock_gettime(CLOCK_REALTIME, &now);
    tm local = {};
    (void)localtime_r(&now.tv_sec, &local);
    std::array<char, 32> date;
    std::array<char, 8> zone;
    (void)strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    (void)strftime(zone.data(), zone.size(), "%z", &local);
    std::array<char, 64> stamp;
    (void)std::snprintf(stamp.data(), stamp.size(), "%s.%03ld%s", date.data(), now.tv_nsec / 1000000,
                        zone.data());

    std::string record = stamp.data();
    record += ' ';
    record += priorityName(priority);
    record += ' ';
    record += oneLine(program_invocation_short_name);
    record += '[';
    record += oneLine(name);
    record += "]: ";
    record += oneLine(text);
    record += '\n';
    return record;
}

}  // namespace platform::log_record
