// SPDX-License-Identifier: Apache-2.0
#include "fake_platform/script.h"

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>

#include "fake_platform/lists.h"

namespace fake_platform {

namespace {

struct Arrangement {
    Outcome outcome;
    unsigned int nth;
};

struct Script {
    bool scripted = false;
    bool asks = true;
    std::vector<Call> calls;
    std::vector<LogLine> log_lines;
    std::map<Function, std::vector<Arrangement>> arrangements;
    std::list<json::Object> responses;
    std::map<std::string, json::Object> messages;
    std::size_t messages_so_far = 0;
    std::function<void()> closing_action;
};

std::mutex mutex;

// Made when it is first needed and released as a whole, so that a test which counts blocks can be rid of it.
std::unique_ptr<Script> &current() {
    static std::unique_ptr<Script> script;
    if (script == nullptr) {
        script = std::make_unique<Script>();
    }
    return script;
}

/// How the next call of the function ends, and counts it.
std::optional<Outcome> nextOutcome(Function function) {
    std::optional<Outcome> outcome;
    for (Arrangement &arrangement : current()->arrangements[function]) {
        if (arrangement.nth == 0) {
            outcome = arrangement.outcome;
        } else if (arrangement.nth == 1) {
            outcome = arrangement.outcome;
            arrangement.nth = ~0U;
        } else {
            --arrangement.nth;
        }
    }
    return outcome;
}

std::optional<korvo_core_status> end(std::optional<Outcome> const &outcome) {
    if (!outcome.has_value()) {
        return std::nullopt;
    }
    raise(outcome->thrown);
    return outcome->status;
}

void endOtherModes() {
    endRecordingOfCore();
    endCountingOfReleases();
}

}  // namespace

void raise(Throw what) {
    switch (what) {
        case Throw::standard_exception:
            throw std::runtime_error("arranged by the test");
        case Throw::json_exception:
            throw json::Exception("arranged by the test");
        case Throw::number:
            throw 1;
        case Throw::nothing:
            break;
    }
}

void reset() {
    endOtherModes();
    std::lock_guard<std::mutex> const lock(mutex);
    current().reset();
}

void script() {
    endOtherModes();
    std::lock_guard<std::mutex> const lock(mutex);
    current().reset();
    current()->scripted = true;
}

bool scripted() {
    std::lock_guard<std::mutex> const lock(mutex);
    return current()->scripted;
}

bool asks() {
    std::lock_guard<std::mutex> const lock(mutex);
    return current()->asks;
}

void neverAsk() {
    std::lock_guard<std::mutex> const lock(mutex);
    current()->asks = false;
}

void arrange(Function function, Outcome outcome, unsigned int nth) {
    std::lock_guard<std::mutex> const lock(mutex);
    if (!current()->scripted) {
        throw std::logic_error("arrange() is for the scripted mode; call script() first");
    }
    current()->arrangements[function].push_back({outcome, nth});
}

void respond(json::Object const &response) {
    std::lock_guard<std::mutex> const lock(mutex);
    current()->responses.push_back(response);
}

std::vector<Call> calls() {
    std::lock_guard<std::mutex> const lock(mutex);
    return current()->calls;
}

std::vector<Call> calls(Function function) {
    std::vector<Call> chosen;
    for (Call &call : calls()) {
        if (call.function == function) {
            chosen.push_back(std::move(call));
        }
    }
    return chosen;
}

std::vector<LogLine> logLines() {
    std::lock_guard<std::mutex> const lock(mutex);
    return current()->log_lines;
}

std::optional<korvo_core_status> enter(Call const &call) {
    std::optional<Outcome> outcome;
    {
        std::lock_guard<std::mutex> const lock(mutex);
        if (!current()->scripted) {
            return std::nullopt;
        }
        current()->calls.push_back(call);
        outcome = nextOutcome(call.function);
    }
    return end(outcome);
}

void record(LogLine const &line) {
    std::optional<Outcome> outcome;
    {
        std::lock_guard<std::mutex> const lock(mutex);
        if (!current()->scripted) {
            return;
        }
        current()->log_lines.push_back(line);
        outcome = nextOutcome(Function::log);
    }
    (void)end(outcome);
}

void onClosing(std::function<void()> const &action) {
    std::lock_guard<std::mutex> const lock(mutex);
    current()->closing_action = action;
}

std::function<void()> takeClosingAction() {
    std::lock_guard<std::mutex> const lock(mutex);
    std::function<void()> action;
    action.swap(current()->closing_action);
    return action;
}

bool takeResponse(json::Object &response) {
    std::lock_guard<std::mutex> const lock(mutex);
    if (current()->responses.empty()) {
        return false;
    }
    response = current()->responses.front();
    current()->responses.pop_front();
    return true;
}

std::string textFor(json::Object const &message) {
    std::lock_guard<std::mutex> const lock(mutex);
    std::string const text = "message " + std::to_string(++current()->messages_so_far);
    current()->messages.emplace(text, message);
    return text;
}

bool objectOf(std::string const &text, json::Object &message) {
    std::lock_guard<std::mutex> const lock(mutex);
    auto const known = current()->messages.find(text);
    if (known == current()->messages.end()) {
        return false;
    }
    message = known->second;
    current()->messages.erase(known);
    return true;
}

}  // namespace fake_platform
