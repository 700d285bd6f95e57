// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_OPTIONS_HPP
#define KORVO_OPTIONS_HPP

// What engines are opened with, and what all operations share.

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "korvo_api_action_engine.h"

namespace korvo {

// The enumerations of the C header, under this name too.
using ::ActionType;
using ::TriggerType;
using ::Weekday;

/// Identifiers are types of their own, so that one kind is not taken for the other: korvo::ActionId{7}.
enum class ActionId : unsigned int {};
enum class TriggerId : unsigned int {};

/// The number of an identifier, to print it.
constexpr unsigned int number(ActionId id) noexcept {
    return static_cast<unsigned int>(id);
}
constexpr unsigned int number(TriggerId id) noexcept {
    return static_cast<unsigned int>(id);
}

/// Runs a task, at once or later, on whatever thread it likes; called on the engine's callback thread.
using Executor = std::function<void(std::function<void()>)>;

/// How an engine is opened. What is left out has a value that fits most programs.
struct Options {
    /// Of this program, for the messaging layer and the log.
    std::string name = {};
    /// Which instance of the service is called; without it the default one.
    std::optional<std::string> target = std::nullopt;
    /// How long a call waits for its response, unless it says otherwise. More than 0.
    std::chrono::milliseconds timeout = std::chrono::seconds(5);
    /// A handle of korvo_core_logging_init(), which stays the caller's and outlives the engine. Without it the engine opens
    /// one of its own, under its name.
    void *logging = nullptr;
    /// Runs callables, in place of the engine's own callback thread. One with several threads runs them side by side, so
    /// that events may overtake each other.
    Executor executor = nullptr;
};

/// How long one call waits; std::nullopt stands for the engine's time-out.
using Timeout = std::optional<std::chrono::milliseconds>;

/// The interface version that the library speaks.
struct InitiatorVersion {
    unsigned int initiator_major = 0;
    unsigned int initiator_minor = 0;
};

/// The service has run an action.
struct ActionCompleted {
    ActionId action_id = {};
    std::string action_name = {};
    bool success = false;
    /// What the messaging layer names the sender with.
    std::string source = {};
};

}  // namespace korvo

#endif
