/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Lists the actions without waiting in the call: the answer comes to a callback on a thread of the messaging layer.
 */
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "korvo_api_action_engine.h"

enum { seconds_to_wait = 5 };

typedef struct {
    pthread_mutex_t mutex;
    pthread_cond_t changed;
    int answered;
    korvo_core_status status;
} answer;

/* The lists are the library's and end with this function; a text among the results would be ours to free. */
static void on_actions(char *target, korvo_core_status status, unsigned int **action_id,
                       unsigned int **action_type, void *context) {
    answer *const result = context;
    size_t place;
    (void)target;
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        for (place = 0; action_id[place] != NULL; ++place) {
            printf("action %u of type %u\n", *action_id[place], *action_type[place]);
        }
        printf("%zu actions\n", place);
    }
    pthread_mutex_lock(&result->mutex);
    result->answered = 1;
    result->status = status;
    pthread_cond_signal(&result->changed);
    pthread_mutex_unlock(&result->mutex);
}

static korvo_core_status wait_for(answer *result) {
    struct timespec limit;
    korvo_core_status status;
    int waiting = 0;
    clock_gettime(CLOCK_REALTIME, &limit);
    limit.tv_sec += seconds_to_wait;
    pthread_mutex_lock(&result->mutex);
    while (!result->answered && waiting == 0) {
        waiting = pthread_cond_timedwait(&result->changed, &result->mutex, &limit);
    }
    status = result->answered ? result->status : KORVO_CORE_STATUS_IPC_FAILED;
    pthread_mutex_unlock(&result->mutex);
    return status;
}

int main(void) {
    /* The callback may run as long as the handle lives, so what it uses lives longer. */
    answer result = {PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, 0, KORVO_CORE_STATUS_NO_ERROR};
    void *logging = NULL;
    void *handle = NULL;
    korvo_core_status status = korvo_core_logging_init("asynchronous_list", &logging);

    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        status = korvo_api_action_engine_initiator_init(NULL, logging, &handle, 0, "asynchronous_list");
    }
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        status = korvo_api_action_engine_get_actions_send_async(handle, NULL, on_actions, &result);
    }
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        status = wait_for(&result);
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        fprintf(stderr, "asynchronous_list: %s (status %u)\n", korvo_core_status_to_string(status),
                (unsigned int)status);
    }
    (void)korvo_api_action_engine_initiator_deinit(handle);
    if (logging != NULL) {
        (void)korvo_core_logging_deinit(logging);
    }
    return status == KORVO_CORE_STATUS_NO_ERROR ? EXIT_SUCCESS : EXIT_FAILURE;
}
