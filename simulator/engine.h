// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_ENGINE_H
#define KORVO_SIMULATOR_ENGINE_H

#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "simulator/catalogue.h"
#include "simulator/deadlines.h"
#include "simulator/filters.h"
#include "simulator/guarded.h"
#include "simulator/log.h"
#include "simulator/onvif/event.h"
#include "simulator/traces/keeper.h"

namespace simulator {

/// One run of one action: a copy, so that the run needs no lock.
struct Job {
    std::uint32_t action_id;
    EntryKind const *kind;
    Values settings;
    /// What made the trigger fire, in words.
    std::string cause;

    template <typename T>
    T const &setting(std::string_view name) const {
        return valueOf<T>(settings, settingsRow(*kind), name);
    }
    std::string const &name() const { return setting<std::string>("action_name"); }
};

/// How a run ended, and what it did or why it failed, in words.
struct RunResult {
    bool success;
    std::string words;
};

/// A trace that is not over, and how much is still to come: firings that wait for their turn, and runs.
struct OpenTrace {
    Trace trace;
    std::size_t pending = 0;

    /// One less; true when it is over.
    bool ends() noexcept { return --pending == 0; }
};

/// Fills in what the action is, and whether its windows let it run at this time.
void judgeAction(Catalogue::Entry const &action, LocalTime time, ActionTrace &trace);

/// What the engine's lock guards: the catalogue, which trigger is due when, and what has fired and still is to run. The
/// member functions keep the deadlines in step with the triggers.
class EngineState {
  public:
    using Table = Catalogue::Table;
    using Time = Deadlines::Time;
    /// Actions that have led to something, each by its completion, in words, the first first.
    using Chain = std::vector<std::string>;
    struct Origin {
        /// The event that made a trigger fire.
        std::string words;
        Chain chain;
    };
    /// NULL for timers.
    using Cause = std::shared_ptr<Origin const>;

    struct Firing {
        std::uint32_t trigger_id = 0;
        Cause cause;
        std::shared_ptr<OpenTrace> trace;
    };

    /// While so many triggers have fired and wait for their actions to run, events are refused with status 9.
    static constexpr std::size_t most_waiting = 10'000;
    /// Stable triggers follow so many properties together, whose names are at most so many bytes long; events beyond that
    /// are refused with status 9.
    static constexpr std::size_t most_followed = 10'000;
    static constexpr std::size_t longest_property = 1024;
    /// The completion of the last of so many actions in a chain reaches no trigger.
    static constexpr std::size_t longest_chain = 8;

    /// Timers start anew at `now`. Of each outcome so many traces are kept; those in the store are read.
    EngineState(Catalogue catalogue, Time now, std::size_t most_traces);

    Catalogue catalogue;
    TraceKeeper traces;

    /// Puts other contents into the catalogue: all or nothing. Timers start anew, and what was waited for is forgotten.
    void replace(Catalogue::Contents contents, Time now);

    /// After a trigger was created or modified: its timer starts, or starts anew; what it waited for is forgotten. Where
    /// memory is too short for that, the timer starts with the next call of nextFiring().
    void restartTrigger(std::uint32_t trigger_id, Time now) noexcept;
    /// After a trigger was deleted.
    void forgetTrigger(std::uint32_t trigger_id) noexcept;

    /// What became of an event.
    struct Injection {
        unsigned int fired = 0;
        /// Triggers of its topic that did not take it, and why; only the first few.
        std::vector<std::string> missed;
    };

    /// Hands an event to the triggers. An ONVIF trigger fires when both its filters take the event.
    ///
    /// A stable one follows properties: the topic and what stands in Source and Key name one. When its filters take a
    /// message of a property it begins to wait, and fires when its stability time is over; a message that its content
    /// filter does not take, or that tells that the property is no more, ends the wait. It fires once, and begins anew only
    /// after such a message. Further messages that fit change nothing.
    ///
    /// Throws Refused (status 9) while too much waits or is followed, and std::bad_alloc; then nothing has changed.
    ///
    /// With a chain the event is the completion of its last action, and only triggers whose topic filters name its topic see
    /// it: one that takes every topic would run its own actions anew until the chain ends.
    Injection inject(onvif::Event const &event, Time now, Wall wall, Chain chain = {});

    /// Whether a trigger's topic filter names the completion of actions.
    bool followsCompletion(bool success) const;

    /// Leaves a trace of an event that was not taken, where there is memory for it.
    void refuse(std::string const &topic, std::string const &message, char const *why, Wall wall,
                Chain chain = {}) noexcept;

    /// What the event would be to each trigger that takes events, and to the actions of those that fire or begin to
    /// wait. Changes nothing.
    Trace explain(onvif::Event const &event, Wall wall) const;

    /// The trigger that fires next, due timers included, until dropFiring(); NULL when none does. Throws std::bad_alloc,
    /// and then nothing is lost.
    Firing const *nextFiring(Time now, Wall wall);
    void dropFiring() noexcept { fired_.pop_front(); }
    std::optional<Time> nextDeadline() const { return deadlines_.next(); }

    /// Whether there is something new to do since the last call.
    bool takeChanged();

  private:
    /// A stable trigger, and a property that it follows.
    using Followed = std::pair<std::uint32_t, std::string>;
    struct Wait {
        Cause cause;
        std::string topic;
        std::string message;
    };

    TriggerVerdict judge(std::uint32_t trigger_id, Catalogue::Entry const &trigger, onvif::Event const &event,
                         std::string const &property) const;

    /// Calls the function with each trigger that takes events, and with its verdict.
    template <typename Each>
    Trace lookAt(onvif::Event const &event, std::string const &property, Wall wall, bool is_completion,
                 Each each) const;

    /// Lets what is due first join what has fired; nothing when nothing is due.
    std::optional<Deadlines::Ticket> joinDue(Time now, Wall wall);

    /// After a message that does not fit.
    void endWait(Followed const &followed) noexcept;
    void startTimer(std::uint32_t trigger_id, Time now);
    void startMissingTimers(Time now);

    Deadlines deadlines_;
    /// The properties whose last message fits, and the waits that they began.
    std::map<Followed, std::uint64_t> followed_;
    /// What began the waits that are not over.
    std::map<Deadlines::Ticket, Wait> waiting_;
    std::uint64_t last_wait_ = 0;
    std::list<Firing> fired_;
    /// Memory was too short to start a timer.
    bool timers_are_missing_ = false;
    bool changed_ = false;
};

/// Fires triggers and runs what is bound to them.
class Engine {
  public:
    using Time = Deadlines::Time;

    struct Surroundings {
        /// The monotonic clock.
        std::function<Time()> now;
        std::function<Wall()> wall;
        std::function<LocalTime()> local_time;
        /// Begins to run an action, without the engine's lock, and calls back when it is over, on the thread of step(),
        /// at once or later. It throws nothing of its own.
        std::function<void(Job const &, std::function<void(RunResult)>)> run;
        /// Publishes an event (JSON), without the engine's lock.
        std::function<void(std::string const &)> publish;
        /// Asks for step() and nextDeadline() on their thread, since there is something new to do. Called on any
        /// thread, without the engine's lock. It does not throw.
        std::function<void()> wake;
    };

    struct Settings {
        /// Of each outcome.
        std::size_t most_traces;
        /// Where set, the actions of a trigger that fires run in an order that is drawn from it, and else ascending.
        std::optional<std::uint32_t> shuffle_seed;
    };
    static constexpr Settings default_settings{TraceKeeper::default_most, std::nullopt};

    Engine(Catalogue catalogue, Surroundings surroundings, Log const &log,
           Settings const &settings = default_settings);

    Wall wall() const { return surroundings_.wall(); }
    Time now() const { return surroundings_.now(); }

    /// Calls the function with the state, under the engine's lock. On any thread.
    template <typename Function>
    void change(Function function) {
        bool changed = false;
        try {
            state_.with([&](EngineState &state) {
                try {
                    function(state);
                } catch (...) {
                    changed = state.takeChanged();
                    throw;
                }
                changed = state.takeChanged();
            });
        } catch (...) {
            wakeIf(changed);
            throw;
        }
        wakeIf(changed);
    }

    /// Runs one action that is due, if any, and publishes its completion; false when there is nothing to do until
    /// nextDeadline() or the next wake(). One thread at a time. Throws std::bad_alloc; what was due is still due then.
    bool step();
    std::optional<Time> nextDeadline();

    bool tracesWait() {
        return state_.with([](EngineState const &state) { return state.traces.changed(); });
    }
    /// The traces that are over and were not taken yet, once they are in the store.
    std::vector<KeptTrace> takeTraces();

  private:
    struct Run {
        std::uint32_t action_id;
        std::uint32_t trigger_id;
        EngineState::Cause cause;
        std::shared_ptr<OpenTrace> trace;
    };

    void wakeIf(bool changed) {
        if (changed) {
            surroundings_.wake();
        }
    }
    bool takeRuns();
    /// Puts into `trace` what holds the action back, if anything.
    void shuffle(std::vector<std::uint32_t> &action_ids);
    std::optional<Job> prepare(Run const &run, ActionTrace &trace);
    void finishRun(std::shared_ptr<OpenTrace> const &trace, ActionTrace action) noexcept;
    /// An action that has run, for the triggers that follow that.
    struct Ended {
        std::uint32_t action_id;
        std::string name;
        EngineState::Cause cause;
    };
    void tellTriggers(Ended const &ended, bool success) noexcept;

    Surroundings surroundings_;
    Log const &log_;
    Guarded<EngineState> state_;
    /// What the trigger that fired last still has to run. Only step() touches it.
    std::deque<Run> runs_;
    /// Only step() touches it.
    std::optional<std::mt19937> shuffling_;
};

}  // namespace simulator

#endif
