// SPDX-License-Identifier: Apache-2.0
#include "tool/trace_words.h"

#include <boost/json/value.hpp>

#include "tool/members.h"
#include "tool/output.h"

namespace tool {
namespace {

namespace json = boost::json;

constexpr char const *plain = "\x1b[0m";

std::string painted(std::string const &text, bool coloured) {
    if (!coloured) {
        return text;
    }
    char const *colour = "\x1b[33m";
    if (text == "ran" || text == "succeeded" || text == "fires" || text == "would run") {
        colour = "\x1b[32m";
    } else if (text == "failed" || text == "refused") {
        colour = "\x1b[31m";
    }
    return colour + text + plain;
}

/// Empty where there is none.
std::string wordsIn(json::object const &members, char const *name) {
    auto const *const found = members.if_contains(name);
    return found == nullptr || found->is_null() ? "" : inWords(*found);
}

void addEntry(std::string &text, char const *what, json::object const &entry, bool coloured) {
    std::string const kind = what;
    std::string const verdict = wordsIn(entry, "verdict");
    text += "  " + kind + " " + wordsIn(entry, (kind + "_id").c_str()) + " (" +
            wordsIn(entry, (kind + "_name").c_str()) + "): " + painted(verdict, coloured);
    for (char const *member : {"why", "window", "words"}) {
        std::string const more = wordsIn(entry, member);
        text += more.empty() ? "" : (std::string(member) == "why" ? ": " : "; ") + more;
    }
    std::string const milliseconds = wordsIn(entry, "milliseconds");
    text += milliseconds.empty() || verdict == "held back" ? "" : " (" + milliseconds + " ms)";
    text += "\n";
}

}  // namespace

std::string traceInWords(json::object const &trace, bool coloured) {
    std::string const id = wordsIn(trace, "id");
    std::string const outcome = wordsIn(trace, "outcome");
    std::string const topic = wordsIn(trace, "topic");
    std::string const refusal = wordsIn(trace, "refusal");
    std::string text = (id.empty() ? "" : "trace " + id + "  ") + wordsIn(trace, "time") + "  " +
                       wordsIn(trace, "cause") + (topic.empty() ? "" : " " + topic) +
                       (outcome.empty() ? "" : ": " + painted(outcome, coloured)) +
                       (refusal.empty() ? "" : ": " + refusal) + "\n";
    for (auto const &trigger : listIn(trace, "triggers")) {
        addEntry(text, "trigger", trigger.as_object(), coloured);
    }
    for (auto const &action : listIn(trace, "actions")) {
        addEntry(text, "action", action.as_object(), coloured);
    }
    for (char const *what : {"triggers", "actions"}) {
        std::string const left_out = wordsIn(trace, (std::string(what) + "_left_out").c_str());
        text += left_out.empty() || left_out == "0" ? "" : "  and " + left_out + " more " + what + "\n";
    }
    return text;
}

}  // namespace tool
