/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Sends an e-mail when the camera reports motion: creates the e-mail action and the ONVIF trigger, binds them, hands
 * the service such an event to try it out, and cleans up. The service for development machines writes the message
 * into a folder (see its option --outbox) and sends nothing.
 */
#include <stdio.h>
#include <stdlib.h>

#include "korvo_api_action_engine.h"

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

int main(void) {
    void *logging = NULL;
    void *handle = NULL;
    unsigned int action_id = 0;
    unsigned int trigger_id = 0;
    int done = 0;

    if (!succeeded("logging_init", korvo_core_logging_init("onvif_email_alarm", &logging))) {
        return EXIT_FAILURE;
    }
    if (succeeded("initiator_init",
                  korvo_api_action_engine_initiator_init(NULL, logging, &handle, 0, "onvif_email_alarm"))) {
        done = create_alarm(handle, &trigger_id, &action_id) && show_recipients(handle, action_id) &&
               succeeded("onvif_event",
                         korvo_api_action_engine_onvif_event_send(
                             handle, NULL, "tns1:VideoSource/MotionAlarm",
                             "<tt:Message><tt:Data/></tt:Message>", namespace_keys, namespace_uris));
        if (done) {
            printf("Trigger %u has fired; the service runs action %u\n", trigger_id, action_id);
        }
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
