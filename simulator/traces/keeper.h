// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_TRACES_KEEPER_H
#define KORVO_SIMULATOR_TRACES_KEEPER_H

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "simulator/traces/trace.h"

namespace simulator {

/// A trace that is over: as data, or as the text that a store had of it.
class KeptTrace {
  public:
    explicit KeptTrace(Trace trace);
    KeptTrace(std::uint64_t id, Outcome outcome, std::string text);

    std::uint64_t id() const { return id_; }
    Outcome outcome() const { return outcome_; }
    std::size_t size() const { return size_; }
    boost::json::object object() const;

  private:
    std::uint64_t id_;
    Outcome outcome_;
    std::size_t size_;
    std::shared_ptr<Trace const> trace_;
    std::shared_ptr<std::string const> text_;
};

/// The last traces of each outcome, so that a flood of events that nothing takes does not push out the one failure. Not
/// safe to share between threads without a lock.
class TraceKeeper {
  public:
    static constexpr std::size_t default_most = 1000;
    /// What the traces of one outcome may take together, in bytes.
    static constexpr std::size_t most_bytes = 8U * 1024 * 1024;
    static constexpr std::size_t most_unwritten = 2'000;

    /// So many of each outcome; with 0 none is kept.
    explicit TraceKeeper(std::size_t most = default_most) : most_(most) {}

    bool keeps() const { return most_ != 0; }

    /// Gives it the next identifier. Where memory is too short for it, it is lost.
    void add(Trace trace) noexcept;
    /// One that was in the store, in the order of their identifiers.
    void restore(KeptTrace trace);

    /// The kept ones with greater identifiers, in their order.
    std::vector<KeptTrace> after(std::uint64_t id) const;

    /// What has changed since the last call, for the store and for those who follow.
    struct Changes {
        std::vector<KeptTrace> added;
        std::vector<std::uint64_t> removed;
        bool empty() const { return added.empty() && removed.empty(); }
    };
    bool changed() const { return !changes_.empty(); }
    Changes takeChanges();

  private:
    struct Row {
        std::deque<KeptTrace> traces;
        std::size_t bytes = 0;
    };

    void insert(KeptTrace trace);

    std::size_t most_;
    std::uint64_t last_id_ = 0;
    std::array<Row, outcome_count> rows_;
    Changes changes_;
};

}  // namespace simulator

#endif
