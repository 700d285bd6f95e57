/* SPDX-License-Identifier: Apache-2.0 */
#ifndef KORVO_CORE_PRIVATE_H
#define KORVO_CORE_PRIVATE_H

/* What libkorvo-interfaces needs of libkorvo-core beside the public header. The two are built and exchanged
 * together, so nothing here is kept stable; nobody else includes it. */

#include <stddef.h>

#include "korvo_core.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Sends a command for an object, so that its response finds the way back to that object: to the thread that
 * waits for it; else, with a `substitute`, to the response callback that was registered with the object as its
 * context; else it is kept for a receive.
*
 * `command` holds `length` bytes and no zero byte. `owner` is the object; it is compared and never followed.
 * `substitute` is NULL, or makes the command an asynchronous one: after status 0 the callback is called once, with the
 * response, or with this text where none can come any more. It is called by the messaging thread only, not any more
 * once the callback is unregistered or the handle closed, and not for a connected service that stays silent. After any
 * other status it is not called.
* Returns what korvo_core_ipc_initiator_command_send() returns. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_private_command_send(
    void *messaging, char const *service, char const *target, char const *request_id, char const *command,
    size_t length, void const *owner, char const *substitute);

/* Waits for the response to one request that was sent by korvo_core_private_command_send(): milliseconds, 0
 * polls, a negative time-out waits without limit. On status 0 `*response` is a text of `*length` bytes, which
 * the caller frees with free(). Status 4: no response within the time, or none can come any more. Status 3:
 * another thread waits for the same request. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_private_response_receive(void *messaging, int timeout,
                                                                        char const *request_id,
                                                                        char **response, size_t *length);

#ifdef __cplusplus
}
#endif

#endif
