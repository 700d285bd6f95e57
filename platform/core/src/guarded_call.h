// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_GUARDED_CALL_H
#define KORVO_PLATFORM_GUARDED_CALL_H

// The one place where handles become objects and exceptions become statuses.

#include <new>
#include <system_error>

#include "initiator.h"
#include "logging.h"
#include "messaging.h"
#include "target.h"

namespace platform {

template <typename Call>
korvo_core_status guarded_call(char const *function, Call call) {
    try {
        return call();
    } catch (std::bad_alloc const &) {
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    } catch (std::system_error const &error) {
        Log(nullptr).error("%s failed: %s", function, error.what());
        return KORVO_CORE_STATUS_IPC_FAILED;
    } catch (std::exception const &error) {
        Log(nullptr).error("%s failed: %s", function, error.what());
        return KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT;
    }
}

inline Initiator *narrow(Messaging &messaging, Initiator *) {
    return messaging.as_initiator();
}

inline Target *narrow(Messaging &messaging, Target *) {
    return messaging.as_target();
}

/// Calls `call` with the Initiator or Target behind the handle. The object outlives the call, also when
/// another thread closes the handle meanwhile.
template <typename Kind, typename Call>
korvo_core_status with_handle(char const *function, void *handle, Call call) {
    return guarded_call(function, [&] {
        auto const found = messaging_handles().find(handle);
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
        return call(*object);
    });
}

}  // namespace platform

#endif
