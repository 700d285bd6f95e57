// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_HANDLERS_CALL_H
#define KORVO_SIMULATOR_HANDLERS_CALL_H

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "simulator/engine.h"
#include "simulator/json_writer.h"
#include "simulator/kinds.h"
#include "simulator/values.h"

namespace simulator::handlers {

struct Version {
    std::uint32_t major;
    std::uint32_t minor;
};

/// What is worth a log line about a command that was carried out. Written when the engine's lock is free again.
struct Remarks {
    std::vector<std::string> warnings;
    std::vector<std::string> notes;
};

/// The versions of clients, other than the service's own, that the log has told of.
using ToldVersions = std::set<std::pair<std::uint32_t, std::uint32_t>>;

/// What a handler works with. It adds the results to the response in the order of the operation table, or throws
/// Refused or StoreError.
struct Call {
    /// As the operation's inputs say; may be moved from.
    Values &inputs;
    EngineState &state;
    JsonWriter &response;
    EngineState::Time now;
    Wall wall;
    Version version;
    /// For operations on one kind of action or trigger.
    EntryKind const *kind;
    Remarks &remarks;
    ToldVersions &told_versions;

    template <typename T>
    T &input(std::size_t n) {
        return std::get<T>(inputs[n]);
    }
    /// The identifier that most commands begin with.
    std::uint32_t id() { return input<std::uint32_t>(0); }

    /// The inputs from the n-th on.
    Values inputsFrom(std::ptrdiff_t n) {
        return Values(std::make_move_iterator(inputs.begin() + n), std::make_move_iterator(inputs.end()));
    }
};

}  // namespace simulator::handlers

#endif
