// SPDX-License-Identifier: Apache-2.0
#include "simulator/deadlines.h"

namespace simulator {

void Deadlines::repeat(Ticket ticket, Time now, std::chrono::seconds period) {
    if (period.count() > 0) {
        insert(ticket, {now + period, period});
    } else {
        remove(ticket);
    }
}

void Deadlines::once(Ticket ticket, Time when) {
    insert(ticket, {when, std::chrono::seconds(0)});
}

void Deadlines::remove(Ticket ticket) noexcept {
    auto const found = entries_.find(ticket);
    if (found != entries_.end()) {
        order_.erase({found->second.due, ticket});
        entries_.erase(found);
    }
}

std::optional<Deadlines::Time> Deadlines::next() const {
    return order_.empty() ? std::nullopt : std::optional<Time>(order_.begin()->first);
}

std::optional<Deadlines::Ticket> Deadlines::takeDue(Time now) noexcept {
    if (order_.empty() || order_.begin()->first > now) {
        return std::nullopt;
    }
    Ticket const ticket = order_.begin()->second;
    auto const entry = entries_.find(ticket);
    if (entry->second.period.count() == 0) {
        remove(ticket);
        return ticket;
    }
    // The node goes on to its next place: a period must not end because memory is short.
    auto const passed = (now - entry->second.due) / entry->second.period;
    entry->second.due += (passed + 1) * entry->second.period;
    auto node = order_.extract(order_.begin());
    node.value().first = entry->second.due;
    order_.insert(std::move(node));
    return ticket;
}

void Deadlines::add(Deadlines &&others) noexcept {
    entries_.merge(others.entries_);
    order_.merge(others.order_);
}

void Deadlines::insert(Ticket ticket, Entry entry) {
    std::map<Ticket, Entry> entries{{ticket, entry}};
    std::set<std::pair<Time, Ticket>> order{{entry.due, ticket}};
    remove(ticket);
    entries_.merge(entries);
    order_.merge(order);
}

}  // namespace simulator
