// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_EMULATOR_H
#define KORVO_TESTS_EMULATOR_H

#include <string>
#include <vector>

namespace emulator {

#if defined(KORVO_TEST_EMULATOR)
constexpr bool present = true;
#else
constexpr bool present = false;
#endif

/// The words that start one of our programs: its path, after the emulator's own where the build needs one.
inline std::vector<std::string> wordsToStart(std::string const &program) {
#if defined(KORVO_TEST_EMULATOR)
    return {KORVO_TEST_EMULATOR, program};
#else
    return {program};
#endif
}

}  // namespace emulator

#endif
