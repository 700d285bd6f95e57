/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A relay that may switch on from Monday to Friday, from 8 to 12 and from 13 to 17 o'clock: creates the relay action,
 * sets its filters, reads them back, removes them, and cleans up.
 */
#include <stdio.h>
#include <stdlib.h>

#include "korvo_api_action_engine.h"

enum { seconds_an_hour = 3600 };

/* Says what went wrong with what; returns 1 for success. */
static int succeeded(char const *what, korvo_core_status status) {
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        fprintf(stderr, "%s: %s (status %u)\n", what, korvo_core_status_to_string(status),
                (unsigned int)status);
    }
    return status == KORVO_CORE_STATUS_NO_ERROR;
}

static int set_office_hours(void *handle, unsigned int action_id) {
    /* A list of numbers is a list of pointers to them; the n-th entries of the three lists belong together. */
    unsigned int office_days = kMonday + kTuesday + kWednesday + kThursday + kFriday;
    unsigned int morning_start = 8 * seconds_an_hour;
    unsigned int morning_end = 12 * seconds_an_hour;
    unsigned int afternoon_start = 13 * seconds_an_hour;
    unsigned int afternoon_end = 17 * seconds_an_hour;
    unsigned int *weekdays[] = {&office_days, &office_days, NULL};
    unsigned int *starts[] = {&morning_start, &afternoon_start, NULL};
    unsigned int *ends[] = {&morning_end, &afternoon_end, NULL};
    return succeeded("set_action_filters", korvo_api_action_engine_set_action_filters_send(
                                               handle, NULL, action_id, weekdays, starts, ends));
}

static int remove_filters(void *handle, unsigned int action_id) {
    unsigned int *none[] = {NULL};
    return succeeded("set_action_filters", korvo_api_action_engine_set_action_filters_send(
                                               handle, NULL, action_id, none, none, none));
}

static int show_filters(void *handle, unsigned int action_id) {
    unsigned int **weekdays = NULL;
    unsigned int **starts = NULL;
    unsigned int **ends = NULL;
    size_t place;
    int const read = succeeded("get_action_filters", korvo_api_action_engine_get_action_filters_send(
                                                         handle, NULL, action_id, &weekdays, &starts, &ends));
    for (place = 0; read && weekdays[place] != NULL && starts[place] != NULL && ends[place] != NULL;
         ++place) {
        printf("  weekdays %u, from %u to %u o'clock\n", *weekdays[place], *starts[place] / seconds_an_hour,
               *ends[place] / seconds_an_hour);
    }
    if (read && place == 0) {
        printf("  at any time\n");
    }
    korvo_core_free_uint_array(weekdays);
    korvo_core_free_uint_array(starts);
    korvo_core_free_uint_array(ends);
    return read;
}

int main(void) {
    void *logging = NULL;
    void *handle = NULL;
    unsigned int action_id = 0;
    int done = 0;

    if (!succeeded("logging_init", korvo_core_logging_init("relay_office_hours", &logging))) {
        return EXIT_FAILURE;
    }
    if (succeeded("initiator_init",
                  korvo_api_action_engine_initiator_init(NULL, logging, &handle, 0, "relay_office_hours"))) {
        if (succeeded("create_relay_action",
                      korvo_api_action_engine_create_relay_action_send(
                          handle, NULL, "gate", "relay 1", /*config_mode*/ 0, /*config_normally_closed*/ 0,
                          /*config_repeat_cycles*/ 1, /*config_on_time_ms*/ 500, /*config_off_time_ms*/ 500,
                          &action_id))) {
            done = set_office_hours(handle, action_id);
            printf("The relay may switch:\n");
            done = show_filters(handle, action_id) && done;
            done = remove_filters(handle, action_id) && done;
            printf("And without filters:\n");
            done = show_filters(handle, action_id) && done;
            done = succeeded("delete_action",
                             korvo_api_action_engine_delete_action_send(handle, NULL, action_id)) &&
                   done;
        }
        (void)korvo_api_action_engine_initiator_deinit(handle);
    }
    (void)korvo_core_logging_deinit(logging);
    return done ? EXIT_SUCCESS : EXIT_FAILURE;
}
