// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_END_TO_END_SAMPLES_H
#define KORVO_TESTS_END_TO_END_SAMPLES_H

#include <string>
#include <vector>

#include "support/operation.h"

namespace end_to_end {

enum class Flavour {
    plain,
    /// Texts that JSON, a terminal, a path or a format could trip over.
    awkward,
    /// Empty texts and lists, 0.
    empty,
    /// Lists of one entry, flags of 1.
    single,
    /// Texts of 64 KiB, lists of 10,000 entries, 4294967295, flags of 2.
    largest,
};
inline constexpr Flavour all_flavours[] = {Flavour::plain, Flavour::awkward, Flavour::empty, Flavour::single,
                                           Flavour::largest};

char const *nameOf(Flavour flavour);

/// Inputs of these kinds. No two places have the same value where the flavour allows that, and neither have two seeds,
/// so that values that changed places or stayed old are noticed.
Values sampleOf(std::vector<Kind> const &kinds, Flavour flavour, unsigned int seed);

/// How the values come back: every flag that is not 0 as 1.
Values readBack(Values values);

/// One in front of the others.
Values operator+(unsigned int id, Values const &others);

}  // namespace end_to_end

#endif
