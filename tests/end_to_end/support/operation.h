// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_END_TO_END_OPERATION_H
#define KORVO_TESTS_END_TO_END_OPERATION_H

// What tests of the client and the service do with operations.

#include <condition_variable>
#include <functional>
#include <iosfwd>
#include <mutex>
#include <optional>
#include <vector>

#include "korvo_api_action_engine.h"
#include "support/client.h"
#include "typed_calls/operation.h"

namespace end_to_end {

using namespace typed_calls;

/// The context of an asynchronous call, where its callback leaves what it got. Outlives the client.
class PendingAnswer : public Receiver {
  public:
    /// Called on the messaging thread, inside the callback, before the answer can be waited for.
    std::function<void(Answer const &)> also;

    /// The first answer; nothing when none comes in time.
    std::optional<Answer> wait(milliseconds limit = patience) const;
    /// How often the callback was called.
    std::size_t count() const;

    void called(char const *target, korvo_core_status status, Values results, int callback) override;

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<Answer> answers_;
};

/// The ways to an answer; together they take a call through every form that brings one.
enum class Way {
    send,
    send_with_timeout,
    two_steps_blocking,
    two_steps_polling,
    two_steps_with_timeout,
    asynchronous,
};
inline constexpr Way all_ways[] = {Way::send,
                                   Way::send_with_timeout,
                                   Way::two_steps_blocking,
                                   Way::two_steps_polling,
                                   Way::two_steps_with_timeout,
                                   Way::asynchronous};

char const *nameOf(Way way);
void PrintTo(Way way, std::ostream *out);

/// Calls the operation this way and waits for the answer. An asynchronous call whose callback does not come fails the
/// test, as does a callback that comes twice.
Answer call(Operation const &operation, Way way, Client const &client, char const *target,
            Values const &inputs);

}  // namespace end_to_end

#endif
