// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_STRESS_CHOSEN_NUMBER_H
#define KORVO_TESTS_STRESS_CHOSEN_NUMBER_H

#include <cstdlib>

/// What an environment variable says, for long runs; else `usual`, which suits every run of the tests.
inline unsigned int chosenNumber(char const *variable, unsigned int usual) {
    char const *const chosen = std::getenv(variable);
    return chosen != nullptr ? static_cast<unsigned int>(std::strtoul(chosen, nullptr, 10)) : usual;
}

#endif
