/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Sends an e-mail when the camera reports motion: creates the e-mail action and the ONVIF trigger, binds them, hands
 * the service such an event to try it out, and cleans up. The service for development machines writes the message
 * into a folder (see its option --outbox) and sends nothing.
 */
#include <errno.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "korvo_api_action_engine.h"

enum { seconds_to_wait_for_the_mail = 10 };

/* What the event handler, which runs on a thread of the messaging layer, tells the main thread. */
typedef struct {
    pthread_mutex_t mutex;
    pthread_cond_t changed;
    unsigned int action_id;
    int completed;
    int succeeded;
} watch;

/* Says what went wrong with what; returns 1 for success. */
static int succeeded(char const *what, korvo_core_status status) {
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        fprintf(stderr, "%s: %s (status %u)\n", what, korvo_core_status_to_string(status),
                (unsigned int)status);
    }
    return status == KORVO_CORE_STATUS_NO_ERROR;
}

/* The service knows the topic by its namespace and not by the prefix, so prefix and URI go along, n-th with n-th. */
static char prefix[] = "tns1";
static char uri[] = "http://www.onvif.org/ver10/topics";
static char *namespace_keys[] = {prefix, NULL};
static char *namespace_uris[] = {uri, NULL};

static int create_alarm(void *handle, unsigned int *trigger_id, unsigned int *action_id) {
    char guard[] = "guard@example.org";
    char *to_addresses[] = {guard, NULL};
    /* Nobody gets a copy: an empty list and not NULL, which would be refused. */
    char *cc_addresses[] = {NULL};

    return succeeded("create_email_action",
                     korvo_api_action_engine_create_email_action_send(
                         handle, NULL, "motion alarm", "mail.example.org", to_addresses, cc_addresses,
                         "camera@example.org", "Motion at the door", "The camera saw something move.",
                         /*attach_jpeg*/ 1, /*include_event*/ 1, action_id)) &&
           succeeded("create_onvif_trigger",
                     korvo_api_action_engine_create_onvif_trigger_send(
                         handle, NULL, "motion", "tns1:VideoSource/MotionAlarm",
                         "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet", /*content_filter*/ "",
                         namespace_keys, namespace_uris, trigger_id)) &&
           succeeded("create_association",
                     korvo_api_action_engine_create_association_send(handle, NULL, *trigger_id, *action_id));
}

static int show_recipients(void *handle, unsigned int action_id) {
    char *action_name = NULL;
    char *smtp_server = NULL;
    char **to_addresses = NULL;
    char **cc_addresses = NULL;
    char *from_address = NULL;
    char *subject = NULL;
    char *body = NULL;
    unsigned char attach_jpeg = 0;
    unsigned char include_event = 0;
    size_t place;
    int const read = succeeded(
        "get_email_action", korvo_api_action_engine_get_email_action_send(
                                handle, NULL, action_id, &action_name, &smtp_server, &to_addresses,
                                &cc_addresses, &from_address, &subject, &body, &attach_jpeg, &include_event));
    for (place = 0; read && to_addresses[place] != NULL; ++place) {
        printf("\"%s\" goes to %s through %s\n", subject, to_addresses[place], smtp_server);
    }
    /* All of it is ours, whatever the status was. */
    free(action_name);
    free(smtp_server);
    korvo_core_free_string_array(to_addresses);
    korvo_core_free_string_array(cc_addresses);
    free(from_address);
    free(subject);
    free(body);
    return read;
}

static void on_action_completed(unsigned int action_id, char const *action_name, unsigned char success,
                                char const *source, void *context) {
    watch *const events = context;
    (void)action_name;
    (void)source;
    pthread_mutex_lock(&events->mutex);
    if (action_id == events->action_id) {
        events->completed = 1;
        events->succeeded = success;
        pthread_cond_signal(&events->changed);
    }
    pthread_mutex_unlock(&events->mutex);
}

/*
 * Hands the service a motion event and waits until it has run the action. Without the waiting, the action might be
 * deleted before its turn comes.
 */
static int try_it_out(void *handle, watch *events, unsigned int trigger_id, unsigned int action_id) {
    struct timespec limit;
    int waiting = 0;
    int sent = 0;

    pthread_mutex_lock(&events->mutex);
    events->action_id = action_id;
    pthread_mutex_unlock(&events->mutex);
    if (!succeeded("onvif_event", korvo_api_action_engine_onvif_event_send(
                                      handle, NULL, "tns1:VideoSource/MotionAlarm",
                                      "<tt:Message xmlns:tt=\"http://www.onvif.org/ver10/schema\">"
                                      "<tt:Data/></tt:Message>",
                                      namespace_keys, namespace_uris))) {
        return 0;
    }
    clock_gettime(CLOCK_REALTIME, &limit);
    limit.tv_sec += seconds_to_wait_for_the_mail;
    pthread_mutex_lock(&events->mutex);
    while (!events->completed && waiting != ETIMEDOUT) {
        waiting = pthread_cond_timedwait(&events->changed, &events->mutex, &limit);
    }
    sent = events->completed && events->succeeded;
    pthread_mutex_unlock(&events->mutex);
    if (sent) {
        printf("Trigger %u has fired; the service has run action %u\n", trigger_id, action_id);
    } else {
        fprintf(stderr, "The service has not run action %u; its log says why\n", action_id);
    }
    return sent;
}

int main(void) {
    watch events = {PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, 0, 0, 0};
    void *logging = NULL;
    void *handle = NULL;
    unsigned int action_id = 0;
    unsigned int trigger_id = 0;
    int done = 0;

    if (!succeeded("logging_init", korvo_core_logging_init("onvif_email_alarm", &logging))) {
        return EXIT_FAILURE;
    }
    /* The flag subscribes to events at once, so that none is missed. */
    if (succeeded("initiator_init",
                  korvo_api_action_engine_initiator_init(NULL, logging, &handle, 1, "onvif_email_alarm"))) {
        korvo_api_action_engine_action_completed_register_event_handler(handle, on_action_completed, &events);
        done = create_alarm(handle, &trigger_id, &action_id) && show_recipients(handle, action_id) &&
               try_it_out(handle, &events, trigger_id, action_id);
        if (trigger_id != 0) {
            done = succeeded("delete_trigger",
                             korvo_api_action_engine_delete_trigger_send(handle, NULL, trigger_id)) &&
                   done;
        }
        if (action_id != 0) {
            done = succeeded("delete_action",
                             korvo_api_action_engine_delete_action_send(handle, NULL, action_id)) &&
                   done;
        }
        (void)korvo_api_action_engine_initiator_deinit(handle);
    }
    (void)korvo_core_logging_deinit(logging);
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
