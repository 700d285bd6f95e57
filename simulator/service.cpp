// SPDX-License-Identifier: Apache-2.0
#include "simulator/service.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>

#include "korvo_core.h"
#include "operations/protocol.h"

namespace simulator {

namespace {

constexpr char const *process_name = "korvo-action-engine-simulator";

/// So many answers are held back at a time; further ones are left out, so that a flood stays bounded.
constexpr std::size_t most_held_back = 4096;

/// How soon what failed is tried again. Memory that is short is short for a while.
constexpr std::chrono::milliseconds pause_after_failure{100};

}  // namespace

Service::Service(Loop &loop, void *logging, std::string const &target, Catalogue catalogue,
                 Dispatcher::Settings answers, Clock &clock, runners::Runner &runner, Log const &log)
    : loop_(loop),
      clock_(clock),
      log_(log),
      engine_(std::move(catalogue), surroundings(runner), log),
      dispatcher_(engine_, answers, log) {
    char const *const target_text = target.empty() ? nullptr : target.c_str();
    korvo_core_status status =
        korvo_core_ipc_target_init(logging, protocol::service, target_text, process_name, &messaging_);
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        status = korvo_core_ipc_target_command_receive_callback(messaging_, onCommand, this);
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            (void)korvo_core_ipc_deinit(messaging_);
        }
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        throw std::runtime_error(std::string("cannot listen as \"") + protocol::service + "\", target \"" +
                                 target + "\": " + korvo_core_status_to_string(status) +
                                 ". The log says more; is there another one with this target already?");
    }
}

Service::~Service() {
    (void)korvo_core_ipc_deinit(messaging_);
}

Engine::Surroundings Service::surroundings(runners::Runner &runner) {
    return {[this] { return clock_.now(); }, [this] { return clock_.local(); },
            [&runner](Job const &job) { return runner.run(job); },
            [this](std::string const &event) {
                korvo_core_status const status = korvo_core_ipc_target_event_send(messaging_, event.c_str());
                if (status != KORVO_CORE_STATUS_NO_ERROR) {
                    log_.warning(std::string("an event was not published: ") +
                                 korvo_core_status_to_string(status));
                }
            },
            [this] { loop_.wake(); }};
}

void Service::onCommand(char **source, char **request_id, char **command, void *context) {
    auto &service = *static_cast<Service *>(context);
    try {
        service.takeCommand(*source, *request_id, *command);
    } catch (std::exception const &error) {
        // No exception may enter the core. Out of memory is all that can bring us here.
        service.tell("a command was not answered", error);
    }
}

void Service::takeCommand(char const *source, char const *request_id, char const *command) {
    Dispatcher::Answer const answer = dispatcher_.answer(command);
    if (answer.text.empty()) {
        return;
    }
    if (answer.delay.count() == 0) {
        send(source, request_id, answer.text);
    } else {
        sendLater(source, request_id, answer.text, answer.delay);
    }
}

void Service::sendLater(std::string source, std::string request_id, std::string response,
                        std::chrono::milliseconds delay) {
    auto const when = Loop::Clock::now() + delay;
    bool const kept = held_back_.with([&](HeldAnswers &answers) {
        if (answers.size() >= most_held_back) {
            return false;
        }
        answers.emplace(when, Held{std::move(source), std::move(request_id), std::move(response)});
        return true;
    });
    if (kept) {
        loop_.wake();
    } else {
        log_.warning("an answer is left out: " + std::to_string(most_held_back) + " are held back already");
    }
}

void Service::sendDue() {
    for (;;) {
        HeldAnswers::node_type const due = held_back_.with([](HeldAnswers &answers) {
            return !answers.empty() && answers.begin()->first <= Loop::Clock::now()
                       ? answers.extract(answers.begin())
                       : HeldAnswers::node_type();
        });
        if (due.empty()) {
            return;
        }
        Held const &answer = due.mapped();
        send(answer.source.c_str(), answer.request_id.c_str(), answer.response);
    }
}

void Service::send(char const *source, char const *request_id, std::string const &response) {
    korvo_core_status const status =
        korvo_core_ipc_target_response_send(messaging_, source, request_id, response.c_str());
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        log_.info(std::string("an answer was not delivered: ") + korvo_core_status_to_string(status));
    }
}

void Service::tell(char const *what, std::exception const &error) const noexcept {
    try {
        log_.error(std::string(what) + ": " + error.what());
    } catch (std::exception const &) {
        // Nobody can be told of it either.
    }
}

std::optional<Loop::Clock::time_point> Service::nextMoment() {
    auto const next = engine_.nextDeadline();
    std::optional<Loop::Clock::time_point> const deadline = next ? clock_.realTimeOf(*next) : std::nullopt;
    return held_back_.with([&deadline](HeldAnswers const &answers) {
        if (answers.empty()) {
            return deadline;
        }
        auto const first = answers.begin()->first;
        return std::optional<Loop::Clock::time_point>(deadline ? std::min(*deadline, first) : first);
    });
}

void Service::run() noexcept {
    // At once: the store's timers run from now on.
    std::optional<Loop::Clock::time_point> until = Loop::Clock::now();
    while (loop_.wait(until)) {
        try {
            sendDue();
            // One action at a time, so that signals and held back answers get their turn in between.
            until = engine_.step() ? Loop::Clock::now() : nextMoment();
        } catch (std::exception const &error) {
            tell("what is due was put off", error);
            until = Loop::Clock::now() + pause_after_failure;
        }
    }
}

}  // namespace simulator
