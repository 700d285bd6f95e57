// SPDX-License-Identifier: Apache-2.0
// What happens: watch, wait-service, wait-event, inject.

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <ctime>
#include <iostream>

#include "korvo_api_action_engine.h"
#include "tool/catalogue.h"
#include "tool/command.h"
#include "tool/events.h"
#include "tool/failure.h"
#include "tool/interruption.h"
#include "tool/markup.h"
#include "tool/namespaces.h"
#include "tool/output.h"

namespace tool {
namespace {

namespace json = boost::json;
using Clock = Waiter::Clock;

std::optional<Clock::time_point> limitOf(Settings const &settings) {
    if (!settings.timeout || !settings.timeout_given) {
        return {};
    }
    return Clock::now() + *settings.timeout;
}

void completed(unsigned int action_id, char const *action_name, unsigned char success, char const *source,
               void *context) {
    static_cast<Waiter *>(context)->add(json::serialize(json::object({{"event", "Action_completed"},
                                                                      {"action_id", action_id},
                                                                      {"action_name", action_name},
                                                                      {"success", success != 0},
                                                                      {"source", source}})));
}

/// The events of a client, for as long as both are there.
class Subscription {
  public:
    explicit Subscription(Client &client, Waiter &waiter) : client_(&client), waiter_(&waiter) {
        korvo_api_action_engine_action_completed_register_event_handler(client.handle(), completed, waiter_);
    }
    ~Subscription() {
        korvo_api_action_engine_action_completed_unregister_event_handler_with_context(client_->handle(),
                                                                                       completed, waiter_);
    }
    Subscription(Subscription const &) = delete;
    Subscription &operator=(Subscription const &) = delete;

  private:
    Client *client_;
    Waiter *waiter_;
};

std::string timeOfDay() {
    std::time_t const now = std::time(nullptr);
    struct tm parts = {};
    (void)::localtime_r(&now, &parts);
    char text[16];
    return std::strftime(text, sizeof text, "%H:%M:%S", &parts) == 0 ? "" : text;
}

bool isWanted(json::object const &event, Settings const &settings, std::optional<unsigned int> action) {
    if (!settings.target.empty() && event.at("source") != json::value(settings.target)) {
        return false;
    }
    return !action || event.at("action_id") == json::value(*action);
}

void show(Settings const &settings, json::object const &event) {
    if (settings.json) {
        output::json(event);
        return;
    }
    output::line(timeOfDay() + "  action " + inWords(event.at("action_id")) + " (" +
                 inWords(event.at("action_name")) + ") " +
                 (event.at("success").as_bool() ? "succeeded" : "failed"));
}

/// Until so many were seen; 0 is no end. Gives how many were.
unsigned int follow(Context &context, unsigned int count) {
    std::optional<unsigned int> action;
    if (context.arguments.has("--action")) {
        action = actionGiven(context, "--action");
    }
    auto const limit = limitOf(context.settings);
    Waiter waiter;
    Client client(context.settings, /*subscribe_events*/ true);
    client.requireVersion();
    Subscription const subscription(client, waiter);
    unsigned int seen = 0;
    while (count == 0 || seen < count) {
        auto const text = waiter.next(limit);
        if (!text) {
            break;
        }
        json::object const event = json::parse(*text).as_object();
        if (isWanted(event, context.settings, action)) {
            show(context.settings, event);
            ++seen;
        }
    }
    return seen;
}

void watch(Context &context) {
    (void)follow(context, 0);
}

void waitEvent(Context &context) {
    unsigned int const count = context.arguments.has("--count") ? context.arguments.number("--count") : 1;
    if (count == 0) {
        throw Failure(Exit::usage, "--count is at least 1", "leave it out to wait for one event");
    }
    unsigned int const seen = follow(context, count);
    interruption::check();
    if (seen < count) {
        throw Failure(
            Exit::time_out,
            std::to_string(seen) + " of " + std::to_string(count) + " events came within " +
                std::to_string(context.settings.timeout->count()) + " ms",
            "wait longer with --timeout; \"korvo-action-engine why --last\" tells what became of triggers");
    }
}

void waitService(Context &context) {
    auto const limit = limitOf(context.settings);
    Waiter nothing;
    for (;;) {
        try {
            (void)context.client().serviceVersion();
            return;
        } catch (Failure const &failure) {
            // A service that is just ending may lose the query.
            if (failure.code() != Exit::no_service && failure.status() != KORVO_CORE_STATUS_IPC_FAILED) {
                throw;
            }
        }
        interruption::check();
        if (limit && Clock::now() >= *limit) {
            throw Failure(Exit::time_out,
                          "the service did not come within " +
                              std::to_string(context.settings.timeout->count()) + " ms",
                          "start it, or wait longer with --timeout");
        }
        (void)nothing.next(Clock::now() + std::chrono::milliseconds(50));
    }
}

std::string utcNow() {
    std::time_t const now = std::time(nullptr);
    struct tm parts = {};
    (void)::gmtime_r(&now, &parts);
    char text[32];
    return std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts) == 0 ? "" : text;
}

/// The message of an event with items like "data:IsMotion=true".
std::string messageOf(Arguments const &arguments) {
    struct Section {
        char const *prefix;
        char const *element;
        std::string items;
    };
    Section sections[] = {{"source:", "tt:Source", ""}, {"key:", "tt:Key", ""}, {"data:", "tt:Data", ""}};
    for (std::string const &word : arguments.texts("ITEM")) {
        Section *section = &sections[2];
        std::string item = word;
        for (Section &candidate : sections) {
            std::string const prefix = candidate.prefix;
            if (word.compare(0, prefix.size(), prefix) == 0) {
                section = &candidate;
                item = word.substr(prefix.size());
            }
        }
        auto const end = item.find('=');
        if (end == std::string::npos || end == 0) {
            throw Failure(Exit::usage, "ITEM is a name with a value, and not \"" + word + "\"",
                          "write Name=Value, source:Name=Value or key:Name=Value");
        }
        section->items += "<tt:SimpleItem Name=\"" + escaped(item.substr(0, end)) + "\" Value=\"" +
                          escaped(item.substr(end + 1)) + "\"/>";
    }
    std::string message = std::string("<tt:Message xmlns:tt=\"") + schema_uri + "\" UtcTime=\"" +
                          escaped(arguments.has("--time") ? arguments.text("--time") : utcNow()) + "\"";
    if (arguments.has("--operation")) {
        std::string const property = arguments.text("--operation");
        if (property != "Initialized" && property != "Changed" && property != "Deleted") {
            throw Failure(Exit::usage, "--operation is not \"" + property + "\"",
                          "it is Initialized, Changed or Deleted");
        }
        message += " PropertyOperation=\"" + property + "\"";
    }
    message += ">";
    for (Section const &section : sections) {
        if (!section.items.empty()) {
            message +=
                std::string("<") + section.element + ">" + section.items + "</" + section.element + ">";
        }
    }
    return message + "</tt:Message>";
}

void inject(Context &context) {
    Namespaces const namespaces = namespacesIn("--namespace", context.arguments.texts("--namespace"));
    json::object const event = {{"topic", context.arguments.text("TOPIC")},
                                {"message", messageOf(context.arguments)},
                                {"namespace_keys", namespaces.keys},
                                {"namespace_uris", namespaces.uris}};
    if (context.arguments.flag("--dry-run")) {
        if (context.settings.json) {
            output::json(event);
        } else {
            output::line(std::string(event.at("message").as_string()));
        }
        return;
    }
    (void)context.client().call(operation("onvif_event"), event);
}

}  // namespace

void addEventCommands(std::vector<Command> &commands) {
    using Takes = Parameter::Takes;
    Parameter const action{"--action", "only events of this action: its identifier or name",
                           false,      Takes::one,
                           "ID",       Completion::action};
    commands.push_back({"watch",
                        "What happens",
                        "show each action that completes, until it is interrupted",
                        "--timeout ends it after this time; without it there is no end.",
                        {action},
                        watch});
    commands.push_back({"wait-event",
                        "What happens",
                        "wait until actions have completed",
                        "Waits as long as --timeout says; without it there is no end.",
                        {action, {"--count", "for so many events (default: 1)", false, Takes::one, "NUMBER"}},
                        waitEvent});
    commands.push_back({"wait-service",
                        "What happens",
                        "wait until the service is there",
                        "Waits as long as --timeout says; without it there is no end.",
                        {},
                        waitService});
    commands.push_back(
        {"inject",
         "What happens",
         "hand the service an ONVIF event, as if it had happened",
         "An item is Name=Value of the message's data, or of its source or key with source: or key: before "
         "it.",
         {{"TOPIC", "such as tns1:Device/Trigger/DigitalInput", true, Takes::one, "TOPIC"},
          {"ITEM", "[source:|key:|data:]Name=Value", false, Takes::many, "ITEM"},
          {"--operation",
           "what happened to a property",
           false,
           Takes::one,
           "Initialized|Changed|Deleted",
           Completion::word,
           {"Initialized", "Changed", "Deleted"}},
          {"--time", "when, in UTC like 2026-11-23T07:59:00Z (default: now)", false, Takes::one, "TIME"},
          {"--namespace", "PREFIX=URI for a prefix of the topic; tns1 and tt are known. Once for each.",
           false, Takes::many, "PREFIX=URI"},
          {"--dry-run", "show the message and do nothing", false, Takes::flag}},
         inject});
}

}  // namespace tool
