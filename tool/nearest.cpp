// SPDX-License-Identifier: Apache-2.0
#include "tool/nearest.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace tool {
namespace {

/// How many letters must be put in, taken out, exchanged or swapped with a neighbour.
std::size_t distance(std::string const &from, std::string const &to) {
    std::vector<std::size_t> before_last;
    std::vector<std::size_t> last(to.size() + 1);
    std::iota(last.begin(), last.end(), 0U);
    for (std::size_t row = 1; row <= from.size(); ++row) {
        std::vector<std::size_t> current(to.size() + 1, row);
        for (std::size_t column = 1; column <= to.size(); ++column) {
            current[column] = std::min({last[column] + 1, current[column - 1] + 1,
                                        last[column - 1] + (from[row - 1] == to[column - 1] ? 0U : 1U)});
            if (row > 1 && column > 1 && from[row - 1] == to[column - 2] && from[row - 2] == to[column - 1]) {
                current[column] = std::min(current[column], before_last[column - 2] + 1);
            }
        }
        before_last = std::exchange(last, std::move(current));
    }
    return last.back();
}

}  // namespace

std::string nearest(std::string const &word, std::vector<std::string> const &known) {
    std::string best;
    std::size_t smallest = word.size() / 3 + 2;
    for (std::string const &candidate : known) {
        auto const steps = distance(word, candidate);
        if (steps < smallest) {
            smallest = steps;
            best = candidate;
        }
    }
    return best;
}

}  // namespace tool
