/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Lists every action of the service with its type.
 *
 * The lists that the service returns tell the types already. Asking again for each action shows the plain
 * synchronous call, and what becomes of an action that somebody deletes in the meantime.
 */
#include <stdio.h>
#include <stdlib.h>

#include "korvo_api_action_engine.h"

static char const *type_name(unsigned int action_type) {
    switch (action_type) {
        case kSendEmailAction:
            return "e-mail";
        case kFtpUploadAction:
            return "FTP upload";
        case kSaveSnapshotAction:
            return "snapshot";
        case kPtzPatternAction:
            return "PTZ pattern";
        case kPtzPresetAction:
            return "PTZ preset";
        case kPtzTourAction:
            return "PTZ tour";
        case kPtzScanAction:
            return "PTZ scan";
        case kWiperAction:
            return "wiper";
        case kWasherAction:
            return "washer";
        case kRelayAction:
            return "relay";
        default:
            return "of a type that this program does not know";
    }
}

/* Says what failed and what to do about it. */
static void explain(char const *what, korvo_core_status status) {
    (void)fprintf(stderr, "list_actions: %s failed with status %u (%s).\n", what, (unsigned int)status,
                  korvo_core_status_to_string(status));
    if (status == KORVO_CORE_STATUS_DISABLED_TARGET) {
        (void)fprintf(stderr,
                      "list_actions: no action_engine service is running for this user. Start one with "
                      "korvo-action-engine-simulator, with the same KORVO_RUNTIME_DIR as this program.\n");
    } else if (status == KORVO_CORE_STATUS_IPC_FAILED) {
        (void)fprintf(stderr,
                      "list_actions: the service did not answer in time, or the connection was lost. "
                      "The log lines say more; try again.\n");
    }
}

/* Prints one line for each action; returns the number of actions that could not be asked about. */
static unsigned int print_types(void *handle, unsigned int **action_id) {
    unsigned int failures = 0;
    for (size_t n = 0; action_id[n] != NULL; ++n) {
        unsigned int action_type = 0;
        korvo_core_status const status =
            korvo_api_action_engine_get_action_type_send(handle, NULL, *action_id[n], &action_type);
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            (void)printf("action %u: %s\n", *action_id[n], type_name(action_type));
        } else if (status == KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE) {
            (void)printf("action %u: the service refused; it may have been deleted since it was listed\n",
                         *action_id[n]);
        } else {
            explain("asking for an action's type", status);
            ++failures;
        }
    }
    return failures;
}

int main(void) {
    korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
    void *logging = NULL;
    void *handle = NULL;
    unsigned int **action_id = NULL;
    unsigned int **action_type = NULL;
    int exit_code = EXIT_FAILURE;

    status = korvo_core_logging_init("list_actions", &logging);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        explain("opening the log", status);
        return EXIT_FAILURE;
    }

    status = korvo_api_action_engine_initiator_init(NULL, logging, &handle, 0, "list_actions");
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        explain("opening the messaging", status);
        (void)korvo_core_logging_deinit(logging);
        return EXIT_FAILURE;
    }

    status = korvo_api_action_engine_get_actions_send(handle, NULL, &action_id, &action_type);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        explain("listing the actions", status);
    } else if (action_id[0] == NULL) {
        (void)printf("The service has no actions.\n");
        exit_code = EXIT_SUCCESS;
    } else if (print_types(handle, action_id) == 0) {
        exit_code = EXIT_SUCCESS;
    }

    /* Also after a failure: a list that arrived before the failing one is the caller's all the same. */
    korvo_core_free_uint_array(action_type);
    korvo_core_free_uint_array(action_id);
    (void)korvo_api_action_engine_initiator_deinit(handle);
    (void)korvo_core_logging_deinit(logging);
    return exit_code;
}
