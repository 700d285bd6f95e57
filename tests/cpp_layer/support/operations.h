// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_CPP_LAYER_OPERATIONS_H
#define KORVO_TESTS_CPP_LAYER_OPERATIONS_H

// Every operation of the C++ layer behind one interface: which member of which structure is which input or result, said by
// hand.

#include <chrono>
#include <functional>
#include <future>
#include <korvo/action_engine.hpp>
#include <map>
#include <string>
#include <vector>

#include "typed_calls/values.h"

namespace cpp_layer {

using typed_calls::Values;

/// What a Result held: status, message, and the results in the order of the C function.
struct Outcome {
    korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
    std::string message;
    Values values;
};

struct Operation {
    using Timeout = std::chrono::milliseconds;

    std::function<Outcome(korvo::ActionEngine const &, Values const &, Timeout)> call;
    /// Gives what waits for the future.
    std::function<std::function<Outcome()>(korvo::ActionEngine const &, Values const &, Timeout)> future;
    std::function<korvo::PendingCall(korvo::ActionEngine const &, Values const &, Timeout,
                                     std::function<void(Outcome const &)>)>
        async;
};

/// All 54 operations by their names.
std::map<std::string, Operation> const &operations();

}  // namespace cpp_layer

#endif
