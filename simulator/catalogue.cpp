// SPDX-License-Identifier: Apache-2.0
#include "simulator/catalogue.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <string>
#include <type_traits>

#include "simulator/log.h"
#include "simulator/refused.h"
#include "simulator/response.h"

namespace simulator {

namespace {

using Table = Catalogue::Table;

static_assert(std::is_nothrow_move_assignable_v<Catalogue::Entry>,
              "what the store has taken is taken over without fail");

std::string text(operations::Member const *row, Values const &values) {
    std::string written;
    JsonWriter writer(written);
    writeMembers(writer, row, values);
    writer.close();
    return written;
}

Values parse(std::string_view text, operations::Member const *row) {
    boost::json::error_code error;
    boost::json::value const value =
        boost::json::parse(boost::json::string_view(text.data(), text.size()), error);
    boost::json::object const *const object = value.if_object();
    if (error || object == nullptr) {
        throw malformed("its settings are no JSON object");
    }
    Values values;
    readMembers(*object, row, values);
    return values;
}

char const *nameOf(Table table) {
    return table == Table::actions ? "action" : "trigger";
}

Table other(Table table) {
    return table == Table::actions ? Table::triggers : Table::actions;
}

EntryKind const *kindOf(Table table, std::uint32_t type) {
    if (table == Table::actions) {
        return type < std::size(action_kinds) ? &action_kinds[type] : nullptr;
    }
    return type < std::size(trigger_kinds) ? &trigger_kinds[type] : nullptr;
}

Values noFilters() {
    return {Numbers(), Numbers(), Numbers()};
}

/// What the members become on disk. Refused when the answer of the method that reads them back would be longer than a
/// message may be.
std::string readableText(operations::Index reader, operations::Member const *row, Values const &values) {
    std::string written = text(row, values);
    std::string answer;
    JsonWriter envelope(answer);
    writeEnvelope(envelope, operations::all[reader].method, KORVO_CORE_STATUS_NO_ERROR);
    // The members take the place of the envelope's end, and a comma that of their beginning.
    if (answer.size() + written.size() > longest_response) {
        throw impossible(std::string("what it says is too long to be read back with ") +
                         operations::all[reader].method + ": " +
                         std::to_string(answer.size() + written.size()) +
                         " bytes, and an answer has at most " + std::to_string(longest_response));
    }
    return written;
}

Refused unknown(Table table, std::uint32_t id) {
    return impossible(std::string("there is no ") + nameOf(table) + " " + std::to_string(id));
}

std::vector<std::uint32_t> partners(std::set<std::pair<std::uint32_t, std::uint32_t>> const &pairs,
                                    std::uint32_t id) {
    std::vector<std::uint32_t> found;
    for (auto pair = pairs.lower_bound({id, 0}); pair != pairs.end() && pair->first == id; ++pair) {
        found.push_back(pair->second);
    }
    return found;
}

}  // namespace

Catalogue::Catalogue(Store &store) : Catalogue(store, Rules()) {}

Catalogue::Catalogue(Store &store, Rules const &rules) : store_(store), rules_{Nonsense::kept} {
    for (Table const table : {Table::actions, Table::triggers}) {
        store.readEntries(table, [&](std::uint32_t id, std::uint32_t type, std::string_view settings,
                                     std::string_view filters) {
            std::string const entry = std::string("the store's ") + nameOf(table) + " " + std::to_string(id);
            EntryKind const *const kind = kindOf(table, type);
            if (kind == nullptr) {
                throw StoreError(entry + " has the unknown type " + std::to_string(type));
            }
            try {
                Entry read{kind,
                           parse(settings, settingsRow(*kind)),
                           table == Table::actions ? parse(filters, filters_row) : Values(),
                           {},
                           ""};
                understand(table, read);
                insert(table, id, std::move(read));
            } catch (Refused const &refused) {
                throw StoreError(entry + " cannot be read: " + refused.what());
            }
        });
    }
    store.readAssociations([this](std::uint32_t trigger_id, std::uint32_t action_id) {
        by_trigger_.emplace(trigger_id, action_id);
        by_action_.emplace(action_id, trigger_id);
    });
    rules_ = rules;
}

void Catalogue::understand(Table table, Entry &entry) const {
    if (table == Table::actions) {
        entry.fault = faultOfFilters(entry.filters);
    } else {
        entry.meaning = meaningOfTrigger(*entry.kind, entry.settings, entry.fault);
    }
    if (rules_.nonsense == Nonsense::refused && !entry.fault.empty()) {
        throw impossible(entry.fault);
    }
}

Catalogue::Entry const &Catalogue::at(Table table, std::uint32_t id) const {
    Entry const *const entry = find(table, id);
    if (entry == nullptr) {
        throw unknown(table, id);
    }
    return *entry;
}

Catalogue::Entry const *Catalogue::find(Table table, std::uint32_t id) const {
    auto const found = entries(table).find(id);
    return found == entries(table).end() ? nullptr : &found->second;
}

std::uint32_t Catalogue::create(Table table, EntryKind const &kind, Values settings) {
    std::size_t const present = entries(table).size();
    if (present >= bounds(table).most) {
        throw impossible(std::string("there are ") + std::to_string(present) + " " + nameOf(table) +
                         "s already, and " + std::to_string(bounds(table).most) +
                         " is the most; delete some first");
    }
    auto const most_of_type = bounds(table).most_of_type[kind.type];
    if (most_of_type && counts(table)[kind.type] >= *most_of_type) {
        throw impossible("there are " + std::to_string(counts(table)[kind.type]) + " of kind " +
                         quoted(kindName(kind)) + " already, and " + std::to_string(*most_of_type) +
                         " is the most; delete some first");
    }
    Entry entry{&kind, std::move(settings), table == Table::actions ? noFilters() : Values(), {}, ""};
    understand(table, entry);
    std::string const written = readableText(kind.get, settingsRow(kind), entry.settings);
    std::string const filters = table == Table::actions ? text(filters_row, entry.filters) : "";
    Entries prepared;
    prepared.emplace(0, std::move(entry));
    auto node = prepared.extract(prepared.begin());
    // From here on nothing takes memory: what is in the store is here too.
    node.key() = table == Table::actions ? store_.addAction(kind.type, written, filters)
                                         : store_.addTrigger(kind.type, written);
    ++changeableCounts(table)[kind.type];
    return changeable(table).insert(std::move(node)).position->first;
}

void Catalogue::insert(Table table, std::uint32_t id, Entry entry) {
    std::uint32_t const type = entry.kind->type;
    changeable(table).emplace(id, std::move(entry));
    ++changeableCounts(table)[type];
}

Catalogue::Entry const &Catalogue::ofKind(Table table, EntryKind const &kind, std::uint32_t id) const {
    Entry const &entry = at(table, id);
    if (entry.kind != &kind) {
        throw impossible(std::string(nameOf(table)) + " " + std::to_string(id) + " is no " + kind.noun +
                         ", it is of type " + std::to_string(entry.kind->type) + " (" + entry.kind->noun +
                         ")");
    }
    return entry;
}

Values const &Catalogue::settings(Table table, EntryKind const &kind, std::uint32_t id) const {
    return ofKind(table, kind, id).settings;
}

void Catalogue::modify(Table table, EntryKind const &kind, std::uint32_t id, Values settings) {
    Entry changed{&kind, std::move(settings), {}, {}, ""};
    Entry const &now = ofKind(table, kind, id);
    if (table == Table::actions) {
        changed.filters = now.filters;
        changed.fault = now.fault;
    } else {
        understand(table, changed);
    }
    Entry &place = changeable(table).at(id);
    store_.setSettings(table, id, readableText(kind.get, settingsRow(kind), changed.settings));
    place = std::move(changed);
}

void Catalogue::remove(Table table, std::uint32_t id) {
    std::uint32_t const type = at(table, id).kind->type;
    Pairs &own = table == Table::actions ? by_action_ : by_trigger_;
    Pairs &others = table == Table::actions ? by_trigger_ : by_action_;
    std::vector<std::uint32_t> const bound = partners(own, id);
    if (rules_.deletion == Deletion::refused && !bound.empty()) {
        throw impossible(std::string(nameOf(table)) + " " + std::to_string(id) + " is bound to " +
                         std::to_string(bound.size()) + " " + nameOf(other(table)) + "s, the first of them " +
                         std::to_string(bound.front()) + "; delete its associations first");
    }
    store_.remove(table, id);
    changeable(table).erase(id);
    --changeableCounts(table)[type];
    for (std::uint32_t const partner : bound) {
        others.erase({partner, id});
        own.erase({id, partner});
    }
}

void Catalogue::setFilters(std::uint32_t action_id, Values filters) {
    Entry changed = at(Table::actions, action_id);
    changed.filters = std::move(filters);
    understand(Table::actions, changed);
    store_.setFilters(action_id, readableText(operations::get_action_filters, filters_row, changed.filters));
    actions_.at(action_id) = std::move(changed);
}

void Catalogue::associate(std::uint32_t trigger_id, std::uint32_t action_id) {
    (void)at(Table::triggers, trigger_id);
    (void)at(Table::actions, action_id);
    if (by_trigger_.count({trigger_id, action_id}) != 0) {
        return;
    }
    if (by_trigger_.size() >= most_associations) {
        throw impossible("there are " + std::to_string(most_associations) +
                         " associations already; delete some first");
    }
    Pairs of_trigger{{trigger_id, action_id}};
    Pairs of_action{{action_id, trigger_id}};
    store_.addAssociation(trigger_id, action_id);
    by_trigger_.merge(of_trigger);
    by_action_.merge(of_action);
}

void Catalogue::dissociate(std::uint32_t trigger_id, std::uint32_t action_id) {
    if (by_trigger_.count({trigger_id, action_id}) == 0) {
        throw impossible("trigger " + std::to_string(trigger_id) + " is not bound to action " +
                         std::to_string(action_id));
    }
    store_.removeAssociation(trigger_id, action_id);
    by_trigger_.erase({trigger_id, action_id});
    by_action_.erase({action_id, trigger_id});
}

void Catalogue::replace(Contents contents) {
    Store::Rows rows;
    Counts action_counts{};
    Counts trigger_counts{};
    for (Table const table : {Table::actions, Table::triggers}) {
        Entries &entries = table == Table::actions ? contents.actions : contents.triggers;
        if (entries.size() > bounds(table).most) {
            throw impossible("there are " + std::to_string(entries.size()) + " " + nameOf(table) + "s, and " +
                             std::to_string(bounds(table).most) + " is the most");
        }
        for (auto &[id, entry] : entries) {
            try {
                understand(table, entry);
                Store::Row row{id, entry.kind->type,
                               readableText(entry.kind->get, settingsRow(*entry.kind), entry.settings), ""};
                if (table == Table::actions) {
                    row.filters = readableText(operations::get_action_filters, filters_row, entry.filters);
                }
                (table == Table::actions ? rows.actions : rows.triggers).push_back(std::move(row));
            } catch (Refused const &refused) {
                throw Refused(refused.status(),
                              std::string(nameOf(table)) + " " + std::to_string(id) + ": " + refused.what());
            }
            auto const count = ++(table == Table::actions ? action_counts : trigger_counts)[entry.kind->type];
            auto const most_of_type = bounds(table).most_of_type[entry.kind->type];
            if (most_of_type && count > *most_of_type) {
                throw impossible("there are more than " + std::to_string(*most_of_type) + " of kind " +
                                 quoted(kindName(*entry.kind)) + ", and that is the most");
            }
        }
    }
    if (contents.associations.size() > most_associations) {
        throw impossible("there are " + std::to_string(contents.associations.size()) + " associations, and " +
                         std::to_string(most_associations) + " is the most");
    }
    Pairs by_action;
    for (auto const &[trigger_id, action_id] : contents.associations) {
        if (contents.triggers.count(trigger_id) == 0) {
            throw unknown(Table::triggers, trigger_id);
        }
        if (contents.actions.count(action_id) == 0) {
            throw unknown(Table::actions, action_id);
        }
        rows.associations.emplace_back(trigger_id, action_id);
        by_action.emplace(action_id, trigger_id);
    }
    store_.replace(rows);
    actions_.swap(contents.actions);
    triggers_.swap(contents.triggers);
    by_trigger_.swap(contents.associations);
    by_action_.swap(by_action);
    action_counts_ = action_counts;
    trigger_counts_ = trigger_counts;
}

std::vector<std::uint32_t> Catalogue::actionsOf(std::uint32_t trigger_id) const {
    (void)at(Table::triggers, trigger_id);
    return partners(by_trigger_, trigger_id);
}

std::vector<std::uint32_t> Catalogue::triggersOf(std::uint32_t action_id) const {
    (void)at(Table::actions, action_id);
    return partners(by_action_, action_id);
}

}  // namespace simulator
