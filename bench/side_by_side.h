// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_SIDE_BY_SIDE_H
#define KORVO_BENCH_SIDE_BY_SIDE_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

/// The middle of some values, and the quartiles: half of them lie between low and high.
struct Spread {
    double median;
    double low;
    double high;
};

/// One of several ways to do the same thing.
struct Side {
    std::string name;
    /// Makes the calls of one round.
    std::function<void()> round;
    /// The processes that work for this side.
    std::vector<pid_t> peers;
};

/// What one call takes in microseconds, over the rounds.
struct Outcome {
    std::string name;
    Spread elapsed;
    /// Processor time of this process, and of the side's peers together.
    Spread own;
    Spread peers;
    /// How many times as long as on the first side: the spread of the rounds' ratios.
    Spread ratio;
    /// The same of the processor time of all processes together. What else a busy machine does changes it little, and it
    /// does not show when all wait.
    Spread processor_ratio;
};

/// Runs the sides by turns, so that what else the machine does meets all. A round of each side comes before those
/// that count.
std::vector<Outcome> compareSideBySide(std::vector<Side> const &sides, int calls_a_round, int rounds);

Spread spreadOf(std::vector<double> values);

/// Microseconds of a clock.
double microsecondsOf(clockid_t clock);

/// Microseconds for which this process and others have run. Throws std::runtime_error when one of them is gone.
double processorTimeWith(std::vector<pid_t> const &others);

#endif
