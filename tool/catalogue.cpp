// SPDX-License-Identifier: Apache-2.0
#include "tool/catalogue.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/value.hpp>

#include "korvo_api_action_engine.h"
#include "tool/failure.h"
#include "tool/output.h"
#include "tool/progress.h"
#include "tool/secrets.h"

namespace tool {
namespace {

namespace json = boost::json;

struct Kind {
    unsigned int type;
    char const *name;
};

constexpr Kind action_kinds[] = {
    {kSendEmailAction, "email_action"},       {kFtpUploadAction, "ftp_action"},
    {kSaveSnapshotAction, "snapshot_action"}, {kPtzPatternAction, "ptz_pattern_action"},
    {kPtzPresetAction, "ptz_preset_action"},  {kPtzTourAction, "ptz_tour_action"},
    {kPtzScanAction, "ptz_scan_action"},      {kWiperAction, "wiper_action"},
    {kWasherAction, "washer_action"},         {kRelayAction, "relay_action"},
};

constexpr Kind trigger_kinds[] = {
    {kOnvifEventTrigger, "onvif_trigger"},
    {kReoccurringTimerTrigger, "timer_trigger"},
    {kStableOnvifEventTrigger, "stable_onvif_trigger"},
};

template <std::size_t count>
std::string kindOf(Kind const (&kinds)[count], unsigned int type) {
    auto const *const found =
        std::find_if(std::begin(kinds), std::end(kinds), [&](Kind const &kind) { return kind.type == type; });
    return found == std::end(kinds) ? "" : found->name;
}

std::vector<unsigned int> numbersIn(json::value const &list) {
    std::vector<unsigned int> numbers;
    for (auto const &entry : list.as_array()) {
        numbers.push_back(entry.to_number<unsigned int>());
    }
    return numbers;
}

/// Ascending identifiers with their types.
std::vector<Entry> entriesIn(json::object const &listing, char const *ids, char const *types,
                             std::string (*kind)(unsigned int)) {
    auto const identifiers = numbersIn(listing.at(ids));
    auto const type_numbers = numbersIn(listing.at(types));
    std::vector<Entry> entries;
    for (std::size_t place = 0; place < std::min(identifiers.size(), type_numbers.size()); ++place) {
        Entry entry;
        entry.id = identifiers[place];
        entry.kind = kind(type_numbers[place]);
        entries.push_back(std::move(entry));
    }
    std::sort(entries.begin(), entries.end(),
              [](Entry const &left, Entry const &right) { return left.id < right.id; });
    return entries;
}

Entry const *find(std::vector<Entry> const &entries, unsigned int id) {
    auto const found =
        std::lower_bound(entries.begin(), entries.end(), id,
                         [](Entry const &entry, unsigned int wanted) { return entry.id < wanted; });
    return found != entries.end() && found->id == id ? &*found : nullptr;
}

/// Which result belongs where.
struct Part {
    enum class What { settings, filters, associations } what;
    bool of_action;
    std::size_t place;
};

}  // namespace

std::string actionKind(unsigned int type) {
    return kindOf(action_kinds, type);
}

std::string triggerKind(unsigned int type) {
    return kindOf(trigger_kinds, type);
}

std::string Entry::name() const {
    auto const *const found = settings.if_contains(isAction() ? "action_name" : "trigger_name");
    return found != nullptr && found->is_string() ? std::string(found->get_string()) : "";
}

Entry const *Catalogue::action(unsigned int id) const {
    return find(actions, id);
}

Entry const *Catalogue::trigger(unsigned int id) const {
    return find(triggers, id);
}

std::vector<Entry const *> Catalogue::actionsOf(unsigned int trigger_id) const {
    std::vector<Entry const *> found;
    for (auto const &[trigger, bound] : associations) {
        if (trigger == trigger_id && action(bound) != nullptr) {
            found.push_back(action(bound));
        }
    }
    return found;
}

std::vector<Entry const *> Catalogue::triggersOf(unsigned int action_id) const {
    std::vector<Entry const *> found;
    for (auto const &[bound, action] : associations) {
        if (action == action_id && trigger(bound) != nullptr) {
            found.push_back(trigger(bound));
        }
    }
    return found;
}

Catalogue readCatalogue(Client &client) {
    Catalogue read;
    read.actions = entriesIn(client.call(operation("get_actions")), "action_id", "action_type", actionKind);
    read.triggers =
        entriesIn(client.call(operation("get_triggers")), "trigger_id", "trigger_type", triggerKind);

    std::vector<Client::Call> calls;
    std::vector<Part> parts;
    Operation const &get_filters = operation("get_action_filters");
    auto const ask = [&](Operation const &called, bool of_action, Part::What what, std::size_t place,
                         unsigned int id) {
        calls.push_back({&called, {{of_action ? "action_id" : "trigger_id", id}}});
        parts.push_back({what, of_action, place});
    };
    for (bool const of_actions : {true, false}) {
        auto const &entries = of_actions ? read.actions : read.triggers;
        for (std::size_t place = 0; place < entries.size(); ++place) {
            if (!entries[place].kind.empty()) {
                ask(operation("get_" + entries[place].kind), of_actions, Part::What::settings, place,
                    entries[place].id);
            }
            if (of_actions) {
                ask(get_filters, true, Part::What::filters, place, entries[place].id);
            }
        }
    }
    // Either side tells all associations; the smaller one is asked.
    bool const from_actions = read.actions.size() < read.triggers.size();
    Operation const &get_associations =
        operation(from_actions ? "get_action_associations" : "get_trigger_associations");
    auto const &fewer = from_actions ? read.actions : read.triggers;
    for (std::size_t place = 0; place < fewer.size(); ++place) {
        ask(get_associations, from_actions, Part::What::associations, place, fewer[place].id);
    }

    Progress progress("reading the catalogue", calls.size());
    client.callAll(calls, [&](std::size_t number, std::optional<json::object> results) {
        progress.step();
        Part const &part = parts[number];
        Entry &entry = (part.of_action ? read.actions : read.triggers)[part.place];
        if (!results) {
            entry.id = 0;
        } else if (part.what == Part::What::settings) {
            entry.settings = std::move(*results);
        } else if (part.what == Part::What::filters) {
            entry.filters = std::move(*results);
        } else {
            for (unsigned int const other :
                 numbersIn(results->at(from_actions ? "trigger_id" : "action_id"))) {
                read.associations.emplace_back(from_actions ? other : entry.id,
                                               from_actions ? entry.id : other);
            }
        }
    });
    for (auto *entries : {&read.actions, &read.triggers}) {
        entries->erase(std::remove_if(entries->begin(), entries->end(),
                                      [](Entry const &entry) { return entry.id == 0; }),
                       entries->end());
    }
    auto &associations = read.associations;
    associations.erase(std::remove_if(associations.begin(), associations.end(),
                                      [&](auto const &ids) {
                                          return read.trigger(ids.first) == nullptr ||
                                                 read.action(ids.second) == nullptr;
                                      }),
                       associations.end());
    std::sort(associations.begin(), associations.end());
    return read;
}

json::object documentOf(Entry const &entry) {
    json::object document = {{"id", entry.id}, {"kind", entry.kind}, {"settings", entry.settings}};
    if (entry.isAction()) {
        document["filters"] = entry.filters;
    }
    return document;
}

json::object documentOf(Catalogue const &catalogue) {
    json::array actions;
    json::array triggers;
    json::array associations;
    for (Entry const &entry : catalogue.actions) {
        actions.push_back(documentOf(entry));
    }
    for (Entry const &entry : catalogue.triggers) {
        triggers.push_back(documentOf(entry));
    }
    for (auto const &[trigger, action] : catalogue.associations) {
        associations.push_back(json::object({{"trigger_id", trigger}, {"action_id", action}}));
    }
    return {{"format", "korvo-action-engine-catalogue"},
            {"version", 1},
            {"actions", std::move(actions)},
            {"triggers", std::move(triggers)},
            {"associations", std::move(associations)}};
}

std::string titleOf(Entry const &entry) {
    return (entry.isAction() ? "action " : "trigger ") + std::to_string(entry.id) + " (" +
           printable(entry.name()) + ")";
}

namespace {

bool isTelling(json::value const &value) {
    return !(value == json::value(false)) && !(value == json::value("")) &&
           !(value.is_array() && value.get_array().empty());
}

}  // namespace

std::string settingsInWords(Settings const &settings, Entry const &entry) {
    json::object shown = entry.settings;
    hideSecrets(settings, shown);
    std::string text;
    for (auto const &member : shown) {
        if (member.key() != "action_name" && member.key() != "trigger_name" && isTelling(member.value())) {
            text +=
                (text.empty() ? "" : " ") + std::string(member.key()) + "=" + cut(inWords(member.value()));
        }
    }
    return text;
}

std::string kindInWords(Entry const &entry) {
    if (entry.kind.empty()) {
        return "(unknown)";
    }
    return entry.kind.substr(0, entry.kind.rfind('_'));
}

namespace {

/// "7" for "action:7".
std::string withoutPrefix(std::string const &what, std::string const &word) {
    std::string const prefix = what + ":";
    return word.compare(0, prefix.size(), prefix) == 0 ? word.substr(prefix.size()) : word;
}

bool isNumber(std::string const &word) {
    return !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
}

unsigned int findIn(std::vector<Entry> const &entries, std::string const &what, std::string const &parameter,
                    std::string const &word) {
    std::string const plain = withoutPrefix(what, word);
    if (isNumber(plain)) {
        unsigned int const id = numberOf(parameter, plain);
        if (find(entries, id) != nullptr) {
            return id;
        }
    }
    std::vector<unsigned int> named;
    for (Entry const &entry : entries) {
        if (entry.name() == word) {
            named.push_back(entry.id);
        }
    }
    if (named.size() == 1) {
        return named.front();
    }
    if (named.empty()) {
        throw Failure(Exit::no_such_identifier, parameter + ": there is no " + what + " \"" + word + "\"",
                      "\"korvo-action-engine list\" shows which there are");
    }
    throw Failure(
        Exit::usage,
        parameter + ": " + std::to_string(named.size()) + " " + what + "s are called \"" + word + "\"",
        "give the identifier, such as " + std::to_string(named.front()));
}

}  // namespace

unsigned int findAction(Catalogue const &catalogue, std::string const &parameter, std::string const &word) {
    return findIn(catalogue.actions, "action", parameter, word);
}

unsigned int findTrigger(Catalogue const &catalogue, std::string const &parameter, std::string const &word) {
    return findIn(catalogue.triggers, "trigger", parameter, word);
}

unsigned int actionGiven(Context &context, std::string const &option) {
    std::string const &word = context.arguments.text(option);
    return isNumber(withoutPrefix("action", word))
               ? numberOf(option, withoutPrefix("action", word))
               : findAction(readCatalogue(context.client()), option, word);
}

unsigned int triggerGiven(Context &context, std::string const &option) {
    std::string const &word = context.arguments.text(option);
    return isNumber(withoutPrefix("trigger", word))
               ? numberOf(option, withoutPrefix("trigger", word))
               : findTrigger(readCatalogue(context.client()), option, word);
}

}  // namespace tool
