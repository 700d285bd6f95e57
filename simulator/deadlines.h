// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_DEADLINES_H
#define KORVO_SIMULATOR_DEADLINES_H

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace simulator {

/// When which trigger is due. Pure bookkeeping on a monotonic clock that the caller reads. Not safe to share between
/// threads without a lock.
class Deadlines {
  public:
    using Clock = std::chrono::steady_clock;
    using Time = Clock::time_point;

    /// Makes the trigger due each `period` after `now`, in place of what it had before. A period of 0 is never due.
    void repeat(std::uint32_t trigger_id, Time now, std::chrono::seconds period);

    /// Makes the trigger due once.
    void once(std::uint32_t trigger_id, Time when);

    void remove(std::uint32_t trigger_id);
    bool contains(std::uint32_t trigger_id) const { return entries_.count(trigger_id) != 0; }

    /// When the first trigger is due; nothing when none is.
    std::optional<Time> next() const;

    /// The triggers that are due at `now`, the longest due first. A repeating trigger that was due several times in the
    /// meantime is there once: periods that passed while nobody looked are not made up for, and the rhythm stays.
    std::vector<std::uint32_t> takeDue(Time now);

  private:
    struct Entry {
        Time due;
        std::chrono::seconds period;
    };
    void insert(std::uint32_t trigger_id, Entry entry);

    std::map<std::uint32_t, Entry> entries_;
    std::set<std::pair<Time, std::uint32_t>> order_;
};

}  // namespace simulator

#endif
