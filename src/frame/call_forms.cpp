// SPDX-License-Identifier: Apache-2.0
#include "frame/call_forms.h"

#include <cstdlib>
#include <memory>

#include "frame/messaging_entries.h"

namespace call_forms {

namespace {

struct FreeText {
    void operator()(char *text) const { std::free(text); }
};
using RequestIdentifier = std::unique_ptr<char, FreeText>;

/// The one place where an exception of an operation becomes a status. A failure that the end of the object may have
/// brought about is that of a lost connection, whatever the platform calls it.
template <typename Call>
korvo_core_status guarded(IAction_engineInitiator &initiator, Call call) noexcept {
    IAction_engineInitiator::Visit const visit(initiator);
    try {
        korvo_core_status const status = call();
        return status != KORVO_CORE_STATUS_NO_ERROR && visit.isEnding() ? KORVO_CORE_STATUS_IPC_FAILED
                                                                        : status;
    } catch (...) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
}

}  // namespace

korvo_core_status exchange(IAction_engineInitiator &initiator, Step send, Step receive) noexcept {
    return guarded(initiator, [&] {
        RequestIdentifier request_id(initiator.generateUUID());
        korvo_core_status status = send(request_id.get());
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            status = receive(request_id.get());
            if (status == KORVO_CORE_STATUS_NO_ERROR) {
                // A successful receive has freed the identifier.
                (void)request_id.release();
            }
        }
        return status;
    });
}

korvo_core_status sendOnly(IAction_engineInitiator &initiator, char **request_id, Step send) noexcept {
    return guarded(initiator, [&] {
        if (request_id == nullptr) {
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        *request_id = initiator.generateUUID();
        return send(*request_id);
    });
}

korvo_core_status receiveOnly(IAction_engineInitiator &initiator, char *request_id, Step receive) noexcept {
    return guarded(initiator, [&] { return receive(request_id); });
}

korvo_core_status sendAsync(IAction_engineInitiator &initiator, AnyCallbackRegistry &registry,
                            AnyCallback callback, void *context, Step send) noexcept {
    return guarded(initiator, [&] {
        korvo_core_status const registered = korvo_core_ipc_initiator_response_receive_callback(
            initiator.messagingHandle(), messaging_entries::response, &initiator);
        if (registered != KORVO_CORE_STATUS_NO_ERROR) {
            return registered;
        }
        // The response may arrive before send() returns; its callback waits here until the registration is whole.
        MutexLock const lock(registry.mutex());
        RequestIdentifier const request_id(initiator.generateUUID());
        registry.insert(request_id.get(), callback, context);
        return send(request_id.get());
    });
}

korvo_core_status cancelAsync(IAction_engineInitiator &initiator, AnyCallbackRegistry &registry,
                              AnyCallback callback, void *context) noexcept {
    return guarded(initiator, [&] {
        MutexLock const lock(registry.mutex());
        registry.cancel(callback, context);
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}

}  // namespace call_forms
