// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_CALL_FORMS_H
#define KORVO_FRAME_CALL_FORMS_H

// What the call forms do, once for all operations. Each takes the operation's own steps as callables; none throws:
// an exception from a step, from the platform or from a lock is status 4. The object does not end before they return.

#include "frame/callback_registry.h"
#include "frame/function_ref.h"
#include "frame/initiator.h"
#include "korvo_core.h"

namespace call_forms {

/// The time-out of the forms that take none, in milliseconds.
constexpr int default_timeout = 5000;

/// A step of a call, told the request identifier that it belongs to.
using Step = FunctionRef<korvo_core_status(char *request_id)>;

/// Sends and waits. The request identifier lives and ends inside.
korvo_core_status exchange(IAction_engineInitiator &initiator, Step send, Step receive) noexcept;

/// Sends and hands the request identifier to the caller, also when sending fails.
korvo_core_status sendOnly(IAction_engineInitiator &initiator, char **request_id, Step send) noexcept;

/// Runs one step on an identifier of the caller's.
korvo_core_status receiveOnly(IAction_engineInitiator &initiator, char *request_id, Step receive) noexcept;

/// Registers (callback, context) and sends, under the registry's mutex. The registration stays in any case.
korvo_core_status sendAsync(IAction_engineInitiator &initiator, AnyCallbackRegistry &registry,
                            AnyCallback callback, void *context, Step send) noexcept;

korvo_core_status cancelAsync(IAction_engineInitiator &initiator, AnyCallbackRegistry &registry,
                              AnyCallback callback, void *context) noexcept;

}  // namespace call_forms

#endif
