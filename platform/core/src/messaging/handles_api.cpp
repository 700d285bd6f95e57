// SPDX-License-Identifier: Apache-2.0
// The life of the core and of messaging handles.
#include "base/guarded_call.h"
#include "korvo_core.h"
#include "messaging/messaging.h"

using namespace platform;

korvo_core_status korvo_core_init(void) {
    // Everything is made when it is first used.
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_deinit(void) {
    // Handles are closed one by one by those who opened them.
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_ipc_deinit(void *messaging) {
    return guardedCall("korvo_core_ipc_deinit", [&] {
        auto const found = messagingHandles().remove(messaging);
        if (found.inherited) {
            return KORVO_CORE_STATUS_MULTI_THREAD_ACCESS;
        }
        if (found.object == nullptr) {
            Log(nullptr).error("korvo_core_ipc_deinit was called with %p, which is no open messaging handle",
                               messaging);
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        found.object->close();
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}
