// SPDX-License-Identifier: Apache-2.0
#include "tool/time_line.h"

#include <algorithm>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <optional>
#include <vector>

#include "tool/markup.h"
#include "tool/members.h"
#include "tool/output.h"

namespace tool {
namespace {

namespace json = boost::json;

struct Row {
    char const *outcome;
    char const *colour;
};

/// What is worst stands on top.
constexpr Row rows[] = {
    {"refused", "#b02a37"}, {"failed", "#dc3545"},  {"held back", "#e0a800"}, {"unbound", "#8a6d3b"},
    {"ran", "#3c8d40"},     {"waiting", "#3a7ca5"}, {"no match", "#999"},
};

constexpr unsigned int left = 80;
constexpr unsigned int width = 900;
constexpr unsigned int row_height = 24;

std::string textElement(unsigned int x, unsigned int y, char const *anchor, std::string const &text) {
    return "<text x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) + "\" text-anchor=\"" + anchor +
           "\">" + escaped(text) + "</text>\n";
}

/// The seconds since 1970 of a text like "2026-11-23T08:00:00+01:00"; nothing for any other.
std::optional<std::int64_t> secondsOf(std::string const &moment) {
    std::tm parts{};
    char sign = '\0';
    int offset_hours = 0;
    int offset_minutes = 0;
    // NOLINTNEXTLINE(cert-err34-c): all that is read is two or four digits.
    if (std::sscanf(moment.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%c%2d:%2d", &parts.tm_year, &parts.tm_mon,
                    &parts.tm_mday, &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &sign, &offset_hours,
                    &offset_minutes) != 9 ||
        (sign != '+' && sign != '-')) {
        return {};
    }
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    std::int64_t const offset = offset_hours * 3600 + offset_minutes * 60;
    return ::timegm(&parts) - (sign == '+' ? offset : -offset);
}

}  // namespace

std::string timeLineOf(json::array const &traces) {
    std::optional<std::int64_t> first;
    std::optional<std::int64_t> last;
    std::string from;
    std::string to;
    for (auto const &trace : traces) {
        std::string const time = textIn(trace.as_object(), "time");
        auto const seconds = secondsOf(time);
        if (seconds && (!first || *seconds < *first)) {
            first = seconds;
            from = time;
        }
        if (seconds && (!last || *seconds > *last)) {
            last = seconds;
            to = time;
        }
    }
    std::string body;
    unsigned int y = 0;
    for (Row const &row : rows) {
        std::string marks;
        for (auto const &element : traces) {
            json::object const &trace = element.as_object();
            auto const seconds = secondsOf(textIn(trace, "time"));
            if (textIn(trace, "outcome") != row.outcome || !seconds) {
                continue;
            }
            std::int64_t const span = std::max<std::int64_t>(*last - *first, 1);
            auto const x = left + static_cast<unsigned int>((*seconds - *first) * width / span);
            std::string const id = inWords(trace.at("id"));
            std::string const topic = textIn(trace, "topic");
            marks += "<a href=\"#trace-" + id + "\"><circle cx=\"" + std::to_string(x) + "\" cy=\"" +
                     std::to_string(y + row_height / 2) + "\" r=\"6\" fill=\"" + row.colour +
                     "\" fill-opacity=\".6\"><title>trace " + id + ", " +
                     escaped(textIn(trace, "time") + ", " + textIn(trace, "cause") +
                             (topic.empty() ? "" : " " + printable(topic)) + ": " + row.outcome) +
                     "</title></circle></a>\n";
        }
        if (!marks.empty()) {
            unsigned int const middle = y + row_height / 2;
            body += textElement(0, middle + 4, "start", row.outcome) + "<line x1=\"" + std::to_string(left) +
                    "\" x2=\"" + std::to_string(left + width) + "\" y1=\"" + std::to_string(middle) +
                    "\" y2=\"" + std::to_string(middle) + "\" stroke=\"#ddd\"/>\n" + marks;
            y += row_height;
        }
    }
    body += textElement(left, y + 14, "start", from);
    if (to != from) {
        body += textElement(left + width, y + 14, "end", to);
    }
    return "<svg class=\"line\" role=\"img\" aria-label=\"traces by time\" viewBox=\"0 0 " +
           std::to_string(left + width + 10) + " " + std::to_string(y + 20) + "\">\n" + body + "</svg>\n";
}

}  // namespace tool
