// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TYPED_CALLS_OPERATION_H
#define KORVO_TESTS_TYPED_CALLS_OPERATION_H

// Every operation in its seven forms behind one interface, so that tests say what they call and with what, and the
// compiler's own view of the public header decides how. Each form is there twice: with rows of arguments for tests
// that look at what a call does to them, and with values for tests that want its answer.

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korvo_core.h"
#include "typed_calls/arguments.h"

namespace typed_calls {

enum class Form {
    send,
    send_with_timeout,
    non_blocking_send,
    receive,
    receive_with_timeout,
    send_async,
    cancel_async
};

char const *nameOf(Form form);

/// Callbacks of an operation's type. The first two do the same at different addresses.
enum class Callback { first, second, none };

/// The context of an asynchronous call: told by its callback what that was given.
class Receiver {
  public:
    virtual ~Receiver() = default;

    /// Inside the callback, before it takes its texts and lists.
    virtual void entered() {}
    /// Inside the callback, at its end. The results are copies. `callback` is 1 or 2.
    virtual void called(char const *target, korvo_core_status status, Values results, int callback) = 0;
};

/// Status and, when that is 0, the results in their order.
struct Answer {
    korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
    Values results;
};

/// One operation. The version query is one too, and lacks the two forms with a time-out.
class Operation {
  public:
    virtual ~Operation() = default;

    std::string const &name() const { return name_; }
    std::vector<Kind> const &inputs() const { return inputs_; }
    std::vector<Kind> const &results() const { return results_; }

    virtual korvo_core_status send(void *handle, char const *target, Inputs const &in, Outs &out) const = 0;
    virtual korvo_core_status sendWithTimeout(void *handle, char const *target, int timeout, Inputs const &in,
                                              Outs &out) const = 0;
    virtual korvo_core_status nonBlockingSend(void *handle, char const *target, char **request_id,
                                              Inputs const &in) const = 0;
    virtual korvo_core_status receive(void *handle, unsigned char block, char const *target, char *request_id,
                                      Outs &out) const = 0;
    virtual korvo_core_status receiveWithTimeout(void *handle, char const *target, int timeout,
                                                 char *request_id, Outs &out) const = 0;
    virtual korvo_core_status sendAsync(void *handle, char const *target, Inputs const &in, Callback callback,
                                        Receiver *context) const = 0;
    virtual korvo_core_status cancelAsync(void *handle, Callback callback, Receiver *context) const = 0;

    Answer send(void *handle, char const *target, Values const &inputs) const;
    Answer sendWithTimeout(void *handle, char const *target, int timeout, Values const &inputs) const;
    korvo_core_status nonBlockingSend(void *handle, char const *target, char **request_id,
                                      Values const &inputs) const;
    Answer receive(void *handle, unsigned char block, char const *target, char *request_id) const;
    Answer receiveWithTimeout(void *handle, char const *target, int timeout, char *request_id) const;
    /// With the first callback.
    korvo_core_status sendAsync(void *handle, char const *target, Values const &inputs,
                                Receiver &context) const;
    korvo_core_status cancelAsync(void *handle, Receiver &context) const;

  protected:
    Operation(std::string name, std::vector<Kind> inputs, std::vector<Kind> results)
        : name_(std::move(name)), inputs_(std::move(inputs)), results_(std::move(results)) {}

  private:
    template <typename Form>
    Answer answer(Form const &form) const;

    std::string name_;
    std::vector<Kind> inputs_;
    std::vector<Kind> results_;
};

/// All 54 operations by their names.
std::map<std::string, std::unique_ptr<Operation>> const &operations();
/// Throws std::out_of_range for a name that is none.
Operation const &operation(std::string const &name);
Operation const &versionQuery();

}  // namespace typed_calls

#endif
