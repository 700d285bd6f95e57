/* SPDX-License-Identifier: Apache-2.0 */
#ifndef KORVO_CORE_H
#define KORVO_CORE_H

/* The platform core: messaging between processes, logging, settings, and lists. C11 and C++17.
 *
 * Handles. A `void *` from one of the ..._init functions, given back to the matching ..._deinit. A handle
 * that is NULL, closed or of the wrong kind gives status 1.
 *
 * Texts. `char const *` parameters are borrowed for the call. What comes back through `char **` belongs to
 * the caller, who frees it with free(). A callback gets pointers to texts that the core frees when the
 * callback returns; a callback that wants to keep a text takes it over by setting the pointer to NULL, and
 * frees it with free().
 *
 * Time-outs are in milliseconds. 0 only looks; a negative one waits without limit.
 *
 * Threads. Every function may be called from every thread at any time, unless it says otherwise, and from
 * inside callbacks too. Callbacks run on a thread of the messaging handle, one at a time for each handle,
 * with no lock held. The core starts that thread when a callback is registered and ends it when there is
 * none.
 *
 * Statuses. Where a function lists none, it returns 0, or 1 for a bad handle or a missing argument. Besides,
 * all functions with a messaging handle return 2 when memory runs out, 3 in a process that was forked after
 * the handle was opened (nothing is done there), and 4 when the handle is closed during the call.
 *
 * Errors that a person can do something about are logged: what was wrong, with what, and what to do.
 *
 * Environment. KORVO_RUNTIME_DIR is the folder in which services and initiators meet; it must belong to the
 * user, and nobody else may write to it. KORVO_LOG_LEVEL and KORVO_LOG_TARGET: see korvo_core_logging_init().
 * KORVO_STATE_DIR: see the settings.
 */

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

KORVO_CORE_ENUM(korvo_core_status){
    /* Done. */
    KORVO_CORE_STATUS_NO_ERROR = 0,
    /* A missing argument, or a handle that is none. */
    KORVO_CORE_STATUS_INVALID_PARAMS = 1,
    /* Memory ran out. */
    KORVO_CORE_STATUS_ALLOC_FAILED = 2,
    /* Another thread does what only one may do, or the handle belongs to the process that this one was forked
       from. */
    KORVO_CORE_STATUS_MULTI_THREAD_ACCESS = 3,
    /* A time-out, a lost connection, a message that is broken or too large. */
    KORVO_CORE_STATUS_IPC_FAILED = 4,
    /* The key has another type. */
    KORVO_CORE_STATUS_INCORRECT_SETTING_TYPE = 5,
    /* There is no such key, or nothing of it that was asked for. */
    KORVO_CORE_STATUS_SETTING_NOT_PRESENT = 6,
    /* Something else went wrong inside, such as a settings file that cannot be read or written; the log tells what. */
    KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT = 7,
    /* The service does not know the command. */
    KORVO_CORE_STATUS_UNSUPPORTED_FUNCTION = 8,
    /* The service knows the command and could not do it. */
    KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE = 9,
    /* There is no such service or target. */
    KORVO_CORE_STATUS_DISABLED_TARGET = 10,
};
typedef enum korvo_core_status korvo_core_status;

/* The system log's priorities, from the gravest on, and two more. */
KORVO_CORE_ENUM(korvo_core_log_priority){
    /* The machine cannot be used. */
    KORVO_CORE_LOG_PRIORITY_EMERG = 0,
    /* Somebody must act at once. */
    KORVO_CORE_LOG_PRIORITY_ALERT = 1,
    /* A part of the program is lost. */
    KORVO_CORE_LOG_PRIORITY_CRIT = 2,
    /* Something failed. */
    KORVO_CORE_LOG_PRIORITY_ERR = 3,
    /* Something went on that should not go on like this. */
    KORVO_CORE_LOG_PRIORITY_WARNING = 4,
    /* Worth knowing, and in order; the last priority that is written by default. */
    KORVO_CORE_LOG_PRIORITY_NOTICE = 5,
    /* What happens, for those who want to follow it. */
    KORVO_CORE_LOG_PRIORITY_INFO = 6,
    /* For who looks for a fault. */
    KORVO_CORE_LOG_PRIORITY_DEBUG = 7,
    /* Who did what; always written. */
    KORVO_CORE_LOG_PRIORITY_AUDIT = 8,
    /* No priority; written where debug is. */
    KORVO_CORE_LOG_PRIORITY_NOTSET = 9,
};
typedef enum korvo_core_log_priority korvo_core_log_priority;

/* What a key of settings or configuration holds. */
KORVO_CORE_ENUM(korvo_core_settings_type){
    /* A text. */
    KORVO_CORE_SETTING_TYPE_STRING = 0,
    /* A JSON text. */
    KORVO_CORE_SETTING_TYPE_JSON = 1,
    /* A whole number: int. */
    KORVO_CORE_SETTING_TYPE_INT = 2,
    /* 0 or 1: unsigned char. */
    KORVO_CORE_SETTING_TYPE_BOOL = 3,
    /* A finite number: double. */
    KORVO_CORE_SETTING_TYPE_DOUBLE = 4,
    /* Lists of these. */
    KORVO_CORE_SETTING_TYPE_ARRAYOFSTRING = 5,
    KORVO_CORE_SETTING_TYPE_ARRAYOFINT = 6,
    KORVO_CORE_SETTING_TYPE_ARRAYOFBOOL = 7,
    KORVO_CORE_SETTING_TYPE_ARRAYOFDOUBLE = 8,
    /* No type; no key has it. */
    KORVO_CORE_SETTING_TYPE_UNKNOWN = 9,
};
typedef enum korvo_core_settings_type korvo_core_settings_type;

/* ---- Statuses and the core as a whole ---- */

/* A short text for a status, one for all values without a name; never NULL, never freed. */
KORVO_CORE_EXPORT char const *korvo_core_status_to_string(korvo_core_status status);

/* Called by a process before its first and after its last use of the core, as often as it likes. Returns 0.
 * Handles are not closed by korvo_core_deinit(). */
KORVO_CORE_EXPORT korvo_core_status korvo_core_init(void);
KORVO_CORE_EXPORT korvo_core_status korvo_core_deinit(void);

/* ---- Messaging: initiators ---- */

/* Opens the client side of the messaging. Connects to nothing yet.
 *
 * logging    where the core logs what happens to this handle; NULL is the default logger. Closed after it.
 * name       of the process or part of it, for people; NULL is an empty one.
 * messaging  receives the handle, which korvo_core_ipc_deinit() closes.
 * flag       1.
 *
 * Status 4: the runtime folder cannot be used (logged). */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_init(void *logging, char const *name,
                                                                  void **messaging, int flag);

/* Sends a command. The first one to a target connects to it; so does the first one after a connection was
 * lost. Never waits: with status 0 the command is taken, and what the socket has no room for leaves later, in order. A
 * command is never sent twice.
*
 * service     name of the service.
 * target      which one of the service's targets; NULL is the default target, as an empty text is.
 * request_id  the sender's mark, which comes back with the response; not in use for a command that is still
 *             unanswered.
 * command     any text; by convention a JSON object with a member "command". With request_id less than 1 MiB.
 *
 * Status 10: nobody listens there. 4 (logged): the connection was lost meanwhile, the message is too large, or the
 * service reads nothing and 8 MiB wait for it already; the service has not got it, or not all of it. A connection that
 * is lost later ends the command as korvo_core_ipc_initiator_response_receive() tells. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_command_send(
    void *messaging, char const *service, char const *target, char const *request_id, char const *command);

/* Waits for the next response to any command sent by korvo_core_ipc_initiator_command_send() on this handle,
 * on the calling thread. Responses that arrive while nobody waits are kept, the latest 1024 and at most 8 MiB
 * of them.
 *
 * timeout  in milliseconds; 0 only looks, a negative one waits without limit.
 * service, target, request_id, response  receive the texts of the command that is answered, and the response;
 * the caller frees each with free(). Untouched unless 0 is returned.
 *
 * Status 4: none came in time, or a connection with unanswered commands was lost (logged, but for a poll that finds
 * nothing). */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_response_receive(void *messaging, int timeout,
                                                                              char **service, char **target,
                                                                              char **request_id,
                                                                              char **response);

/* Registers a callback for responses; they then do not wait for korvo_core_ipc_initiator_response_receive().
 *
 * callback  called with the texts that korvo_core_ipc_initiator_response_receive() gives, and the context.
 *           NULL removes the registration of the context, or all of them when the context is NULL too; when
 *           the call returns, the callback does not run any more (unless it is the one that calls).
 * context   passed on. One registration for each context; registering again replaces it. Responses go to the
 *           last one that was registered.
 *
 * For a client object that is registered with itself as context: the responses to its asynchronous commands come to this
 * callback. Each that was taken with status 0 is answered once: by the service, or with status 4 in its place when the
 * connection is lost or a bound gives the command up. Not so after the registration was removed or the handle closed, nor
 * while a connected service stays silent.
*
 * Status 4: no thread can be started (logged). */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_response_receive_callback(
    void *messaging,
    void (*callback)(char **service, char **target, char **request_id, char **response, void *context),
    void *context);

/* Asks for the events of all targets of a service, those that start later and those that are restarted
 * included. Events that are published while a service is not connected are missed; the gap is logged. Events
 * wait for a callback, 1024 and 8 MiB of them at most; what comes beyond that is dropped, counted and logged.
 *
 * Status 4: the runtime folder cannot be watched (logged). */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_event_subscribe(void *messaging,
                                                                             char const *service);

/* Ends a subscription. Status 1: there is none. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_event_unsubscribe(void *messaging,
                                                                               char const *service);

/* Registers a callback for events: called with the name of the service, its source (the target's text) and
 * the event, and the context. One registration for each context; each gets every event. NULL removes as with
 * korvo_core_ipc_initiator_response_receive_callback(). Status 4: no thread can be started (logged). */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_initiator_event_receive_callback(
    void *messaging, void (*callback)(char **service, char **source, char **event, void *context),
    void *context);

/* ---- Messaging: targets ---- */

/* Opens a target of a service and listens. Only processes of the same user, and of root, are let in.
 *
 * logging    as with korvo_core_ipc_initiator_init().
 * service    name of the service.
 * target     tells targets of a service apart; NULL is the default target, as an empty text is.
 * name       name of the process in log lines; NULL is an empty one.
 * messaging  receives the handle, which korvo_core_ipc_deinit() closes.
 *
 * Status 4: another process listens under service and target, or the runtime folder cannot be used (logged).
 */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_target_init(void *logging, char const *service,
                                                               char const *target, char const *name,
                                                               void **messaging);

/* Waits for the next command, on the calling thread. A target without a callback does all its work in this
 * call and, briefly, when it sends: one that stops polling accepts nobody.
 *
 * timeout  in milliseconds; 0 only looks, and one above 2147483647 waits without limit.
 * source, request_id, command  receive the texts, which the caller frees with free(). `source` is the address
 * of the initiator, for the response. Untouched unless 0 is returned.
 *
 * Status 4: none came in time. 3: a command callback is registered. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_target_command_receive(void *messaging,
                                                                          unsigned int timeout, char **source,
                                                                          char **request_id, char **command);

/* Registers the callback for commands: called with the texts that korvo_core_ipc_target_command_receive()
 * gives, and the context. Registering again replaces it. NULL removes it; when the call returns, the callback
 * does not run any more (unless it is the one that calls). Status 4: no thread can be started (logged). */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_target_command_receive_callback(
    void *messaging, void (*callback)(char **source, char **request_id, char **command, void *context),
    void *context);

/* Sends the response to a command, at any time and from any thread; never waits. `source` and `request_id`
 * are those of the command. By convention `response` is a JSON object with the command's name in "command"
 * and the outcome in "status".
 *
 * Status 10: the initiator is gone. 4: the response is too large (1 MiB with its identifier), or the
 * initiator has left 8 MiB unread and was disconnected. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_target_response_send(void *messaging, char const *source,
                                                                        char const *request_id,
                                                                        char const *response);

/* Publishes an event to every subscriber; never waits. By convention `event` is a JSON object with the
 * event's name in "event". A subscriber that has left 1 MiB unread misses it; that is counted and logged, and
 * delays nobody else. Status 4: the event is too large. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_target_event_send(void *messaging, char const *event);

/* ---- Messaging: both ---- */

/* Closes a handle. Calls that wait in other threads return with status 4. Waits for a callback that is
 * running, so that none runs any more when it returns; so it must not be called with a lock held that a
 * callback takes. From inside a callback of the same handle it returns at once, and no other callback is
 * made. What was sent before is delivered, as far as the sockets take it. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_ipc_deinit(void *messaging);

/* ---- Logging ---- */

/* Opens a logger. Records go to standard error, one line each: time, priority, process[name]: text. Line ends
 * and other control characters in a text are escaped.
 *
 * Read from the environment when a logger is opened: KORVO_LOG_LEVEL is the last priority that is written, a
 * name (emerg, alert, crit, err, warning, notice, info, debug) or its number; without it, notice.
 * KORVO_LOG_TARGET=syslog sends records to the system log instead.
 *
 * name     of the part of the process that logs; NULL is an empty one.
 * logging  receives the handle.
 *
 * Status 2: memory ran out. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_logging_init(char const *name, void **logging);

/* Closes a logger. Records for a closed one go to the default logger. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_logging_deinit(void *logging);

/* Gives 1 where records of a priority are written, else 0. NULL asks the default logger. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_logging_is_priority_active(void *logging,
                                                                          korvo_core_log_priority priority,
                                                                          int *active);

/* Writes a record, formatted as by printf(), at most 16 KiB of it. NULL is the default logger. Audit records
 * are always written; a record without a priority, or with an unknown one, counts as debug. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_logging_log(void *logging, korvo_core_log_priority priority,
                                                           char const *format, ...) KORVO_CORE_PRINTF(3, 4);
KORVO_CORE_EXPORT void korvo_core_logging_logv(void *logging, korvo_core_log_priority priority,
                                               char const *format, va_list arguments) KORVO_CORE_PRINTF(3, 0);

/* ---- Settings and configuration ----
 *
 * Settings are what the processes of a user keep: values under keys, which outlive the process and are shared
 * by all processes that see the same state folder. The configuration is read with the same types and never
 * written: a file that whoever prepares the machine puts there. Files and formats: docs/development-platform.md.
 *
 * Keys and values. A key is any text. It has a type, one of the nine of korvo_core_settings_type, from the
 * moment that anything is stored under it until it is deleted; and a value, a default value, or both. Texts
 * and keys are UTF-8. A json value is a JSON text, which comes back character by character as it was set.
 * Flags are 1 for everything but 0. Doubles come back as the same doubles; infinite ones and what is no number
 * are refused.
 *
 * Lists. A list that is given is borrowed for the call and ends with NULL; an empty one is a value like others,
 * and NULL is none. A list that is received belongs to the caller, who frees it with the matching
 * korvo_core_free_..._array(), also when it is empty.
 *
 * Writing. When a function that writes returns 0, the change is on the disk; a crash at any moment leaves the
 * file as it was before or after the change. Processes and threads may write at the same time: one waits for
 * the other, and each sees what the other has written. What changes nothing writes nothing. One
 * function is one change; several calls are not one.
 *
 * Statuses. 1: a NULL argument, or a key or value that cannot be kept (logged): a text that is no UTF-8 or no
 * JSON, a number that is not finite, more than the file may hold. 2: memory ran out. 5: the key has another
 * type. 6: there is no such key, or nothing of it that was asked for. 7: the file or its folder cannot be
 * read or written (logged). Unless 0 is returned, nothing is changed and out-values are untouched.
 *
 * A settings file that is damaged is put aside under another name beside it, with an error in the log, and a new
 * one is begun. A damaged configuration stays as it is, and every access fails with 7 until it is mended.
 *
 * Environment. KORVO_STATE_DIR is the folder of both files; without it, "korvo" in XDG_STATE_HOME, or in
 * .local/state of HOME. It is read at first use, and again after the last ..._deinit(). */

/* Begins the use of the settings: makes the folder and the file where they are missing, and reads the file.
 * Everything below works without it; who calls it learns at once what is wrong, and knows that the file stays
 * the same until the matching korvo_core_settings_deinit(). Counted.
 *
 * A process that was forked goes on with the folder and the count of its parent. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_init(void);

/* Ends the use of the settings. The last call that matches a korvo_core_settings_init() gives back what is
 * held in memory; settings are used again by just using them. Returns 0. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_deinit(void);

/* The same for the configuration. Makes nothing: a file that is missing is a configuration without keys. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_init(void);
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_deinit(void);

/* Get the value of a key; where it has none, its default value. A text (string, json) belongs to the caller,
 * who frees it with free(). A list comes with the number of its elements.
 *
 * Status 6: there is no such key. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_string_value(char const *key, char **value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_json_value(char const *key, char **value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_int_value(char const *key, int *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_bool_value(char const *key, unsigned char *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_double_value(char const *key, double *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_arrayofstring_value(char const *key, char ***list,
                                                                                unsigned int *count);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_arrayofint_value(char const *key, int ***list,
                                                                             unsigned int *count);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_arrayofbool_value(char const *key,
                                                                              unsigned char ***list,
                                                                              unsigned int *count);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_arrayofdouble_value(char const *key,
                                                                                double ***list,
                                                                                unsigned int *count);

/* Get the default value of a key, whether it has a value or not.
 *
 * Status 6: there is no such key, or it has no default value. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_default_string_value(char const *key,
                                                                                 char **value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_default_json_value(char const *key, char **value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_default_int_value(char const *key, int *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_default_bool_value(char const *key,
                                                                               unsigned char *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_default_double_value(char const *key,
                                                                                 double *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_default_arrayofstring_value(char const *key,
                                                                                        char ***list,
                                                                                        unsigned int *count);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_default_arrayofint_value(char const *key,
                                                                                     int ***list,
                                                                                     unsigned int *count);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_default_arrayofbool_value(char const *key,
                                                                                      unsigned char ***list,
                                                                                      unsigned int *count);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_default_arrayofdouble_value(char const *key,
                                                                                        double ***list,
                                                                                        unsigned int *count);

/* Set the value of a key; its default value stays. The key is made when there is none.
 *
 * Status 5: the key has another type. Delete it first to change its type. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_string_value(char const *key, char const *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_json_value(char const *key, char const *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_int_value(char const *key, int value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_bool_value(char const *key, unsigned char value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_double_value(char const *key, double value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_arrayofstring_value(char const *key, char **list);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_arrayofint_value(char const *key, int **list);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_arrayofbool_value(char const *key,
                                                                              unsigned char **list);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_arrayofdouble_value(char const *key,
                                                                                double **list);

/* Set the default value of a key; its value stays, if it has one. Otherwise as the functions above. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_default_string_value(char const *key,
                                                                                 char const *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_default_json_value(char const *key,
                                                                               char const *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_default_int_value(char const *key, int value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_default_bool_value(char const *key,
                                                                               unsigned char value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_default_double_value(char const *key,
                                                                                 double value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_default_arrayofstring_value(char const *key,
                                                                                        char **list);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_default_arrayofint_value(char const *key,
                                                                                     int **list);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_default_arrayofbool_value(char const *key,
                                                                                      unsigned char **list);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_set_default_arrayofdouble_value(char const *key,
                                                                                        double **list);

/* Copy a key: `to` gets the value and the default value that `from` has, and nothing stays of what it had
 * before. A key that is copied to itself is unchanged.
 *
 * Status 6: there is no key `from`. 5: `from`, or a key `to` that is already there, has another type than the
 * function. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_copy_string_key(char const *from, char const *to);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_copy_json_key(char const *from, char const *to);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_copy_int_key(char const *from, char const *to);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_copy_bool_key(char const *from, char const *to);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_copy_double_key(char const *from, char const *to);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_copy_arrayofstring_key(char const *from,
                                                                               char const *to);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_copy_arrayofint_key(char const *from, char const *to);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_copy_arrayofbool_key(char const *from,
                                                                             char const *to);
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_copy_arrayofdouble_key(char const *from,
                                                                               char const *to);

/* Deletes a key with its value, its default value and its type. To go back to the default value instead, set
 * the value that korvo_core_settings_get_default_..._value() gives. Status 6: there is no such key. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_delete_key(char const *key);

/* Give the keys, those with only a default value included, sorted by their bytes: all of them, or those that
 * begin with `prefix`, which are all when it is empty. The caller frees the list with
 * korvo_core_free_string_array(). Without keys it is empty. NULL: `prefix` is NULL, memory ran out, or the file
 * cannot be read (logged). */
KORVO_CORE_EXPORT char **korvo_core_settings_get_all_keys(void);
KORVO_CORE_EXPORT char **korvo_core_settings_get_keys_starting_with(char const *prefix);

/* Gives the type of a key. Status 6: there is no such key. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_type(char const *key,
                                                                 korvo_core_settings_type *type);

/* Returns 1 where there is such a key, with a value or a default value; else, and on every failure, 0. */
KORVO_CORE_EXPORT unsigned char korvo_core_settings_does_key_exist(char const *key);

/* The version of the settings is a number for those who use them, say to bring old settings up to date. It
 * means nothing to the core. In a new file it is 0. */

/* Gives the version that is stored and stores another one, as one change: of several processes only one gets
 * the old number. `old_version` receives the version before. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_and_set_version(unsigned int *old_version,
                                                                            unsigned int version);

/* Gives the version that is stored, and the one that it has replaced: what `old_version` of the last
 * korvo_core_settings_get_and_set_version() was, in whatever process; 0 when there was none. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_get_versions(unsigned int *version,
                                                                     unsigned int *previous_version);

/* Gives 1 where this process has begun with no settings file, or with a damaged one that was put aside, since
 * its first use of the settings or the last korvo_core_settings_deinit(); else 0. Of several processes that
 * start at once with korvo_core_settings_init(), only the one that has made the file gets 1. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_settings_is_new_file(unsigned char *is_new);

/* Read the configuration, like their counterparts among the settings. */
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_get_string_value(char const *key, char **value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_get_json_value(char const *key, char **value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_get_int_value(char const *key, int *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_get_bool_value(char const *key,
                                                                            unsigned char *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_get_double_value(char const *key, double *value);
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_get_arrayofstring_value(char const *key,
                                                                                     char ***list,
                                                                                     unsigned int *count);
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_get_arrayofint_value(char const *key,
                                                                                  int ***list,
                                                                                  unsigned int *count);
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_get_arrayofbool_value(char const *key,
                                                                                   unsigned char ***list,
                                                                                   unsigned int *count);
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_get_arrayofdouble_value(char const *key,
                                                                                     double ***list,
                                                                                     unsigned int *count);

KORVO_CORE_EXPORT char **korvo_core_configuration_get_all_keys(void);
KORVO_CORE_EXPORT korvo_core_status korvo_core_configuration_get_type(char const *key,
                                                                      korvo_core_settings_type *type);
KORVO_CORE_EXPORT unsigned char korvo_core_configuration_does_key_exist(char const *key);

/* ---- Debugging ---- */

/* Writes all settings to the default logger with priority notice, one record a key, values included. */
KORVO_CORE_EXPORT void korvo_core_debug_settings_dump(void);

/* Gives the path of the settings file, which need not exist. The caller frees it with free(). NULL: no folder is
 * known (logged), or memory ran out. */
KORVO_CORE_EXPORT char *korvo_core_debug_get_setting_path(void);

/* ---- Lists ---- */

/* Makes a list: a NULL-terminated array of pointers to `count` elements, the array and each element a block
 * of their own from malloc(). Elements are 0; the slots of a list of texts are NULL, to be filled from the
 * first on. Returns NULL when memory runs out. The caller frees the list with the matching function below. */
KORVO_CORE_EXPORT unsigned char **korvo_core_alloc_bool_array(unsigned int count);
KORVO_CORE_EXPORT unsigned int **korvo_core_alloc_uint_array(unsigned int count);
KORVO_CORE_EXPORT int **korvo_core_alloc_int_array(unsigned int count);
KORVO_CORE_EXPORT double **korvo_core_alloc_double_array(unsigned int count);
KORVO_CORE_EXPORT char **korvo_core_alloc_string_array(unsigned int count);

/* Frees every element up to the first NULL, and the list, whoever made them; NULL is allowed. */
KORVO_CORE_EXPORT void korvo_core_free_bool_array(unsigned char **list);
KORVO_CORE_EXPORT void korvo_core_free_uint_array(unsigned int **list);
KORVO_CORE_EXPORT void korvo_core_free_int_array(int **list);
KORVO_CORE_EXPORT void korvo_core_free_double_array(double **list);
KORVO_CORE_EXPORT void korvo_core_free_string_array(char **list);

#ifdef __cplusplus
}
#endif

#endif
