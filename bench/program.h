// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PROGRAM_H
#define KORVO_BENCH_PROGRAM_H

#include <string>

#include "results.h"

/// One run of a benchmark: how long it may take, and where its figures go.
class Run {
  public:
    Run(bool is_short, std::string const &file) : results(file), is_short_(is_short) {}

    /// A short run shows that everything still works, and its figures say little.
    bool isShort() const { return is_short_; }
    int rounds(int wanted = 21) const { return is_short_ ? 3 : wanted; }
    int calls(int wanted) const { return is_short_ ? (wanted + 49) / 50 : wanted; }

    Results results;

  private:
    bool is_short_;
};

/// What the program returns: `run` does the work, and what it throws is printed. Understands --short and
/// --results FILE.
int runBenchmark(int argc, char **argv, void (*run)(Run &));

/// Throws std::runtime_error unless the outcome, a status or what a system call returned, is 0.
void require(long long outcome, char const *what);

/// Binds this process, and those that it starts from now on, to one core. The ratio of two exchanges is sharp only
/// where nothing runs at the same time.
void useOneCore();

#endif
