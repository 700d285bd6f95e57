// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_WITH_HANDLE_H
#define KORVO_PLATFORM_WITH_HANDLE_H

// The one place where messaging handles become objects.

#include "base/guarded_call.h"
#include "messaging/initiator.h"
#include "messaging/messaging.h"
#include "messaging/target.h"

namespace platform {

inline Initiator *narrow(Messaging &messaging, Initiator *) {
    return messaging.asInitiator();
}

inline Target *narrow(Messaging &messaging, Target *) {
    return messaging.asTarget();
}

/// Calls `call` with the Initiator or Target behind the handle. The object outlives the call, also when
/// another thread closes the handle meanwhile.
template <typename Kind, typename Call>
korvo_core_status withHandle(char const *function, void *handle, Call call) {
    return guardedCall(function, [&] {
        auto const found = messagingHandles().find(handle);
        if (found.inherited) {
            return KORVO_CORE_STATUS_MULTI_THREAD_ACCESS;
        }
        Kind *const object =
            found.object != nullptr ? narrow(*found.object, static_cast<Kind *>(nullptr)) : nullptr;
        if (object == nullptr) {
            Log(nullptr).error(
                "%s was called with %p, which is no open messaging handle of the kind it needs", function,
                handle);
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        Messaging::Use const use(*object);
        return call(*object);
    });
}

}  // namespace platform

#endif
