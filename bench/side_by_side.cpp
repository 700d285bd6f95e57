// SPDX-License-Identifier: Apache-2.0
#include "side_by_side.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <stdexcept>
#include <utility>

namespace {

double microsecondsOf(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

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

double medianOfPart(std::vector<Cost> const &costs, double Cost::*part) {
    std::vector<double> values;
    for (Cost const &cost : costs) {
        values.push_back(cost.*part);
    }
    return medianOf(std::move(values));
}

Cost medianOfParts(std::vector<Cost> const &costs) {
    return {medianOfPart(costs, &Cost::elapsed), medianOfPart(costs, &Cost::own),
            medianOfPart(costs, &Cost::peers)};
}

}  // namespace

Comparison compareSideBySide(Side const &yardstick, Side const &measured, int calls_a_round) {
    yardstick.round();
    measured.round();
    std::vector<Cost> yardstick_costs;
    std::vector<Cost> measured_costs;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        yardstick_costs.push_back(measure(yardstick, calls_a_round));
        measured_costs.push_back(measure(measured, calls_a_round));
        ratios.push_back(measured_costs.back().elapsed / yardstick_costs.back().elapsed);
    }
    return {medianOfParts(yardstick_costs), medianOfParts(measured_costs), medianOf(std::move(ratios))};
}

void printShare(char const *own, char const *peers, Comparison const &comparison) {
    std::printf("%-8s %12s %12s %12s\n", "", "time", own, peers);
    auto const print = [](char const *side, Cost const &cost) {
        std::printf("%-8s %12.2f %12.2f %12.2f\n", side, cost.elapsed, cost.own, cost.peers);
    };
    print("bare", comparison.yardstick);
    print("ours", comparison.measured);
    std::printf("\nshare of the bare throughput %.3f\n", 1 / comparison.ratio);
}

double medianOf(std::vector<double> values) {
    auto const middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}
