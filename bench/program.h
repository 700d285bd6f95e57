// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PROGRAM_H
#define KORVO_BENCH_PROGRAM_H

/// What the program returns: `run` does the work, and what it throws is printed.
int runBenchmark(char const *program, void (*run)());

/// Throws std::runtime_error unless the outcome, a status or what a system call returned, is 0.
void require(long long outcome, char const *what);

/// Binds this process, and those that it starts from now on, to one core. The ratio of two exchanges is sharp only
/// where nothing runs at the same time.
void useOneCore();

#endif
