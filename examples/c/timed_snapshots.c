/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Saves a snapshot every second: creates a snapshot action and a timer trigger, binds them, watches the service
 * run the action, lists the catalogue, and cleans up.
 *
 *     timed_snapshots [EVENTS]        leaves after that many events (3 if not given)
 */
#include <errno.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "korvo_api_action_engine.h"

enum { seconds_to_wait_for_an_event = 10 };

/* What the event handler, which runs on a thread of the messaging layer, tells the main thread. */
typedef struct {
    pthread_mutex_t mutex;
    pthread_cond_t changed;
    unsigned int action_id;
    unsigned int seen;
} watch;

static void on_action_completed(unsigned int action_id, char const *action_name, unsigned char success,
                                char const *source, void *context) {
    watch *const events = context;
    (void)source;
    pthread_mutex_lock(&events->mutex);
    if (action_id == events->action_id) {
        ++events->seen;
        printf("  Action_completed: action %u \"%s\" %s\n", action_id, action_name,
               success ? "succeeded" : "failed");
        pthread_cond_signal(&events->changed);
    }
    pthread_mutex_unlock(&events->mutex);
}

/* Returns 1 when the number of events was reached, 0 when the next one did not come in time. */
static int wait_for_events(watch *events, unsigned int wanted) {
    int in_time = 1;
    pthread_mutex_lock(&events->mutex);
    while (in_time && events->seen < wanted) {
        unsigned int const seen_before = events->seen;
        struct timespec limit;
        clock_gettime(CLOCK_REALTIME, &limit);
        limit.tv_sec += seconds_to_wait_for_an_event;
        while (in_time && events->seen == seen_before) {
            in_time = pthread_cond_timedwait(&events->changed, &events->mutex, &limit) != ETIMEDOUT;
        }
    }
    pthread_mutex_unlock(&events->mutex);
    return in_time;
}

/* Says what went wrong with what; returns 1 for success. */
static int succeeded(char const *what, korvo_core_status status) {
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        return 1;
    }
    fprintf(stderr, "%s: %s (status %u)\n", what, korvo_core_status_to_string(status), (unsigned int)status);
    if (status == KORVO_CORE_STATUS_DISABLED_TARGET) {
        fprintf(stderr, "Is korvo-action-engine-simulator running, with the same KORVO_RUNTIME_DIR?\n");
    }
    return 0;
}

static int list_catalogue(void *handle) {
    unsigned int **action_id = NULL;
    unsigned int **action_type = NULL;
    unsigned int **trigger_id = NULL;
    unsigned int **trigger_type = NULL;
    int const listed =
        succeeded("get_actions",
                  korvo_api_action_engine_get_actions_send(handle, NULL, &action_id, &action_type)) &&
        succeeded("get_triggers",
                  korvo_api_action_engine_get_triggers_send(handle, NULL, &trigger_id, &trigger_type));
    size_t place;

    for (place = 0; listed && action_id[place] != NULL; ++place) {
        printf("  action %u of type %u\n", *action_id[place], *action_type[place]);
    }
    for (place = 0; listed && trigger_id[place] != NULL; ++place) {
        printf("  trigger %u of type %u\n", *trigger_id[place], *trigger_type[place]);
    }
    /* The lists are ours also when a later call failed. */
    korvo_core_free_uint_array(action_id);
    korvo_core_free_uint_array(action_type);
    korvo_core_free_uint_array(trigger_id);
    korvo_core_free_uint_array(trigger_type);
    return listed;
}

static int run(void *handle, watch *events, unsigned int wanted) {
    unsigned int action_id = 0;
    unsigned int trigger_id = 0;
    int done;

    printf("Creating a snapshot action that saves timed.jpg\n");
    if (!succeeded("create_snapshot_action", korvo_api_action_engine_create_snapshot_action_send(
                                                 handle, NULL, "timed snapshot", "timed.jpg", &action_id))) {
        return 0;
    }
    pthread_mutex_lock(&events->mutex);
    events->action_id = action_id;
    pthread_mutex_unlock(&events->mutex);

    printf("Creating a timer trigger that fires every second\n");
    done = succeeded("create_timer_trigger", korvo_api_action_engine_create_timer_trigger_send(
                                                 handle, NULL, "every second", 1, &trigger_id));
    if (done) {
        printf("Binding trigger %u to action %u, and watching it run %u times\n", trigger_id, action_id,
               wanted);
        done = succeeded("create_association", korvo_api_action_engine_create_association_send(
                                                   handle, NULL, trigger_id, action_id));
        if (done && !wait_for_events(events, wanted)) {
            fprintf(stderr, "No Action_completed came within %d seconds\n", seconds_to_wait_for_an_event);
            done = 0;
        }
        printf("The catalogue now:\n");
        done = list_catalogue(handle) && done;

        printf("Cleaning up\n");
        done = succeeded("delete_trigger",
                         korvo_api_action_engine_delete_trigger_send(handle, NULL, trigger_id)) &&
               done;
    }
    return succeeded("delete_action", korvo_api_action_engine_delete_action_send(handle, NULL, action_id)) &&
           done;
}

int main(int argc, char **argv) {
    unsigned long const wanted = argc > 1 ? strtoul(argv[1], NULL, 10) : 3;
    watch events = {PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, 0, 0};
    void *logging = NULL;
    void *handle = NULL;
    int done = 0;

    if (!succeeded("logging_init", korvo_core_logging_init("timed_snapshots", &logging))) {
        return EXIT_FAILURE;
    }
    /* The flag subscribes to events at once, so that none is missed. */
    if (succeeded("initiator_init",
                  korvo_api_action_engine_initiator_init(NULL, logging, &handle, 1, "timed_snapshots"))) {
        korvo_api_action_engine_action_completed_register_event_handler(handle, on_action_completed, &events);
        done = run(handle, &events, (unsigned int)wanted);
        /* Closes the messaging first: no event comes after this. */
        (void)korvo_api_action_engine_initiator_deinit(handle);
    }
    (void)korvo_core_logging_deinit(logging);
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
