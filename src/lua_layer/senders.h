// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_LAYER_SENDERS_H
#define KORVO_LUA_LAYER_SENDERS_H

// The asynchronous form of every operation behind one signature.

#include <cstddef>

#include "korvo_core.h"
#include "lua_layer/queue.h"
#include "operations/operation.h"

namespace korvo::lua_layer {

struct Sender {
    char const *name;
    operations::Member const *inputs;
    operations::Member const *results;
    /// Sends with a slot of the engine's core as the context. The inputs are as many as the operation has.
    korvo_core_status (*send)(void *handle, char const *target, Value *inputs, void *slot);
};

/// NULL when there is no such operation.
Sender const *senderOf(char const *name);

}  // namespace korvo::lua_layer

#endif
