// SPDX-License-Identifier: Apache-2.0
// Why something did or did not happen: why, explain, trace.

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include "tool/command.h"
#include "tool/control.h"
#include "tool/event_document.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace tool {
namespace {

namespace json = boost::json;

constexpr char const *plain = "\x1b[0m";

std::string coloured(std::string const &text, std::string const &verdict) {
    if (!output::isColoured()) {
        return text;
    }
    char const *colour = "\x1b[33m";
    if (verdict == "ran" || verdict == "succeeded" || verdict == "fires" || verdict == "would run") {
        colour = "\x1b[32m";
    } else if (verdict == "failed" || verdict == "refused") {
        colour = "\x1b[31m";
    }
    return colour + text + plain;
}

/// Empty where there is none.
std::string textIn(json::object const &members, char const *name) {
    auto const *const found = members.if_contains(name);
    return found == nullptr || found->is_null() ? "" : inWords(*found);
}

json::array const &listIn(json::object const &members, char const *name) {
    static json::array const none;
    auto const *const found = members.if_contains(name);
    return found != nullptr && found->is_array() ? found->get_array() : none;
}

void addEntry(std::string &text, char const *what, json::object const &entry) {
    std::string const kind = what;
    std::string const verdict = textIn(entry, "verdict");
    text += "  " + kind + " " + textIn(entry, (kind + "_id").c_str()) + " (" +
            textIn(entry, (kind + "_name").c_str()) + "): " + coloured(verdict, verdict);
    for (char const *member : {"why", "window", "words"}) {
        std::string const more = textIn(entry, member);
        text += more.empty() ? "" : (std::string(member) == "why" ? ": " : "; ") + more;
    }
    std::string const milliseconds = textIn(entry, "milliseconds");
    text += milliseconds.empty() || verdict == "held back" ? "" : " (" + milliseconds + " ms)";
    text += "\n";
}

std::string inWords(json::object const &trace) {
    std::string const id = textIn(trace, "id");
    std::string const outcome = textIn(trace, "outcome");
    std::string const topic = textIn(trace, "topic");
    std::string const refusal = textIn(trace, "refusal");
    std::string text = (id.empty() ? "" : "trace " + id + "  ") + textIn(trace, "time") + "  " +
                       textIn(trace, "cause") + (topic.empty() ? "" : " " + topic) +
                       (outcome.empty() ? "" : ": " + coloured(outcome, outcome)) +
                       (refusal.empty() ? "" : ": " + refusal) + "\n";
    for (auto const &trigger : listIn(trace, "triggers")) {
        addEntry(text, "trigger", trigger.as_object());
    }
    for (auto const &action : listIn(trace, "actions")) {
        addEntry(text, "action", action.as_object());
    }
    for (char const *what : {"triggers", "actions"}) {
        std::string const left_out = textIn(trace, (std::string(what) + "_left_out").c_str());
        text += left_out.empty() || left_out == "0" ? "" : "  and " + left_out + " more " + what + "\n";
    }
    return text;
}

void show(Context &context, json::object const &trace) {
    if (context.settings.json) {
        output::json(trace);
    } else {
        output::write(inWords(trace));
    }
}

json::object choiceIn(Arguments const &arguments) {
    json::object choice;
    if (arguments.has("--trigger")) {
        choice["trigger_id"] = arguments.number("--trigger");
    }
    if (arguments.has("--action")) {
        choice["action_id"] = arguments.number("--action");
    }
    if (arguments.has("--outcome")) {
        choice["outcome"] = arguments.text("--outcome");
    }
    return choice;
}

void why(Context &context) {
    json::object choice = choiceIn(context.arguments);
    choice["limit"] = context.arguments.flag("--last") || choice.empty() ? 1 : 10;
    Control control(context.settings);
    auto const answer = control.ask("Get_traces", choice);
    auto const &traces = listIn(answer, "traces");
    if (traces.empty() && !context.settings.json) {
        output::line("Nothing has happened" + std::string(choice.size() > 1 ? " to it" : "") +
                     ": no event and no timer that the service still remembers.");
    }
    for (auto const &trace : traces) {
        show(context, trace.as_object());
    }
}

void trace(Context &context) {
    json::object choice = choiceIn(context.arguments);
    if (context.arguments.has("--count")) {
        choice["limit"] = context.arguments.number("--count");
    }
    bool const follows = context.arguments.flag("--follow");
    Waiter waiter;
    Control control(context.settings);
    if (follows) {
        // Before the first look, so that nothing falls between.
        control.subscribe(waiter);
    }
    json::value last = 0;
    auto const show_new = [&] {
        for (bool more = true; more;) {
            auto const answer = control.ask("Get_traces", choice);
            for (auto const &entry : listIn(answer, "traces")) {
                show(context, entry.as_object());
                last = entry.as_object().at("id");
            }
            more = choice.contains("after") && !listIn(answer, "traces").empty() &&
                   answer.at("more") == json::value(true);
            choice["after"] = last;
        }
    };
    show_new();
    while (follows) {
        auto const event = waiter.next({});
        if (!event) {
            return;
        }
        show_new();
    }
}

void explain(Context &context) {
    json::object const event = eventInDocument("EVENT", textOfFile("EVENT", context.arguments.text("EVENT")),
                                               context.arguments.text("--topic"));
    Control control(context.settings);
    show(context, control.ask("Explain", event).at("trace").as_object());
}

}  // namespace

void addTraceCommands(std::vector<Command> &commands) {
    using Takes = Parameter::Takes;
    Parameter const trigger{
        "--trigger", "only what this trigger was asked about", false, Takes::one, "ID", Completion::trigger};
    Parameter const action{
        "--action", "only what this action was asked about", false, Takes::one, "ID", Completion::action};
    Parameter const outcome{"--outcome",
                            "only traces that ended so",
                            false,
                            Takes::one,
                            "OUTCOME",
                            Completion::word,
                            {"refused", "failed", "ran", "held back", "unbound", "waiting", "no match"}};
    commands.push_back({"why",
                        "Why",
                        "tell why the last events and timers did what they did, or nothing",
                        "Ten traces of a trigger or action, or the last one of all. With "
                        "korvo-action-engine-simulator only.",
                        {trigger, action, {"--last", "only the last one", false, Takes::flag}},
                        why});
    commands.push_back({"explain",
                        "Why",
                        "tell what an event would do at this moment, and do nothing",
                        "The file holds the event's message, with or without the notification around it that "
                        "names the topic. "
                        "With korvo-action-engine-simulator only.",
                        {{"EVENT", "a file; - is standard input", true, Takes::one, "FILE", Completion::file},
                         {"--topic", "where the file does not name it", false, Takes::one, "TOPIC"}},
                        explain});
    commands.push_back(
        {"trace",
         "Why",
         "show the service's traces, oldest first",
         "With korvo-action-engine-simulator only.",
         {{"--follow", "go on with those to come, until it is interrupted", false, Takes::flag},
          {"--count", "so many of the last ones to begin with (default: 100)", false, Takes::one, "NUMBER"},
          trigger,
          action,
          outcome},
         trace});
}

}  // namespace tool
