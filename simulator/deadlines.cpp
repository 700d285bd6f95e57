// SPDX-License-Identifier: Apache-2.0
#include "simulator/deadlines.h"

namespace simulator {

void Deadlines::repeat(std::uint32_t trigger_id, Time now, std::chrono::seconds period) {
    remove(trigger_id);
    if (period.count() > 0) {
        insert(trigger_id, {now + period, period});
    }
}

void Deadlines::once(std::uint32_t trigger_id, Time when) {
    remove(trigger_id);
    insert(trigger_id, {when, std::chrono::seconds(0)});
}

void Deadlines::remove(std::uint32_t trigger_id) {
    auto const found = entries_.find(trigger_id);
    if (found != entries_.end()) {
        order_.erase({found->second.due, trigger_id});
        entries_.erase(found);
    }
}

std::optional<Deadlines::Time> Deadlines::next() const {
    return order_.empty() ? std::nullopt : std::optional<Time>(order_.begin()->first);
}

std::vector<std::uint32_t> Deadlines::takeDue(Time now) {
    std::vector<std::uint32_t> due;
    while (!order_.empty() && order_.begin()->first <= now) {
        std::uint32_t const trigger_id = order_.begin()->second;
        Entry const entry = entries_.at(trigger_id);
        due.push_back(trigger_id);
        remove(trigger_id);
        if (entry.period.count() > 0) {
            auto const passed = (now - entry.due) / entry.period;
            insert(trigger_id, {entry.due + (passed + 1) * entry.period, entry.period});
        }
    }
    return due;
}

void Deadlines::insert(std::uint32_t trigger_id, Entry entry) {
    entries_.emplace(trigger_id, entry);
    order_.emplace(entry.due, trigger_id);
}

}  // namespace simulator
