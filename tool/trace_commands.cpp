// SPDX-License-Identifier: Apache-2.0
// Why something did or did not happen: why, explain, trace.

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include "tool/catalogue.h"
#include "tool/command.h"
#include "tool/control.h"
#include "tool/event_document.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/trace_words.h"

namespace tool {
namespace {

namespace json = boost::json;

json::array const &tracesIn(json::object const &answer) {
    return answer.at("traces").as_array();
}

void show(Context &context, json::object const &trace) {
    if (context.settings.json) {
        output::json(trace);
    } else {
        output::write(traceInWords(trace, output::isColoured()));
    }
}

json::object choiceIn(Context &context) {
    Arguments const &arguments = context.arguments;
    json::object choice;
    if (arguments.has("--trigger")) {
        choice["trigger_id"] = triggerGiven(context, "--trigger");
    }
    if (arguments.has("--action")) {
        choice["action_id"] = actionGiven(context, "--action");
    }
    if (arguments.has("--outcome")) {
        choice["outcome"] = arguments.text("--outcome");
    }
    return choice;
}

void why(Context &context) {
    json::object choice = choiceIn(context);
    choice["limit"] = context.arguments.flag("--last") || choice.empty() ? 1 : 10;
    Control control(context.settings);
    auto const answer = control.ask("Get_traces", choice);
    auto const &traces = tracesIn(answer);
    if (traces.empty() && !context.settings.json) {
        output::line("Nothing has happened" + std::string(choice.size() > 1 ? " to it" : "") +
                     ": no event and no timer that the service still remembers.");
    }
    for (auto const &trace : traces) {
        show(context, trace.as_object());
    }
}

void trace(Context &context) {
    json::object choice = choiceIn(context);
    if (context.arguments.has("--count")) {
        choice["limit"] = context.arguments.number("--count");
    }
    bool const follows = context.arguments.flag("--follow");
    // None to begin with: the last one only tells which come after it.
    bool is_shown = !follows || !choice.contains("limit") || choice.at("limit") != json::value(0U);
    if (!is_shown) {
        choice["limit"] = 1;
    }
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
            for (auto const &entry : tracesIn(answer)) {
                if (is_shown) {
                    show(context, entry.as_object());
                }
                last = entry.as_object().at("id");
            }
            more = choice.contains("after") && !tracesIn(answer).empty() &&
                   answer.at("more") == json::value(true);
            choice["after"] = last;
            choice.erase("limit");
            is_shown = true;
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
    Parameter const trigger{"--trigger", "only what this trigger was asked about: its identifier or name",
                            false,       Takes::one,
                            "ID",        Completion::trigger};
    Parameter const action{"--action", "only what this action was asked about: its identifier or name",
                           false,      Takes::one,
                           "ID",       Completion::action};
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
