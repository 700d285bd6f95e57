// SPDX-License-Identifier: Apache-2.0
// The settings, configuration and debugging functions of the fake libkorvo-core. They do nothing but record.

#include "fake_platform/recorded.h"
#include "korvo_core.h"

using fake_platform::out;
using fake_platform::recorded;
using fake_platform::shownOut;

using Status = korvo_core_status;

#define NO_PARAMETERS(name)                \
    Status name(void) {                    \
        return recorded<Status>(__func__); \
    }
#define GET(name, T)                                        \
    Status name(char const *key, T *value) {                \
        return recorded<Status>(__func__, key, out(value)); \
    }
#define GET_LIST(name, T)                                              \
    Status name(char const *key, T ***list, unsigned int *count) {     \
        return recorded<Status>(__func__, key, out(list), out(count)); \
    }
#define SET(name, T)                                   \
    Status name(char const *key, T value) {            \
        return recorded<Status>(__func__, key, value); \
    }

#define GETTERS(prefix)                                 \
    GET(prefix##_string_value, char *)                  \
    GET(prefix##_json_value, char *)                    \
    GET(prefix##_int_value, int)                        \
    GET(prefix##_bool_value, unsigned char)             \
    GET(prefix##_double_value, double)                  \
    GET_LIST(prefix##_arrayofstring_value, char)        \
    GET_LIST(prefix##_arrayofint_value, int)            \
    GET_LIST(prefix##_arrayofbool_value, unsigned char) \
    GET_LIST(prefix##_arrayofdouble_value, double)

#define SETTERS(prefix)                               \
    SET(prefix##_string_value, char const *)          \
    SET(prefix##_json_value, char const *)            \
    SET(prefix##_int_value, int)                      \
    SET(prefix##_bool_value, unsigned char)           \
    SET(prefix##_double_value, double)                \
    SET(prefix##_arrayofstring_value, char **)        \
    SET(prefix##_arrayofint_value, int **)            \
    SET(prefix##_arrayofbool_value, unsigned char **) \
    SET(prefix##_arrayofdouble_value, double **)

NO_PARAMETERS(korvo_core_settings_init)
NO_PARAMETERS(korvo_core_settings_deinit)
NO_PARAMETERS(korvo_core_configuration_init)
NO_PARAMETERS(korvo_core_configuration_deinit)

GETTERS(korvo_core_settings_get)
GETTERS(korvo_core_settings_get_default)
GETTERS(korvo_core_configuration_get)
SETTERS(korvo_core_settings_set)
SETTERS(korvo_core_settings_set_default)

SET(korvo_core_settings_copy_string_key, char const *)
SET(korvo_core_settings_copy_json_key, char const *)
SET(korvo_core_settings_copy_int_key, char const *)
SET(korvo_core_settings_copy_bool_key, char const *)
SET(korvo_core_settings_copy_double_key, char const *)
SET(korvo_core_settings_copy_arrayofstring_key, char const *)
SET(korvo_core_settings_copy_arrayofint_key, char const *)
SET(korvo_core_settings_copy_arrayofbool_key, char const *)
SET(korvo_core_settings_copy_arrayofdouble_key, char const *)

GET(korvo_core_settings_get_type, korvo_core_settings_type)
GET(korvo_core_configuration_get_type, korvo_core_settings_type)

Status korvo_core_settings_delete_key(char const *key) {
    return recorded<Status>(__func__, key);
}

unsigned char korvo_core_settings_does_key_exist(char const *key) {
    return recorded<unsigned char>(__func__, key);
}

unsigned char korvo_core_configuration_does_key_exist(char const *key) {
    return recorded<unsigned char>(__func__, key);
}

char **korvo_core_settings_get_all_keys(void) {
    return recorded<char **>(__func__);
}

char **korvo_core_configuration_get_all_keys(void) {
    return recorded<char **>(__func__);
}

char **korvo_core_settings_get_keys_starting_with(char const *prefix) {
    return recorded<char **>(__func__, prefix);
}

Status korvo_core_settings_get_and_set_version(unsigned int *old_version, unsigned int version) {
    return recorded<Status>(__func__, shownOut(old_version), version);
}

Status korvo_core_settings_get_versions(unsigned int *version, unsigned int *previous_version) {
    return recorded<Status>(__func__, shownOut(version), shownOut(previous_version));
}

Status korvo_core_settings_is_new_file(unsigned char *is_new) {
    return recorded<Status>(__func__, shownOut(is_new));
}

void korvo_core_debug_settings_dump(void) {
    recorded<void>(__func__);
}

char *korvo_core_debug_get_setting_path(void) {
    return recorded<char *>(__func__);
}
