// SPDX-License-Identifier: Apache-2.0
#include "simulator/catalogue_document.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <string>
#include <string_view>
#include <utility>

#include "simulator/log.h"
#include "simulator/refused.h"

namespace simulator {

namespace json = boost::json;

namespace {

using Table = Catalogue::Table;

json::array entriesOf(Catalogue const &catalogue, Table table, Telling telling) {
    json::array entries;
    for (auto const &[id, entry] : catalogue.entries(table)) {
        json::object object{{"id", id}, {"kind", json::string(kindName(*entry.kind))}};
        object["settings"] = objectOf(settingsRow(*entry.kind), entry.settings, telling);
        if (table == Table::actions) {
            object["filters"] = objectOf(filters_row, entry.filters, telling);
        }
        entries.push_back(std::move(object));
    }
    return entries;
}

json::value const &member(json::object const &object, char const *name) {
    json::value const *const found = object.if_contains(name);
    if (found == nullptr) {
        throw malformed(std::string("the member \"") + name + "\" is missing");
    }
    return *found;
}

json::object const &objectIn(json::value const &value, char const *what) {
    if (!value.is_object()) {
        throw malformed(std::string(what) + " is no JSON object");
    }
    return value.get_object();
}

json::array const &arrayIn(json::object const &object, char const *name) {
    json::value const &value = member(object, name);
    if (!value.is_array()) {
        throw malformed(std::string("the member \"") + name + "\" must be an array");
    }
    return value.get_array();
}

std::uint32_t identifier(json::value const &value) {
    json::error_code error;
    auto const number = value.to_number<std::uint32_t>(error);
    if (error || number == 0 || !value.is_number()) {
        throw malformed("an identifier must be a whole number from 1 to 4294967295");
    }
    return number;
}

/// With the secrets that are null as they are now.
json::object withSecrets(json::object settings, EntryKind const &kind, std::uint32_t id,
                         Catalogue const &now) {
    json::value *const secret = settings.if_contains(secret_member);
    if (secret != nullptr && secret->is_null()) {
        Catalogue::Entry const *const entry = now.find(Table::actions, id);
        if (entry == nullptr || entry->kind != &kind) {
            throw malformed("its \"" + std::string(secret_member) +
                            "\" is null, and there is no such action now to have it from");
        }
        *secret = valueOf<std::string>(entry->settings, settingsRow(kind), secret_member);
    }
    return settings;
}

Catalogue::Entry readEntry(json::object const &object, Table table, std::uint32_t id, Catalogue const &now) {
    json::value const &name = member(object, "kind");
    if (!name.is_string()) {
        throw malformed("the member \"kind\" must be a string");
    }
    EntryKind const *const kind = table == Table::actions ? findKind(action_kinds, name.get_string())
                                                          : findKind(trigger_kinds, name.get_string());
    if (kind == nullptr) {
        throw malformed("there is no kind " + quoted(std::string_view(name.get_string())));
    }
    Catalogue::Entry entry{kind, {}, {}, {}, ""};
    readMembers(withSecrets(objectIn(member(object, "settings"), "\"settings\""), *kind, id, now),
                settingsRow(*kind), entry.settings);
    if (table == Table::actions) {
        readMembers(objectIn(member(object, "filters"), "\"filters\""), filters_row, entry.filters);
    }
    return entry;
}

Catalogue::Entries readEntries(json::object const &document, Table table, Catalogue const &now) {
    char const *const list = table == Table::actions ? "actions" : "triggers";
    Catalogue::Entries entries;
    std::size_t place = 0;
    for (json::value const &value : arrayIn(document, list)) {
        ++place;
        try {
            json::object const &object = objectIn(value, "it");
            std::uint32_t const id = identifier(member(object, "id"));
            if (!entries.emplace(id, readEntry(object, table, id, now)).second) {
                throw malformed("the identifier " + std::to_string(id) + " is there already");
            }
        } catch (Refused const &refused) {
            throw Refused(refused.status(),
                          "entry " + std::to_string(place) + " of \"" + list + "\": " + refused.what());
        }
    }
    return entries;
}

}  // namespace

json::object documentOf(Catalogue const &catalogue, Telling telling) {
    json::array associations;
    for (auto const &[trigger_id, action_id] : catalogue.associations()) {
        associations.push_back(json::object{{"trigger_id", trigger_id}, {"action_id", action_id}});
    }
    return {{"format", catalogue_format},
            {"version", catalogue_format_version},
            {"actions", entriesOf(catalogue, Table::actions, telling)},
            {"triggers", entriesOf(catalogue, Table::triggers, telling)},
            {"associations", std::move(associations)}};
}

Catalogue::Contents readDocument(json::object const &document, Catalogue const &now) {
    if (member(document, "format") != json::value(catalogue_format)) {
        throw malformed(std::string("it is no catalogue: its \"format\" is not \"") + catalogue_format +
                        "\"");
    }
    json::error_code error;
    auto const version = member(document, "version").to_number<std::uint32_t>(error);
    if (error || version != catalogue_format_version) {
        throw malformed("its \"version\" is not " + std::to_string(catalogue_format_version) +
                        ", the only one that this service knows");
    }
    Catalogue::Contents contents{
        readEntries(document, Table::actions, now), readEntries(document, Table::triggers, now), {}};
    std::size_t place = 0;
    for (json::value const &value : arrayIn(document, "associations")) {
        ++place;
        try {
            json::object const &pair = objectIn(value, "it");
            contents.associations.emplace(identifier(member(pair, "trigger_id")),
                                          identifier(member(pair, "action_id")));
        } catch (Refused const &refused) {
            throw Refused(refused.status(),
                          "entry " + std::to_string(place) + " of \"associations\": " + refused.what());
        }
    }
    return contents;
}

}  // namespace simulator
