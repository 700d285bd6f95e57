// SPDX-License-Identifier: Apache-2.0
#include "tool/report.h"

#include <algorithm>
#include <boost/json/value.hpp>

#include "tool/markup.h"
#include "tool/members.h"
#include "tool/output.h"
#include "tool/time_line.h"
#include "tool/trace_words.h"
#include "tool/weekly.h"

namespace tool {
namespace {

/// Nothing may be fetched or run, whatever stands in the page.
constexpr char const *head = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Action engine</title>
<style>
body { font: 15px/1.5 sans-serif; max-width: 75em; margin: 2em auto; padding: 0 1em; color: #222; background: #fff; }
h1, h2, h3 { line-height: 1.2; }
h2 { margin-top: 2em; border-bottom: 1px solid #ccc; }
h3 { margin-bottom: .3em; font-size: 1em; }
table { border-collapse: collapse; }
th, td { text-align: left; vertical-align: top; padding: .2em 1em .2em 0; border-bottom: 1px solid #eee; overflow-wrap: anywhere; min-width: 5em; }
th:first-child, td:first-child { min-width: 1.5em; }
.wide { overflow-x: auto; }
.picture svg { max-width: 100%; height: auto; }
.week, .line { width: 100%; height: auto; font: 11px sans-serif; }
.week { max-width: 50em; }
pre { white-space: pre-wrap; overflow-wrap: anywhere; margin: 0; padding: .4em 0; border-bottom: 1px solid #eee; }
pre:target { background: #fff3cd; }
.note { color: #666; }
</style>
</head>
<body>
)";

std::string paragraph(std::string const &text) {
    return "<p class=\"note\">" + escaped(printable(text)) + "</p>\n";
}

std::string table(std::vector<std::string> const &heading,
                  std::vector<std::vector<std::string>> const &rows) {
    std::string text = "<div class=\"wide\"><table>\n<tr>";
    for (std::string const &cell : heading) {
        text += "<th>" + escaped(cell) + "</th>";
    }
    text += "</tr>\n";
    for (auto const &row : rows) {
        text += "<tr>";
        for (std::string const &cell : row) {
            text += "<td>" + escaped(cell) + "</td>";
        }
        text += "</tr>\n";
    }
    return text + "</table></div>\n";
}

std::string namesOf(std::vector<Entry const *> const &entries) {
    std::string text;
    for (Entry const *entry : entries) {
        text +=
            (text.empty() ? "" : ", ") + printable(entry->name()) + " (" + std::to_string(entry->id) + ")";
    }
    return text.empty() ? "nothing" : text;
}

std::string tablesOf(Catalogue const &catalogue) {
    std::vector<std::vector<std::string>> triggers;
    std::vector<std::vector<std::string>> actions;
    for (Entry const &entry : catalogue.triggers) {
        triggers.push_back({std::to_string(entry.id), printable(entry.name()), kindInWords(entry),
                            namesOf(catalogue.actionsOf(entry.id)), settingsInWords({}, entry)});
    }
    for (Entry const &entry : catalogue.actions) {
        actions.push_back({std::to_string(entry.id), printable(entry.name()), kindInWords(entry),
                           namesOf(catalogue.triggersOf(entry.id)), filtersInWords(entry.filters),
                           settingsInWords({}, entry)});
    }
    return "<h2>Triggers</h2>\n" + table({"", "Name", "Kind", "Runs", "Settings"}, triggers) +
           "<h2>Actions</h2>\n" + table({"", "Name", "Kind", "Run by", "When", "Settings"}, actions);
}

std::string mistakesIn(LintResult const &mistakes) {
    std::string text = "<h2>Mistakes</h2>\n";
    for (std::string const &what : mistakes.unchecked) {
        text += paragraph("Not checked: " + what);
    }
    if (mistakes.findings.empty()) {
        return text + paragraph("None was found.");
    }
    text += "<ul>\n";
    for (Finding const &finding : mistakes.findings) {
        text += "<li>" + escaped(inWords(finding)) + "</li>\n";
    }
    return text + "</ul>\n";
}

/// Seven days from left to right, a unit of the picture being two minutes.
std::string weekOf(std::vector<Window> const &windows, std::string const &title) {
    constexpr unsigned int unit = 120;
    constexpr unsigned int left = 40;
    constexpr unsigned int top = 16;
    constexpr unsigned int row = 20;
    auto const rectangle = [](unsigned int x, unsigned int y, unsigned int width, char const *colour) {
        return "<rect x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) + "\" width=\"" +
               std::to_string(width) + "\" height=\"16\" fill=\"" + colour + "\">";
    };
    auto const label = [](unsigned int x, unsigned int y, std::string const &text) {
        return "<text x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) + "\">" + text + "</text>\n";
    };
    std::string text =
        "<svg class=\"week\" role=\"img\" aria-label=\"" + escaped(title) + "\" viewBox=\"0 0 780 160\">\n";
    for (unsigned int hour = 0; hour <= 24; hour += 3) {
        text += label(left + hour * 30 - 6, 11, (hour < 10 ? "0" : "") + std::to_string(hour));
    }
    unsigned int y = top;
    for (unsigned int const weekday : {1U, 2U, 3U, 4U, 5U, 6U, 0U}) {
        std::string const day = weekdayName(weekday);
        text += label(0, y + 12, day) + rectangle(left, y, 720, "#eee") + "</rect>\n";
        for (auto const &[begin, end] : openTimes(windows, weekday)) {
            unsigned int const x = begin / unit;
            // What is open for a moment is seen too.
            unsigned int const width = std::max(1U, (end + unit - 1) / unit - x);
            text += rectangle(left + x, y, width, "#5a9e4b") + "<title>" + day + " " + clockTime(begin) +
                    "-" + clockTime(end) + "</title></rect>\n";
        }
        y += row;
    }
    return text + "</svg>\n";
}

std::string weeksOf(Catalogue const &catalogue) {
    std::string text = "<h2>Weeks</h2>\n";
    bool none = true;
    for (Entry const &action : catalogue.actions) {
        auto const windows = windowsIn(action.filters);
        if (windows.empty()) {
            continue;
        }
        none = false;
        std::string const title = titleOf(action) + ": " + filtersInWords(action.filters);
        text += "<h3>" + escaped(title) + "</h3>\n" + weekOf(windows, title);
    }
    return text + paragraph(none ? "All actions may run at any time."
                                 : "Actions without filters may run at any time.");
}

std::string tracesIn(std::optional<boost::json::array> const &traces) {
    std::string text = "<h2>What happened last</h2>\n";
    if (!traces) {
        return text + paragraph("This service keeps no traces; korvo-action-engine-simulator does.");
    }
    if (traces->empty()) {
        return text + paragraph("Nothing: no event and no timer that the service still remembers.");
    }
    text += timeLineOf(*traces);
    for (auto trace = traces->rbegin(); trace != traces->rend(); ++trace) {
        auto const &members = trace->as_object();
        text += "<pre id=\"trace-" + inWords(members.at("id")) + "\">" +
                escaped(traceInWords(members, /*coloured*/ false)) + "</pre>\n";
    }
    return text;
}

}  // namespace

std::string pageOf(Report const &report) {
    return head + ("<h1>Action engine</h1>\n" + paragraph(report.subtitle)) + "<h2>What runs what</h2>\n" +
           (report.picture.empty() ? paragraph(report.no_picture)
                                   : "<div class=\"wide picture\">\n" + report.picture + "</div>\n") +
           tablesOf(*report.catalogue) + mistakesIn(*report.mistakes) + weeksOf(*report.catalogue) +
           tracesIn(report.traces) + "</body>\n</html>\n";
}

}  // namespace tool
