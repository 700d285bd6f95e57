// SPDX-License-Identifier: Apache-2.0
#include "korvo_core.h"
#include "korvo_core_private.h"
#include "messaging/with_handle.h"

using namespace platform;

korvo_core_status korvo_core_ipc_initiator_init(void *logging, char const *name, void **messaging, int) {
    return guardedCall("korvo_core_ipc_initiator_init", [&] {
        if (messaging == nullptr) {
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        RuntimeFolder folder = RuntimeFolder::fromEnvironment();
        // Checked here, so that a wrong folder shows when a program starts and not when it first has work to
        // do.
        if (!folder.open(Log(logging))) {
            return KORVO_CORE_STATUS_IPC_FAILED;
        }
        *messaging = messagingHandles().add(
            std::make_shared<Initiator>(logging, std::string(orEmpty(name)), std::move(folder)));
        return KORVO_CORE_STATUS_NO_ERROR;
    });
}

korvo_core_status korvo_core_ipc_initiator_command_send(void *messaging, char const *service,
                                                        char const *target, char const *request_id,
                                                        char const *command) {
    return withHandle<Initiator>("korvo_core_ipc_initiator_command_send", messaging,
                                 [&](Initiator &initiator) {
                                     if (service == nullptr || request_id == nullptr || command == nullptr) {
                                         return KORVO_CORE_STATUS_INVALID_PARAMS;
                                     }
                                     return initiator.send(service, orEmpty(target), request_id, command, {});
                                 });
}

korvo_core_status korvo_core_ipc_initiator_response_receive(void *messaging, int timeout, char **service,
                                                            char **target, char **request_id,
                                                            char **response) {
    return withHandle<Initiator>(
        "korvo_core_ipc_initiator_response_receive", messaging, [&](Initiator &initiator) {
            if (service == nullptr || target == nullptr || request_id == nullptr || response == nullptr) {
                return KORVO_CORE_STATUS_INVALID_PARAMS;
            }
            Initiator::Response received;
            korvo_core_status const status = initiator.receiveAny(timeout, received);
            if (status == KORVO_CORE_STATUS_NO_ERROR) {
                *service = received.service.release();
                *target = received.target.release();
                *request_id = received.request_id.release();
                *response = received.response.release();
            }
            return status;
        });
}

korvo_core_status korvo_core_ipc_initiator_response_receive_callback(
    void *messaging, void (*callback)(char **, char **, char **, char **, void *), void *context) {
    return withHandle<Initiator>(
        "korvo_core_ipc_initiator_response_receive_callback", messaging,
        [&](Initiator &initiator) { return initiator.setResponseCallback(callback, context); });
}

korvo_core_status korvo_core_ipc_initiator_event_subscribe(void *messaging, char const *service) {
    return withHandle<Initiator>(
        "korvo_core_ipc_initiator_event_subscribe", messaging, [&](Initiator &initiator) {
            return service == nullptr ? KORVO_CORE_STATUS_INVALID_PARAMS : initiator.subscribe(service);
        });
}

korvo_core_status korvo_core_ipc_initiator_event_unsubscribe(void *messaging, char const *service) {
    return withHandle<Initiator>(
        "korvo_core_ipc_initiator_event_unsubscribe", messaging, [&](Initiator &initiator) {
            return service == nullptr ? KORVO_CORE_STATUS_INVALID_PARAMS : initiator.unsubscribe(service);
        });
}

korvo_core_status korvo_core_ipc_initiator_event_receive_callback(
    void *messaging, void (*callback)(char **, char **, char **, void *), void *context) {
    return withHandle<Initiator>(
        "korvo_core_ipc_initiator_event_receive_callback", messaging,
        [&](Initiator &initiator) { return initiator.setEventCallback(callback, context); });
}

korvo_core_status korvo_core_private_command_send(void *messaging, char const *service, char const *target,
                                                  char const *request_id, char const *command, size_t length,
                                                  void const *owner, char const *substitute) {
    return withHandle<Initiator>("sending a command", messaging, [&](Initiator &initiator) {
        if (service == nullptr || request_id == nullptr || command == nullptr) {
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        return initiator.send(
            service, orEmpty(target), request_id, {command, length},
            {substitute != nullptr ? Route::owner_callback : Route::receiver, owner, orEmpty(substitute)});
    });
}

korvo_core_status korvo_core_private_response_receive(void *messaging, int timeout, char const *request_id,
                                                      char **response, size_t *length) {
    return withHandle<Initiator>("receiving a response", messaging, [&](Initiator &initiator) {
        if (request_id == nullptr || response == nullptr || length == nullptr) {
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        Text received;
        korvo_core_status const status = initiator.receive(request_id, timeout, received);
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            *length = received.size();
            *response = received.release();
        }
        return status;
    });
}
