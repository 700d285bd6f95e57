// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_END_TO_END_OPERATION_H
#define KORVO_TESTS_END_TO_END_OPERATION_H

// Every operation in every form behind one interface, so that tests say what they call and with what, and the
// compiler's own view of the public header decides how.

#include <condition_variable>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "client.h"
#include "korvo_api_action_engine.h"

namespace end_to_end {

using Number = unsigned int;
using Flag = unsigned char;
using Text = std::string;
using Texts = std::vector<std::string>;
using Numbers = std::vector<unsigned int>;

/// The order of the alternatives is that of Value.
enum class Kind { number, flag, text, texts, numbers };
using Value = std::variant<Number, Flag, Text, Texts, Numbers>;
using Values = std::vector<Value>;

/// Status and, when that is 0, the results in their order.
struct Answer {
    korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
    Values results;
};

/// The context of an asynchronous call, where its callback leaves what it got. Outlives the client.
class PendingAnswer {
  public:
    /// Called on the messaging thread, inside the callback, before the answer can be waited for.
    std::function<void(Answer const &)> also;

    /// The first answer; nothing when none comes in time.
    std::optional<Answer> wait(milliseconds limit = patience) const;
    /// How often the callback was called.
    std::size_t count() const;

    void deliver(Answer answer);

  private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<Answer> answers_;
};

/// One operation. The version query is one too, and lacks the two forms with a time-out.
class Operation {
  public:
    virtual ~Operation() = default;

    std::string const &name() const { return name_; }
    std::vector<Kind> const &inputs() const { return inputs_; }
    std::size_t results() const { return results_; }

    virtual Answer send(void *handle, char const *target, Values const &inputs) const = 0;
    virtual Answer sendWithTimeout(void *handle, char const *target, int timeout,
                                   Values const &inputs) const = 0;
    virtual korvo_core_status nonBlockingSend(void *handle, char const *target, char **request_id,
                                              Values const &inputs) const = 0;
    virtual Answer receive(void *handle, unsigned char block, char const *target, char *request_id) const = 0;
    virtual Answer receiveWithTimeout(void *handle, char const *target, int timeout,
                                      char *request_id) const = 0;
    virtual korvo_core_status sendAsync(void *handle, char const *target, Values const &inputs,
                                        PendingAnswer &context) const = 0;
    virtual korvo_core_status cancelAsync(void *handle, PendingAnswer &context) const = 0;

  protected:
    Operation(std::string name, std::vector<Kind> inputs, std::size_t results)
        : name_(std::move(name)), inputs_(std::move(inputs)), results_(results) {}

  private:
    std::string name_;
    std::vector<Kind> inputs_;
    std::size_t results_;
};

/// All 54 operations by their names.
std::map<std::string, std::unique_ptr<Operation>> const &operations();
Operation const &operation(std::string const &name);
Operation const &versionQuery();

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
