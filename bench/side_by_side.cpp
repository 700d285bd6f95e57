// SPDX-License-Identifier: Apache-2.0
#include "side_by_side.h"

#include <algorithm>
#include <ctime>
#include <stdexcept>
#include <utility>

namespace {

struct Cost {
    double elapsed;
    double own;
    double peers;

    double processor() const { return own + peers; }
};

double processorTimeOf(std::vector<pid_t> const &processes) {
    double sum = 0;
    for (pid_t const process : processes) {
        clockid_t clock{};
        if (clock_getcpuclockid(process, &clock) != 0) {
            throw std::runtime_error("another process is gone: it has no processor clock");
        }
        sum += microsecondsOf(clock);
    }
    return sum;
}

Cost measure(Side const &side, int calls) {
    double const start = microsecondsOf(CLOCK_MONOTONIC);
    double const own_start = microsecondsOf(CLOCK_PROCESS_CPUTIME_ID);
    double const peers_start = processorTimeOf(side.peers);
    side.round();
    return {(microsecondsOf(CLOCK_MONOTONIC) - start) / calls,
            (microsecondsOf(CLOCK_PROCESS_CPUTIME_ID) - own_start) / calls,
            (processorTimeOf(side.peers) - peers_start) / calls};
}

Spread spreadOfPart(std::vector<Cost> const &costs, double Cost::*part) {
    std::vector<double> values;
    values.reserve(costs.size());
    for (Cost const &cost : costs) {
        values.push_back(cost.*part);
    }
    return spreadOf(std::move(values));
}

/// Round by round, so that a slow moment of the machine meets both.
template <typename Part>
Spread ratioOf(std::vector<Cost> const &costs, std::vector<Cost> const &yardstick, Part part) {
    std::vector<double> ratios;
    ratios.reserve(costs.size());
    for (std::size_t round = 0; round < costs.size(); ++round) {
        ratios.push_back(part(costs[round]) / part(yardstick[round]));
    }
    return spreadOf(std::move(ratios));
}

}  // namespace

std::vector<Outcome> compareSideBySide(std::vector<Side> const &sides, int calls_a_round, int rounds) {
    for (Side const &side : sides) {
        side.round();
    }
    std::vector<std::vector<Cost>> costs(sides.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t number = 0; number < sides.size(); ++number) {
            costs[number].push_back(measure(sides[number], calls_a_round));
        }
    }
    std::vector<Outcome> outcomes;
    for (std::size_t number = 0; number < sides.size(); ++number) {
        outcomes.push_back(
            {sides[number].name, spreadOfPart(costs[number], &Cost::elapsed),
             spreadOfPart(costs[number], &Cost::own), spreadOfPart(costs[number], &Cost::peers),
             ratioOf(costs[number], costs[0], [](Cost const &cost) { return cost.elapsed; }),
             ratioOf(costs[number], costs[0], [](Cost const &cost) { return cost.processor(); })});
    }
    return outcomes;
}

Spread spreadOf(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    auto const at = [&values](std::size_t quarters) { return values.at((values.size() - 1) * quarters / 4); };
    return {at(2), at(1), at(3)};
}

double microsecondsOf(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

double processorTimeWith(std::vector<pid_t> const &others) {
    return microsecondsOf(CLOCK_PROCESS_CPUTIME_ID) + processorTimeOf(others);
}
