// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_DISPATCHER_H
#define KORVO_SIMULATOR_DISPATCHER_H

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "operations/protocol.h"
#include "simulator/command.h"
#include "simulator/engine.h"
#include "simulator/faults.h"
#include "simulator/handlers/call.h"
#include "simulator/log.h"
#include "simulator/refusal_log.h"

namespace simulator {

/// Makes the answer of each command. For one thread at a time.
class Dispatcher {
  public:
    struct Settings {
        handlers::Version version{protocol::major_version, protocol::minor_version};
        Faults faults{};
    };

    struct Answer {
        /// The response (JSON), valid until the next call; empty when there is to be none.
        std::string const &text;
        /// How long the response is to be held back.
        std::chrono::milliseconds delay{0};
        /// Whether it is to be sent twice.
        bool duplicate = false;
        /// Whether connections are to be closed in its place.
        bool close = false;
    };

    /// `real_time` is the machine's clock: the engine's may stand.
    Dispatcher(Engine &engine, Settings settings, Log const &log,
               std::function<Engine::Time()> real_time = std::chrono::steady_clock::now);

    /// Carries out a command (JSON). Never throws for what a command holds: a command that cannot be carried out is
    /// answered with its status, and the log says why.
    Answer answer(std::string_view command);

    /// What goes wrong on purpose. On any thread.
    Guarded<FaultTable> &faults() { return faults_; }

  private:
    void respond();
    void spoil(Fault const &fault);
    void writeStatus(std::uint32_t status);
    /// For log lines.
    std::string commandName() const;
    void logFailure(char const *why) noexcept;
    void logRefusal(char const *why) noexcept;

    Engine &engine_;
    handlers::Version version_;
    Guarded<FaultTable> faults_;
    Log const &log_;
    CommandReader reader_;
    std::string response_;
    handlers::ToldVersions told_versions_;
    RefusalLog refusals_;
};

}  // namespace simulator

#endif
