/* SPDX-License-Identifier: Apache-2.0 */
/* Preloaded, it takes the place of one function of libkorvo-core and leaves the others to that library. */
#include "korvo_core.h"

korvo_core_status korvo_core_ipc_initiator_event_subscribe(void *messaging, char const *service) {
    (void)messaging;
    (void)service;
    return KORVO_CORE_STATUS_UNSUPPORTED_FUNCTION;
}
