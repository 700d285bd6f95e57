// SPDX-License-Identifier: Apache-2.0
// The three members of each operation, stamped from the operations' rows. They only line up values; the work is
// done by sendCommand(), receiveResponse() and handleResponse().

#include "frame/deliver.h"
#include "frame/initiator.h"
#include "operations/operations.h"

#define INPUT(kind, member) , operations::InputOf<operations::Kind::kind> member
#define OUT_POINTER(kind, member) , operations::OutPointerOf<operations::Kind::kind> member
#define ARGUMENT(kind, member) member,
#define RESULT(kind, member) , operations::ResultOf<operations::Kind::kind>
#define OPERATION(op, Method, INPUTS, RESULTS)                                                        \
    korvo_core_status IAction_engineInitiator::action_engine_##op##_utility_send(                     \
        char const *target, char *request_id INPUTS(INPUT)) {                                         \
        return sendCommand(operations::all[operations::op], target, request_id, {INPUTS(ARGUMENT)});  \
    }                                                                                                 \
    korvo_core_status IAction_engineInitiator::action_engine_##op##_receive(                          \
        char const *target, int timeout, void *request_id RESULTS(OUT_POINTER)) {                     \
        return receiveResponse(operations::all[operations::op], target, timeout, request_id,          \
                               {RESULTS(ARGUMENT)});                                                  \
    }                                                                                                 \
    void IAction_engineInitiator::action_engine##Method##Callback(char *target, char *request_id,     \
                                                                  json::Object const &response) {     \
        handleResponse(operations::all[operations::op], op##_callbacks, target, request_id, response, \
                       callbackOf(op##_callbacks, Signature<void RESULTS(RESULT)>()));                \
    }

namespace {

/// Carries the types of an operation's results; the leading void is there because the rows write their lists with
/// leading commas.
template <typename Leading, typename... Results>
struct Signature {};

/// How to call the registry's callbacks. The compiler refuses a row whose results differ from the callback type of
/// the public header.
template <typename... Results>
IAction_engineInitiator::Deliver callbackOf(CallbackRegistry<typename CallbackWith<Results...>::Type> const &,
                                            Signature<void, Results...>) {
    return &CallbackWith<Results...>::deliver;
}

}  // namespace

#include "operations/operations.def"

#undef RESULT
#undef ARGUMENT
#undef OUT_POINTER
#undef INPUT
