// SPDX-License-Identifier: Apache-2.0
#include "simulator/deadlines.h"

namespace simulator {

void Deadlines::repeat(Ticket ticket, Time now, std::chrono::seconds period) {
    remove(ticket);
    if (period.count() > 0) {
        insert(ticket, {now + period, period});
    }
}

void Deadlines::once(Ticket ticket, Time when) {
    remove(ticket);
    insert(ticket, {when, std::chrono::seconds(0)});
}

void Deadlines::remove(Ticket ticket) {
    auto const found = entries_.find(ticket);
    if (found != entries_.end()) {
        order_.erase({found->second.due, ticket});
        entries_.erase(found);
    }
}

std::optional<Deadlines::Time> Deadlines::next() const {
    return order_.empty() ? std::nullopt : std::optional<Time>(order_.begin()->first);
}

std::vector<Deadlines::Ticket> Deadlines::takeDue(Time now) {
    std::vector<Ticket> due;
    while (!order_.empty() && order_.begin()->first <= now) {
        Ticket const ticket = order_.begin()->second;
        Entry const entry = entries_.at(ticket);
        due.push_back(ticket);
        remove(ticket);
        if (entry.period.count() > 0) {
            auto const passed = (now - entry.due) / entry.period;
            insert(ticket, {entry.due + (passed + 1) * entry.period, entry.period});
        }
    }
    return due;
}

void Deadlines::insert(Ticket ticket, Entry entry) {
    entries_.emplace(ticket, entry);
    order_.emplace(entry.due, ticket);
}

}  // namespace simulator
