// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_RESULTS_H
#define KORVO_BENCH_RESULTS_H

#include <cstdio>
#include <string>
#include <vector>

#include "side_by_side.h"

/// Where a benchmark's figures go: printed for people, and appended to a file from which bench/report.lua makes tables
/// and pictures. A line of the file has these columns, with tabs between: kind (`side`, `value` or `point`), name of
/// the figure, side, x (of points), unit, median, low, high; of sides also the ratio to the first one, its low and high, and
/// the ratio of processor times, its low and high.
class Results {
  public:
    /// Without a file's name figures are only printed. Throws std::runtime_error.
    explicit Results(std::string const &file);
    ~Results();

    Results(Results const &) = delete;
    Results &operator=(Results const &) = delete;

    /// Sides that were compared, all with the first one; times are in microseconds a call.
    void compared(std::string const &figure, std::vector<Outcome> const &outcomes);

    /// One value that stands alone.
    void value(std::string const &figure, std::string const &side, char const *unit, Spread const &value);

    /// One point of a curve.
    void point(std::string const &figure, std::string const &side, double x, char const *unit,
               Spread const &y);

  private:
    void write(char const *kind, std::string const &figure, std::string const &side, std::string const &x,
               char const *unit, Spread const &value, Outcome const *outcome) const;

    std::FILE *file_ = nullptr;
};

#endif
