/* SPDX-License-Identifier: Apache-2.0 */
#ifndef KORVO_CORE_H
#define KORVO_CORE_H

#include <stdarg.h>

#if defined(__GNUC__)
#define KORVO_CORE_EXPORT __attribute__((visibility("default")))
#define KORVO_CORE_PRINTF(text, first) __attribute__((format(printf, text, first)))
#else
#define KORVO_CORE_EXPORT
#define KORVO_CORE_PRINTF(text, first)
#endif

/* Unknown values are values too: a service may answer with a status that this list does not name. */
#ifdef __cplusplus
#define KORVO_CORE_ENUM(name) enum name : unsigned int
#else
#define KORVO_CORE_ENUM(name) enum name
#endif

#ifdef __cplusplus
extern "C" {
#endif

KORVO_CORE_ENUM(korvo_core_status) {
    KORVO_CORE_STATUS_NO_ERROR = 0,
    KORVO_CORE_STATUS_INVALID_PARAMS = 1,
    KORVO_CORE_STATUS_ALLOC_FAILED = 2,
    KORVO_CORE_STATUS_MULTI_THREAD_ACCESS = 3,
    KORVO_CORE_STATUS_IPC_FAILED = 4,
    KORVO_CORE_STATUS_INCORRECT_SETTING_TYPE = 5,
    KORVO_CORE_STATUS_SETTING_NOT_PRESENT = 6,
    KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT = 7,
    KORVO_CORE_STATUS_UNSUPPORTED_FUNCTION = 8,
    KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE = 9,
    KORVO_CORE_STATUS_DISABLED_TARGET = 10
};
typedef enum korvo_core_status korvo_core_status;

KORVO_CORE_ENUM(korvo_core_log_priority) {
    KORVO_CORE_LOG_PRIORITY_EMERG = 0,
    KORVO_CORE_LOG_PRIORITY_ALERT = 1,
    KORVO_CORE_LOG_PRIORITY_CRIT = 2,
    KORVO_CORE_LOG_PRIORITY_ERR = 3,
    KORVO_CORE_LOG_PRIORITY_WARNING = 4,
    KORVO_CORE_LOG_PRIORITY_NOTICE = 5,
    KORVO_CORE_LOG_PRIORITY_INFO = 6,
    KORVO_CORE_LOG_PRIORITY_DEBUG = 7,
    KORVO_CORE_LOG_PRIORITY_AUDIT = 8,
    KORVO_CORE_LOG_PRIORITY_NOTSET = 9
};
typedef enum korvo_core_log_priority korvo_core_log_priority;

KORVO_CORE_ENUM(korvo_core_settings_type) {
    KORVO_CORE_SETTING_TYPE_STRING = 0,
    KORVO_CORE_SETTING_TYPE_JSON = 1,
    KORVO_CORE_SETTING_TYPE_INT = 2,
    KORVO_CORE_SETTING_TYPE_BOOL = 3,
    KORVO_CORE_SETTING_TYPE_DOUBLE = 4,
    KORVO_CORE_SETTING_TYPE_ARRAYOFSTRING = 5,
    KORVO_CORE_SETTING_TYPE_ARRAYOFINT = 6,
    KORVO_CORE_SETTING_TYPE_ARRAYOFBOOL = 7,
    KORVO_CORE_SETTING_TYPE_ARRAYOFDOUBLE = 8,
    KORVO_CORE_SETTING_TYPE_UNKNOWN = 9
};
typedef enum korvo_core_settings_type korvo_core_settings_type;

KORVO_CORE_EXPORT char const *korvo_core_status_to_string(korvo_core_status status);

KORVO_CORE_EXPORT korvo_core_status korvo_core_init(void);
KORVO_CORE_EXPORT korvo_core_status korvo_core_deinit(void);

KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_init(void *logging, char const *name, void **messaging,
                                                                  int flag);
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_command_send(void *messaging, char const *service,
                                                                          char const *target, char const *request_id,
                                                                          char const *command);
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_response_receive(void *messaging, int timeout,
                                                                              char **service, char **target,
                                                                              char **request_id, char **response);
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_response_receive_callback(
    void *messaging, void (*callback)(char **service, char **target, char **request_id, char **response, void *context),
    void *context);
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_event_subscribe(void *messaging, char const *service);
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_event_unsubscribe(void *messaging, char const *service);
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_event_receive_callback(
    void *messaging, void (*callback)(char **service, char **source, char **event, void *context), void *context);

KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_target_init(void *logging, char const *service, char const *target,
                                                               char const *name, void **messaging);
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_target_command_receive(void *messaging, unsigned int timeout,
                                                                          char **source, char **request_id,
                                                                          char **command);
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_target_command_receive_callback(
    void *messaging, void (*callback)(char **source, char **request_id, char **command, void *context), void *context);
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_target_response_send(void *messaging, char const *source,
                                                                        char const *request_id, char const *response);
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_target_event_send(void *messaging, char const *event);

KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_deinit(void *messaging);

KORVO_CORE_EXPORT korvo_core_status korvo_core_logging_init(char const *name, void **logging);
KORVO_CORE_EXPORT korvo_core_status korvo_core_logging_deinit(void *logging);
KORVO_CORE_EXPORT korvo_core_status korvo_core_logging_is_priority_active(void *logging,
                                                                          korvo_core_log_priority priority,
                                                                          int *active);
KORVO_CORE_EXPORT korvo_core_status korvo_core_logging_log(void *logging, korvo_core_log_priority priority,
                                                           char const *format, ...) KORVO_CORE_PRINTF(3, 4);
KORVO_CORE_EXPORT void korvo_core_logging_logv(void *logging, korvo_core_log_priority priority, char const *format,
                                               va_list arguments) KORVO_CORE_PRINTF(3, 0);

KORVO_CORE_EXPORT unsigned char **korvo_core_alloc_bool_array(unsigned int count);
KORVO_CORE_EXPORT unsigned int **korvo_core_alloc_uint_array(unsigned int count);
KORVO_CORE_EXPORT int **korvo_core_alloc_int_array(unsigned int count);
KORVO_CORE_EXPORT double **korvo_core_alloc_double_array(unsigned int count);
KORVO_CORE_EXPORT char **korvo_core_alloc_string_array(unsigned int count);
KORVO_CORE_EXPORT void korvo_core_free_bool_array(unsigned char **list);
KORVO_CORE_EXPORT void korvo_core_free_uint_array(unsigned int **list);
KORVO_CORE_EXPORT void korvo_core_free_int_array(int **list);
KORVO_CORE_EXPORT void korvo_core_free_double_array(double **list);
KORVO_CORE_EXPORT void korvo_core_free_string_array(char **list);

#ifdef __cplusplus
}
#endif

#endif
