// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <limits>

#include "korvo_core.h"
#include "messaging/with_handle.h"

using namespace platform;

korvo_core_status korvo_core_ipc_target_init(void *logging, char const *service, char const *target,
                                             char const *name, void **messaging) {
    return guardedCall("korvo_core_ipc_target_init", [&] {
        if (messaging == nullptr || service == nullptr) {
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        auto opened = std::make_shared<Target>(logging, service, orEmpty(target), orEmpty(name),
                                               RuntimeFolder::fromEnvironment());
        korvo_core_status const status = opened->open();
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            *messaging = messagingHandles().add(std::move(opened));
        }
        return status;
    });
}

korvo_core_status korvo_core_ipc_target_command_receive(void *messaging, unsigned int timeout, char **source,
                                                        char **request_id, char **command) {
    return withHandle<Target>("korvo_core_ipc_target_command_receive", messaging, [&](Target &target) {
        if (source == nullptr || request_id == nullptr || command == nullptr) {
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        // A caller's -1 arrives here as the largest value and means what it means for an initiator.
        constexpr unsigned int longest = std::numeric_limits<int>::max();
        Target::Command received;
        korvo_core_status const status =
            target.receive(timeout > longest ? -1 : static_cast<int>(timeout), received);
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            *source = received.source.release();
            *request_id = received.request_id.release();
            *command = received.command.release();
        }
        return status;
    });
}

korvo_core_status korvo_core_ipc_target_command_receive_callback(
    void *messaging, void (*callback)(char **, char **, char **, void *), void *context) {
    return withHandle<Target>("korvo_core_ipc_target_command_receive_callback", messaging,
                              [&](Target &target) { return target.setCommandCallback(callback, context); });
}

korvo_core_status korvo_core_ipc_target_response_send(void *messaging, char const *source,
                                                      char const *request_id, char const *response) {
    return withHandle<Target>("korvo_core_ipc_target_response_send", messaging, [&](Target &target) {
        if (source == nullptr || request_id == nullptr || response == nullptr) {
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        return target.sendResponse(source, request_id, response);
    });
}

korvo_core_status korvo_core_ipc_target_event_send(void *messaging, char const *event) {
    return withHandle<Target>("korvo_core_ipc_target_event_send", messaging, [&](Target &target) {
        return event == nullptr ? KORVO_CORE_STATUS_INVALID_PARAMS : target.sendEvent(event);
    });
}
