// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_SERVICE_H
#define KORVO_SIMULATOR_SERVICE_H

#include <chrono>
#include <exception>
#include <map>
#include <optional>
#include <string>

#include "simulator/catalogue.h"
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
/// Two threads meet here. The core's messaging thread carries out and answers commands. The thread that calls run()
/// fires triggers, runs actions, publishes events and sends answers that were held back. What they share is the engine,
/// which has a lock of its own, those answers, and the messaging handle, which the core lets any thread send on.
class Service {
  public:
    /// Listens for commands from now on. What it is given must outlive the service. Throws std::runtime_error when the
    /// core refuses.
    Service(Loop &loop, void *logging, std::string const &target, Catalogue catalogue,
            Dispatcher::Settings answers, Clock &clock, runners::Runner &runner, Log const &log);
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

    // On the messaging thread.
    static void onCommand(char **source, char **request_id, char **command, void *context);
    void takeCommand(char const *source, char const *request_id, char const *command);
    void sendLater(std::string source, std::string request_id, std::string response,
                   std::chrono::milliseconds delay);

    // On the thread that runs.
    void sendDue();
    std::optional<Loop::Clock::time_point> nextMoment();

    void tell(char const *what, std::exception const &error) const noexcept;
    void send(char const *source, char const *request_id, std::string const &response);

    Loop &loop_;
    Clock &clock_;
    Log const &log_;
    Guarded<HeldAnswers> held_back_;
    Engine engine_;
    Dispatcher dispatcher_;
    void *messaging_ = nullptr;
};

}  // namespace simulator

#endif
