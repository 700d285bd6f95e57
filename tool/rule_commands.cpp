// SPDX-License-Identifier: Apache-2.0
// A trigger with what it runs, in one go: rule add, rule remove.

#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <set>
#include <utility>

#include "tool/catalogue.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/namespaces.h"
#include "tool/output.h"
#include "tool/rule.h"
#include "tool/weekly.h"

namespace tool {
namespace {

namespace json = boost::json;

/// The trigger that the options describe; the kind is empty for one that exists already.
Described triggerIn(Arguments const &arguments) {
    int given = 0;
    for (char const *option : {"--trigger", "--timer", "--topic"}) {
        given += arguments.has(option) ? 1 : 0;
    }
    if (given != 1) {
        throw Failure(Exit::usage, given == 0 ? "the rule has no trigger" : "the rule has several triggers",
                      "give one of --trigger ID, --timer SECONDS and --topic FILTER");
    }
    if (arguments.has("--trigger")) {
        return {};
    }
    std::string const name = arguments.has("--name") ? arguments.text("--name") : "rule";
    if (arguments.has("--timer")) {
        return {"timer_trigger", {{"trigger_name", name}, {"timer_seconds", arguments.number("--timer")}}};
    }
    Namespaces const namespaces = namespacesIn("--namespace", arguments.texts("--namespace"));
    json::object settings = {{"trigger_name", name},
                             {"topic_filter", arguments.text("--topic")},
                             {"content_filter", arguments.text("--content")},
                             {"namespace_keys", namespaces.keys},
                             {"namespace_uris", namespaces.uris}};
    if (arguments.has("--stable")) {
        settings["stability_seconds"] = arguments.number("--stable");
        return {"stable_onvif_trigger", settings};
    }
    settings["topic_filter_dialect"] = "";
    return {"onvif_trigger", settings};
}

void add(Context &context) {
    Arguments const &arguments = context.arguments;
    Described const trigger = triggerIn(arguments);
    std::vector<Window> windows;
    for (std::string const &words : arguments.texts("--filter")) {
        windows.push_back(windowOf("--filter", words));
    }
    // All that can be wrong on the command line is found before anything is done.
    std::vector<Described> actions;
    for (std::string const &words : arguments.texts("--action")) {
        bool const is_new = words.find('=') != std::string::npos;
        actions.push_back(is_new ? actionOf("--action", words) : Described{});
    }
    Client &client = context.client();
    Catalogue const catalogue = readCatalogue(client);
    std::vector<unsigned int> existing;
    for (std::size_t place = 0; place < actions.size(); ++place) {
        existing.push_back(actions[place].kind.empty()
                               ? findAction(catalogue, "--action", arguments.texts("--action")[place])
                               : 0);
    }
    unsigned int trigger_id =
        trigger.kind.empty() ? findTrigger(catalogue, "--trigger", arguments.text("--trigger")) : 0;

    std::set<std::pair<unsigned int, unsigned int>> bound(catalogue.associations.begin(),
                                                          catalogue.associations.end());
    RuleSteps steps(client);
    json::array action_ids;
    steps.run([&] {
        if (!trigger.kind.empty()) {
            trigger_id = steps.create(trigger.kind, trigger.settings);
        }
        for (std::size_t place = 0; place < actions.size(); ++place) {
            unsigned int id = existing[place];
            if (!actions[place].kind.empty()) {
                id = steps.create(actions[place].kind, actions[place].settings);
            }
            if (!windows.empty()) {
                Entry const *const before = catalogue.action(id);
                steps.setFilters(id, filtersOf(windows), before == nullptr ? filtersOf({}) : before->filters);
            }
            // What is bound already is no step, and stays when the steps are undone.
            if (bound.insert({trigger_id, id}).second) {
                steps.bind(trigger_id, id);
            }
            action_ids.emplace_back(id);
        }
    });
    json::object const made = {{"trigger_id", trigger_id}, {"action_id", action_ids}};
    if (context.settings.json) {
        output::json(made);
    } else {
        output::pairs({{"trigger", std::to_string(trigger_id)}, {"actions", inWords(made.at("action_id"))}});
    }
}

void remove(Context &context) {
    Client &client = context.client();
    Catalogue const catalogue = readCatalogue(client);
    Entry const &trigger =
        *catalogue.trigger(findTrigger(catalogue, "TRIGGER", context.arguments.text("TRIGGER")));
    RuleSteps steps(client);
    json::array removed;
    steps.run([&] {
        for (Entry const *action : catalogue.actionsOf(trigger.id)) {
            if (context.arguments.flag("--keep-actions") || catalogue.triggersOf(action->id).size() > 1) {
                continue;
            }
            steps.remove(catalogue, *action);
            removed.emplace_back(action->id);
        }
        steps.remove(catalogue, trigger);
    });
    json::object const gone = {{"trigger_id", trigger.id}, {"action_id", removed}};
    if (context.settings.json) {
        output::json(gone);
    } else {
        output::pairs({{"removed trigger", std::to_string(trigger.id)},
                       {"removed actions", removed.empty() ? "none" : inWords(gone.at("action_id"))}});
    }
}

}  // namespace

void addRuleCommands(std::vector<Command> &commands) {
    using Takes = Parameter::Takes;
    commands.push_back(
        {"rule add",
         "Rules",
         "make a trigger, actions, filters and bindings in one go; all of it is undone when a step fails",
         "--action is an identifier or a name, or describes a new action: \"snapshot action_name=door "
         "filename=door.jpg\". The filters become those of all these actions.",
         {{"--trigger", "a trigger that there is: its identifier or name", false, Takes::one, "ID",
           Completion::trigger},
          {"--timer", "a new trigger that fires every so many seconds", false, Takes::one, "SECONDS"},
          {"--topic", "a new trigger on events with this topic filter, such as tns1:Device/Trigger//.", false,
           Takes::one, "FILTER"},
          {"--content", "what the event's message is to hold", false, Takes::one, "FILTER"},
          {"--stable", "only once the event's state has lasted so long", false, Takes::one, "SECONDS"},
          {"--namespace", "PREFIX=URI for a prefix in the filters; tns1 and tt are known. Once for each.",
           false, Takes::many, "PREFIX=URI"},
          {"--name", "the new trigger's name (default: rule)"},
          {"--action", "what to run. Once for each.", true, Takes::many, "ACTION", Completion::action},
          {"--filter", "when the actions may run: \"Mon-Fri 08:00-18:00\". Once for each.", false,
           Takes::many, "WINDOW"}},
         add});
    commands.push_back(
        {"rule remove",
         "Rules",
         "remove a trigger, and the actions that nothing else runs",
         "When a step fails what was removed is made again, with new identifiers.",
         {{"TRIGGER", "an identifier, trigger:7, or a name", true, Takes::one, "ID", Completion::trigger},
          {"--keep-actions", "remove the trigger only", false, Takes::flag}},
         remove});
}

}  // namespace tool
