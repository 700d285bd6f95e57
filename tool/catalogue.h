// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_CATALOGUE_H
#define KORVO_TOOL_CATALOGUE_H

// Actions, triggers and what binds them, read from the service.

#include <boost/json/object.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tool/command.h"

namespace tool {

struct Entry {
    unsigned int id = 0;
    /// "relay_action": the create operation without its verb; empty for a type that this program does not know.
    std::string kind;
    boost::json::object settings;
    /// Of actions: the three lists of get_action_filters.
    boost::json::object filters;

    bool isAction() const { return !filters.empty(); }
    std::string name() const;
};

struct Catalogue {
    std::vector<Entry> actions;
    std::vector<Entry> triggers;
    /// Trigger and action.
    std::vector<std::pair<unsigned int, unsigned int>> associations;

    Entry const *action(unsigned int id) const;
    Entry const *trigger(unsigned int id) const;
    std::vector<Entry const *> actionsOf(unsigned int trigger_id) const;
    std::vector<Entry const *> triggersOf(unsigned int action_id) const;
};

/// By calls that go out side by side. What is deleted meanwhile is left out, and its bindings are.
Catalogue readCatalogue(Client &client);

/// As docs/catalogue-format.md describes it.
boost::json::object documentOf(Catalogue const &catalogue);
boost::json::object documentOf(Entry const &entry);

/// The kind of an action's or trigger's type; empty for one that this program does not know.
std::string actionKind(unsigned int type);
std::string triggerKind(unsigned int type);

/// "action 7 (Gate)".
std::string titleOf(Entry const &entry);

/// "timer", "(unknown)".
std::string kindInWords(Entry const &entry);
/// All settings but the name, and but what is empty; long ones are cut.
std::string settingsInWords(Settings const &settings, Entry const &entry);

/// The action or trigger that a word names: "7", "action:7", or its name. Throws a Failure where there is none, or several.
unsigned int findAction(Catalogue const &catalogue, std::string const &parameter, std::string const &word);
unsigned int findTrigger(Catalogue const &catalogue, std::string const &parameter, std::string const &word);
/// The same for a word that was given to an option; the service is only asked where it is a name, so that a number may be
/// that of something which is gone.
unsigned int actionGiven(Context &context, std::string const &option);
unsigned int triggerGiven(Context &context, std::string const &option);

}  // namespace tool

#endif
