// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_CONTROL_CONTROL_H
#define KORVO_SIMULATOR_CONTROL_CONTROL_H

#include <boost/json/object.hpp>
#include <functional>
#include <string>
#include <string_view>

#include "simulator/captures/tape.h"
#include "simulator/engine.h"
#include "simulator/faults.h"
#include "simulator/guarded.h"
#include "simulator/log.h"
#include "simulator/runners/runner.h"
#include "simulator/time/clock.h"

namespace simulator::control {

/// The name under which the service can be questioned and moved while it runs.
inline constexpr char const *service = "action_engine_simulator";

class Members;

/// Answers the commands of docs/simulator-control.md. For the thread of Engine::step() alone.
class Control {
  public:
    struct Parts {
        Engine &engine;
        Clock &clock;
        Guarded<FaultTable> &faults;
        runners::Runner const &runner;
        Tape &tape;
        /// Asks for Engine::step() and nextDeadline(), since the clock runs otherwise than before.
        std::function<void()> wake;
    };
    /// Takes the answer, or nothing when the connection is gone.
    using Reply = std::function<void(std::string const &)>;

    Control(Parts parts, Log const &log);

    /// Answers a command, at once or later. Never throws for what a command holds.
    void answer(std::string_view command, Reply reply);

    /// The answer to a command that is not taken.
    static std::string refusal(std::string_view command, char const *reason);

    /// To be called whenever the engine has nothing to do: while the clock is to be advanced, moves it to the next
    /// deadline, or to where it was to come, and answers. True when there is something to do for the engine again.
    bool advance();

  private:
    using Object = boost::json::object;

    Object carryOut(std::string_view name, Members const &members);
    void beginAdvance(std::string_view name, Members const &members, Reply const &reply);

    Object clockTold() const;
    void needVirtualClock() const;
    void setClock(Members const &members);
    Object addFault(Members const &members);
    Object faultsTold();
    void clearFaults(Members const &members);
    Object traces(Members const &members);
    Object explain(Members const &members);
    Object inject(Members const &members);
    Object catalogue(Members const &members);
    void replaceCatalogue(Members const &members);
    Object startCapture(Members const &members);
    Object startReplay(Members const &members);
    Object stopReplay();

    Parts parts_;
    Log const &log_;
    struct Advance {
        std::string name;
        Engine::Time until;
        Reply reply;
    };
    std::optional<Advance> advance_;
};

}  // namespace simulator::control

#endif
