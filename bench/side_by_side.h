// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_SIDE_BY_SIDE_H
#define KORVO_BENCH_SIDE_BY_SIDE_H

#include <sys/types.h>

#include <functional>
#include <vector>

/// What one call takes, in microseconds: time from start to end, processor time of this process, and that of its
/// peers together.
struct Cost {
    double elapsed;
    double own;
    double peers;
};

/// One of two ways to do the same thing.
struct Side {
    /// Makes the calls of one round.
    std::function<void()> round;
    /// The processes that work for this side.
    std::vector<pid_t> peers;
};

struct Comparison {
    /// Medians over the rounds.
    Cost yardstick;
    Cost measured;
    /// How many times as long the measured side takes: the median of the rounds' ratios.
    double ratio;
};

constexpr int rounds = 41;

/// Runs the two sides by turns, so that what else the machine does meets both. A round of each side comes before those
/// that count.
Comparison compareSideBySide(Side const &yardstick, Side const &measured, int calls_a_round);

/// Prints the medians with the names of this process and of its peers, and which share of the yardstick's throughput is
/// reached.
void printShare(char const *own, char const *peers, Comparison const &comparison);

/// The middle one of an odd number of values.
double medianOf(std::vector<double> values);

#endif
