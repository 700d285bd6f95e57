// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_SERVICE_H
#define KORVO_SIMULATOR_SERVICE_H

#include <atomic>
#include <chrono>
#include <deque>
#include <exception>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "simulator/captures/tape.h"
#include "simulator/catalogue.h"
#include "simulator/control/control.h"
#include "simulator/dispatcher.h"
#include "simulator/engine.h"
#include "simulator/guarded.h"
#include "simulator/log.h"
#include "simulator/loop.h"
#include "simulator/runners/runner.h"
#include "simulator/time/clock.h"

namespace simulator {

/// The engine at the platform core's messaging.
///
/// Three threads meet here. The core's messaging thread carries out and answers commands. That of the control service
/// only hands its commands on. The thread that calls run() fires triggers, runs actions, publishes events, sends answers
/// that were held back, and answers the control service. What they share is the engine and the faults, which have locks
/// of their own, what waits for the last thread, and the messaging handles, which the core lets any thread send on.
class Service {
  public:
    /// Listens for commands from now on. What it is given must outlive the service. Throws std::runtime_error when the core
    /// refuses.
    Service(Loop &loop, void *logging, std::string const &target, Catalogue catalogue,
            Dispatcher::Settings answers, Engine::Settings const &settings, Clock &clock,
            runners::Runner &runner, Tape &tape, Log const &log);
    /// Takes no more commands and waits for the one that is being answered.
    ~Service();

    Service(Service const &) = delete;
    Service &operator=(Service const &) = delete;

    /// Works until the loop says that the program is to end. What memory is too short for is tried again a moment later.
    void run() noexcept;

  private:
    /// An answer that is held back.
    struct Held {
        std::string source;
        std::string request_id;
        std::string response;
    };
    using HeldAnswers = std::multimap<Loop::Clock::time_point, Held>;

    Engine::Surroundings surroundings(runners::Runner &runner);

    /// A command to the control service that waits for its turn.
    struct Asked {
        std::string source;
        std::string request_id;
        std::string command;
    };

    using Callback = void (*)(char **, char **, char **, void *);
    /// Opens a target whose commands the callback takes; throws std::runtime_error.
    void listen(char const *service, Callback callback, void *&messaging);
    static void stopListening(void *&messaging) noexcept;

    // On the messaging threads.
    static void onControl(char **source, char **request_id, char **command, void *context);
    static void onCommand(char **source, char **request_id, char **command, void *context);
    void takeCommand(char const *source, char const *request_id, char const *command);
    /// Sends it at once or later.
    void answer(char const *source, char const *request_id, std::string const &response,
                std::chrono::milliseconds delay);
    void sendLater(std::string source, std::string request_id, std::string response,
                   std::chrono::milliseconds delay);

    // On the thread that runs.
    /// Publishes what actions have done, unless clients are answered from a capture.
    void publishOwn(std::string const &event);
    void answerControl();
    /// Closes all connections to the service, and listens again.
    void closeConnections();
    void sendDue();
    std::optional<Loop::Clock::time_point> nextMoment();
    /// Lets traces come to the store, many at a time.
    void keepTraces();

    // On any of them.
    /// To a command to the control service.
    void answerWithoutMemory(char const *source, char const *request_id,
                             std::exception const &error) const noexcept;
    void note(void const *messaging, std::string_view peer, std::string_view request,
              Capture::Direction direction, std::string_view text) const noexcept;
    void tell(char const *what, std::exception const &error) const noexcept;
    void send(void *messaging, char const *source, char const *request_id, std::string const &response);
    void publish(void *messaging, std::string const &event);

    Loop &loop_;
    Clock &clock_;
    Tape &tape_;
    Log const &log_;
    runners::Runner &runner_;
    Guarded<HeldAnswers> held_back_;
    /// Not before this.
    Loop::Clock::time_point traces_due_{};
    Engine engine_;
    Dispatcher dispatcher_;
    control::Control control_;
    Guarded<std::deque<Asked>> asked_;
    /// Why all connections are to be closed; NULL when they are not.
    std::atomic<char const *> close_why_{nullptr};
    void *logging_;
    std::string target_;
    void *messaging_ = nullptr;
    void *control_messaging_ = nullptr;
};

}  // namespace simulator

#endif
