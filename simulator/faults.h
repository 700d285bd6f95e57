// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_FAULTS_H
#define KORVO_SIMULATOR_FAULTS_H

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "simulator/methods.h"

namespace simulator {

/// What goes wrong on purpose with the commands of one method, for people who try out their error paths.
struct Fault {
    /// Answered with this status; the command is not carried out.
    std::optional<std::uint32_t> status;
    /// The answer is held back; the command is carried out at once.
    std::chrono::milliseconds delay{0};
    /// Neither carried out nor answered.
    bool drop = false;
    /// Only the first half of the answer is sent, which is no JSON.
    bool garble = false;
    /// The answer is sent twice.
    bool duplicate = false;
    /// All connections are closed in place of the answer; the command is carried out.
    bool close = false;
    /// This member of the answer is left out.
    std::string missing{};
    /// So many commands more; all of them where there is none.
    std::optional<std::uint32_t> count{};
};

/// One for each method, as the command line gives them.
using Faults = std::array<Fault, method_count>;

/// The faults that hold now. Not safe to share between threads without a lock.
class FaultTable {
  public:
    static constexpr std::size_t most = 1000;

    struct Entry {
        std::size_t method;
        Fault fault;
    };

    explicit FaultTable(Faults const &faults);

    /// Gives its identifier. Throws Refused when there are too many.
    std::uint32_t add(std::size_t method, Fault fault);
    /// False when there is none of this identifier.
    bool remove(std::uint32_t id) { return entries_.erase(id) != 0; }
    void clear() { entries_.clear(); }
    std::map<std::uint32_t, Entry> const &entries() const { return entries_; }

    /// What becomes of a command of this method: all its faults together, each of which has one less to come.
    Fault take(std::size_t method);

  private:
    std::map<std::uint32_t, Entry> entries_;
    std::uint32_t last_id_ = 0;
};

}  // namespace simulator

#endif
