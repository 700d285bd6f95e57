// SPDX-License-Identifier: Apache-2.0
#include "simulator/captures/rebuilding.h"

#include <algorithm>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "simulator/kinds.h"
#include "simulator/methods.h"
#include "simulator/refused.h"
#include "simulator/values.h"

namespace simulator {

namespace json = boost::json;

namespace {

using Table = Catalogue::Table;

/// What is known of an action or trigger.
struct Known {
    EntryKind const *kind = nullptr;
    /// None while only lists have named it.
    std::optional<Values> settings{};
};

/// A command that was answered with 0.
struct Success {
    std::size_t line;
    std::size_t method;
    json::object command;
    json::object answer;
};

json::object objectIn(std::optional<std::string> const &text) {
    json::error_code error;
    json::value const value = text ? json::parse(*text, error) : json::value();
    return error || !value.is_object() ? json::object() : value.get_object();
}

class Rebuilding {
  public:
    /// Throws Refused for what does not have its members: nothing has changed then.
    void take(Success success) {
        success_ = std::move(success);
        auto const method = static_cast<operations::Index>(success_.method);
        for (EntryKind const &kind : action_kinds) {
            takeKind(method, Table::actions, actions_, kind);
        }
        for (EntryKind const &kind : trigger_kinds) {
            takeKind(method, Table::triggers, triggers_, kind);
        }
        switch (method) {
            case operations::get_actions:
                takeList(actions_, std::begin(action_kinds), std::size(action_kinds));
                break;
            case operations::get_triggers:
                takeList(triggers_, std::begin(trigger_kinds), std::size(trigger_kinds));
                break;
            case operations::delete_action:
                actions_.erase(id(inputs()));
                forget(Table::actions, id(inputs()));
                break;
            case operations::delete_trigger:
                triggers_.erase(id(inputs()));
                forget(Table::triggers, id(inputs()));
                break;
            case operations::set_action_filters: {
                Values values = inputs();
                filters_[id(values)] = Values(values.begin() + 1, values.end());
                break;
            }
            case operations::get_action_filters:
                filters_[id(inputs())] = results();
                break;
            case operations::create_association:
                bind(pair());
                break;
            case operations::delete_association:
                unbind(pair());
                break;
            case operations::get_trigger_associations:
                takePartners(Table::triggers);
                break;
            case operations::get_action_associations:
                takePartners(Table::actions);
                break;
            default:
                break;
        }
    }

    Rebuilt result() {
        Rebuilt rebuilt;
        rebuilt.contents.actions = entries(Table::actions, actions_, rebuilt.remarks);
        rebuilt.contents.triggers = entries(Table::triggers, triggers_, rebuilt.remarks);
        for (Pair const &pair : by_trigger_) {
            if (rebuilt.contents.triggers.count(pair.first) != 0 &&
                rebuilt.contents.actions.count(pair.second) != 0) {
                rebuilt.contents.associations.insert(pair);
            } else {
                rebuilt.remarks.push_back("the association of trigger " + std::to_string(pair.first) +
                                          " and action " + std::to_string(pair.second) +
                                          " is left out: the capture does not show both of them");
            }
        }
        for (std::uint32_t const action_id : hidden_) {
            if (rebuilt.contents.actions.count(action_id) != 0) {
                rebuilt.remarks.push_back("the password of action " + std::to_string(action_id) +
                                          " is hidden in the capture; it is empty now");
            }
        }
        return rebuilt;
    }

  private:
    using Pair = Catalogue::Pairs::value_type;
    using Entries = std::map<std::uint32_t, Known>;

    operations::Operation const &operation() const { return methodAt(success_.method); }
    Values inputs() const {
        Values values;
        readMembers(success_.command, operation().inputs, values);
        return values;
    }
    Values results() const {
        Values values;
        readMembers(success_.answer, operation().results, values);
        return values;
    }
    static std::uint32_t id(Values const &values) {
        auto const id = std::get<std::uint32_t>(values.front());
        if (id == 0) {
            throw malformed("0 is no identifier");
        }
        return id;
    }

    Pair pair() const {
        Values const values = inputs();
        return {std::get<std::uint32_t>(values[0]), std::get<std::uint32_t>(values[1])};
    }

    void takeKind(operations::Index method, Table table, Entries &entries, EntryKind const &kind) {
        if (method != kind.create && method != kind.modify && method != kind.get) {
            return;
        }
        json::object &told = method == kind.get ? success_.answer : success_.command;
        bool const hidden = fillIn(told);
        Values settings = method == kind.get ? results() : inputs();
        std::uint32_t const entry_id = method == kind.create ? id(results()) : id(inputs());
        if (method == kind.modify) {
            settings.erase(settings.begin());
        }
        Known &known = entries[entry_id];
        if (method == kind.create) {
            // One of that identifier may have been deleted unseen.
            forget(table, entry_id);
        }
        known.kind = &kind;
        known.settings = std::move(settings);
        if (table == Table::actions && hidden) {
            hidden_.insert(entry_id);
        } else if (table == Table::actions && hasSecret(kind)) {
            hidden_.erase(entry_id);
        }
    }

    static bool hasSecret(EntryKind const &kind) {
        for (auto const *member = settingsRow(kind); member->kind != operations::Kind::none; ++member) {
            if (member->name == secret_member) {
                return true;
            }
        }
        return false;
    }

    /// True when a secret was null.
    static bool fillIn(json::object &told) {
        json::value *const secret =
            told.if_contains(json::string_view(secret_member.data(), secret_member.size()));
        if (secret == nullptr || !secret->is_null()) {
            return false;
        }
        *secret = "";
        return true;
    }

    void bind(Pair const &pair) {
        by_trigger_.insert(pair);
        by_action_.emplace(pair.second, pair.first);
    }
    void unbind(Pair const &pair) {
        by_trigger_.erase(pair);
        by_action_.erase({pair.second, pair.first});
    }
    void unbindAll(Table table, std::uint32_t id) {
        auto &own = table == Table::triggers ? by_trigger_ : by_action_;
        auto &other = table == Table::triggers ? by_action_ : by_trigger_;
        for (auto pair = own.lower_bound({id, 0}); pair != own.end() && pair->first == id;) {
            other.erase({pair->second, pair->first});
            pair = own.erase(pair);
        }
    }

    void forget(Table table, std::uint32_t id) {
        unbindAll(table, id);
        if (table == Table::actions) {
            filters_.erase(id);
        }
    }

    void takeList(Entries &entries, EntryKind const *kinds, std::size_t count) {
        Values const values = results();
        auto const &ids = std::get<Numbers>(values[0]);
        auto const &types = std::get<Numbers>(values[1]);
        if (ids.size() != types.size()) {
            throw malformed("its lists differ in length");
        }
        for (std::uint32_t const type : types) {
            if (type >= count) {
                throw malformed("there is no type " + std::to_string(type));
            }
        }
        Entries listed;
        for (std::size_t n = 0; n < ids.size(); ++n) {
            auto const found = entries.find(ids[n]);
            bool const is_known = found != entries.end() && found->second.kind == &kinds[types[n]];
            listed[ids[n]] = is_known ? std::move(found->second) : Known{&kinds[types[n]]};
        }
        entries = std::move(listed);
    }

    /// The pairs of the entry that was asked for are these and no others.
    void takePartners(Table table) {
        std::uint32_t const asked = id(inputs());
        Values const values = results();
        unbindAll(table, asked);
        for (std::uint32_t const partner : std::get<Numbers>(values[0])) {
            bind(table == Table::triggers ? Pair(asked, partner) : Pair(partner, asked));
        }
    }

    Catalogue::Entries entries(Table table, Entries const &known, std::vector<std::string> &remarks) const {
        Catalogue::Entries made;
        for (auto const &[id, entry] : known) {
            if (!entry.settings) {
                remarks.push_back(std::string(entry.kind->noun) + " " + std::to_string(id) +
                                  " is left out: the capture lists it, and does not show its settings");
                continue;
            }
            Catalogue::Entry &one = made[id];
            one.kind = entry.kind;
            one.settings = *entry.settings;
            if (table == Table::actions) {
                auto const filters = filters_.find(id);
                one.filters =
                    filters == filters_.end() ? Values{Numbers(), Numbers(), Numbers()} : filters->second;
            }
        }
        return made;
    }

    Success success_{};
    Entries actions_;
    Entries triggers_;
    std::map<std::uint32_t, Values> filters_;
    /// (trigger, action), and (action, trigger).
    std::set<Pair> by_trigger_;
    std::set<Pair> by_action_;
    /// Actions whose passwords are hidden.
    std::set<std::uint32_t> hidden_;
};

std::optional<Success> successIn(Recording const &recording, Recording::Exchange const &exchange) {
    Recording::Message const &command = recording.messages[exchange.command];
    auto const method = command.text ? findMethod(commandNameIn(*command.text)) : std::nullopt;
    if (!method || exchange.answers.empty()) {
        return std::nullopt;
    }
    json::object answer = objectIn(recording.messages[exchange.answers.front()].text);
    json::value const *const status = answer.if_contains("status");
    if (status == nullptr || !status->is_number() || status->to_number<double>() != 0) {
        return std::nullopt;
    }
    return Success{command.line, *method, objectIn(command.text), std::move(answer)};
}

}  // namespace

Rebuilt catalogueIn(Recording const &recording) {
    // In the order of the answers: what was carried out first was answered first.
    std::vector<Recording::Exchange const *> exchanges;
    for (Recording::Exchange const &exchange : recording.exchanges) {
        if (!exchange.answers.empty()) {
            exchanges.push_back(&exchange);
        }
    }
    std::sort(exchanges.begin(), exchanges.end(), [](auto const *first, auto const *second) {
        return first->answers.front() < second->answers.front();
    });
    Rebuilding rebuilding;
    std::vector<std::string> passed_over;
    for (Recording::Exchange const *const exchange : exchanges) {
        auto success = successIn(recording, *exchange);
        if (!success) {
            continue;
        }
        std::size_t const line = success->line;
        try {
            rebuilding.take(std::move(*success));
        } catch (Refused const &refused) {
            passed_over.push_back("the command in line " + std::to_string(line) +
                                  " and its answer are passed over: " + refused.what());
        }
    }
    Rebuilt rebuilt = rebuilding.result();
    rebuilt.remarks.insert(rebuilt.remarks.begin(), passed_over.begin(), passed_over.end());
    return rebuilt;
}

}  // namespace simulator
