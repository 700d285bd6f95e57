// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TORTURE_EVERY_CALL_H
#define KORVO_TESTS_TORTURE_EVERY_CALL_H

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <vector>

#include "support/system_calls.h"

namespace torture {

struct CallThatFails {
    char const *function;
    /// Errors that the kernel may give, or one_byte; the first of them in the short form.
    std::vector<int> errors;
};

void PrintTo(CallThatFails const &call, std::ostream *out);

/// Does `work` once with nothing failing, for what is made once and stays, such as caches of stacks. Then while the first call
/// of the function fails, the second and so on, until one in which nothing failed; and so with each error. Each round is watched, and must leave nothing. How many have failed.
std::size_t failEveryCall(CallThatFails const &call, std::function<void(FailingCall &)> const &work);

}  // namespace torture

#endif
