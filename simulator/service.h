// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_SERVICE_H
#define KORVO_SIMULATOR_SERVICE_H

#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <string>

#include "simulator/catalogue.h"
#include "simulator/dispatcher.h"
#include "simulator/engine.h"
#include "simulator/log.h"
#include "simulator/runners/runner.h"
#include "simulator/time/clock.h"

namespace simulator {

/// The engine at the platform core's messaging.
///
/// Two threads meet here. The core's messaging thread carries out and answers commands. The thread that runs the
/// io_context fires triggers, runs actions, publishes events and sends answers that were held back. What they share is
/// the engine, which has a lock of its own, and the messaging handle, which the core lets any thread send on.
class Service {
  public:
    /// Listens for commands from now on. What it is given must outlive the service. Throws std::runtime_error when the
    /// core refuses.
    Service(boost::asio::io_context &io, void *logging, std::string const &target, Catalogue catalogue,
            Dispatcher::Settings answers, Clock &clock, runners::Runner &runner, Log const &log);
    /// Takes no more commands and waits for the one that is being answered. The io_context must have stopped.
    ~Service();

    Service(Service const &) = delete;
    Service &operator=(Service const &) = delete;

  private:
    Engine::Surroundings surroundings(runners::Runner &runner);

    // On the messaging thread.
    static void onCommand(char **source, char **request_id, char **command, void *context);
    void takeCommand(char const *source, char const *request_id, char const *command);
    void sendLater(std::string source, std::string request_id, std::string response,
                   std::chrono::milliseconds delay);

    // On the io_context's thread.
    void work();
    void workOn();
    void waitForDeadline();

    void wake();
    void send(char const *source, char const *request_id, std::string const &response);

    boost::asio::io_context &io_;
    Clock &clock_;
    Log const &log_;
    boost::asio::steady_timer deadline_;
    std::atomic<bool> woken_{false};
    bool working_ = false;
    std::atomic<unsigned int> held_back_{0};
    Engine engine_;
    Dispatcher dispatcher_;
    void *messaging_ = nullptr;
};

}  // namespace simulator

#endif
