// SPDX-License-Identifier: Apache-2.0
#include "simulator/faults.h"

#include <utility>

#include "simulator/refused.h"

namespace simulator {

FaultTable::FaultTable(Faults const &faults) {
    for (std::size_t method = 0; method < faults.size(); ++method) {
        Fault const &fault = faults[method];
        if (fault.status || fault.drop || fault.delay.count() != 0) {
            add(method, fault);
        }
    }
}

std::uint32_t FaultTable::add(std::size_t method, Fault fault) {
    if (entries_.size() >= most) {
        throw impossible("there are " + std::to_string(most) + " faults already; clear some first");
    }
    entries_[++last_id_] = {method, std::move(fault)};
    return last_id_;
}

Fault FaultTable::take(std::size_t method) {
    Fault all;
    for (auto place = entries_.begin(); place != entries_.end();) {
        auto &[of_method, fault] = place->second;
        if (of_method != method) {
            ++place;
            continue;
        }
        all.status = fault.status ? fault.status : all.status;
        all.delay += fault.delay;
        all.drop = all.drop || fault.drop;
        all.garble = all.garble || fault.garble;
        all.duplicate = all.duplicate || fault.duplicate;
        all.close = all.close || fault.close;
        all.missing = fault.missing.empty() ? all.missing : fault.missing;
        place = fault.count && --*fault.count == 0 ? entries_.erase(place) : std::next(place);
    }
    return all;
}

}  // namespace simulator
