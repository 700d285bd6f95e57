// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_BY_HAND_H
#define KORVO_BENCH_BY_HAND_H

#include <string>

#include "peers/contents.h"

// What one writes by hand for these very calls, who knows the order of the members, and that no
// text holds an escape: the limit for what a library can do. What a response lacks throws std::runtime_error.

namespace by_hand {

/// Writes the command that asks for a relay action; returns its length.
std::size_t writeRelayCommand(char *text, std::size_t size, unsigned int action_id);

void readRelay(char const *response, Relay &relay);

/// Lists of numbers that callers of the library get: a block for each number. Freed with
/// korvo_core_free_uint_array().
struct BlockLists {
    unsigned int **ids = nullptr;
    unsigned int **types = nullptr;

    BlockLists() = default;
    BlockLists(BlockLists const &) = delete;
    BlockLists &operator=(BlockLists const &) = delete;
    ~BlockLists();

    /// Throws std::runtime_error when they hold something else than the service keeps.
    void check() const;
};

void readLists(char const *response, BlockLists &lists);
void readLists(char const *response, Lists &lists);

}  // namespace by_hand

#endif
