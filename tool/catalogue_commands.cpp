// SPDX-License-Identifier: Apache-2.0
// What there is: list, show, filters preview.

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <map>

#include "tool/catalogue.h"
#include "tool/command.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/secrets.h"
#include "tool/weekly.h"

namespace tool {
namespace {

namespace json = boost::json;

std::string identifiers(std::vector<Entry const *> const &entries) {
    std::string text;
    for (Entry const *entry : entries) {
        text += (text.empty() ? "" : ",") + std::to_string(entry->id);
    }
    return text.empty() ? "-" : text;
}

void list(Context &context) {
    Catalogue const catalogue = readCatalogue(context.client());
    if (context.settings.json) {
        json::object document = documentOf(catalogue);
        hideSecrets(context.settings, document);
        output::json(document);
        return;
    }
    std::vector<std::vector<std::string>> actions;
    std::vector<std::vector<std::string>> triggers;
    // Looked up once, since each entry's own search would go through all associations.
    std::map<unsigned int, std::vector<Entry const *>> triggers_of;
    std::map<unsigned int, std::vector<Entry const *>> actions_of;
    for (auto const &[trigger, action] : catalogue.associations) {
        triggers_of[action].push_back(catalogue.trigger(trigger));
        actions_of[trigger].push_back(catalogue.action(action));
    }
    for (Entry const &entry : catalogue.actions) {
        actions.push_back({std::to_string(entry.id), kindInWords(entry), cut(printable(entry.name())),
                           identifiers(triggers_of[entry.id]), filtersInWords(entry.filters),
                           settingsInWords(context.settings, entry)});
    }
    for (Entry const &entry : catalogue.triggers) {
        triggers.push_back({std::to_string(entry.id), kindInWords(entry), cut(printable(entry.name())),
                            identifiers(actions_of[entry.id]), settingsInWords(context.settings, entry)});
    }
    output::table({"ACTION", "KIND", "NAME", "TRIGGERS", "RUNS", "SETTINGS"}, actions);
    output::line("");
    output::table({"TRIGGER", "KIND", "NAME", "ACTIONS", "SETTINGS"}, triggers);
}

void showEntry(Context &context, Catalogue const &catalogue, Entry const &entry) {
    json::object settings = entry.settings;
    hideSecrets(context.settings, settings);
    std::vector<std::pair<std::string, std::string>> rows = {{titleOf(entry), ""}, {"  kind", entry.kind}};
    for (auto const &member : settings) {
        rows.emplace_back("  " + std::string(member.key()), inWords(member.value()));
    }
    if (entry.isAction()) {
        rows.emplace_back("  runs", filtersInWords(entry.filters));
    }
    auto const bound = entry.isAction() ? catalogue.triggersOf(entry.id) : catalogue.actionsOf(entry.id);
    for (Entry const *other : bound) {
        rows.emplace_back("  bound to", titleOf(*other));
    }
    if (bound.empty()) {
        rows.emplace_back("  bound to", "nothing");
    }
    output::pairs(rows);
}

void show(Context &context) {
    std::string const word = context.arguments.text("ID");
    Catalogue const catalogue = readCatalogue(context.client());
    std::vector<Entry const *> found;
    for (auto const *entries : {&catalogue.actions, &catalogue.triggers}) {
        for (Entry const &entry : *entries) {
            std::string const id = std::to_string(entry.id);
            if (word == id || word == entry.name() ||
                word == (entry.isAction() ? "action:" : "trigger:") + id) {
                found.push_back(&entry);
            }
        }
    }
    if (found.empty()) {
        throw Failure(Exit::no_such_identifier, "ID: there is no action or trigger \"" + word + "\"",
                      "\"korvo-action-engine list\" shows which there are");
    }
    if (context.settings.json) {
        json::array all;
        for (Entry const *entry : found) {
            json::object document = documentOf(*entry);
            auto &others = document[entry->isAction() ? "trigger_id" : "action_id"].emplace_array();
            for (Entry const *other :
                 entry->isAction() ? catalogue.triggersOf(entry->id) : catalogue.actionsOf(entry->id)) {
                others.emplace_back(other->id);
            }
            hideSecrets(context.settings, document);
            all.push_back(std::move(document));
        }
        output::json(all);
        return;
    }
    for (Entry const *entry : found) {
        showEntry(context, catalogue, *entry);
    }
}

constexpr unsigned int half_hour = 1800;
constexpr unsigned int half_hours = 48;

/// One character for half an hour: whether an action may run all of it, none of it, or some.
char const *drawn(std::vector<Window> const &windows, unsigned int weekday, unsigned int begin) {
    unsigned int open = 0;
    for (unsigned int second = begin; second < begin + half_hour; ++second) {
        open += isOpen(windows, weekday, second) ? 1U : 0U;
    }
    return open == 0 ? "." : open == half_hour ? "#" : "+";
}

void preview(Context &context) {
    Catalogue const catalogue = readCatalogue(context.client());
    Entry const &entry = *catalogue.action(findAction(catalogue, "ACTION", context.arguments.text("ACTION")));
    auto windows = windowsIn(entry.filters);
    if (windows.empty()) {
        windows.push_back({127, 0, 0});
    }
    json::object as_json = {{"action_id", entry.id}, {"filters", filtersInWords(entry.filters)}};
    std::string text = titleOf(entry) + " runs " + filtersInWords(entry.filters) + "\n     ";
    for (unsigned int hour = 0; hour < 24; hour += 3) {
        text += (hour < 10 ? "0" : "") + std::to_string(hour) + "    ";
    }
    text.erase(text.find_last_not_of(' ') + 1);
    json::object week;
    for (unsigned int const weekday : {1U, 2U, 3U, 4U, 5U, 6U, 0U}) {
        std::string day;
        for (unsigned int place = 0; place < half_hours; ++place) {
            day += drawn(windows, weekday, place * half_hour);
        }
        text += "\n" + std::string(weekdayName(weekday)) + "  " + day;
        week[weekdayName(weekday)] = day;
    }
    as_json["week"] = std::move(week);
    if (context.settings.json) {
        output::json(as_json);
    } else {
        output::line(text + "\n     # runs, . does not, + some of the half hour");
    }
}

}  // namespace

void addCatalogueCommands(std::vector<Command> &commands) {
    using Takes = Parameter::Takes;
    commands.push_back(
        {"list",
         "What there is",
         "all actions and triggers with their settings, filters and bindings",
         "Settings that are empty or off are left out, and long ones are cut; show and --json have all.",
         {},
         list});
    commands.push_back({"show",
                        "What there is",
                        "one action or trigger with all its settings",
                        "",
                        {{"ID", "an identifier, action:7, trigger:7, or a name", true, Takes::one, "ID",
                          Completion::action}},
                        show});
    commands.push_back(
        {"filters preview",
         "What there is",
         "draw when an action may run, by weekday and half hour",
         "",
         {{"ACTION", "an identifier, action:7, or a name", true, Takes::one, "ID", Completion::action},
          {"--week", "the whole week, which is what is drawn anyway", false, Takes::flag}},
         preview});
}

}  // namespace tool
