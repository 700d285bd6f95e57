/* SPDX-License-Identifier: Apache-2.0 */
/* Every function of korvo_core.h with its type, as callers in C have it compiled in. A function with another type does
 * not compile here, one that the library does not export does not link. */
#include <stdio.h>

#include "korvo_core.h"

typedef char const *Key;
typedef korvo_core_status Status;

#define COUNT(list) (sizeof(list) / sizeof(list)[0])

/* Not static, so that the compiler keeps them and the linker looks for each function. */
char const *(*const status_text[])(Status) = {korvo_core_status_to_string};
Status (*const lives[])(void) = {
    korvo_core_init,
    korvo_core_deinit,
    korvo_core_settings_init,
    korvo_core_settings_deinit,
    korvo_core_configuration_init,
    korvo_core_configuration_deinit,
};

Status (*const initiator_init[])(void *, Key, void **, int) = {korvo_core_ipc_initiator_init};
Status (*const command_send[])(void *, Key, Key, Key, Key) = {korvo_core_ipc_initiator_command_send};
Status (*const response_receive[])(void *, int, char **, char **, char **,
                                   char **) = {korvo_core_ipc_initiator_response_receive};
Status (*const response_callback[])(void *, void (*)(char **, char **, char **, char **, void *),
                                    void *) = {korvo_core_ipc_initiator_response_receive_callback};
Status (*const with_a_text[])(void *, Key) = {
    korvo_core_ipc_initiator_event_subscribe,
    korvo_core_ipc_initiator_event_unsubscribe,
    korvo_core_ipc_target_event_send,
};
Status (*const callbacks[])(void *, void (*)(char **, char **, char **, void *), void *) = {
    korvo_core_ipc_initiator_event_receive_callback,
    korvo_core_ipc_target_command_receive_callback,
};
Status (*const target_init[])(void *, Key, Key, Key, void **) = {korvo_core_ipc_target_init};
Status (*const command_receive[])(void *, unsigned int, char **, char **,
                                  char **) = {korvo_core_ipc_target_command_receive};
Status (*const response_send[])(void *, Key, Key, Key) = {korvo_core_ipc_target_response_send};
Status (*const handle_ends[])(void *) = {korvo_core_ipc_deinit, korvo_core_logging_deinit};

Status (*const logging_init[])(Key, void **) = {korvo_core_logging_init};
Status (*const is_active[])(void *, korvo_core_log_priority, int *) = {korvo_core_logging_is_priority_active};
Status (*const logs[])(void *, korvo_core_log_priority, char const *, ...) = {korvo_core_logging_log};
void (*const log_lists[])(void *, korvo_core_log_priority, char const *, va_list) = {korvo_core_logging_logv};

Status (*const get_texts[])(Key, char **) = {
    korvo_core_settings_get_string_value,         korvo_core_settings_get_json_value,
    korvo_core_settings_get_default_string_value, korvo_core_settings_get_default_json_value,
    korvo_core_configuration_get_string_value,    korvo_core_configuration_get_json_value,
};
Status (*const get_ints[])(Key, int *) = {
    korvo_core_settings_get_int_value,
    korvo_core_settings_get_default_int_value,
    korvo_core_configuration_get_int_value,
};
Status (*const get_flags[])(Key, unsigned char *) = {
    korvo_core_settings_get_bool_value,
    korvo_core_settings_get_default_bool_value,
    korvo_core_configuration_get_bool_value,
};
Status (*const get_doubles[])(Key, double *) = {
    korvo_core_settings_get_double_value,
    korvo_core_settings_get_default_double_value,
    korvo_core_configuration_get_double_value,
};
Status (*const get_text_lists[])(Key, char ***, unsigned int *) = {
    korvo_core_settings_get_arrayofstring_value,
    korvo_core_settings_get_default_arrayofstring_value,
    korvo_core_configuration_get_arrayofstring_value,
};
Status (*const get_int_lists[])(Key, int ***, unsigned int *) = {
    korvo_core_settings_get_arrayofint_value,
    korvo_core_settings_get_default_arrayofint_value,
    korvo_core_configuration_get_arrayofint_value,
};
Status (*const get_flag_lists[])(Key, unsigned char ***, unsigned int *) = {
    korvo_core_settings_get_arrayofbool_value,
    korvo_core_settings_get_default_arrayofbool_value,
    korvo_core_configuration_get_arrayofbool_value,
};
Status (*const get_double_lists[])(Key, double ***, unsigned int *) = {
    korvo_core_settings_get_arrayofdouble_value,
    korvo_core_settings_get_default_arrayofdouble_value,
    korvo_core_configuration_get_arrayofdouble_value,
};

Status (*const with_two_texts[])(Key, Key) = {
    korvo_core_settings_set_string_value,
    korvo_core_settings_set_json_value,
    korvo_core_settings_set_default_string_value,
    korvo_core_settings_set_default_json_value,
    korvo_core_settings_copy_string_key,
    korvo_core_settings_copy_json_key,
    korvo_core_settings_copy_int_key,
    korvo_core_settings_copy_bool_key,
    korvo_core_settings_copy_double_key,
    korvo_core_settings_copy_arrayofstring_key,
    korvo_core_settings_copy_arrayofint_key,
    korvo_core_settings_copy_arrayofbool_key,
    korvo_core_settings_copy_arrayofdouble_key,
};
Status (*const set_ints[])(Key, int) = {
    korvo_core_settings_set_int_value,
    korvo_core_settings_set_default_int_value,
};
Status (*const set_flags[])(Key, unsigned char) = {
    korvo_core_settings_set_bool_value,
    korvo_core_settings_set_default_bool_value,
};
Status (*const set_doubles[])(Key, double) = {
    korvo_core_settings_set_double_value,
    korvo_core_settings_set_default_double_value,
};
Status (*const set_text_lists[])(Key, char **) = {
    korvo_core_settings_set_arrayofstring_value,
    korvo_core_settings_set_default_arrayofstring_value,
};
Status (*const set_int_lists[])(Key, int **) = {
    korvo_core_settings_set_arrayofint_value,
    korvo_core_settings_set_default_arrayofint_value,
};
Status (*const set_flag_lists[])(Key, unsigned char **) = {
    korvo_core_settings_set_arrayofbool_value,
    korvo_core_settings_set_default_arrayofbool_value,
};
Status (*const set_double_lists[])(Key, double **) = {
    korvo_core_settings_set_arrayofdouble_value,
    korvo_core_settings_set_default_arrayofdouble_value,
};

char **(*const all_keys[])(void) = {
    korvo_core_settings_get_all_keys,
    korvo_core_configuration_get_all_keys,
};
char **(*const keys_starting_with[])(Key) = {korvo_core_settings_get_keys_starting_with};
Status (*const get_types[])(Key, korvo_core_settings_type *) = {
    korvo_core_settings_get_type,
    korvo_core_configuration_get_type,
};
unsigned char (*const do_exist[])(Key) = {
    korvo_core_settings_does_key_exist,
    korvo_core_configuration_does_key_exist,
};
Status (*const delete_key[])(Key) = {korvo_core_settings_delete_key};

Status (*const exchange_version[])(unsigned int *, unsigned int) = {korvo_core_settings_get_and_set_version};
Status (*const versions[])(unsigned int *, unsigned int *) = {korvo_core_settings_get_versions};
Status (*const is_new[])(unsigned char *) = {korvo_core_settings_is_new_file};

void (*const dump[])(void) = {korvo_core_debug_settings_dump};
char *(*const path[])(void) = {korvo_core_debug_get_setting_path};

unsigned char **(*const alloc_flags[])(unsigned int) = {korvo_core_alloc_bool_array};
unsigned int **(*const alloc_uints[])(unsigned int) = {korvo_core_alloc_uint_array};
int **(*const alloc_ints[])(unsigned int) = {korvo_core_alloc_int_array};
double **(*const alloc_doubles[])(unsigned int) = {korvo_core_alloc_double_array};
char **(*const alloc_texts[])(unsigned int) = {korvo_core_alloc_string_array};
void (*const free_flags[])(unsigned char **) = {korvo_core_free_bool_array};
void (*const free_uints[])(unsigned int **) = {korvo_core_free_uint_array};
void (*const free_ints[])(int **) = {korvo_core_free_int_array};
void (*const free_doubles[])(double **) = {korvo_core_free_double_array};
void (*const free_texts[])(char **) = {korvo_core_free_string_array};

enum { expected = 102 };

int main(void) {
    size_t const count =
        COUNT(status_text) + COUNT(lives) + COUNT(initiator_init) + COUNT(command_send) +
        COUNT(response_receive) + COUNT(response_callback) + COUNT(with_a_text) + COUNT(callbacks) +
        COUNT(target_init) + COUNT(command_receive) + COUNT(response_send) + COUNT(handle_ends) +
        COUNT(logging_init) + COUNT(is_active) + COUNT(logs) + COUNT(log_lists) + COUNT(get_texts) +
        COUNT(get_ints) + COUNT(get_flags) + COUNT(get_doubles) + COUNT(get_text_lists) +
        COUNT(get_int_lists) + COUNT(get_flag_lists) + COUNT(get_double_lists) + COUNT(with_two_texts) +
        COUNT(set_ints) + COUNT(set_flags) + COUNT(set_doubles) + COUNT(set_text_lists) +
        COUNT(set_int_lists) + COUNT(set_flag_lists) + COUNT(set_double_lists) + COUNT(all_keys) +
        COUNT(keys_starting_with) + COUNT(get_types) + COUNT(do_exist) + COUNT(delete_key) +
        COUNT(exchange_version) + COUNT(versions) + COUNT(is_new) + COUNT(dump) + COUNT(path) +
        COUNT(alloc_flags) + COUNT(alloc_uints) + COUNT(alloc_ints) + COUNT(alloc_doubles) +
        COUNT(alloc_texts) + COUNT(free_flags) + COUNT(free_uints) + COUNT(free_ints) + COUNT(free_doubles) +
        COUNT(free_texts);
    if (count != expected) {
        fprintf(stderr, "%zu functions are named here, not %d\n", count, expected);
        return 1;
    }
    return 0;
}
