// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_FAULTS_H
#define KORVO_SIMULATOR_FAULTS_H

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>

#include "simulator/methods.h"

namespace simulator {

/// What goes wrong on purpose with the commands of one method, for people who try out their error paths.
struct Fault {
    /// Answered with this status; the command is not carried out.
    std::optional<std::uint32_t> status;
    /// The answer is held back; the command is carried out at once.
    std::chrono::milliseconds delay{0};
    /// Neither carried out nor answered.
    bool drop = false;
};

/// One for each method.
using Faults = std::array<Fault, method_count>;

}  // namespace simulator

#endif
