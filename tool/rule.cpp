// SPDX-License-Identifier: Apache-2.0
#include "tool/rule.h"

#include <boost/json/array.hpp>
#include <boost/json/value.hpp>

#include "tool/failure.h"
#include "tool/interruption.h"
#include "tool/secrets.h"
#include "tool/settings.h"

namespace tool {
namespace {

namespace json = boost::json;

bool isActionKind(std::string const &kind) {
    return kind.size() > 7 && kind.compare(kind.size() - 7, 7, "_action") == 0;
}

json::object withMember(char const *name, unsigned int id, json::object members = {}) {
    members[name] = id;
    return members;
}

}  // namespace

unsigned int RuleSteps::make(std::string const &kind, json::object const &settings) {
    return client_->call(operation("create_" + kind), settings).begin()->value().to_number<unsigned int>();
}

unsigned int RuleSteps::create(std::string const &kind, json::object const &settings) {
    interruption::Step const step;
    unsigned int const id = make(kind, settings);
    bool const is_action = isActionKind(kind);
    steps_.done(std::string(is_action ? "the new action " : "the new trigger ") + std::to_string(id),
                [this, id, is_action] {
                    (void)client_->call(operation(is_action ? "delete_action" : "delete_trigger"),
                                        withMember(is_action ? "action_id" : "trigger_id", id));
                });
    return id;
}

void RuleSteps::modify(Entry const &before, json::object const &settings) {
    interruption::Step const step;
    char const *const member = before.isAction() ? "action_id" : "trigger_id";
    Operation const &modify = operation("modify_" + before.kind);
    (void)client_->call(modify, withMember(member, before.id, settings));
    steps_.done("the settings of " + titleOf(before),
                [this, &modify, inputs = withMember(member, before.id, before.settings)] {
                    (void)client_->call(modify, inputs);
                });
}

void RuleSteps::setFilters(unsigned int action_id, json::object const &filters, json::object const &before) {
    interruption::Step const step;
    (void)client_->call(operation("set_action_filters"), withMember("action_id", action_id, filters));
    steps_.done("the filters of action " + std::to_string(action_id),
                [this, inputs = withMember("action_id", action_id, before)] {
                    (void)client_->call(operation("set_action_filters"), inputs);
                });
}

void RuleSteps::bind(unsigned int trigger_id, unsigned int action_id) {
    interruption::Step const step;
    json::object const inputs = {{"trigger_id", trigger_id}, {"action_id", action_id}};
    (void)client_->call(operation("create_association"), inputs);
    steps_.done("the binding of action " + std::to_string(action_id),
                [this, inputs] { (void)client_->call(operation("delete_association"), inputs); });
}

void RuleSteps::unbind(unsigned int trigger_id, unsigned int action_id) {
    interruption::Step const step;
    json::object const inputs = {{"trigger_id", trigger_id}, {"action_id", action_id}};
    (void)client_->call(operation("delete_association"), inputs);
    steps_.done("the end of the binding of action " + std::to_string(action_id),
                [this, inputs] { (void)client_->call(operation("create_association"), inputs); });
}

void RuleSteps::remove(Catalogue const &catalogue, Entry const &entry) {
    interruption::Step const step;
    bool const is_action = entry.isAction();
    (void)client_->call(operation(is_action ? "delete_action" : "delete_trigger"),
                        withMember(is_action ? "action_id" : "trigger_id", entry.id));
    removed_.insert({is_action, entry.id});
    std::vector<unsigned int> bound;
    for (Entry const *other : is_action ? catalogue.triggersOf(entry.id) : catalogue.actionsOf(entry.id)) {
        bound.push_back(other->id);
    }
    steps_.done("the removal of " + titleOf(entry), [this, is_action, bound, entry] {
        unsigned int const id = make(entry.kind, entry.settings);
        removed_.erase({is_action, entry.id});
        made_again_[{is_action, entry.id}] = id;
        if (is_action) {
            (void)client_->call(operation("set_action_filters"), withMember("action_id", id, entry.filters));
        }
        for (unsigned int const other : bound) {
            // One that is made again later binds itself to this one.
            if (removed_.count({!is_action, other}) != 0) {
                continue;
            }
            auto const again = made_again_.find({!is_action, other});
            unsigned int const other_id = again == made_again_.end() ? other : again->second;
            (void)client_->call(operation("create_association"), {{"trigger_id", is_action ? other_id : id},
                                                                  {"action_id", is_action ? id : other_id}});
        }
    });
}

namespace {

/// Words between blanks, where double quotes keep blanks.
std::vector<std::string> wordsIn(std::string const &text) {
    std::vector<std::string> words;
    bool inside = false;
    bool quoted = false;
    for (char const character : text) {
        if (character == '"') {
            quoted = !quoted;
        }
        if (character == ' ' && !quoted) {
            inside = false;
            continue;
        }
        if (!inside) {
            words.emplace_back();
            inside = true;
        }
        if (character != '"') {
            words.back() += character;
        }
    }
    return words;
}

json::value emptyOf(Kind kind) {
    switch (kind) {
        case Kind::number:
            return 0U;
        case Kind::flag:
            return false;
        case Kind::text:
            return json::string();
        case Kind::texts:
        case Kind::numbers:
            break;
    }
    return json::array();
}

json::value valueOf(Member const &member, std::string const &option, std::string const &word,
                    json::value const &before) {
    Arguments one;
    one.add(option, {word});
    switch (member.kind) {
        case Kind::number:
            return one.number(option);
        case Kind::flag:
            return one.flag(option);
        case Kind::text:
            return json::string(word);
        case Kind::texts:
        case Kind::numbers:
            break;
    }
    json::array list = before.as_array();
    list.push_back(member.kind == Kind::texts ? json::value(word) : json::value(one.number(option)));
    return list;
}

}  // namespace

Described actionOf(std::string const &option, std::string const &words) {
    auto const parts = wordsIn(words);
    std::string const kind =
        parts.empty() ? "" : parts.front() + (isActionKind(parts.front()) ? "" : "_action");
    Operation const *const create = findOperation("create_" + kind);
    if (create == nullptr) {
        throw Failure(
            Exit::usage, option + " names no kind of action in \"" + words + "\"",
            "write an identifier, or something like \"snapshot action_name=door filename=door.jpg\"; "
            "\"korvo-action-engine describe\" lists what can be created");
    }
    Described described{kind, {}};
    for (Member const &input : create->inputs) {
        described.settings[input.name] = emptyOf(input.kind);
    }
    for (auto part = parts.begin() + 1; part != parts.end(); ++part) {
        auto const end = part->find('=');
        std::string const name = part->substr(0, end);
        Member const *found = nullptr;
        for (Member const &input : create->inputs) {
            found = name == input.name ? &input : found;
        }
        if (found == nullptr || end == std::string::npos) {
            throw Failure(
                Exit::usage, option + ": a " + kind + " has no setting \"" + *part + "\"",
                "write name=value; \"korvo-action-engine describe create_" + kind + "\" lists the names");
        }
        if (isSecret(name)) {
            throw Failure(
                Exit::usage, option + " holds a password, which every process could read there",
                "create the action with its own command and --password-file, and name its identifier here");
        }
        auto &value = described.settings[name];
        value = valueOf(*found, option + " " + name, part->substr(end + 1), value);
    }
    if (described.settings.contains("action_name") &&
        described.settings.at("action_name").as_string().empty()) {
        throw Failure(Exit::usage, option + ": the " + kind + " has no name",
                      "write action_name=... behind the kind");
    }
    return described;
}

}  // namespace tool
