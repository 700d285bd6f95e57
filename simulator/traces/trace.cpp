// SPDX-License-Identifier: Apache-2.0
#include "simulator/traces/trace.h"

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <utility>

namespace simulator {

namespace json = boost::json;

namespace {

char const *nameOf(Trace::Cause cause) {
    switch (cause) {
        case Trace::Cause::event:
            return "event";
        case Trace::Cause::timer:
            return "timer";
        case Trace::Cause::stability:
            return "stability";
        case Trace::Cause::completion:
            return "completion";
    }
    return "";
}

void addText(json::object &object, char const *name, std::string const &text) {
    if (!text.empty()) {
        object[name] = text;
    }
}

json::object describe(TriggerTrace const &trigger) {
    json::object object{
        {"trigger_id", trigger.id}, {"trigger_name", trigger.name}, {"verdict", nameOf(trigger.verdict)}};
    addText(object, "why", trigger.why);
    return object;
}

json::object describe(ActionTrace const &action) {
    json::object object{{"trigger_id", action.trigger_id}, {"action_id", action.id}};
    if (action.kind != nullptr) {
        object["action_name"] = action.name;
        object["kind"] = action.kind;
    }
    object["verdict"] = nameOf(action.verdict);
    addText(object, "window", action.window);
    addText(object, "words", action.words);
    if (!action.parameters.empty()) {
        json::error_code error;
        object["parameters"] = json::parse(action.parameters, error);
        object["milliseconds"] = static_cast<double>(action.duration.count()) / 1000;
    }
    return object;
}

}  // namespace

char const *nameOf(TriggerVerdict verdict) {
    switch (verdict) {
        case TriggerVerdict::fires:
            return "fires";
        case TriggerVerdict::begins_wait:
            return "begins to wait";
        case TriggerVerdict::goes_on:
            return "goes on as before";
        case TriggerVerdict::ends_wait:
            return "ends its wait";
        case TriggerVerdict::topic_differs:
            return "topic differs";
        case TriggerVerdict::message_fails:
            return "message fails";
        case TriggerVerdict::property_deleted:
            return "property deleted";
        case TriggerVerdict::never_fires:
            return "never fires";
        case TriggerVerdict::gone:
            return "gone";
    }
    return "";
}

char const *nameOf(ActionVerdict verdict) {
    switch (verdict) {
        case ActionVerdict::succeeded:
            return "succeeded";
        case ActionVerdict::failed:
            return "failed";
        case ActionVerdict::held_back:
            return "held back";
        case ActionVerdict::never_runs:
            return "never runs";
        case ActionVerdict::gone:
            return "gone";
        case ActionVerdict::would_run:
            return "would run";
    }
    return "";
}

char const *nameOf(Outcome outcome) {
    switch (outcome) {
        case Outcome::refused:
            return "refused";
        case Outcome::failed:
            return "failed";
        case Outcome::ran:
            return "ran";
        case Outcome::held_back:
            return "held back";
        case Outcome::unbound:
            return "unbound";
        case Outcome::waiting:
            return "waiting";
        case Outcome::no_match:
            return "no match";
    }
    return "";
}

void Trace::add(TriggerTrace trigger) {
    fired += trigger.verdict == TriggerVerdict::fires ? 1 : 0;
    waits += trigger.verdict == TriggerVerdict::begins_wait || trigger.verdict == TriggerVerdict::goes_on ||
                     trigger.verdict == TriggerVerdict::ends_wait
                 ? 1
                 : 0;
    if (triggers.size() < most_triggers) {
        triggers.push_back(std::move(trigger));
        return;
    }
    ++triggers_left_out;
    if (trigger.verdict == TriggerVerdict::topic_differs) {
        return;
    }
    for (auto place = triggers.rbegin(); place != triggers.rend(); ++place) {
        if (place->verdict == TriggerVerdict::topic_differs) {
            triggers.erase(std::next(place).base());
            triggers.push_back(std::move(trigger));
            return;
        }
    }
}

void Trace::add(ActionTrace action) {
    succeeded += action.verdict == ActionVerdict::succeeded ? 1 : 0;
    failed += action.verdict == ActionVerdict::failed ? 1 : 0;
    held_back +=
        action.verdict == ActionVerdict::held_back || action.verdict == ActionVerdict::never_runs ? 1 : 0;
    if (actions.size() < most_actions) {
        actions.push_back(std::move(action));
    } else {
        ++actions_left_out;
    }
}

Outcome Trace::outcome() const {
    if (!refusal.empty()) {
        return Outcome::refused;
    }
    if (failed != 0) {
        return Outcome::failed;
    }
    if (succeeded != 0) {
        return Outcome::ran;
    }
    if (held_back != 0) {
        return Outcome::held_back;
    }
    if (fired != 0) {
        return Outcome::unbound;
    }
    return waits != 0 ? Outcome::waiting : Outcome::no_match;
}

std::size_t Trace::size() const {
    std::size_t bytes = sizeof *this + topic.size() + message.size() + refusal.size();
    for (std::string const &action : chain) {
        bytes += sizeof(std::string) + action.size();
    }
    for (TriggerTrace const &trigger : triggers) {
        bytes += sizeof trigger + trigger.name.size() + trigger.why.size();
    }
    for (ActionTrace const &action : actions) {
        bytes += sizeof action + action.name.size() + action.window.size() + action.parameters.size() +
                 action.words.size();
    }
    return bytes;
}

json::object describe(Trace const &trace) {
    json::object object{{"id", trace.id},
                        {"time", momentText(trace.time)},
                        {"outcome", nameOf(trace.outcome())},
                        {"cause", nameOf(trace.cause)}};
    if (trace.cause != Trace::Cause::timer) {
        object["topic"] = trace.topic;
        object["message"] = trace.message;
    }
    if (!trace.chain.empty()) {
        object["chain"] = json::array(trace.chain.begin(), trace.chain.end());
    }
    addText(object, "refusal", trace.refusal);
    json::array &triggers = (object["triggers"] = json::array()).as_array();
    for (TriggerTrace const &trigger : trace.triggers) {
        triggers.push_back(describe(trigger));
    }
    json::array &actions = (object["actions"] = json::array()).as_array();
    for (ActionTrace const &action : trace.actions) {
        actions.push_back(describe(action));
    }
    object["triggers_left_out"] = trace.triggers_left_out;
    object["actions_left_out"] = trace.actions_left_out;
    return object;
}

}  // namespace simulator
