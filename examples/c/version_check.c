/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Asks the service for its interface version in two steps: sends, does something else, then looks for the answer
 * now and again without waiting. A program with an event loop of its own works like this.
 */
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "korvo_api_action_engine.h"

enum { polls = 500, milliseconds_between_polls = 10 };

static korvo_core_status ask(void *handle, unsigned int *major, unsigned int *minor) {
    struct timespec const pause = {0, milliseconds_between_polls * 1000000L};
    char *request_id = NULL;
    int poll = 0;
    korvo_core_status status =
        korvo_api_action_engine___get_target_version___non_blocking_send(handle, NULL, &request_id);

    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        /* A receive that does not succeed leaves the identifier to us, so it can be tried again. */
        do {
            nanosleep(&pause, NULL); /* here the program does its own work */
            status = korvo_api_action_engine___get_target_version___receive(handle, 0, NULL, request_id,
                                                                            major, minor);
        } while (status == KORVO_CORE_STATUS_IPC_FAILED && ++poll < polls);
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        korvo_api_action_engine_free_uuid(request_id);
    }
    return status;
}

int main(void) {
    void *logging = NULL;
    void *handle = NULL;
    unsigned int major = 0;
    unsigned int minor = 0;
    unsigned int target_major = 0;
    unsigned int target_minor = 0;
    korvo_core_status status = korvo_core_logging_init("version_check", &logging);

    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        status = korvo_api_action_engine_initiator_init(NULL, logging, &handle, 0, "version_check");
    }
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        (void)korvo_api_action_engine_get_initiator_version(handle, &major, &minor);
        status = ask(handle, &target_major, &target_minor);
    }
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        printf("This client speaks version %u.%u, the service %u.%u\n", major, minor, target_major,
               target_minor);
    } else {
        fprintf(stderr, "version_check: %s (status %u)\n", korvo_core_status_to_string(status),
                (unsigned int)status);
    }
    (void)korvo_api_action_engine_initiator_deinit(handle);
    if (logging != NULL) {
        (void)korvo_core_logging_deinit(logging);
    }
    return status == KORVO_CORE_STATUS_NO_ERROR ? EXIT_SUCCESS : EXIT_FAILURE;
}
