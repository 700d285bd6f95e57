// SPDX-License-Identifier: Apache-2.0
#include "simulator/captures/replay.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <utility>

#include "korvo_core.h"
#include "simulator/log.h"
#include "simulator/response.h"
#include "simulator/values.h"

namespace simulator {

namespace json = boost::json;

namespace {

/// An answer that took less is sent at once.
constexpr std::chrono::milliseconds prompt{100};

std::string_view view(json::string_view text) {
    return {text.data(), text.size()};
}

/// Numbers are equal however they are written.
json::value plain(json::value value) {
    if (json::array *const array = value.if_array()) {
        for (json::value &element : *array) {
            element = plain(std::move(element));
        }
    } else if (value.is_number()) {
        return value.to_number<double>();
    }
    return value;
}

/// What two commands are compared by. Passwords are left out: a capture may not hold them.
struct Keys {
    explicit Keys(std::string_view command) {
        json::error_code error;
        json::value const value = json::parse(json::string_view(command.data(), command.size()), error);
        if (error || !value.is_object()) {
            exact = loose = std::string("text ").append(command);
            return;
        }
        std::map<std::string, std::string> members;
        for (auto const &member : value.get_object()) {
            std::string_view const name = view(member.key());
            if (name == "command") {
                method = member.value().is_string() ? std::string(member.value().get_string()) : "";
            } else if (name != secret_member) {
                members[std::string(name)] = json::serialize(plain(member.value()));
            }
        }
        exact = loose = "method " + method;
        for (auto const &[name, text] : members) {
            std::string told = "\n";
            told.append(name).append(" ").append(text);
            exact += told;
            if (name == "action_id" || name == "trigger_id") {
                loose += told;
                identifiers.append(identifiers.empty() ? "" : " and ").append(name);
            }
        }
    }

    /// Empty where there is none.
    std::string method;
    std::string exact;
    std::string loose;
    /// For words.
    std::string identifiers;
};

/// Makes a password that the capture hides an empty text; true when there was one.
bool fillIn(std::string &text) {
    json::error_code error;
    json::value value = json::parse(text, error);
    json::object *const object = error ? nullptr : value.if_object();
    json::value *const secret =
        object == nullptr
            ? nullptr
            : object->if_contains(json::string_view(secret_member.data(), secret_member.size()));
    if (secret == nullptr || !secret->is_null()) {
        return false;
    }
    *secret = "";
    text = json::serialize(value);
    return true;
}

std::string failure(std::string const &method) {
    std::string text;
    JsonWriter response(text);
    writeEnvelope(response, method, KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE);
    response.close();
    return text;
}

std::string times(std::size_t count) {
    return count == 1 ? "once" : std::to_string(count) + " times";
}

}  // namespace

Replay::Replay(Recording recording, Time now) : recording_(std::move(recording)), position_time_(now) {
    makeReady();
}

void Replay::makeReady() {
    std::size_t passwords = 0;
    std::size_t hidden = 0;
    for (std::size_t place = 0; place < recording_.messages.size(); ++place) {
        Recording::Message &message = recording_.messages[place];
        if (!message.text) {
            ++hidden;
        } else if (message.isEvent()) {
            events_.push_back(place);
        } else if (message.direction == Capture::Direction::from_service) {
            passwords += fillIn(*message.text) ? 1U : 0U;
        }
    }
    used_.resize(recording_.exchanges.size());
    for (std::size_t n = 0; n < recording_.exchanges.size(); ++n) {
        auto const &text = recording_.messages[recording_.exchanges[n].command].text;
        if (!text) {
            used_[n] = true;
            continue;
        }
        Keys const keys(*text);
        ++recorded_methods_[keys.method];
        exact_[keys.exact].push_back(n);
        loose_[keys.loose].push_back(n);
        ++counts_.left;
    }
    for (Queues *const queues : {&exact_, &loose_}) {
        for (auto &queue : *queues) {
            // The first is taken from the end.
            std::reverse(queue.second.begin(), queue.second.end());
        }
    }
    if (passwords != 0) {
        remarks_.push_back("passwords are hidden in " + std::to_string(passwords) +
                           " answers of the capture; they are answered as empty texts");
    }
    if (hidden != 0) {
        remarks_.push_back(std::to_string(hidden) +
                           " messages are hidden in the capture as a whole, since they may hold passwords, "
                           "and are left out");
    }
    if (recording_.strays != 0) {
        remarks_.push_back(std::to_string(recording_.strays) +
                           " answers in the capture are to commands from before it began, and are left out");
    }
}

std::optional<std::size_t> Replay::takeFrom(Queues &queues, std::string const &key) {
    auto const found = queues.find(key);
    while (found != queues.end() && !found->second.empty()) {
        std::size_t const exchange = found->second.back();
        found->second.pop_back();
        if (!used_[exchange]) {
            used_[exchange] = true;
            return exchange;
        }
    }
    return std::nullopt;
}

std::chrono::nanoseconds Replay::between(std::size_t first, std::size_t second) const {
    // The machine's clock may have been set back meanwhile.
    return std::max<std::chrono::nanoseconds>(
        recording_.messages[second].time - recording_.messages[first].time, std::chrono::nanoseconds(0));
}

void Replay::takeEventsBefore(std::size_t place, std::vector<std::string> &events) {
    for (; next_event_ < events_.size() && events_[next_event_] < place; ++next_event_) {
        events.push_back(std::move(*recording_.messages[events_[next_event_]].text));
    }
}

std::size_t Replay::nextCommand() const {
    for (std::size_t next = position_ ? *position_ + 1 : 0; next < recording_.exchanges.size(); ++next) {
        std::size_t const place = recording_.exchanges[next].command;
        // One that is hidden is never asked for.
        if (recording_.messages[place].text) {
            return place;
        }
    }
    return recording_.messages.size();
}

Replay::Reply Replay::answer(std::string_view command, Time now) {
    Reply reply;
    Keys const keys(command);
    auto found = takeFrom(exact_, keys.exact);
    if (!found) {
        found = takeFrom(loose_, keys.loose);
        if (found) {
            reply.note = quoted(keys.method) + " is answered as in line " +
                         std::to_string(recording_.messages[recording_.exchanges[*found].command].line) +
                         " of the capture, where it has other parameters";
        }
    }
    if (!found) {
        auto const recorded = recorded_methods_.find(keys.method);
        if (recorded == recorded_methods_.end()) {
            reply.refusal = "the capture does not hold this command";
        } else if (loose_.count(keys.loose) == 0) {
            reply.refusal = keys.identifiers.empty()
                                ? "the capture does not hold this command with such parameters"
                                : "the capture does not hold this command with this " + keys.identifiers;
        } else {
            reply.refusal =
                "the capture holds this command no further time (" + times(recorded->second) + " in all)";
        }
        reply.answers.push_back({failure(keys.method), std::chrono::milliseconds(0)});
        ++counts_.refused;
        return reply;
    }
    Recording::Exchange const &exchange = recording_.exchanges[*found];
    ++counts_.answered;
    --counts_.left;
    if (!position_ || *found > *position_) {
        takeEventsBefore(exchange.command, reply.events);
        position_ = found;
        position_time_ = now;
    }
    for (std::size_t const place : exchange.answers) {
        auto const &text = recording_.messages[place].text;
        if (!text) {
            reply.refusal = "its answer is hidden in the capture, in line " +
                            std::to_string(recording_.messages[place].line);
            reply.answers.push_back({failure(keys.method), std::chrono::milliseconds(0)});
            continue;
        }
        auto const taken =
            std::chrono::duration_cast<std::chrono::milliseconds>(between(exchange.command, place));
        bool const at_once = taken < prompt;
        if (at_once && *found == *position_) {
            takeEventsBefore(std::min(place, nextCommand()), reply.events);
        }
        reply.answers.push_back({*text, at_once ? std::chrono::milliseconds(0) : taken});
    }
    return reply;
}

std::optional<Replay::Time> Replay::nextDeadline() const {
    if (next_event_ >= events_.size() || events_[next_event_] >= nextCommand()) {
        return std::nullopt;
    }
    std::size_t const from = position_ ? recording_.exchanges[*position_].command : 0;
    return position_time_ + between(from, events_[next_event_]);
}

std::optional<std::string> Replay::takeDue(Time now) {
    auto const due = nextDeadline();
    if (!due || *due > now) {
        return std::nullopt;
    }
    return std::move(*recording_.messages[events_[next_event_++]].text);
}

Replay::Counts Replay::counts() const {
    return counts_;
}

}  // namespace simulator
