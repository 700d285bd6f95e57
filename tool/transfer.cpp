// SPDX-License-Identifier: Apache-2.0
#include "tool/transfer.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <map>
#include <tuple>

#include "tool/failure.h"
#include "tool/marshalling.h"
#include "tool/secrets.h"

namespace tool {
namespace {

namespace json = boost::json;

[[noreturn]] void refuse(std::string const &parameter, std::string const &what) {
    throw Failure(Exit::usage, parameter + ": " + what,
                  "docs/catalogue-format.md tells what a catalogue looks like; export writes one");
}

json::value const &member(std::string const &parameter, json::object const &object, char const *name,
                          std::string const &where) {
    auto const *const found = object.if_contains(name);
    if (found == nullptr) {
        refuse(parameter, where + " lacks its member \"" + name + "\"");
    }
    return *found;
}

unsigned int numberIn(std::string const &parameter, json::object const &object, char const *name,
                      std::string const &where) {
    json::value const &value = member(parameter, object, name, where);
    json::error_code error;
    auto const number = value.to_number<unsigned int>(error);
    if (error) {
        refuse(parameter, where + ": \"" + name + "\" is no identifier");
    }
    return number;
}

json::array const &listIn(std::string const &parameter, json::object const &object, char const *name) {
    json::value const &list = member(parameter, object, name, "the document");
    if (!list.is_array()) {
        refuse(parameter, std::string("\"") + name + "\" is no list");
    }
    return list.get_array();
}

json::object const &objectIn(std::string const &parameter, json::value const &value,
                             std::string const &where) {
    if (!value.is_object()) {
        refuse(parameter, where + " is no object");
    }
    return value.get_object();
}

/// Checks the settings as a call would, but for passwords, which may be null.
void check(std::string const &parameter, std::string const &where, Operation const &operation,
           json::object inputs) {
    for (auto &input : inputs) {
        if (isSecret(std::string(input.key())) && input.value().is_null()) {
            input.value() = "";
        }
    }
    try {
        Inputs const converted(operation, inputs);
    } catch (Failure const &failure) {
        refuse(parameter, where + ": " + failure.what());
    }
}

Entry entryIn(std::string const &parameter, json::value const &value, std::string const &where,
              bool is_action) {
    json::object const &object = objectIn(parameter, value, where);
    Entry entry;
    entry.id = numberIn(parameter, object, "id", where);
    json::value const &kind = member(parameter, object, "kind", where);
    std::string const ending = is_action ? "_action" : "_trigger";
    std::string const name = kind.is_string() ? std::string(kind.get_string()) : "";
    bool const fits =
        name.size() > ending.size() && name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
    Operation const *const create = fits ? findOperation("create_" + name) : nullptr;
    if (create == nullptr) {
        refuse(parameter, where + ": there is no kind \"" + name + "\"");
    }
    entry.kind = name;
    entry.settings =
        objectIn(parameter, member(parameter, object, "settings", where), where + ": \"settings\"");
    check(parameter, where, *create, entry.settings);
    if (is_action) {
        entry.filters =
            objectIn(parameter, member(parameter, object, "filters", where), where + ": \"filters\"");
        json::object inputs = entry.filters;
        inputs["action_id"] = 0;
        check(parameter, where, operation("set_action_filters"), inputs);
    }
    return entry;
}

std::vector<Entry> entriesIn(std::string const &parameter, json::object const &document, bool is_action) {
    char const *const list = is_action ? "actions" : "triggers";
    std::vector<Entry> entries;
    for (auto const &value : listIn(parameter, document, list)) {
        entries.push_back(entryIn(parameter, value,
                                  std::string(list) + "[" + std::to_string(entries.size()) + "]", is_action));
    }
    std::sort(entries.begin(), entries.end(),
              [](Entry const &left, Entry const &right) { return left.id < right.id; });
    auto const twice =
        std::adjacent_find(entries.begin(), entries.end(),
                           [](Entry const &left, Entry const &right) { return left.id == right.id; });
    if (twice != entries.end()) {
        refuse(parameter, "the identifier " + std::to_string(twice->id) + " stands in " + list + " twice");
    }
    return entries;
}

/// Members in the order of the operation's inputs, whatever order they came in.
json::object inOrder(Rows<Member> const &members, json::object const &object) {
    json::object ordered;
    for (Member const &one : members) {
        if (auto const *const value = object.if_contains(one.name)) {
            ordered[one.name] = *value;
        }
    }
    return ordered;
}

/// The members of both in their order. An entry of a kind that this program does not know has no order of its own.
Entry inOrder(Entry entry) {
    if (!entry.kind.empty()) {
        entry.settings = inOrder(operation("create_" + entry.kind).inputs, entry.settings);
    }
    if (entry.isAction()) {
        entry.filters = inOrder(operation("set_action_filters").inputs, entry.filters);
    }
    return entry;
}

/// The places of the entries in canonical order.
std::vector<std::size_t> canonicalOrder(std::vector<Entry> const &entries) {
    std::vector<std::tuple<std::string, std::string, std::string, std::size_t>> order;
    for (Entry const &one : entries) {
        Entry entry = inOrder(one);
        // A document without passwords has the same order.
        hideSecrets({}, entry.settings);
        order.emplace_back(entry.name(), entry.kind,
                           json::serialize(entry.settings) + json::serialize(entry.filters), order.size());
    }
    std::sort(order.begin(), order.end());
    std::vector<std::size_t> places;
    for (auto const &one : order) {
        places.push_back(std::get<3>(one));
    }
    return places;
}

/// New identifiers by old ones.
std::map<unsigned int, unsigned int> sortAndNumber(std::vector<Entry> &entries) {
    std::map<unsigned int, unsigned int> numbers;
    std::vector<Entry> sorted;
    for (std::size_t const place : canonicalOrder(entries)) {
        Entry entry = inOrder(entries[place]);
        auto const number = static_cast<unsigned int>(sorted.size() + 1);
        numbers[entry.id] = number;
        entry.id = number;
        sorted.push_back(std::move(entry));
    }
    entries = std::move(sorted);
    return numbers;
}

}  // namespace

Catalogue catalogueIn(std::string const &parameter, std::string const &text) {
    json::error_code error;
    json::value const parsed = json::parse(text, error);
    if (error) {
        refuse(parameter, "this is no JSON: " + error.message());
    }
    json::object const &document = objectIn(parameter, parsed, "the document");
    if (member(parameter, document, "format", "the document") !=
            json::value("korvo-action-engine-catalogue") ||
        member(parameter, document, "version", "the document") != json::value(1)) {
        refuse(parameter, "this is no catalogue of version 1");
    }
    Catalogue catalogue;
    catalogue.actions = entriesIn(parameter, document, true);
    catalogue.triggers = entriesIn(parameter, document, false);
    for (auto const &value : listIn(parameter, document, "associations")) {
        std::string const where = "associations[" + std::to_string(catalogue.associations.size()) + "]";
        json::object const &object = objectIn(parameter, value, where);
        unsigned int const trigger = numberIn(parameter, object, "trigger_id", where);
        unsigned int const action = numberIn(parameter, object, "action_id", where);
        if (catalogue.trigger(trigger) == nullptr || catalogue.action(action) == nullptr) {
            refuse(parameter, where + " binds what is not there");
        }
        catalogue.associations.emplace_back(trigger, action);
    }
    return catalogue;
}

Parameter chosenCatalogueParameter() {
    return {"FILE", "a catalogue that export wrote, - for standard input (default: what the service has)",
            false,  Parameter::Takes::one,
            "FILE", Completion::file};
}

Catalogue chosenCatalogue(Context &context) {
    if (context.arguments.has("FILE")) {
        return catalogueIn("FILE", textOfFile("FILE", context.arguments.text("FILE")));
    }
    return readCatalogue(context.client());
}

Catalogue canonical(Catalogue const &catalogue) {
    Catalogue sorted = catalogue;
    for (auto *entries : {&sorted.actions, &sorted.triggers}) {
        // What this program does not know cannot be made again.
        for (Entry const &entry : *entries) {
            if (entry.kind.empty()) {
                throw Failure(Exit::version, titleOf(entry) + " is of a kind that this program does not know",
                              "use a program of the service's version");
            }
        }
    }
    auto const actions = sortAndNumber(sorted.actions);
    auto const triggers = sortAndNumber(sorted.triggers);
    for (auto &[trigger, action] : sorted.associations) {
        trigger = triggers.at(trigger);
        action = actions.at(action);
    }
    std::sort(sorted.associations.begin(), sorted.associations.end());
    sorted.associations.erase(std::unique(sorted.associations.begin(), sorted.associations.end()),
                              sorted.associations.end());
    return sorted;
}

std::vector<std::string> keysOf(std::vector<Entry> const &entries) {
    std::map<std::string, unsigned int> seen;
    std::vector<std::string> keys(entries.size());
    for (std::size_t const place : canonicalOrder(entries)) {
        std::string const key = entries[place].kind + " \"" + entries[place].name() + "\"";
        unsigned int const number = ++seen[key];
        keys[place] = number == 1 ? key : key + " (" + std::to_string(number) + ")";
    }
    return keys;
}

}  // namespace tool
