// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_CONTRACT_LEFT_BEHIND_H
#define KORVO_TESTS_CONTRACT_LEFT_BEHIND_H

// The memory that the library leaves behind on purpose. All other memory that it leaves is a leak, and less
// than what stands here is a change of behaviour, so the tests compare block by block, with the sample values
// of expectations.cpp.

#include <cstddef>
#include <string>
#include <vector>

enum class Fault {
    /// An asynchronous response with a result that cannot be read: absent, of another type, or a list of
    /// texts with an
    /// element that is none. The texts copied before it are left behind; lists are not.
    unreadable_result,
    /// A response, read in whichever way, with a list of numbers whose last element is none: "Bad cast"
    /// leaves the
    /// unfinished list behind.
    element_of_numbers,
};

struct LeftBehind {
    char const *operation;
    char const *result;
    Fault fault;
    /// Blocks with texts, each with its terminating zero.
    std::vector<std::size_t> texts;
    /// Elements of the unfinished list: one array of that many pointers and one more, and one block for each
    /// number.
    std::size_t elements;
};

/// Sizes in ascending order of the blocks that a fault in a result leaves behind; none for faults that stand
/// in no row.
std::vector<std::size_t> leftBehindBy(Fault fault, std::string const &operation, std::string const &result);

std::vector<LeftBehind> const &allLeftBehind();

#endif
