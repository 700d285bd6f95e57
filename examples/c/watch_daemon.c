/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Stays: prints what actions complete and, again and again, how many actions there are, until SIGTERM or SIGINT.
 * Ends at once, also while a call waits for a service that does not answer.
 *
 *     watch_daemon [SECONDS]        between two questions (10 if not given)
 */
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "korvo_api_action_engine.h"

typedef struct {
    void *handle;
    unsigned int seconds;
    pthread_mutex_t mutex;
    pthread_cond_t changed;
    int stopping;
} daemon_state;

/* Runs on a thread of the messaging layer. */
static void on_action_completed(unsigned int action_id, char const *action_name, unsigned char success,
                                char const *source, void *context) {
    (void)source;
    (void)context;
    printf("action %u \"%s\" %s\n", action_id, action_name, success ? "succeeded" : "failed");
    (void)fflush(stdout);
}

/* Waits for the next question; returns 0 when there is none. */
static int pause_before_next(daemon_state *state) {
    struct timespec limit;
    int waiting = 0;
    int go_on;
    clock_gettime(CLOCK_REALTIME, &limit);
    limit.tv_sec += (time_t)state->seconds;
    pthread_mutex_lock(&state->mutex);
    while (!state->stopping && waiting == 0) {
        waiting = pthread_cond_timedwait(&state->changed, &state->mutex, &limit);
    }
    go_on = !state->stopping;
    pthread_mutex_unlock(&state->mutex);
    return go_on;
}

static void *ask_again_and_again(void *context) {
    daemon_state *const state = context;
    do {
        unsigned int total = 0;
        unsigned int **types = NULL;
        unsigned int **counts = NULL;
        korvo_core_status const status =
            korvo_api_action_engine_get_action_counts_send(state->handle, NULL, &total, &types, &counts);
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            printf("%u actions\n", total);
        } else {
            /* The service may come back: it is asked again. */
            printf("no answer: %s (status %u)\n", korvo_core_status_to_string(status), (unsigned int)status);
        }
        (void)fflush(stdout);
        korvo_core_free_uint_array(types);
        korvo_core_free_uint_array(counts);
    } while (pause_before_next(state));
    return NULL;
}

static void stop(daemon_state *state) {
    pthread_mutex_lock(&state->mutex);
    state->stopping = 1;
    pthread_cond_broadcast(&state->changed);
    pthread_mutex_unlock(&state->mutex);
}

/* Starts the thread that asks, waits for a signal, and has closed the messaging when it returns. */
static int run_until_signal(daemon_state *state, sigset_t const *signals, void *messaging) {
    pthread_t asking;
    int signal_number = 0;
    int const started = pthread_create(&asking, NULL, ask_again_and_again, state) == 0;
    if (started) {
        (void)sigwait(signals, &signal_number);
        stop(state);
    } else {
        fprintf(stderr, "watch_daemon: no thread can be started\n");
    }
    /* Ends the call that waits. One that begins a moment later finds the messaging closed, and fails too. (A camera's
     * platform may let the call wait on: then the thread ends after the 5 seconds that the call may last.) */
    (void)korvo_core_ipc_deinit(messaging);
    if (started) {
        pthread_join(asking, NULL);
        printf("stopped by signal %d\n", signal_number);
    }
    return started;
}

int main(int count, char **arguments) {
    daemon_state state = {NULL, 10, PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, 0};
    sigset_t signals;
    void *logging = NULL;
    void *messaging = NULL;
    korvo_core_status status;
    int well = 0;

    if (count > 1) {
        state.seconds = (unsigned int)strtoul(arguments[1], NULL, 10);
    }
    /* Before any thread starts, so that every one inherits it and the signals wait for sigwait(). */
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, NULL);

    status = korvo_core_logging_init("watch_daemon", &logging);
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        /* Messaging of the program's own, which it can close while the handle still stands. */
        status = korvo_core_ipc_initiator_init(logging, "watch_daemon", &messaging, 1);
    }
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        status = korvo_api_action_engine_initiator_init(messaging, logging, &state.handle, 1, "watch_daemon");
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            korvo_api_action_engine_action_completed_register_event_handler(state.handle, on_action_completed,
                                                                            NULL);
            well = run_until_signal(&state, &signals, messaging);
        } else {
            (void)korvo_core_ipc_deinit(messaging);
        }
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        fprintf(stderr, "watch_daemon: %s (status %u)\n", korvo_core_status_to_string(status),
                (unsigned int)status);
    }
    /* The handle logs until it has ended, so logging goes last. */
    (void)korvo_api_action_engine_initiator_deinit(state.handle);
    if (logging != NULL) {
        (void)korvo_core_logging_deinit(logging);
    }
    return well ? EXIT_SUCCESS : EXIT_FAILURE;
}
