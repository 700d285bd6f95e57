// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_DEADLINES_H
#define KORVO_SIMULATOR_DEADLINES_H

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "simulator/time/clock.h"

namespace simulator {

/// What is due when: triggers, and of some of them several waits, each with a ticket. Pure bookkeeping on a monotonic
/// clock that the caller reads. Not safe to share between threads without a lock.
class Deadlines {
  public:
    using Time = Clock::Time;

    struct Ticket {
        // Implicit: most triggers wait for one thing.
        Ticket(std::uint32_t trigger, std::uint64_t which = 0) : trigger_id(trigger), wait(which) {}

        std::uint32_t trigger_id;
        /// Which wait of the trigger it is.
        std::uint64_t wait;

        bool operator<(Ticket const &other) const {
            return std::tie(trigger_id, wait) < std::tie(other.trigger_id, other.wait);
        }
        bool operator==(Ticket const &other) const {
            return trigger_id == other.trigger_id && wait == other.wait;
        }
    };

    // repeat() and once() throw std::bad_alloc, and then nothing has changed. Nothing else takes memory.

    /// Makes the ticket due each `period` after `now`, in place of what it had before. A period of 0 is never due.
    void repeat(Ticket ticket, Time now, std::chrono::seconds period);

    /// Makes the ticket due once.
    void once(Ticket ticket, Time when);

    void remove(Ticket ticket) noexcept;
    bool contains(Ticket ticket) const { return entries_.count(ticket) != 0; }

    /// When the first ticket is due; nothing when none is.
    std::optional<Time> next() const;

    /// The ticket that is longest due at `now`; nothing when none is. A repeating one that was due several times in the
    /// meantime is given once: periods that passed while nobody looked are not made up for, and the rhythm stays.
    std::optional<Ticket> takeDue(Time now) noexcept;

    /// Takes what the other one has, of tickets that this one has not.
    void add(Deadlines &&others) noexcept;

  private:
    struct Entry {
        Time due;
        std::chrono::seconds period;
    };
    void insert(Ticket ticket, Entry entry);

    std::map<Ticket, Entry> entries_;
    std::set<std::pair<Time, Ticket>> order_;
};

}  // namespace simulator

#endif
