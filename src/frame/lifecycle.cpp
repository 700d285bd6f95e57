// SPDX-License-Identifier: Apache-2.0
// Making and ending a client handle, its version, and the default event handler.

#include <cstdio>
#include <cstdlib>

#include "frame/initiator.h"
#include "korvo_api_action_engine.h"

korvo_core_status korvo_api_action_engine_initiator_init(void *messaging_handle, void *logging_handle,
                                                         void **handle, unsigned char subscribe_events,
                                                         char const *initiator_name) noexcept {
    if (handle == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    try {
        *handle =
            new IAction_engineInitiator(messaging_handle, logging_handle, subscribe_events, initiator_name);
        return KORVO_CORE_STATUS_NO_ERROR;
    } catch (...) {
        // Whatever it was has been logged where it happened.
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    }
}

korvo_core_status korvo_api_action_engine_initiator_deinit(void *handle) noexcept {
    auto *const initiator = static_cast<IAction_engineInitiator *>(handle);
    // On purpose: 0, since no caller looks at the status of an end. The callback goes on using the handle, and so do those
    // that it returns to.
    if (initiator == nullptr || !initiator->refusesInCallback("korvo_api_action_engine_initiator_deinit")) {
        delete initiator;
    }
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_api_action_engine_get_initiator_version(void *handle, unsigned int *major,
                                                                unsigned int *minor) noexcept {
    if (major == nullptr || minor == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    auto const *const initiator = static_cast<IAction_engineInitiator const *>(handle);
    *major = initiator->majorVersion();
    *minor = initiator->minorVersion();
    return KORVO_CORE_STATUS_NO_ERROR;
}

void korvo_api_action_engine_free_uuid(char *request_id) noexcept {
    std::free(request_id);
}

namespace {

void printActionCompleted(unsigned int action_id, char const *action_name, unsigned char success,
                          char const *source, void *) {
    std::printf("action_engine:action_completed:%s fired with params: %u, \"%s\", %s\n", source, action_id,
                action_name, success != 0 ? "true" : "false");
}

}  // namespace

void korvo_api_action_engine_register_default_callbacks(void *handle) noexcept {
    korvo_api_action_engine_action_completed_register_event_handler(handle, printActionCompleted, nullptr);
}

void korvo_api_action_engine_unregister_default_callbacks(void *handle) noexcept {
    korvo_api_action_engine_action_completed_unregister_event_handler(handle, printActionCompleted);
}
