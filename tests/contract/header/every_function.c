/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Takes the address of every function, as a C program that uses them all would: each is declared for C and
 * found by the linker, and there are 392 different ones.
 */
#include "korvo_api_action_engine.h"

#include <stdio.h>
#include <stdlib.h>

#include "typed_calls/operation_names.h"

typedef void (*any_function)(void);

struct function {
    char const *name;
    any_function address;
};

#define FUNCTION(name) {"korvo_api_action_engine_" #name, (any_function)korvo_api_action_engine_##name},
#define SEVEN_FORMS(operation)                 \
    FUNCTION(operation##_send)                 \
    FUNCTION(operation##_send_with_timeout)    \
    FUNCTION(operation##_non_blocking_send)    \
    FUNCTION(operation##_receive)              \
    FUNCTION(operation##_receive_with_timeout) \
    FUNCTION(operation##_send_async)           \
    FUNCTION(operation##_cancel_async)

/* One line each; the macros bring their commas along. */
/* clang-format off */
static struct function const functions[] = {
    FUNCTION(initiator_init)
    FUNCTION(initiator_deinit)
    FUNCTION(get_initiator_version)
    FUNCTION(free_uuid)
    FUNCTION(__get_target_version___send)
    FUNCTION(__get_target_version___non_blocking_send)
    FUNCTION(__get_target_version___receive)
    FUNCTION(__get_target_version___send_async)
    FUNCTION(__get_target_version___cancel_async)
    OPERATION_NAMES(SEVEN_FORMS)
    FUNCTION(action_completed_register_event_handler)
    FUNCTION(action_completed_unregister_event_handler)
    FUNCTION(action_completed_unregister_event_handler_with_context)
    FUNCTION(register_default_callbacks)
    FUNCTION(unregister_default_callbacks)
};
/* clang-format on */

#undef SEVEN_FORMS
#undef FUNCTION

int main(void) {
    size_t const count = sizeof functions / sizeof functions[0];
    int failed = 0;
    if (count != 392) {
        (void)fprintf(stderr, "%zu functions, but callers know 392\n", count);
        failed = 1;
    }
    for (size_t i = 0; i < count; ++i) {
        for (size_t j = i + 1; j < count; ++j) {
            if (functions[i].address == functions[j].address) {
                (void)fprintf(stderr, "%s and %s are the same function\n", functions[i].name,
                              functions[j].name);
                failed = 1;
            }
        }
    }
    return failed ? EXIT_FAILURE : EXIT_SUCCESS;
}
