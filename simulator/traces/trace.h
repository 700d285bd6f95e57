// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_TRACES_TRACE_H
#define KORVO_SIMULATOR_TRACES_TRACE_H

#include <boost/json/object.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "simulator/time/moment.h"

namespace simulator {

/// What an event or a timer was to a trigger.
enum class TriggerVerdict {
    fires,
    /// A stable trigger: its time begins, goes on, or ends without its having fired.
    begins_wait,
    goes_on,
    ends_wait,
    /// It does not fire, for the topic, the message, because the property is deleted, or ever.
    topic_differs,
    message_fails,
    property_deleted,
    never_fires,
    /// It was deleted between its firing and its actions.
    gone,
};

struct TriggerTrace {
    std::uint32_t id;
    std::string name;
    TriggerVerdict verdict;
    /// The first piece that decided against it, and the value that it met; or nothing.
    std::string why;
};

/// What became of an action of a trigger that fired, or, where nothing is run, that it would.
enum class ActionVerdict { succeeded, failed, held_back, never_runs, gone, would_run };

struct ActionTrace {
    std::uint32_t trigger_id;
    std::uint32_t id;
    std::string name;
    /// The words of its kind; NULL for an action that is gone.
    char const *kind;
    ActionVerdict verdict;
    /// The window that let it through, or why none did.
    std::string window;
    /// What it ran with: a JSON object, without passwords; empty when it did not run.
    std::string parameters;
    /// Real time from its beginning to its end.
    std::chrono::microseconds duration{0};
    /// What it did, or why it failed.
    std::string words;
};

/// What a trace is kept by, the first that holds.
enum class Outcome {
    /// The event was not taken.
    refused,
    /// An action ran and failed.
    failed,
    /// Actions ran, and all of them succeeded.
    ran,
    /// Triggers fired, and windows held back all of their actions.
    held_back,
    /// Triggers fired that have no actions.
    unbound,
    /// Nothing fired; of stable triggers a time began, went on or ended.
    waiting,
    no_match,
};
inline constexpr std::size_t outcome_count = 7;

char const *nameOf(TriggerVerdict verdict);
char const *nameOf(ActionVerdict verdict);
char const *nameOf(Outcome outcome);

/// What happened because of one event, timer or stability time, and what did not.
struct Trace {
    enum class Cause {
        event,
        timer,
        stability,
        /// An action has run.
        completion,
    };

    /// Further ones are only counted.
    static constexpr std::size_t most_triggers = 50;
    static constexpr std::size_t most_actions = 50;
    /// What is kept of a topic and of a message, in bytes.
    static constexpr std::size_t longest_text = 4096;

    std::uint64_t id = 0;
    Cause cause = Cause::event;
    Wall time{};
    std::string topic;
    std::string message;
    /// The actions that have led here, each by its completion, the first first.
    std::vector<std::string> chain;
    /// Why the event was refused.
    std::string refusal;
    std::vector<TriggerTrace> triggers;
    std::vector<ActionTrace> actions;
    std::size_t triggers_left_out = 0;
    std::size_t actions_left_out = 0;
    /// Of all triggers and actions, also of those left out.
    std::size_t fired = 0;
    std::size_t waits = 0;
    std::size_t succeeded = 0;
    std::size_t failed = 0;
    std::size_t held_back = 0;

    /// Adds, or only counts. Those that decide something go before those whose topic differs.
    void add(TriggerTrace trigger);
    void add(ActionTrace action);

    Outcome outcome() const;
    /// Roughly, in bytes.
    std::size_t size() const;
};

/// The trace as people and programs read it.
boost::json::object describe(Trace const &trace);

}  // namespace simulator

#endif
