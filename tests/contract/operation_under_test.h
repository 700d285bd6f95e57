// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_CONTRACT_OPERATION_UNDER_TEST_H
#define KORVO_TESTS_CONTRACT_OPERATION_UNDER_TEST_H

// The seven exported forms of an operation behind one interface, with arguments in rows.

#include <string>
#include <vector>

#include "arguments.h"
#include "korvo_core.h"

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

class OperationUnderTest {
  public:
    virtual ~OperationUnderTest() = default;

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
                                        void *context) const = 0;
    virtual korvo_core_status cancelAsync(void *handle, Callback callback, void *context) const = 0;
};

/// Throws std::out_of_range for a name that is none.
OperationUnderTest const &operation(std::string const &name);

std::vector<std::string> boundOperations();

#endif
