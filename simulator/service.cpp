// SPDX-License-Identifier: Apache-2.0
#include "simulator/service.h"

#include <algorithm>
#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

#include "error_words.h"
#include "korvo_core.h"
#include "operations/protocol.h"
#include "simulator/json_writer.h"

namespace simulator {

namespace {

constexpr char const *process_name = "korvo-action-engine-simulator";

/// So many answers are held back at a time; further ones are left out, so that a flood stays bounded.
constexpr std::size_t most_held_back = 4096;

/// So many commands to the control service wait at a time.
constexpr std::size_t most_asked = 1000;
constexpr char const *too_much_asked = "1000 commands to the control service wait already; ask again later";

/// The answer that takes no memory. It may have been carried out before the memory for the right one was too short.
constexpr char const *without_memory =
    R"({"status":9,"reason":"out of memory; whether the command was carried out is not known"})";

/// How soon what failed is tried again. Memory that is short is short for a while.
constexpr std::chrono::milliseconds pause_after_failure{100};

}  // namespace

Service::Service(Loop &loop, void *logging, std::string const &target, Catalogue catalogue,
                 Dispatcher::Settings answers, Engine::Settings const &settings, Clock &clock,
                 runners::Runner &runner, Tape &tape, Log const &log)
    : loop_(loop),
      clock_(clock),
      tape_(tape),
      log_(log),
      runner_(runner),
      engine_(std::move(catalogue), surroundings(runner), log, settings),
      dispatcher_(engine_, answers, log),
      control_({engine_, clock, dispatcher_.faults(), runner, tape, [this] { loop_.wake(); }}, log),
      logging_(logging),
      target_(target) {
    listen(protocol::service, onCommand, messaging_);
    try {
        listen(control::service, onControl, control_messaging_);
    } catch (...) {
        (void)korvo_core_ipc_deinit(messaging_);
        throw;
    }
}

Service::~Service() {
    (void)korvo_core_ipc_deinit(control_messaging_);
    (void)korvo_core_ipc_deinit(messaging_);
    try {
        (void)engine_.takeTraces();
    } catch (std::exception const &error) {
        tell("the last traces are lost", error);
    }
}

void Service::listen(char const *service, Callback callback, void *&messaging) {
    char const *const target = target_.empty() ? nullptr : target_.c_str();
    // The handle is in its place before the callback is set: the first command may come before that call returns.
    korvo_core_status status =
        korvo_core_ipc_target_init(logging_, service, target, process_name, &messaging);
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        status = korvo_core_ipc_target_command_receive_callback(messaging, callback, this);
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            stopListening(messaging);
        }
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        throw std::runtime_error(std::string("cannot listen as \"") + service + "\", target \"" + target_ +
                                 "\": " + korvo_core_status_to_string(status) +
                                 ". The log says more; is there another one with this target already?");
    }
}

void Service::stopListening(void *&messaging) noexcept {
    // Only then is no callback left that reads it.
    (void)korvo_core_ipc_deinit(messaging);
    messaging = nullptr;
}

void Service::closeConnections() {
    if (messaging_ != nullptr) {
        log_.notice(std::string("all connections are closed: ") + close_why_.load());
        stopListening(messaging_);
    }
    // Here nobody listens: the first command of those who come may give the next reason.
    close_why_ = nullptr;
    // Where this throws, it is tried again.
    listen(protocol::service, onCommand, messaging_);
}

Engine::Surroundings Service::surroundings(runners::Runner &runner) {
    return {[this] { return clock_.now(); },
            [this] { return clock_.wall(); },
            [this] { return clock_.local(); },
            [&runner](Job const &job, auto const &done) { runner.run(job, done); },
            [this](std::string const &event) { publishOwn(event); },
            [this] { loop_.wake(); }};
}

void Service::onCommand(char **source, char **request_id, char **command, void *context) {
    auto &service = *static_cast<Service *>(context);
    try {
        service.takeCommand(*source, *request_id, *command);
    } catch (std::exception const &error) {
        // No exception may enter the core. Out of memory is all that can bring us here. An answer that does not name its
        // command calls nobody back, but the end of the connection does.
        service.tell("a command was not answered", error);
        service.close_why_ = "memory was too short for an answer";
        service.loop_.wake();
    }
}

void Service::onControl(char **source, char **request_id, char **command, void *context) {
    auto &service = *static_cast<Service *>(context);
    try {
        bool const kept = service.asked_.with([&](std::deque<Asked> &asked) {
            if (asked.size() >= most_asked) {
                return false;
            }
            asked.push_back({*source, *request_id, *command});
            return true;
        });
        if (kept) {
            service.loop_.wake();
        } else {
            service.send(service.control_messaging_, *source, *request_id,
                         control::Control::refusal(*command, too_much_asked));
        }
    } catch (std::exception const &error) {
        service.answerWithoutMemory(*source, *request_id, error);
    }
}

void Service::answerWithoutMemory(char const *source, char const *request_id,
                                  std::exception const &error) const noexcept {
    tell("a command to the control service was answered without memory", error);
    // Where not even this can be sent the core takes leave of the client, whose calls end with that.
    (void)korvo_core_ipc_target_response_send(control_messaging_, source, request_id, without_memory);
}

void Service::answerControl() {
    for (;;) {
        std::optional<Asked> const asked = asked_.with([](std::deque<Asked> &waiting) {
            std::optional<Asked> first;
            if (!waiting.empty()) {
                first = std::move(waiting.front());
                waiting.pop_front();
            }
            return first;
        });
        if (!asked) {
            return;
        }
        try {
            control_.answer(asked->command, [this, source = asked->source,
                                             request_id = asked->request_id](std::string const &response) {
                send(control_messaging_, source.c_str(), request_id.c_str(), response);
            });
        } catch (std::exception const &error) {
            answerWithoutMemory(asked->source.c_str(), asked->request_id.c_str(), error);
        }
    }
}

void Service::takeCommand(char const *source, char const *request_id, char const *command) {
    note(messaging_, source, request_id, Capture::Direction::to_service, command);
    bool const replayed =
        tape_.replays() && tape_.answer(command, clock_.now(),
                                        {[this](std::string const &event) { publish(messaging_, event); },
                                         [&](Replay::Answer const &recorded) {
                                             answer(source, request_id, recorded.text, recorded.delay);
                                         }});
    if (replayed) {
        // The next event is another one.
        loop_.wake();
        return;
    }
    Dispatcher::Answer const made = dispatcher_.answer(command);
    if (made.text.empty()) {
        return;
    }
    if (made.close) {
        close_why_ = "a fault has it so";
        loop_.wake();
        return;
    }
    for (int times = made.duplicate ? 2 : 1; times > 0; --times) {
        answer(source, request_id, made.text, made.delay);
    }
}

void Service::answer(char const *source, char const *request_id, std::string const &response,
                     std::chrono::milliseconds delay) {
    if (delay.count() != 0) {
        try {
            sendLater(source, request_id, response, delay);
            return;
        } catch (std::bad_alloc const &) {
            // Better early than never.
        }
    }
    send(messaging_, source, request_id, response);
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
        send(messaging_, answer.source.c_str(), answer.request_id.c_str(), answer.response);
    }
}

void Service::publishOwn(std::string const &event) {
    if (!tape_.replays()) {
        publish(messaging_, event);
    }
}

void Service::publish(void *messaging, std::string const &event) {
    note(messaging, "", "", Capture::Direction::from_service, event);
    korvo_core_status const status = korvo_core_ipc_target_event_send(messaging, event.c_str());
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        log_.warning(std::string("an event was not published: ") + korvo_core_status_to_string(status));
    }
}

void Service::send(void *messaging, char const *source, char const *request_id, std::string const &response) {
    note(messaging, source, request_id, Capture::Direction::from_service, response);
    korvo_core_status const status =
        korvo_core_ipc_target_response_send(messaging, source, request_id, response.c_str());
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        log_.info(std::string("an answer was not delivered: ") + korvo_core_status_to_string(status));
    }
}

void Service::note(void const *messaging, std::string_view peer, std::string_view request,
                   Capture::Direction direction, std::string_view text) const noexcept {
    // The other handle may not be there yet when the first command comes.
    if (messaging == messaging_) {
        tape_.note(std::chrono::system_clock::now(), {peer, request, direction, text});
    }
}

void Service::tell(char const *what, std::exception const &error) const noexcept {
    try {
        log_.error(std::string(what) + ": " + platform::wordsOf(error));
    } catch (std::exception const &) {
        // Nobody can be told of it either.
    }
}

std::optional<Loop::Clock::time_point> Service::nextMoment() {
    auto const next = earlier(engine_.nextDeadline(), tape_.nextDeadline());
    std::optional<Loop::Clock::time_point> deadline = next ? clock_.realTimeOf(*next) : std::nullopt;
    if (engine_.tracesWait()) {
        deadline = std::min(deadline.value_or(traces_due_), traces_due_);
    }
    return held_back_.with([&deadline](HeldAnswers const &answers) {
        if (answers.empty()) {
            return deadline;
        }
        auto const first = answers.begin()->first;
        return std::optional<Loop::Clock::time_point>(deadline ? std::min(*deadline, first) : first);
    });
}

void Service::keepTraces() {
    constexpr std::chrono::milliseconds together{200};
    auto const now = Loop::Clock::now();
    if (now >= traces_due_) {
        traces_due_ = now + together;
        for (KeptTrace const &trace : engine_.takeTraces()) {
            std::string event;
            JsonWriter writer(event);
            writer.text("event", "Trace_added");
            writer.number("id", static_cast<std::uint32_t>(trace.id()));
            writer.text("outcome", nameOf(trace.outcome()));
            writer.close();
            publish(control_messaging_, event);
        }
    }
}

void Service::run() noexcept {
    // At once: the store's timers run from now on.
    std::optional<Loop::Clock::time_point> until = Loop::Clock::now();
    while (loop_.wait(until)) {
        try {
            if (close_why_ != nullptr || messaging_ == nullptr) {
                closeConnections();
            }
            sendDue();
            tape_.sendDue(clock_.now(), [this](std::string const &event) { publish(messaging_, event); });
            runner_.finish();
            answerControl();
            keepTraces();
            // One action at a time, so that signals and held back answers get their turn in between.
            until = engine_.step() || control_.advance() ? Loop::Clock::now() : nextMoment();
        } catch (std::exception const &error) {
            tell("what is due was put off", error);
            until = Loop::Clock::now() + pause_after_failure;
        }
    }
}

}  // namespace simulator
