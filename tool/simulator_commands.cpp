// SPDX-License-Identifier: Apache-2.0
// The control of a service for development machines: sim clock, sim fault, sim device, sim capture, sim replay.

#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tool/command.h"
#include "tool/control.h"
#include "tool/failure.h"
#include "tool/output.h"

namespace tool {
namespace {

namespace json = boost::json;

/// An object as names and values.
void show(Context &context, json::object const &answer) {
    if (context.settings.json) {
        output::json(answer);
        return;
    }
    std::vector<std::pair<std::string, std::string>> rows;
    for (auto const &member : answer) {
        if (!member.value().is_array()) {
            rows.emplace_back(member.key(), inWords(member.value()));
            continue;
        }
        for (auto const &entry : member.value().get_array()) {
            rows.emplace_back(member.key(), inWords(entry));
        }
        if (member.value().get_array().empty()) {
            rows.emplace_back(member.key(), "none");
        }
    }
    output::pairs(rows);
}

void clock(Context &context) {
    Arguments const &arguments = context.arguments;
    int const moves = (arguments.has("--time") || arguments.has("--rate") ? 1 : 0) +
                      (arguments.has("--advance") ? 1 : 0) + (arguments.has("--until") ? 1 : 0);
    if (moves > 1) {
        throw Failure(Exit::usage, "the clock can be moved in one way at a time",
                      "give --time and --rate, or --advance, or --until");
    }
    json::object members;
    std::string command = "Get_clock";
    if (arguments.has("--advance")) {
        command = "Advance_clock";
        members["seconds"] = arguments.number("--advance");
    } else if (arguments.has("--until")) {
        command = "Run_clock_until";
        members["time"] = arguments.text("--until");
    } else if (moves == 1) {
        command = "Set_clock";
        if (arguments.has("--time")) {
            members["time"] = arguments.text("--time");
        }
        if (arguments.has("--rate")) {
            members["rate"] = arguments.number("--rate");
        }
    }
    show(context, Control(context.settings).ask(command, members));
}

void fault(Context &context) {
    Arguments const &arguments = context.arguments;
    Control control(context.settings);
    if (arguments.has("--clear")) {
        show(context, control.ask("Clear_faults", {{"fault_id", arguments.number("--clear")}}));
        return;
    }
    if (arguments.flag("--clear-all")) {
        show(context, control.ask("Clear_faults"));
        return;
    }
    if (!arguments.has("METHOD")) {
        show(context, control.ask("Get_faults"));
        return;
    }
    json::object members = {{"method", arguments.text("METHOD")}};
    for (char const *name : {"fail", "delay-ms", "count"}) {
        std::string const option = std::string("--") + name;
        if (arguments.has(option)) {
            members[std::string(name) == "delay-ms" ? "delay_ms" : name] = arguments.number(option);
        }
    }
    for (char const *name : {"drop", "garble", "duplicate", "close"}) {
        if (arguments.flag(std::string("--") + name)) {
            members[name] = true;
        }
    }
    if (arguments.has("--missing")) {
        members["missing"] = arguments.text("--missing");
    }
    show(context, control.ask("Add_fault", members));
}

void device(Context &context) {
    show(context, Control(context.settings).ask("Get_devices").at("devices").as_object());
}

/// The service has a folder of its own to start from.
json::object fileIn(Arguments const &arguments) {
    return {{"file", std::filesystem::absolute(arguments.text("FILE")).string()}};
}

/// The word says which; a file is for the first only.
bool starts(Arguments const &arguments) {
    std::string const what = arguments.text("WHAT");
    if (what != "start" && what != "stop") {
        throw Failure(Exit::usage, "there is nothing to " + what, "give start FILE, or stop");
    }
    if (arguments.has("FILE") != (what == "start")) {
        throw Failure(Exit::usage, what == "start" ? "it needs a file" : "stop takes no file",
                      "give start FILE, or stop");
    }
    return what == "start";
}

void capture(Context &context) {
    Arguments const &arguments = context.arguments;
    bool const start = starts(arguments);
    if (!start && arguments.flag("--show-secrets")) {
        throw Failure(Exit::usage, "--show-secrets is for start", "leave it out");
    }
    Control control(context.settings);
    if (!start) {
        show(context, control.ask("Stop_capture"));
        return;
    }
    json::object members = fileIn(arguments);
    members["secrets"] = arguments.flag("--show-secrets");
    show(context, control.ask("Start_capture", members));
}

void replay(Context &context) {
    Arguments const &arguments = context.arguments;
    bool const start = starts(arguments);
    Control control(context.settings);
    show(context, start ? control.ask("Start_replay", fileIn(arguments)) : control.ask("Stop_replay"));
}

}  // namespace

void addSimulatorCommands(std::vector<Command> &commands) {
    using Takes = Parameter::Takes;
    constexpr char const *group = "Control of korvo-action-engine-simulator";
    commands.push_back(
        {"sim clock",
         group,
         "show the service's clock, set it or let it run",
         "Moving it needs a service that was started with --clock virtual.",
         {{"--time", "set it to this time, such as 2026-11-23T07:59:00", false, Takes::one, "TIME"},
          {"--rate", "let it run so many times as fast; 0 lets it stand", false, Takes::one, "NUMBER"},
          {"--advance", "let so many seconds pass, with all that is due in them", false, Takes::one,
           "SECONDS"},
          {"--until", "the same until this time", false, Takes::one, "TIME"}},
         clock});
    commands.push_back(
        {"sim fault",
         group,
         "make commands go wrong; without a method, show which faults there are",
         "",
         {{"METHOD", "as on the wire, like Get_action_type", false, Takes::one, "METHOD",
           Completion::operation},
          {"--fail", "answer with this status, and do nothing", false, Takes::one, "STATUS"},
          {"--delay-ms", "answer so much later", false, Takes::one, "NUMBER"},
          {"--drop", "neither do it nor answer", false, Takes::flag},
          {"--garble", "answer with half an answer", false, Takes::flag},
          {"--duplicate", "answer twice", false, Takes::flag},
          {"--close", "do it, and close all connections in place of an answer", false, Takes::flag},
          {"--missing", "leave this member out of the answer", false, Takes::one, "NAME"},
          {"--count", "only the next so many commands", false, Takes::one, "NUMBER"},
          {"--clear", "remove a fault by its identifier", false, Takes::one, "ID"},
          {"--clear-all", "remove all of them", false, Takes::flag}},
         fault});
    commands.push_back(
        {"sim device", group, "show relays, wiper, washer, head and pictures", "", {}, device});
    commands.push_back(
        {"sim capture",
         group,
         "write every message of the service into a new file, or end that",
         "The file is for a report of a fault. Passwords are null in it.",
         {{"WHAT", "start or stop", true, Takes::one, "start|stop", Completion::word, {"start", "stop"}},
          {"FILE", "for start; it must not exist", false, Takes::one, "FILE", Completion::file},
          {"--show-secrets", "leave passwords in it", false, Takes::flag}},
         capture});
    commands.push_back(
        {"sim replay",
         group,
         "let the service answer from a capture, or end that",
         "Its catalogue is not asked meanwhile.",
         {{"WHAT", "start or stop", true, Takes::one, "start|stop", Completion::word, {"start", "stop"}},
          {"FILE", "for start", false, Takes::one, "FILE", Completion::file}},
         replay});
}

}  // namespace tool
