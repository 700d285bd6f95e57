/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Client library of the action_engine service: the plain C interface.
 *
 * The service keeps actions (send an e-mail, upload a file, save a snapshot, move the camera's head, switch a
 * relay), triggers (a timer, an ONVIF event), associations that bind triggers to actions, and filters that
 * say when an action may run. Each time it has run an action it publishes the event Action_completed. Every
 * operation of the service is here in seven forms, which differ only in how a caller waits for the response.
 *
 * In short (examples/c/list_actions.c is the whole program, with its error handling):
 *
 *     korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
 *     void *logging = NULL;
 *     void *handle = NULL;
 *     unsigned int **action_id = NULL;
 *     unsigned int **action_type = NULL;
 *
 *     status = korvo_core_logging_init("list_actions", &logging);
 *     status = korvo_api_action_engine_initiator_init(NULL, logging, &handle, 0, "list_actions");
 *     status = korvo_api_action_engine_get_actions_send(handle, NULL, &action_id, &action_type);
 *     korvo_core_free_uint_array(action_type);
 *     korvo_core_free_uint_array(action_id);
 *     (void)korvo_api_action_engine_initiator_deinit(handle);
 *     (void)korvo_core_logging_deinit(logging);
 *
 *
 * The life of a handle
 * --------------------
 * korvo_api_action_engine_initiator_init() makes a handle and korvo_api_action_engine_initiator_deinit() ends
 * it; between the two any number of threads may use it at once. A process may have several handles. No
 * function tests its handle: it is one that init returned and that nobody has ended yet. The logging handle
 * given to init outlives the handle.
 *
 * Stopping a handle with its own messaging (init was given NULL for messaging_handle): make sure that no
 * thread will start a call on the handle, then call deinit. It closes the messaging first, which waits for a
 * callback that is just running, then waits until the calls that other threads are inside have returned, and
 * takes the rest down afterwards, so no message and no call meets a half-gone handle. The development
 * platform ends calls that wait for a response when their messaging is closed: they return 4, within 100 ms.
 * A camera's platform need not; deinit then lasts as long as their time-outs do. From a callback of that
 * handle it does nothing but log an error; and hold no lock that a callback of yours waits for.
 *
 * Stopping handles that SHARE a messaging handle is different. At deinit the library touches nothing of a
 * shared messaging handle: it neither unsubscribes from events nor takes back the entry points that it
 * registered there, so messages could still reach the handle that is going. Therefore, in this order:
 *   1. Start no further calls on any client handle which shares it.
 *   2. korvo_core_ipc_deinit(messaging_handle). It waits for a running callback; afterwards nothing arrives.
 *      On the development platform it ends calls that wait for a response, as above; where it does not, wait
 *      for them first.
 *   3. korvo_api_action_engine_initiator_deinit() for each client handle that shared it, in any order.
 * It follows that a client handle that shares messaging lives as long as the messaging handle does: one that
 * is to go earlier is given messaging of its own.
 *
 * A daemon that is to stop at a signal calls none of this from its signal handler, where hardly any function
 * is allowed. It lets one thread wait for the signal (sigwait(), or a descriptor that the handler writes to)
 * and call deinit from there, while other threads may still be waiting for responses.
 *
 * After fork() only the parent uses its handles; the development platform answers the child with status 3.
 *
 *
 * The target text
 * ---------------
 * Every operation says with `target` which instance of the service it means. The library hands the text
 * unchanged to the messaging layer, which gives it its meaning. NULL means the service's default target on
 * the development platform, and nearly every caller there passes NULL.
 *
 *
 * The seven forms
 * ---------------
 * IN stands for an operation's inputs, OUT for pointers to where its results go, both in the order of its
 * block.
 *
 *   <op>_send                  (handle, target, IN..., OUT...)                sends, waits up to 5000 ms
 *   <op>_send_with_timeout     (handle, target, timeout, IN..., OUT...)       sends, waits up to timeout
 *   <op>_non_blocking_send     (handle, target, &request_id, IN...)           sends, returns at once
 *   <op>_receive               (handle, block, target, request_id, OUT...)    waits up to 5000 ms if block is
 *                                                                             non-zero, else polls
 *   <op>_receive_with_timeout  (handle, target, timeout, request_id, OUT...)  waits up to timeout
 *   <op>_send_async            (handle, target, IN..., callback, context)     sends, returns at once; the
 *                                                                             response goes to callback
 *   <op>_cancel_async          (handle, callback, context)                    see "Deliberate behaviours"
 *
 * On purpose: _receive has `block` BEFORE the target text, _receive_with_timeout has `timeout` AFTER it.
 * Callers rely on both orders. All forms return a korvo_core_status and take the handle first. An operation
 * without results has all seven forms too: its receive forms report the status alone. The version query has
 * five (see its block).
 *
 * The callback of an operation gets (target text of the response, status, results..., context). When the
 * status is not 0 its results are 0 and NULL.
 *
 *
 * Request identifiers
 * -------------------
 * Each request has a random identifier, a text of 36 characters, that ties the response to it. Only the
 * two-step forms show it. _non_blocking_send stores it in *request_id before it sends, also when the sending
 * then fails: caller frees with korvo_api_action_engine_free_uuid(), or hands it to a receive form. A receive
 * that returns 0 has freed it, and it must not be used again. A receive that returns anything else has not:
 * the same identifier may be received again, with the same target text and in the same operation, and whoever
 * holds it frees it in the end. Set the variable to NULL before _non_blocking_send, so that it is known
 * whether there is something to free.
 *
 * The asynchronous forms show no identifier; tell requests apart by their `context`.
 *
 *
 * What becomes of an asynchronous call
 * ------------------------------------
 * A _send_async that returns anything but 0 has said all: the status is the reason, and no callback comes.
 * After a 0 the callback is called with the service's answer. Whether it is called when no answer can come is
 * the platform's matter. The development platform calls it once, with status 4, when the connection is lost,
 * the service ends, or a bound makes it drop the answer. Nothing comes, on any platform,
 *   - as long as a connected service stays silent;
 *   - when the strict reader cannot read the response (see "Deliberate behaviours"): that is logged;
 *   - for a registration that a _cancel_async dropped: that is logged;
 *   - after deinit has begun to close the messaging.
 * So a program that waits for a callback waits for a bounded time.
 *
 * A NULL callback is allowed: the answer is then read, freed and forgotten. _cancel_async takes NULL for such
 * registrations.
 *
 *
 * Ownership
 * ---------
 * Three phrases say everything, here and in each block:
 *   "borrowed for the call"
 *       Read during the call, never kept, changed or freed: every text and list that is an input, the target
 *       text among them. Also what a callback gets as its target text and as lists: it copies what it wants
 *       to keep, and the library frees the lists as soon as the callback has returned.
 *   "caller frees with X"
 *       Texts and lists that a synchronous form returns, and request identifiers.
 *   "callback owns, frees with X"
 *       Texts among the results that a callback gets.
 * free() is the C library's. A context is never touched, only handed on.
 *
 * A list is an array of pointers to elements that ends with a NULL pointer; an empty list holds that NULL
 * alone. Lists that belong together are parallel: their n-th entries describe the same thing. A list of texts
 * is freed with korvo_core_free_string_array(), a list of numbers with korvo_core_free_uint_array(); both
 * accept NULL. A NULL list as an input is refused like a NULL text; an empty list is sent as an empty list.
 *
 * List variables are NULL when a synchronous form is called; otherwise it returns 1 and does not write them.
 * When such a form fails while it reads the results (statuses 1, 2 and 4), results before the failing one, in
 * the block's order, are already written and belong to the caller; a service's refusal or a time-out writes
 * none. The simple rule is: set every text and list variable to NULL before the call and free them all
 * afterwards, whatever the status.
 *
 * Pointers to results, like the handle, are not tested for NULL.
 *
 *
 * Values
 * ------
 * Texts are UTF-8 and end with a zero byte; an empty text is a value like any other. Flags are `unsigned
 * char`: as an input every non-zero value is true, as a result they are 1 or 0. A number that comes back is
 * cut to a whole one and kept within its type: negative and not-a-number give 0, 4294967296 and more give
 * 4294967295. The library checks no identifier, type, range, unit or list length. All that is the service's
 * matter.
 *
 *
 * Time-outs
 * ---------
 * In milliseconds. The forms without a time-out use 5000. 0 polls: only a response that is already there is
 * taken. A negative time-out waits without limit. A call that times out undoes nothing: the service may carry
 * the command out later. After _send and _send_with_timeout its response is lost to the caller; after a
 * receive form the identifier can be received again.
 *
 *
 * Threads and locks
 * -----------------
 * The library starts no thread. Synchronous forms run on the caller's thread and take no lock, on one handle
 * also from many threads at once. Callbacks and event handlers run on a thread of the messaging layer, not on
 * the caller's.
 *
 * Each operation has, on each handle, one mutex of its own that is not recursive. _send_async holds it while
 * it sends, _cancel_async for its short work, and the library while it runs a callback of that operation.
 * Event handlers have one more mutex: the three handler functions, the two default-callback functions, and
 * the delivery of an event hold it.
 *
 * So inside a callback or handler, on the same handle:
 *   - synchronous and two-step forms of every operation may be called, also of the callback's own operation;
 *   - _send_async and _cancel_async of the SAME operation may not: they return 4 at once instead of hanging;
 *   - _send_async of ANOTHER operation may be called, as long as no callback of that operation does the same
 *     the other way round: where the messaging layer has several threads, two such callbacks could wait for
 *     each other;
 *   - an event handler neither registers nor unregisters event handlers: such a call changes nothing and
 *     logs an error;
 *   - initiator_deinit destroys nothing: it logs an error and returns 0, and the handle stays usable.
 * A slow callback keeps later responses and events of its handle waiting. A callback that throws a C++
 * exception is cut short there and logged like a failed reading (see "Log lines").
 *
 *
 * Deliberate behaviours
 * ---------------------
 * Each of these may look like a mistake. All are on purpose, and callers rely on them.
 *   - Asynchronous registrations only grow. _send_async registers (callback, context) under its request's
 *     identifier, and the response does not take that away: a second response with the same identifier calls
 *     the callback again. A context therefore stays valid until the handle has ended. The cost of a call
 *     grows with their number, no faster than its logarithm.
 *   - _send_async that fails to send (status 1 for a NULL input, or the messaging layer's) leaves its
 *     registration behind; no response will come for it.
 *   - _cancel_async does NOT withdraw the registration it is given. It walks the operation's registrations in
 *     the order of their identifiers; at each one that holds (callback, context) it removes the NEXT one in
 *     that order, whatever that holds; if the removed one matched as well, the one after it goes too, and so
 *     on; then the walk continues behind the last one removed. A match with nothing behind it removes
 *     nothing. With the registrations A, B, C in order, of which A alone matches, B is dropped; A and C stay,
 *     and the response of A still calls its callback. Identifiers being random, nobody can tell which request
 *     loses its callback. The result is 0 also when nothing matched. To be rid of a request, let its callback
 *     do nothing.
 *   - Texts that a callback gets are its own and lists are not (see "Ownership"). A callback that does not
 *     free its texts leaks them.
 *   - A service with another interface version is only logged, by the version query; the status stays 0.
 *   - The synchronous reader is lenient: a result that is absent from the response, or of another JSON type,
 *     reads as 0, an empty text, false or an empty list, and the status stays 0; only a list element of
 *     another type ends in 4. The asynchronous reader is strict: such a response is logged and the callback
 *     is not called.
 *   - Of several NULL inputs only the first, in the block's order, is logged.
 *
 *
 * Statuses
 * --------
 *   0   KORVO_CORE_STATUS_NO_ERROR
 *           done; for an operation: the service reported success.
 *   1   KORVO_CORE_STATUS_INVALID_PARAMS
 *           a NULL input or a NULL `request_id` pointer (nothing was sent); a list variable that was not
 *           NULL; init or get_initiator_version with a NULL pointer. From the development platform: an input
 *           text that is not UTF-8 (nothing was sent). Also the service's answer to a command that it finds
 *           malformed.
 *   2   KORVO_CORE_STATUS_ALLOC_FAILED
 *           no memory, for a list or in the messaging layer; init failed, for whatever reason.
 *   3   KORVO_CORE_STATUS_MULTI_THREAD_ACCESS
 *           only passed on; on the development platform: the handle was used in a child process after fork().
 *   4   KORVO_CORE_STATUS_IPC_FAILED
 *           any exception inside the library: no memory for what is no list, a list element of another type,
 *           a lock that the calling thread holds already. From the development platform: time-out, lost
 *           connection, a message that is broken or longer than 1 MiB, a response without a status.
 *   7   KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT
 *           only passed on; the library's own exceptions give 4.
 *   8   KORVO_CORE_STATUS_UNSUPPORTED_FUNCTION
 *           only passed on: the service does not know the operation.
 *   9   KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE
 *           only passed on: the service refused, for instance an identifier that it does not know or that is
 *           of another kind.
 *   10  KORVO_CORE_STATUS_DISABLED_TARGET
 *           only passed on; on the development platform: no such service or target is running.
 * 5 and 6 concern settings and are only passed on. What the messaging layer or the service reports is handed
 * on unchanged, so values that no name stands for are possible. korvo_core_status_to_string() gives a text.
 * The blocks below name only what is special to an operation; any of the statuses above can be returned as
 * well.
 *
 *
 * Log lines
 * ---------
 * Lines go to the logging handle given to init, also to one that is NULL: the development platform then
 * writes "-" in place of a name, and a camera's does what it does. Each block quotes its own, with <name> for a member's name
 * and <status> for a number. Two of them are the same everywhere:
 *   "received a callback for <method> but no initiator callback was registered"  (warning): a response came
 *       for a request that has no registration, for instance one that _cancel_async dropped. No callback is
 *       called.
 *   "Threw an exception in function action_engine<method>Callback"  (error): a response could not be read (a
 *       member absent or of another type, no memory), or the callback threw. In the first case it was not
 *       called.
 *
 * No function throws: in C++ all are noexcept. Callbacks and event handlers may be any function of the right
 * type.
 */
#ifndef KORVO_API_ACTION_ENGINE_H
#define KORVO_API_ACTION_ENGINE_H

#include "korvo_core.h"

#if defined(__GNUC__)
#define KORVO_API_ACTION_ENGINE_EXPORT __attribute__((visibility("default")))
#else
#define KORVO_API_ACTION_ENGINE_EXPORT
#endif

/*
 * KORVO_API_ENUM_BASE: values that no name stands for are values too, since a newer service may know more
 * types than this header.
 */
#ifdef __cplusplus
#define KORVO_API_NOEXCEPT noexcept
#define KORVO_API_ENUM_BASE : unsigned int
#else
#define KORVO_API_NOEXCEPT
#define KORVO_API_ENUM_BASE
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ======================================================================================================== */
/* Enumerations                                                                                             */
/* ======================================================================================================== */

/*
 * What an action does; the member action_type. On purpose the tour stands before the scan here, although
 * everywhere else the scan comes first: callers rely on the values.
 */
enum ActionType KORVO_API_ENUM_BASE {
    kSendEmailAction = 0,    /* create_email_action */
    kFtpUploadAction = 1,    /* create_ftp_action */
    kSaveSnapshotAction = 2, /* create_snapshot_action */
    kPtzPatternAction = 3,   /* create_ptz_pattern_action */
    kPtzPresetAction = 4,    /* create_ptz_preset_action */
    kPtzTourAction = 5,      /* create_ptz_tour_action */
    kPtzScanAction = 6,      /* create_ptz_scan_action */
    kWiperAction = 7,        /* create_wiper_action */
    kWasherAction = 8,       /* create_washer_action */
    kRelayAction = 9,        /* create_relay_action */
};
typedef enum ActionType ActionType;

/* What fires a trigger; the member trigger_type. */
enum TriggerType KORVO_API_ENUM_BASE {
    kOnvifEventTrigger = 0,       /* create_onvif_trigger */
    kReoccurringTimerTrigger = 1, /* create_timer_trigger */
    kStableOnvifEventTrigger = 2, /* create_stable_onvif_trigger */
};
typedef enum TriggerType TriggerType;

/* Days of the week as flags, which add up: 62 is Monday to Friday, 127 every day. For action filters. */
enum Weekday KORVO_API_ENUM_BASE {
    kSunday = 1,
    kMonday = 2,
    kTuesday = 4,
    kWednesday = 8,
    kThursday = 16,
    kFriday = 32,
    kSaturday = 64,
};
typedef enum Weekday Weekday;

/* ======================================================================================================== */
/* Life of a handle                                                                                         */
/* ======================================================================================================== */

/*
 * Makes a client handle.
 *
 * Inputs
 *   messaging_handle  an open messaging initiator handle to share, which the library never closes and which
 *                     has a rule of its own for stopping (see the head of this file); or NULL: the handle
 *                     opens its own and closes it in deinit.
 *   logging_handle    receives every log line of the handle; opened with korvo_core_logging_init(), stays the
 *                     caller's and outlives the handle. NULL is handed on to the platform.
 *   subscribe_events  non-zero subscribes to the service's events, without which Action_completed reaches no
 *                     handler. The subscription is made before init returns.
 *   initiator_name    name of this client for the messaging layer, used only when the handle opens its own
 *                     messaging. Borrowed for the call. NULL is handed on; the development platform takes it for
 *                     an empty name.
 * Results
 *   handle            the new handle; caller frees with korvo_api_action_engine_initiator_deinit(). Written
 *                     only on success.
 * Statuses
 *   1 when handle is NULL; nothing is made then. 2 for every other failure.
 * Early after the start of a system, before its kernel has gathered entropy, init waits until there is some.
 * Log lines (error)
 *   "korvoInterfaces: cannot make request identifiers: no entropy: <reason>"  the system gives none at all.
 *   "korvoInitiatorInterfaces: failed call to initiator init (<status>)"  messaging could not be opened.
 *   "initializeEventStructures:failed call to subscribe to events"        the subscription was refused.
 *   "initializeEventStructures:failed call to receive callbacks"          the event entry point was refused.
 *   No line stands for memory that ran out.
 */
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_initiator_init(
    void *messaging_handle, void *logging_handle, void **handle, unsigned char subscribe_events,
    char const *initiator_name) KORVO_API_NOEXCEPT;

/*
 * Ends a client handle and frees it, with everything registered on it; NULL is allowed and does nothing.
 * Messaging of its own is closed first, and a callback that is just running is waited for. Shared messaging
 * is not touched: close it BEFORE this call (see the head of this file).
 * On purpose: from inside a callback or handler of the handle it ends and frees nothing, logs an error and
 * returns 0; the handle stays usable and is ended later, from elsewhere.
 *
 * Statuses
 *   always 0.
 * Log lines (error)
 *   "korvo_api_action_engine_initiator_deinit does nothing: it was called from inside a callback of its handle"
 *   "~korvoInitiatorInterfaces: failed call to initiator deinit (<status>)"  the messaging could not be
 *       closed; the handle is gone nevertheless.
 */
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_initiator_deinit(void *handle)
    KORVO_API_NOEXCEPT;

/*
 * Tells the interface version of this library: 1 and 19. Nothing is sent; what the service speaks is told by
 * the version query below.
 *
 * Results
 *   major, minor  the two numbers.
 * Statuses
 *   1 when either pointer is NULL; nothing is written then.
 */
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_initiator_version(
    void *handle, unsigned int *major, unsigned int *minor) KORVO_API_NOEXCEPT;

/*
 * Frees a request identifier of a _non_blocking_send that no receive has freed; the same as free(). NULL is
 * allowed and does nothing.
 */
KORVO_API_ACTION_ENGINE_EXPORT void korvo_api_action_engine_free_uuid(char *request_id) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* The version query                                                                                        */
/* ======================================================================================================== */

/*
 * __get_target_version__: asks the service for its interface version, and compares it with this library's
 * own, which is sent along.
 *
 * It has five forms: there is none with a time-out of the caller's. _send and a blocking _receive wait up to
 * 5000 ms.
 *
 * Versions that differ, in either number, are only logged. The status is 0 all the same, and nothing else
 * changes: it is the caller who decides what to do about it.
 *
 * Results
 *   target_major  major interface version of the service.
 *   target_minor  minor interface version of the service.
 * Statuses
 *   4 also when the log throws while it takes the line; the versions are written then, and the identifier of
 *   a receive stays with the caller, as after every failure.
 * Log lines
 *   "Action_engine Initiator (version 1:19) queried Target (version <major>:<minor>)"
 *       error: the versions differ. Also for an asynchronous query with a NULL callback.
 *   "received a callback for __get_target_version__ but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engine__get_target_version__Callback" (error)
 */
typedef void (*korvo_api_action_engine___get_target_version___method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int target_major, unsigned int target_minor,
    void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine___get_target_version___send(
    void *handle, char const *target, unsigned int *target_major,
    unsigned int *target_minor) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine___get_target_version___non_blocking_send(
    void *handle, char const *target, char **request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine___get_target_version___receive(
    void *handle, unsigned char block, char const *target, char *request_id, unsigned int *target_major,
    unsigned int *target_minor) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine___get_target_version___send_async(
    void *handle, char const *target,
    korvo_api_action_engine___get_target_version___method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine___get_target_version___cancel_async(
    void *handle, korvo_api_action_engine___get_target_version___method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Actions: catalogue                                                                                       */
/* ======================================================================================================== */

/*
 * get_actions: lists every action of the catalogue.
 *
 * An empty catalogue is no failure: both lists are empty then.
 *
 * Results
 *   action_id    list of the actions' identifiers.
 *   action_type  list, parallel to action_id, of their types: values of ActionType.
 * Ownership
 *   Lists: caller frees with korvo_core_free_uint_array(). In a callback: borrowed for the call.
 * Statuses
 *   1 for a list variable that was not NULL.
 * Log lines
 *   "action_engine_get_actions_receive:failed converting UINT array (<status>)"
 *       warning: the synchronous reader stopped at a list and returned <status>.
 *   "action_engineGet_actionsCallback failed converting unsigned int array (<status>)"
 *       warning: the asynchronous reader stopped at a list; the callback was not called.
 *   "received a callback for Get_actions but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_actionsCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_actions_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int **action_id, unsigned int **action_type,
    void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_actions_send(
    void *handle, char const *target, unsigned int ***action_id,
    unsigned int ***action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_actions_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int ***action_id,
    unsigned int ***action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_actions_non_blocking_send(
    void *handle, char const *target, char **request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_actions_receive(
    void *handle, unsigned char block, char const *target, char *request_id, unsigned int ***action_id,
    unsigned int ***action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_actions_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, unsigned int ***action_id,
    unsigned int ***action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_actions_send_async(
    void *handle, char const *target, korvo_api_action_engine_get_actions_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_actions_cancel_async(
    void *handle, korvo_api_action_engine_get_actions_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_action_counts: counts the actions of the catalogue, in all and by type.
 *
 * Results
 *   total         number of all actions.
 *   action_types  list of action types: values of ActionType.
 *   counts        list, parallel to action_types, of the number of actions of each.
 * Ownership
 *   Lists: caller frees with korvo_core_free_uint_array(). In a callback: borrowed for the call.
 * Statuses
 *   1 for a list variable that was not NULL.
 * Log lines
 *   "action_engine_get_action_counts_receive:failed converting UINT array (<status>)"
 *       warning: the synchronous reader stopped at a list and returned <status>.
 *   "action_engineGet_action_countsCallback failed converting unsigned int array (<status>)"
 *       warning: the asynchronous reader stopped at a list; the callback was not called.
 *   "received a callback for Get_action_counts but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_action_countsCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_action_counts_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int total, unsigned int **action_types,
    unsigned int **counts, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_counts_send(
    void *handle, char const *target, unsigned int *total, unsigned int ***action_types,
    unsigned int ***counts) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_counts_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int *total, unsigned int ***action_types,
    unsigned int ***counts) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_counts_non_blocking_send(
    void *handle, char const *target, char **request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_counts_receive(
    void *handle, unsigned char block, char const *target, char *request_id, unsigned int *total,
    unsigned int ***action_types, unsigned int ***counts) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_action_counts_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, unsigned int *total,
    unsigned int ***action_types, unsigned int ***counts) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_counts_send_async(
    void *handle, char const *target,
    korvo_api_action_engine_get_action_counts_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_counts_cancel_async(
    void *handle, korvo_api_action_engine_get_action_counts_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_action_type: tells what kind of action an identifier stands for.
 *
 * Inputs
 *   action_id  the action asked about.
 * Results
 *   action_type  its type: a value of ActionType.
 * Statuses
 *   9 when the service knows no such action.
 * Log lines
 *   "received a callback for Get_action_type but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_action_typeCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_action_type_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int action_type, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_type_send(
    void *handle, char const *target, unsigned int action_id, unsigned int *action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_type_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id,
    unsigned int *action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_type_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_type_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_type_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_type_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_action_type_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_type_cancel_async(
    void *handle, korvo_api_action_engine_get_action_type_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * delete_action: removes an action of any kind from the catalogue.
 *
 * On the development platform its associations go with it.
 *
 * Inputs
 *   action_id  the action to remove.
 * Statuses
 *   9 when the service knows no such action.
 * Log lines
 *   "received a callback for Delete_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineDelete_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_delete_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_action_send(
    void *handle, char const *target, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_action_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_delete_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_action_cancel_async(
    void *handle, korvo_api_action_engine_delete_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Actions: filters                                                                                         */
/* ======================================================================================================== */

/*
 * get_action_filters: reads the filters of an action.
 *
 * Filters limit when an action may run, by weekday and time of day. The three lists, their unit and how their
 * entries go together are the service's matter; the library neither compares their lengths nor looks at a
 * value. On the development platform times are seconds since local midnight, and a window may cross midnight.
 *
 * Inputs
 *   action_id  the action whose filters are read.
 * Results
 *   weekday_filters     list of sets of weekdays, each the sum of values of Weekday.
 *   time_filters_start  list of the starts of time windows.
 *   time_filters_end    list of their ends.
 * Ownership
 *   Lists: caller frees with korvo_core_free_uint_array(). In a callback: borrowed for the call.
 * Statuses
 *   1 for a list variable that was not NULL. 9 when the service knows no such action.
 * Log lines
 *   "action_engine_get_action_filters_receive:failed converting UINT array (<status>)"
 *       warning: the synchronous reader stopped at a list and returned <status>.
 *   "action_engineGet_action_filtersCallback failed converting unsigned int array (<status>)"
 *       warning: the asynchronous reader stopped at a list; the callback was not called.
 *   "received a callback for Get_action_filters but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_action_filtersCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_action_filters_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int **weekday_filters, unsigned int **time_filters_start,
    unsigned int **time_filters_end, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_filters_send(
    void *handle, char const *target, unsigned int action_id, unsigned int ***weekday_filters,
    unsigned int ***time_filters_start, unsigned int ***time_filters_end) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_filters_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, unsigned int ***weekday_filters,
    unsigned int ***time_filters_start, unsigned int ***time_filters_end) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_filters_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_filters_receive(
    void *handle, unsigned char block, char const *target, char *request_id, unsigned int ***weekday_filters,
    unsigned int ***time_filters_start, unsigned int ***time_filters_end) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_action_filters_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, unsigned int ***weekday_filters,
    unsigned int ***time_filters_start, unsigned int ***time_filters_end) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_filters_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_action_filters_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_filters_cancel_async(
    void *handle, korvo_api_action_engine_get_action_filters_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * set_action_filters: replaces all filters of an action. Three empty lists remove them; no operation adds or
 * removes a single one.
 *
 * What the entries mean is told at get_action_filters.
 *
 * Inputs
 *   action_id           the action whose filters are replaced.
 *   weekday_filters     list of sets of weekdays, each the sum of values of Weekday.
 *   time_filters_start  list of the starts of time windows.
 *   time_filters_end    list of their ends.
 * Ownership
 *   Inputs: lists are borrowed for the call.
 * Statuses
 *   1 for a NULL list as an input; nothing is sent. 9 when the service knows no such action.
 * Log lines
 *   "Initiator:action_engine_set_action_filters_utility_send called with null input pointer <name>"
 *       warning: the list <name> is NULL.
 *   "received a callback for Set_action_filters but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineSet_action_filtersCallback" (error)
 */
typedef void (*korvo_api_action_engine_set_action_filters_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_set_action_filters_send(
    void *handle, char const *target, unsigned int action_id, unsigned int **weekday_filters,
    unsigned int **time_filters_start, unsigned int **time_filters_end) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_set_action_filters_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, unsigned int **weekday_filters,
    unsigned int **time_filters_start, unsigned int **time_filters_end) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_set_action_filters_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id,
    unsigned int **weekday_filters, unsigned int **time_filters_start,
    unsigned int **time_filters_end) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_set_action_filters_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_set_action_filters_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_set_action_filters_send_async(
    void *handle, char const *target, unsigned int action_id, unsigned int **weekday_filters,
    unsigned int **time_filters_start, unsigned int **time_filters_end,
    korvo_api_action_engine_set_action_filters_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_set_action_filters_cancel_async(
    void *handle, korvo_api_action_engine_set_action_filters_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Actions: e-mail                                                                                          */
/* ======================================================================================================== */

/*
 * get_email_action: reads the settings of an e-mail action.
 *
 * Inputs
 *   action_id  the action to read.
 * Results
 *   action_name    the action's name.
 *   smtp_server    the SMTP server that the message goes through.
 *   to_addresses   list of the recipients' addresses.
 *   cc_addresses   list of the addresses that get a copy.
 *   from_address   the sender's address.
 *   subject        the subject line.
 *   body           the text of the message.
 *   attach_jpeg    1 when a JPEG picture is attached.
 *   include_event  1 when the message includes the event that fired.
 * Ownership
 *   Texts: caller frees with free(). In a callback: callback owns, frees with free().
 *   Lists: caller frees with korvo_core_free_string_array(). In a callback: borrowed for the call.
 * Statuses
 *   1 for a list variable that was not NULL. 9 when the service knows no such action, or it is of another
 *   kind.
 * Log lines
 *   "action_engine_get_email_action_receive:failed converting STR array (<status>)"
 *       warning: the synchronous reader stopped at a list and returned <status>.
 *   "action_engineGet_email_actionCallback failed converting char array (<status>)"
 *       warning: the asynchronous reader stopped at a list; the callback was not called.
 *   "received a callback for Get_email_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_email_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_email_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *action_name, char *smtp_server, char **to_addresses,
    char **cc_addresses, char *from_address, char *subject, char *body, unsigned char attach_jpeg,
    unsigned char include_event, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_email_action_send(
    void *handle, char const *target, unsigned int action_id, char **action_name, char **smtp_server,
    char ***to_addresses, char ***cc_addresses, char **from_address, char **subject, char **body,
    unsigned char *attach_jpeg, unsigned char *include_event) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_email_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char **action_name,
    char **smtp_server, char ***to_addresses, char ***cc_addresses, char **from_address, char **subject,
    char **body, unsigned char *attach_jpeg, unsigned char *include_event) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_email_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_email_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id, char **action_name,
    char **smtp_server, char ***to_addresses, char ***cc_addresses, char **from_address, char **subject,
    char **body, unsigned char *attach_jpeg, unsigned char *include_event) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_email_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **action_name, char **smtp_server,
    char ***to_addresses, char ***cc_addresses, char **from_address, char **subject, char **body,
    unsigned char *attach_jpeg, unsigned char *include_event) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_email_action_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_email_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_email_action_cancel_async(
    void *handle, korvo_api_action_engine_get_email_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_email_action: makes an action that sends an e-mail. It has neither user name nor password.
 *
 * Inputs
 *   action_name    the action's name; Action_completed reports it.
 *   smtp_server    the SMTP server to send the message through.
 *   to_addresses   list of the recipients' addresses.
 *   cc_addresses   list of the addresses that get a copy; an empty list when there are none.
 *   from_address   the sender's address.
 *   subject        the subject line.
 *   body           the text of the message.
 *   attach_jpeg    non-zero attaches a JPEG picture.
 *   include_event  non-zero includes the event that fired in the message.
 * Results
 *   action_id  identifier that the service gave the new action; its type is kSendEmailAction.
 * Ownership
 *   Inputs: texts and lists are borrowed for the call.
 * Statuses
 *   1 for a NULL text or list as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_email_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "Initiator:action_engine_create_email_action_utility_send called with null input pointer <name>"
 *       warning: the list <name> is NULL. On purpose without the blank.
 *   "received a callback for Create_email_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_email_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_email_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int action_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_email_action_send(
    void *handle, char const *target, char const *action_name, char const *smtp_server, char **to_addresses,
    char **cc_addresses, char const *from_address, char const *subject, char const *body,
    unsigned char attach_jpeg, unsigned char include_event, unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_email_action_send_with_timeout(
    void *handle, char const *target, int timeout, char const *action_name, char const *smtp_server,
    char **to_addresses, char **cc_addresses, char const *from_address, char const *subject, char const *body,
    unsigned char attach_jpeg, unsigned char include_event, unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_email_action_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *action_name, char const *smtp_server,
    char **to_addresses, char **cc_addresses, char const *from_address, char const *subject, char const *body,
    unsigned char attach_jpeg, unsigned char include_event) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_email_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_email_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_email_action_send_async(
    void *handle, char const *target, char const *action_name, char const *smtp_server, char **to_addresses,
    char **cc_addresses, char const *from_address, char const *subject, char const *body,
    unsigned char attach_jpeg, unsigned char include_event,
    korvo_api_action_engine_create_email_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_email_action_cancel_async(
    void *handle, korvo_api_action_engine_create_email_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_email_action: replaces all settings of an e-mail action; there is no way to change a single one.
 *
 * Inputs
 *   action_id      the action to change.
 *   action_name    the action's name; Action_completed reports it.
 *   smtp_server    the SMTP server to send the message through.
 *   to_addresses   list of the recipients' addresses.
 *   cc_addresses   list of the addresses that get a copy; an empty list when there are none.
 *   from_address   the sender's address.
 *   subject        the subject line.
 *   body           the text of the message.
 *   attach_jpeg    non-zero attaches a JPEG picture.
 *   include_event  non-zero includes the event that fired in the message.
 * Ownership
 *   Inputs: texts and lists are borrowed for the call.
 * Statuses
 *   1 for a NULL text or list as an input; nothing is sent. 9 when the service knows no such action, or it is
 *   of another kind.
 * Log lines
 *   "Initiator: action_engine_modify_email_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "Initiator:action_engine_modify_email_action_utility_send called with null input pointer <name>"
 *       warning: the list <name> is NULL. On purpose without the blank.
 *   "received a callback for Modify_email_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_email_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_email_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_email_action_send(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    char const *smtp_server, char **to_addresses, char **cc_addresses, char const *from_address,
    char const *subject, char const *body, unsigned char attach_jpeg,
    unsigned char include_event) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_email_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char const *action_name,
    char const *smtp_server, char **to_addresses, char **cc_addresses, char const *from_address,
    char const *subject, char const *body, unsigned char attach_jpeg,
    unsigned char include_event) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_email_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id, char const *action_name,
    char const *smtp_server, char **to_addresses, char **cc_addresses, char const *from_address,
    char const *subject, char const *body, unsigned char attach_jpeg,
    unsigned char include_event) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_email_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_email_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_email_action_send_async(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    char const *smtp_server, char **to_addresses, char **cc_addresses, char const *from_address,
    char const *subject, char const *body, unsigned char attach_jpeg, unsigned char include_event,
    korvo_api_action_engine_modify_email_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_email_action_cancel_async(
    void *handle, korvo_api_action_engine_modify_email_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Actions: FTP upload                                                                                      */
/* ======================================================================================================== */

/*
 * get_ftp_action: reads the settings of an FTP action.
 *
 * The password comes back readable: do not print what this returns as a whole.
 *
 * Inputs
 *   action_id  the action to read.
 * Results
 *   action_name  the action's name.
 *   server_name  the FTP server.
 *   username     the login name there.
 *   password     the login password, as it was given.
 *   path         the directory on the server.
 *   filename     name of the uploaded file.
 * Ownership
 *   Texts: caller frees with free(). In a callback: callback owns, frees with free().
 * Statuses
 *   9 when the service knows no such action, or it is of another kind.
 * Log lines
 *   "received a callback for Get_ftp_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_ftp_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_ftp_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *action_name, char *server_name, char *username,
    char *password, char *path, char *filename, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ftp_action_send(
    void *handle, char const *target, unsigned int action_id, char **action_name, char **server_name,
    char **username, char **password, char **path, char **filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ftp_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char **action_name,
    char **server_name, char **username, char **password, char **path, char **filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ftp_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ftp_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id, char **action_name,
    char **server_name, char **username, char **password, char **path, char **filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ftp_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **action_name, char **server_name,
    char **username, char **password, char **path, char **filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ftp_action_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_ftp_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ftp_action_cancel_async(
    void *handle, korvo_api_action_engine_get_ftp_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_ftp_action: makes an action that uploads a file to an FTP server.
 *
 * The password travels and is kept as it is: the library neither hides nor changes it, and get_ftp_action
 * hands it back.
 *
 * Inputs
 *   action_name  the action's name; Action_completed reports it.
 *   server_name  the FTP server.
 *   username     the login name there; may be empty.
 *   password     the login password; may be empty.
 *   path         the directory on the server; may be empty.
 *   filename     name of the uploaded file.
 * Results
 *   action_id  identifier that the service gave the new action; its type is kFtpUploadAction.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_ftp_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Create_ftp_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_ftp_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_ftp_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int action_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ftp_action_send(
    void *handle, char const *target, char const *action_name, char const *server_name, char const *username,
    char const *password, char const *path, char const *filename, unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ftp_action_send_with_timeout(
    void *handle, char const *target, int timeout, char const *action_name, char const *server_name,
    char const *username, char const *password, char const *path, char const *filename,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ftp_action_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *action_name, char const *server_name,
    char const *username, char const *password, char const *path, char const *filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ftp_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ftp_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ftp_action_send_async(
    void *handle, char const *target, char const *action_name, char const *server_name, char const *username,
    char const *password, char const *path, char const *filename,
    korvo_api_action_engine_create_ftp_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ftp_action_cancel_async(
    void *handle, korvo_api_action_engine_create_ftp_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_ftp_action: replaces all settings of an FTP action; there is no way to change a single one.
 *
 * The password travels and is kept as it is: the library neither hides nor changes it, and get_ftp_action
 * hands it back.
 *
 * Inputs
 *   action_id    the action to change.
 *   action_name  the action's name; Action_completed reports it.
 *   server_name  the FTP server.
 *   username     the login name there; may be empty.
 *   password     the login password; may be empty.
 *   path         the directory on the server; may be empty.
 *   filename     name of the uploaded file.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent. 9 when the service knows no such action, or it is of
 *   another kind.
 * Log lines
 *   "Initiator: action_engine_modify_ftp_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Modify_ftp_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_ftp_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_ftp_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ftp_action_send(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    char const *server_name, char const *username, char const *password, char const *path,
    char const *filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ftp_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char const *action_name,
    char const *server_name, char const *username, char const *password, char const *path,
    char const *filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ftp_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id, char const *action_name,
    char const *server_name, char const *username, char const *password, char const *path,
    char const *filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ftp_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ftp_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ftp_action_send_async(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    char const *server_name, char const *username, char const *password, char const *path,
    char const *filename, korvo_api_action_engine_modify_ftp_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ftp_action_cancel_async(
    void *handle, korvo_api_action_engine_modify_ftp_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Actions: snapshot                                                                                        */
/* ======================================================================================================== */

/*
 * get_snapshot_action: reads the settings of a snapshot action.
 *
 * Inputs
 *   action_id  the action to read.
 * Results
 *   action_name  the action's name.
 *   filename     name of the file that the picture is saved to.
 * Ownership
 *   Texts: caller frees with free(). In a callback: callback owns, frees with free().
 * Statuses
 *   9 when the service knows no such action, or it is of another kind.
 * Log lines
 *   "received a callback for Get_snapshot_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_snapshot_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_snapshot_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *action_name, char *filename, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_snapshot_action_send(
    void *handle, char const *target, unsigned int action_id, char **action_name,
    char **filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_snapshot_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char **action_name,
    char **filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_snapshot_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_snapshot_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id, char **action_name,
    char **filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_snapshot_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **action_name,
    char **filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_snapshot_action_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_snapshot_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_snapshot_action_cancel_async(
    void *handle, korvo_api_action_engine_get_snapshot_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_snapshot_action: makes an action that saves a picture to a file.
 *
 * Inputs
 *   action_name  the action's name; Action_completed reports it.
 *   filename     name of the file that the picture is saved to.
 * Results
 *   action_id  identifier that the service gave the new action; its type is kSaveSnapshotAction.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_snapshot_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Create_snapshot_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_snapshot_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_snapshot_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int action_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_snapshot_action_send(
    void *handle, char const *target, char const *action_name, char const *filename,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_snapshot_action_send_with_timeout(
    void *handle, char const *target, int timeout, char const *action_name, char const *filename,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_snapshot_action_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *action_name,
    char const *filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_snapshot_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_snapshot_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_snapshot_action_send_async(
    void *handle, char const *target, char const *action_name, char const *filename,
    korvo_api_action_engine_create_snapshot_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_snapshot_action_cancel_async(
    void *handle, korvo_api_action_engine_create_snapshot_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_snapshot_action: replaces all settings of a snapshot action; there is no way to change a single one.
 *
 * Inputs
 *   action_id    the action to change.
 *   action_name  the action's name; Action_completed reports it.
 *   filename     name of the file that the picture is saved to.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent. 9 when the service knows no such action, or it is of
 *   another kind.
 * Log lines
 *   "Initiator: action_engine_modify_snapshot_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Modify_snapshot_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_snapshot_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_snapshot_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_snapshot_action_send(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    char const *filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_snapshot_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char const *action_name,
    char const *filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_snapshot_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id, char const *action_name,
    char const *filename) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_snapshot_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_snapshot_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_snapshot_action_send_async(
    void *handle, char const *target, unsigned int action_id, char const *action_name, char const *filename,
    korvo_api_action_engine_modify_snapshot_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_snapshot_action_cancel_async(
    void *handle, korvo_api_action_engine_modify_snapshot_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Actions: pan, tilt, zoom                                                                                 */
/* ======================================================================================================== */

/*
 * get_ptz_pattern_action: reads the settings of a PTZ pattern action.
 *
 * Inputs
 *   action_id  the action to read.
 * Results
 *   action_name  the action's name.
 *   pattern_id   identifier of the pattern, a text.
 * Ownership
 *   Texts: caller frees with free(). In a callback: callback owns, frees with free().
 * Statuses
 *   9 when the service knows no such action, or it is of another kind.
 * Log lines
 *   "received a callback for Get_ptz_pattern_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_ptz_pattern_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_ptz_pattern_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *action_name, char *pattern_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_pattern_action_send(
    void *handle, char const *target, unsigned int action_id, char **action_name,
    char **pattern_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_pattern_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char **action_name,
    char **pattern_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_pattern_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_pattern_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id, char **action_name,
    char **pattern_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_pattern_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **action_name,
    char **pattern_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_pattern_action_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_ptz_pattern_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_pattern_action_cancel_async(
    void *handle, korvo_api_action_engine_get_ptz_pattern_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_ptz_pattern_action: makes an action that runs a PTZ pattern.
 *
 * Inputs
 *   action_name  the action's name; Action_completed reports it.
 *   pattern_id   identifier of the pattern, a text, not a number.
 * Results
 *   action_id  identifier that the service gave the new action; its type is kPtzPatternAction.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_ptz_pattern_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Create_ptz_pattern_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_ptz_pattern_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_ptz_pattern_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int action_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_pattern_action_send(
    void *handle, char const *target, char const *action_name, char const *pattern_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_pattern_action_send_with_timeout(
    void *handle, char const *target, int timeout, char const *action_name, char const *pattern_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_pattern_action_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *action_name,
    char const *pattern_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_pattern_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_pattern_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_pattern_action_send_async(
    void *handle, char const *target, char const *action_name, char const *pattern_id,
    korvo_api_action_engine_create_ptz_pattern_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_pattern_action_cancel_async(
    void *handle, korvo_api_action_engine_create_ptz_pattern_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_ptz_pattern_action: replaces all settings of a PTZ pattern action; there is no way to change a
 * single one.
 *
 * Inputs
 *   action_id    the action to change.
 *   action_name  the action's name; Action_completed reports it.
 *   pattern_id   identifier of the pattern, a text, not a number.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent. 9 when the service knows no such action, or it is of
 *   another kind.
 * Log lines
 *   "Initiator: action_engine_modify_ptz_pattern_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Modify_ptz_pattern_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_ptz_pattern_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_ptz_pattern_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_pattern_action_send(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    char const *pattern_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_pattern_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char const *action_name,
    char const *pattern_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_pattern_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id, char const *action_name,
    char const *pattern_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_pattern_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_pattern_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_pattern_action_send_async(
    void *handle, char const *target, unsigned int action_id, char const *action_name, char const *pattern_id,
    korvo_api_action_engine_modify_ptz_pattern_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_pattern_action_cancel_async(
    void *handle, korvo_api_action_engine_modify_ptz_pattern_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_ptz_preset_action: reads the settings of a PTZ preset action.
 *
 * Inputs
 *   action_id  the action to read.
 * Results
 *   action_name  the action's name.
 *   preset_id    identifier of the preset, a text.
 * Ownership
 *   Texts: caller frees with free(). In a callback: callback owns, frees with free().
 * Statuses
 *   9 when the service knows no such action, or it is of another kind.
 * Log lines
 *   "received a callback for Get_ptz_preset_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_ptz_preset_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_ptz_preset_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *action_name, char *preset_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_preset_action_send(
    void *handle, char const *target, unsigned int action_id, char **action_name,
    char **preset_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_preset_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char **action_name,
    char **preset_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_preset_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_preset_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id, char **action_name,
    char **preset_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_preset_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **action_name,
    char **preset_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_preset_action_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_ptz_preset_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_preset_action_cancel_async(
    void *handle, korvo_api_action_engine_get_ptz_preset_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_ptz_preset_action: makes an action that moves the camera's head to a PTZ preset.
 *
 * Inputs
 *   action_name  the action's name; Action_completed reports it.
 *   preset_id    identifier of the preset, a text, not a number.
 * Results
 *   action_id  identifier that the service gave the new action; its type is kPtzPresetAction.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_ptz_preset_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Create_ptz_preset_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_ptz_preset_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_ptz_preset_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int action_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_preset_action_send(
    void *handle, char const *target, char const *action_name, char const *preset_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_preset_action_send_with_timeout(
    void *handle, char const *target, int timeout, char const *action_name, char const *preset_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_preset_action_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *action_name,
    char const *preset_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_preset_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_preset_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_preset_action_send_async(
    void *handle, char const *target, char const *action_name, char const *preset_id,
    korvo_api_action_engine_create_ptz_preset_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_preset_action_cancel_async(
    void *handle, korvo_api_action_engine_create_ptz_preset_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_ptz_preset_action: replaces all settings of a PTZ preset action; there is no way to change a single
 * one.
 *
 * Inputs
 *   action_id    the action to change.
 *   action_name  the action's name; Action_completed reports it.
 *   preset_id    identifier of the preset, a text, not a number.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent. 9 when the service knows no such action, or it is of
 *   another kind.
 * Log lines
 *   "Initiator: action_engine_modify_ptz_preset_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Modify_ptz_preset_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_ptz_preset_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_ptz_preset_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_preset_action_send(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    char const *preset_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_preset_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char const *action_name,
    char const *preset_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_preset_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id, char const *action_name,
    char const *preset_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_preset_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_preset_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_preset_action_send_async(
    void *handle, char const *target, unsigned int action_id, char const *action_name, char const *preset_id,
    korvo_api_action_engine_modify_ptz_preset_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_preset_action_cancel_async(
    void *handle, korvo_api_action_engine_modify_ptz_preset_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_ptz_scan_action: reads the settings of a PTZ scan action.
 *
 * Inputs
 *   action_id  the action to read.
 * Results
 *   action_name  the action's name.
 *   scan_id      identifier of the scan, a text.
 * Ownership
 *   Texts: caller frees with free(). In a callback: callback owns, frees with free().
 * Statuses
 *   9 when the service knows no such action, or it is of another kind.
 * Log lines
 *   "received a callback for Get_ptz_scan_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_ptz_scan_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_ptz_scan_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *action_name, char *scan_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_scan_action_send(
    void *handle, char const *target, unsigned int action_id, char **action_name,
    char **scan_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_scan_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char **action_name,
    char **scan_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_scan_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_scan_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id, char **action_name,
    char **scan_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_scan_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **action_name,
    char **scan_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_scan_action_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_ptz_scan_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_scan_action_cancel_async(
    void *handle, korvo_api_action_engine_get_ptz_scan_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_ptz_scan_action: makes an action that runs a PTZ scan.
 *
 * Inputs
 *   action_name  the action's name; Action_completed reports it.
 *   scan_id      identifier of the scan, a text, not a number.
 * Results
 *   action_id  identifier that the service gave the new action; its type is kPtzScanAction.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_ptz_scan_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Create_ptz_scan_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_ptz_scan_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_ptz_scan_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int action_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_scan_action_send(
    void *handle, char const *target, char const *action_name, char const *scan_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_scan_action_send_with_timeout(
    void *handle, char const *target, int timeout, char const *action_name, char const *scan_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_scan_action_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *action_name,
    char const *scan_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_scan_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_scan_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_scan_action_send_async(
    void *handle, char const *target, char const *action_name, char const *scan_id,
    korvo_api_action_engine_create_ptz_scan_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_scan_action_cancel_async(
    void *handle, korvo_api_action_engine_create_ptz_scan_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_ptz_scan_action: replaces all settings of a PTZ scan action; there is no way to change a single one.
 *
 * Inputs
 *   action_id    the action to change.
 *   action_name  the action's name; Action_completed reports it.
 *   scan_id      identifier of the scan, a text, not a number.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent. 9 when the service knows no such action, or it is of
 *   another kind.
 * Log lines
 *   "Initiator: action_engine_modify_ptz_scan_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Modify_ptz_scan_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_ptz_scan_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_ptz_scan_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_scan_action_send(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    char const *scan_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_scan_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char const *action_name,
    char const *scan_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_scan_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id, char const *action_name,
    char const *scan_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_scan_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_scan_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_scan_action_send_async(
    void *handle, char const *target, unsigned int action_id, char const *action_name, char const *scan_id,
    korvo_api_action_engine_modify_ptz_scan_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_scan_action_cancel_async(
    void *handle, korvo_api_action_engine_modify_ptz_scan_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_ptz_tour_action: reads the settings of a PTZ tour action.
 *
 * Inputs
 *   action_id  the action to read.
 * Results
 *   action_name  the action's name.
 *   tour_id      identifier of the tour, a text.
 * Ownership
 *   Texts: caller frees with free(). In a callback: callback owns, frees with free().
 * Statuses
 *   9 when the service knows no such action, or it is of another kind.
 * Log lines
 *   "received a callback for Get_ptz_tour_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_ptz_tour_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_ptz_tour_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *action_name, char *tour_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_tour_action_send(
    void *handle, char const *target, unsigned int action_id, char **action_name,
    char **tour_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_tour_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char **action_name,
    char **tour_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_tour_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_tour_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id, char **action_name,
    char **tour_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_ptz_tour_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **action_name,
    char **tour_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_tour_action_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_ptz_tour_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_ptz_tour_action_cancel_async(
    void *handle, korvo_api_action_engine_get_ptz_tour_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_ptz_tour_action: makes an action that runs a PTZ tour.
 *
 * Inputs
 *   action_name  the action's name; Action_completed reports it.
 *   tour_id      identifier of the tour, a text, not a number.
 * Results
 *   action_id  identifier that the service gave the new action; its type is kPtzTourAction.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_ptz_tour_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Create_ptz_tour_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_ptz_tour_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_ptz_tour_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int action_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_tour_action_send(
    void *handle, char const *target, char const *action_name, char const *tour_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_tour_action_send_with_timeout(
    void *handle, char const *target, int timeout, char const *action_name, char const *tour_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_tour_action_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *action_name,
    char const *tour_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_tour_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_ptz_tour_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_tour_action_send_async(
    void *handle, char const *target, char const *action_name, char const *tour_id,
    korvo_api_action_engine_create_ptz_tour_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_ptz_tour_action_cancel_async(
    void *handle, korvo_api_action_engine_create_ptz_tour_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_ptz_tour_action: replaces all settings of a PTZ tour action; there is no way to change a single one.
 *
 * Inputs
 *   action_id    the action to change.
 *   action_name  the action's name; Action_completed reports it.
 *   tour_id      identifier of the tour, a text, not a number.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent. 9 when the service knows no such action, or it is of
 *   another kind.
 * Log lines
 *   "Initiator: action_engine_modify_ptz_tour_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Modify_ptz_tour_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_ptz_tour_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_ptz_tour_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_tour_action_send(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    char const *tour_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_tour_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char const *action_name,
    char const *tour_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_tour_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id, char const *action_name,
    char const *tour_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_tour_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_ptz_tour_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_tour_action_send_async(
    void *handle, char const *target, unsigned int action_id, char const *action_name, char const *tour_id,
    korvo_api_action_engine_modify_ptz_tour_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_ptz_tour_action_cancel_async(
    void *handle, korvo_api_action_engine_modify_ptz_tour_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Actions: wiper, washer, relay                                                                            */
/* ======================================================================================================== */

/*
 * get_wiper_action: reads the settings of a wiper action.
 *
 * Inputs
 *   action_id  the action to read.
 * Results
 *   action_name  the action's name.
 * Ownership
 *   The text: caller frees with free(). In a callback: callback owns, frees with free().
 * Statuses
 *   9 when the service knows no such action, or it is of another kind.
 * Log lines
 *   "received a callback for Get_wiper_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_wiper_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_wiper_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *action_name, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_wiper_action_send(
    void *handle, char const *target, unsigned int action_id, char **action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_wiper_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id,
    char **action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_wiper_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_wiper_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    char **action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_wiper_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_wiper_action_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_wiper_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_wiper_action_cancel_async(
    void *handle, korvo_api_action_engine_get_wiper_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_wiper_action: makes an action that runs the wiper.
 *
 * Inputs
 *   action_name  the action's name; Action_completed reports it.
 * Results
 *   action_id  identifier that the service gave the new action; its type is kWiperAction.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_wiper_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Create_wiper_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_wiper_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_wiper_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int action_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_wiper_action_send(
    void *handle, char const *target, char const *action_name, unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_wiper_action_send_with_timeout(
    void *handle, char const *target, int timeout, char const *action_name,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_wiper_action_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_wiper_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_wiper_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_wiper_action_send_async(
    void *handle, char const *target, char const *action_name,
    korvo_api_action_engine_create_wiper_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_wiper_action_cancel_async(
    void *handle, korvo_api_action_engine_create_wiper_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_wiper_action: replaces all settings of a wiper action; there is no way to change a single one.
 *
 * Inputs
 *   action_id    the action to change.
 *   action_name  the action's name; Action_completed reports it.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent. 9 when the service knows no such action, or it is of
 *   another kind.
 * Log lines
 *   "Initiator: action_engine_modify_wiper_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Modify_wiper_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_wiper_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_wiper_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_wiper_action_send(
    void *handle, char const *target, unsigned int action_id, char const *action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_wiper_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id,
    char const *action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_wiper_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id,
    char const *action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_wiper_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_wiper_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_wiper_action_send_async(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    korvo_api_action_engine_modify_wiper_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_wiper_action_cancel_async(
    void *handle, korvo_api_action_engine_modify_wiper_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_washer_action: reads the settings of a washer action.
 *
 * Inputs
 *   action_id  the action to read.
 * Results
 *   action_name  the action's name.
 * Ownership
 *   The text: caller frees with free(). In a callback: callback owns, frees with free().
 * Statuses
 *   9 when the service knows no such action, or it is of another kind.
 * Log lines
 *   "received a callback for Get_washer_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_washer_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_washer_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *action_name, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_washer_action_send(
    void *handle, char const *target, unsigned int action_id, char **action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_washer_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id,
    char **action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_washer_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_washer_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    char **action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_washer_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_washer_action_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_washer_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_washer_action_cancel_async(
    void *handle, korvo_api_action_engine_get_washer_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_washer_action: makes an action that runs the washer.
 *
 * Inputs
 *   action_name  the action's name; Action_completed reports it.
 * Results
 *   action_id  identifier that the service gave the new action; its type is kWasherAction.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_washer_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Create_washer_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_washer_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_washer_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int action_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_washer_action_send(
    void *handle, char const *target, char const *action_name, unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_washer_action_send_with_timeout(
    void *handle, char const *target, int timeout, char const *action_name,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_washer_action_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_washer_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_washer_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_washer_action_send_async(
    void *handle, char const *target, char const *action_name,
    korvo_api_action_engine_create_washer_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_washer_action_cancel_async(
    void *handle, korvo_api_action_engine_create_washer_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_washer_action: replaces all settings of a washer action; there is no way to change a single one.
 *
 * Inputs
 *   action_id    the action to change.
 *   action_name  the action's name; Action_completed reports it.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent. 9 when the service knows no such action, or it is of
 *   another kind.
 * Log lines
 *   "Initiator: action_engine_modify_washer_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Modify_washer_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_washer_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_washer_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_washer_action_send(
    void *handle, char const *target, unsigned int action_id, char const *action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_washer_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id,
    char const *action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_washer_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id,
    char const *action_name) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_washer_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_washer_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_washer_action_send_async(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    korvo_api_action_engine_modify_washer_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_washer_action_cancel_async(
    void *handle, korvo_api_action_engine_modify_washer_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_relay_action: reads the settings of a relay action.
 *
 * Inputs
 *   action_id  the action to read.
 * Results
 *   action_name             the action's name.
 *   relay_target            which relay is switched.
 *   config_mode             the switching mode, a value that the service defines.
 *   config_normally_closed  1 when the relay's contact is normally closed.
 *   config_repeat_cycles    how many cycles of on and off are run.
 *   config_on_time_ms       on time of a cycle, in milliseconds.
 *   config_off_time_ms      off time of a cycle, in milliseconds.
 * Ownership
 *   Texts: caller frees with free(). In a callback: callback owns, frees with free().
 * Statuses
 *   9 when the service knows no such action, or it is of another kind.
 * Log lines
 *   "received a callback for Get_relay_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_relay_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_relay_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *action_name, char *relay_target, unsigned int config_mode,
    unsigned char config_normally_closed, unsigned int config_repeat_cycles, unsigned int config_on_time_ms,
    unsigned int config_off_time_ms, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_relay_action_send(
    void *handle, char const *target, unsigned int action_id, char **action_name, char **relay_target,
    unsigned int *config_mode, unsigned char *config_normally_closed, unsigned int *config_repeat_cycles,
    unsigned int *config_on_time_ms, unsigned int *config_off_time_ms) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_relay_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char **action_name,
    char **relay_target, unsigned int *config_mode, unsigned char *config_normally_closed,
    unsigned int *config_repeat_cycles, unsigned int *config_on_time_ms,
    unsigned int *config_off_time_ms) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_relay_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_relay_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id, char **action_name,
    char **relay_target, unsigned int *config_mode, unsigned char *config_normally_closed,
    unsigned int *config_repeat_cycles, unsigned int *config_on_time_ms,
    unsigned int *config_off_time_ms) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_relay_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **action_name, char **relay_target,
    unsigned int *config_mode, unsigned char *config_normally_closed, unsigned int *config_repeat_cycles,
    unsigned int *config_on_time_ms, unsigned int *config_off_time_ms) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_relay_action_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_relay_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_relay_action_cancel_async(
    void *handle, korvo_api_action_engine_get_relay_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_relay_action: makes an action that switches a relay. No value is checked by the library; times of 0
 * are sent like any other.
 *
 * Inputs
 *   action_name             the action's name; Action_completed reports it.
 *   relay_target            which relay to switch.
 *   config_mode             the switching mode, a value that the service defines.
 *   config_normally_closed  non-zero when the relay's contact is normally closed.
 *   config_repeat_cycles    how many cycles of on and off to run.
 *   config_on_time_ms       on time of a cycle, in milliseconds.
 *   config_off_time_ms      off time of a cycle, in milliseconds.
 * Results
 *   action_id  identifier that the service gave the new action; its type is kRelayAction.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_relay_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Create_relay_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_relay_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_relay_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int action_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_relay_action_send(
    void *handle, char const *target, char const *action_name, char const *relay_target,
    unsigned int config_mode, unsigned char config_normally_closed, unsigned int config_repeat_cycles,
    unsigned int config_on_time_ms, unsigned int config_off_time_ms,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_relay_action_send_with_timeout(
    void *handle, char const *target, int timeout, char const *action_name, char const *relay_target,
    unsigned int config_mode, unsigned char config_normally_closed, unsigned int config_repeat_cycles,
    unsigned int config_on_time_ms, unsigned int config_off_time_ms,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_relay_action_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *action_name, char const *relay_target,
    unsigned int config_mode, unsigned char config_normally_closed, unsigned int config_repeat_cycles,
    unsigned int config_on_time_ms, unsigned int config_off_time_ms) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_relay_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_relay_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_relay_action_send_async(
    void *handle, char const *target, char const *action_name, char const *relay_target,
    unsigned int config_mode, unsigned char config_normally_closed, unsigned int config_repeat_cycles,
    unsigned int config_on_time_ms, unsigned int config_off_time_ms,
    korvo_api_action_engine_create_relay_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_relay_action_cancel_async(
    void *handle, korvo_api_action_engine_create_relay_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_relay_action: replaces all settings of a relay action; there is no way to change a single one.
 *
 * Inputs
 *   action_id               the action to change.
 *   action_name             the action's name; Action_completed reports it.
 *   relay_target            which relay to switch.
 *   config_mode             the switching mode, a value that the service defines.
 *   config_normally_closed  non-zero when the relay's contact is normally closed.
 *   config_repeat_cycles    how many cycles of on and off to run.
 *   config_on_time_ms       on time of a cycle, in milliseconds.
 *   config_off_time_ms      off time of a cycle, in milliseconds.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent. 9 when the service knows no such action, or it is of
 *   another kind.
 * Log lines
 *   "Initiator: action_engine_modify_relay_action_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Modify_relay_action but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_relay_actionCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_relay_action_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_relay_action_send(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    char const *relay_target, unsigned int config_mode, unsigned char config_normally_closed,
    unsigned int config_repeat_cycles, unsigned int config_on_time_ms,
    unsigned int config_off_time_ms) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_relay_action_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, char const *action_name,
    char const *relay_target, unsigned int config_mode, unsigned char config_normally_closed,
    unsigned int config_repeat_cycles, unsigned int config_on_time_ms,
    unsigned int config_off_time_ms) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_relay_action_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id, char const *action_name,
    char const *relay_target, unsigned int config_mode, unsigned char config_normally_closed,
    unsigned int config_repeat_cycles, unsigned int config_on_time_ms,
    unsigned int config_off_time_ms) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_relay_action_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_relay_action_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_relay_action_send_async(
    void *handle, char const *target, unsigned int action_id, char const *action_name,
    char const *relay_target, unsigned int config_mode, unsigned char config_normally_closed,
    unsigned int config_repeat_cycles, unsigned int config_on_time_ms, unsigned int config_off_time_ms,
    korvo_api_action_engine_modify_relay_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_relay_action_cancel_async(
    void *handle, korvo_api_action_engine_modify_relay_action_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Triggers: catalogue                                                                                      */
/* ======================================================================================================== */

/*
 * get_triggers: lists every trigger of the catalogue.
 *
 * An empty catalogue is no failure: both lists are empty then.
 *
 * Results
 *   trigger_id    list of the triggers' identifiers.
 *   trigger_type  list, parallel to trigger_id, of their types: values of TriggerType.
 * Ownership
 *   Lists: caller frees with korvo_core_free_uint_array(). In a callback: borrowed for the call.
 * Statuses
 *   1 for a list variable that was not NULL.
 * Log lines
 *   "action_engine_get_triggers_receive:failed converting UINT array (<status>)"
 *       warning: the synchronous reader stopped at a list and returned <status>.
 *   "action_engineGet_triggersCallback failed converting unsigned int array (<status>)"
 *       warning: the asynchronous reader stopped at a list; the callback was not called.
 *   "received a callback for Get_triggers but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_triggersCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_triggers_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int **trigger_id, unsigned int **trigger_type,
    void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_triggers_send(
    void *handle, char const *target, unsigned int ***trigger_id,
    unsigned int ***trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_triggers_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int ***trigger_id,
    unsigned int ***trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_triggers_non_blocking_send(
    void *handle, char const *target, char **request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_triggers_receive(
    void *handle, unsigned char block, char const *target, char *request_id, unsigned int ***trigger_id,
    unsigned int ***trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_triggers_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, unsigned int ***trigger_id,
    unsigned int ***trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_triggers_send_async(
    void *handle, char const *target, korvo_api_action_engine_get_triggers_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_triggers_cancel_async(
    void *handle, korvo_api_action_engine_get_triggers_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_trigger_counts: counts the triggers of the catalogue, in all and by type.
 *
 * Results
 *   total          number of all triggers.
 *   trigger_types  list of trigger types: values of TriggerType.
 *   counts         list, parallel to trigger_types, of the number of triggers of each.
 * Ownership
 *   Lists: caller frees with korvo_core_free_uint_array(). In a callback: borrowed for the call.
 * Statuses
 *   1 for a list variable that was not NULL.
 * Log lines
 *   "action_engine_get_trigger_counts_receive:failed converting UINT array (<status>)"
 *       warning: the synchronous reader stopped at a list and returned <status>.
 *   "action_engineGet_trigger_countsCallback failed converting unsigned int array (<status>)"
 *       warning: the asynchronous reader stopped at a list; the callback was not called.
 *   "received a callback for Get_trigger_counts but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_trigger_countsCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_trigger_counts_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int total, unsigned int **trigger_types,
    unsigned int **counts, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_counts_send(
    void *handle, char const *target, unsigned int *total, unsigned int ***trigger_types,
    unsigned int ***counts) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_counts_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int *total, unsigned int ***trigger_types,
    unsigned int ***counts) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_counts_non_blocking_send(
    void *handle, char const *target, char **request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_counts_receive(
    void *handle, unsigned char block, char const *target, char *request_id, unsigned int *total,
    unsigned int ***trigger_types, unsigned int ***counts) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_trigger_counts_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, unsigned int *total,
    unsigned int ***trigger_types, unsigned int ***counts) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_counts_send_async(
    void *handle, char const *target,
    korvo_api_action_engine_get_trigger_counts_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_counts_cancel_async(
    void *handle, korvo_api_action_engine_get_trigger_counts_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_trigger_type: tells what kind of trigger an identifier stands for.
 *
 * Inputs
 *   trigger_id  the trigger asked about.
 * Results
 *   trigger_type  its type: a value of TriggerType.
 * Statuses
 *   9 when the service knows no such trigger.
 * Log lines
 *   "received a callback for Get_trigger_type but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_trigger_typeCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_trigger_type_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int trigger_type, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_type_send(
    void *handle, char const *target, unsigned int trigger_id, unsigned int *trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_type_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int trigger_id,
    unsigned int *trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_type_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_type_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_trigger_type_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_type_send_async(
    void *handle, char const *target, unsigned int trigger_id,
    korvo_api_action_engine_get_trigger_type_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_type_cancel_async(
    void *handle, korvo_api_action_engine_get_trigger_type_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * delete_trigger: removes a trigger of any kind from the catalogue.
 *
 * On the development platform its associations go with it.
 *
 * Inputs
 *   trigger_id  the trigger to remove.
 * Statuses
 *   9 when the service knows no such trigger.
 * Log lines
 *   "received a callback for Delete_trigger but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineDelete_triggerCallback" (error)
 */
typedef void (*korvo_api_action_engine_delete_trigger_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_trigger_send(
    void *handle, char const *target, unsigned int trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_trigger_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_trigger_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_trigger_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_trigger_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_trigger_send_async(
    void *handle, char const *target, unsigned int trigger_id,
    korvo_api_action_engine_delete_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_trigger_cancel_async(
    void *handle, korvo_api_action_engine_delete_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Triggers: timer                                                                                          */
/* ======================================================================================================== */

/*
 * create_timer_trigger: makes a trigger that fires again and again at a fixed period.
 *
 * Inputs
 *   trigger_name   the trigger's name.
 *   timer_seconds  its period, in seconds; sent as it is, the library knows no least or greatest.
 * Results
 *   trigger_id  identifier that the service gave the new trigger; its type is kReoccurringTimerTrigger.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_timer_trigger_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Create_timer_trigger but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_timer_triggerCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_timer_trigger_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int trigger_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_timer_trigger_send(
    void *handle, char const *target, char const *trigger_name, unsigned int timer_seconds,
    unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_timer_trigger_send_with_timeout(
    void *handle, char const *target, int timeout, char const *trigger_name, unsigned int timer_seconds,
    unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_timer_trigger_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *trigger_name,
    unsigned int timer_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_timer_trigger_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_timer_trigger_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_timer_trigger_send_async(
    void *handle, char const *target, char const *trigger_name, unsigned int timer_seconds,
    korvo_api_action_engine_create_timer_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_timer_trigger_cancel_async(
    void *handle, korvo_api_action_engine_create_timer_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_timer_trigger: reads the settings of a timer trigger.
 *
 * Inputs
 *   trigger_id  the trigger to read.
 * Results
 *   trigger_name   the trigger's name.
 *   timer_seconds  its period, in seconds.
 * Ownership
 *   The text: caller frees with free(). In a callback: callback owns, frees with free().
 * Statuses
 *   9 when the service knows no such trigger, or it is of another kind.
 * Log lines
 *   "received a callback for Get_timer_trigger but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_timer_triggerCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_timer_trigger_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *trigger_name, unsigned int timer_seconds, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_timer_trigger_send(
    void *handle, char const *target, unsigned int trigger_id, char **trigger_name,
    unsigned int *timer_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_timer_trigger_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int trigger_id, char **trigger_name,
    unsigned int *timer_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_timer_trigger_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_timer_trigger_receive(
    void *handle, unsigned char block, char const *target, char *request_id, char **trigger_name,
    unsigned int *timer_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_timer_trigger_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **trigger_name,
    unsigned int *timer_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_timer_trigger_send_async(
    void *handle, char const *target, unsigned int trigger_id,
    korvo_api_action_engine_get_timer_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_timer_trigger_cancel_async(
    void *handle, korvo_api_action_engine_get_timer_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_timer_trigger: replaces all settings of a timer trigger; there is no way to change a single one.
 *
 * Inputs
 *   trigger_id     the trigger to change.
 *   trigger_name   the trigger's name.
 *   timer_seconds  its period, in seconds; sent as it is, the library knows no least or greatest.
 * Ownership
 *   Inputs: texts are borrowed for the call.
 * Statuses
 *   1 for a NULL text as an input; nothing is sent. 9 when the service knows no such trigger, or it is of
 *   another kind.
 * Log lines
 *   "Initiator: action_engine_modify_timer_trigger_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "received a callback for Modify_timer_trigger but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_timer_triggerCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_timer_trigger_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_timer_trigger_send(
    void *handle, char const *target, unsigned int trigger_id, char const *trigger_name,
    unsigned int timer_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_timer_trigger_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int trigger_id, char const *trigger_name,
    unsigned int timer_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_timer_trigger_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int trigger_id, char const *trigger_name,
    unsigned int timer_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_timer_trigger_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_timer_trigger_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_timer_trigger_send_async(
    void *handle, char const *target, unsigned int trigger_id, char const *trigger_name,
    unsigned int timer_seconds,
    korvo_api_action_engine_modify_timer_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_timer_trigger_cancel_async(
    void *handle, korvo_api_action_engine_modify_timer_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Triggers: ONVIF events                                                                                   */
/* ======================================================================================================== */

/*
 * create_onvif_trigger: makes a trigger that fires on the ONVIF events that its filters let through.
 *
 * The library interprets no filter, prefix or URI, and does not compare the lengths of the two lists.
 *
 * Inputs
 *   trigger_name          the trigger's name.
 *   topic_filter          the filter on an event's topic.
 *   topic_filter_dialect  the dialect that topic_filter is written in.
 *   content_filter        the filter on an event's content.
 *   namespace_keys        list of the XML namespace prefixes that the filters use.
 *   namespace_uris        list, parallel to namespace_keys, of their URIs.
 * Results
 *   trigger_id  identifier that the service gave the new trigger; its type is kOnvifEventTrigger.
 * Ownership
 *   Inputs: texts and lists are borrowed for the call.
 * Statuses
 *   1 for a NULL text or list as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_onvif_trigger_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "Initiator:action_engine_create_onvif_trigger_utility_send called with null input pointer <name>"
 *       warning: the list <name> is NULL. On purpose without the blank.
 *   "received a callback for Create_onvif_trigger but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_onvif_triggerCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_onvif_trigger_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int trigger_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_onvif_trigger_send(
    void *handle, char const *target, char const *trigger_name, char const *topic_filter,
    char const *topic_filter_dialect, char const *content_filter, char **namespace_keys,
    char **namespace_uris, unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_onvif_trigger_send_with_timeout(
    void *handle, char const *target, int timeout, char const *trigger_name, char const *topic_filter,
    char const *topic_filter_dialect, char const *content_filter, char **namespace_keys,
    char **namespace_uris, unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_onvif_trigger_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *trigger_name, char const *topic_filter,
    char const *topic_filter_dialect, char const *content_filter, char **namespace_keys,
    char **namespace_uris) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_onvif_trigger_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_onvif_trigger_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_onvif_trigger_send_async(
    void *handle, char const *target, char const *trigger_name, char const *topic_filter,
    char const *topic_filter_dialect, char const *content_filter, char **namespace_keys,
    char **namespace_uris, korvo_api_action_engine_create_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_onvif_trigger_cancel_async(
    void *handle, korvo_api_action_engine_create_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_onvif_trigger: reads the settings of an ONVIF trigger.
 *
 * Inputs
 *   trigger_id  the trigger to read.
 * Results
 *   trigger_name          the trigger's name.
 *   topic_filter          the filter on an event's topic.
 *   topic_filter_dialect  the dialect that topic_filter is written in.
 *   content_filter        the filter on an event's content.
 *   namespace_keys        list of the XML namespace prefixes that the filters use.
 *   namespace_uris        list, parallel to namespace_keys, of their URIs.
 * Ownership
 *   Texts: caller frees with free(). In a callback: callback owns, frees with free().
 *   Lists: caller frees with korvo_core_free_string_array(). In a callback: borrowed for the call.
 * Statuses
 *   1 for a list variable that was not NULL. 9 when the service knows no such trigger, or it is of another
 *   kind.
 * Log lines
 *   "action_engine_get_onvif_trigger_receive:failed converting STR array (<status>)"
 *       warning: the synchronous reader stopped at a list and returned <status>.
 *   "action_engineGet_onvif_triggerCallback failed converting char array (<status>)"
 *       warning: the asynchronous reader stopped at a list; the callback was not called.
 *   "received a callback for Get_onvif_trigger but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_onvif_triggerCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_onvif_trigger_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *trigger_name, char *topic_filter,
    char *topic_filter_dialect, char *content_filter, char **namespace_keys, char **namespace_uris,
    void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_onvif_trigger_send(
    void *handle, char const *target, unsigned int trigger_id, char **trigger_name, char **topic_filter,
    char **topic_filter_dialect, char **content_filter, char ***namespace_keys,
    char ***namespace_uris) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_onvif_trigger_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int trigger_id, char **trigger_name,
    char **topic_filter, char **topic_filter_dialect, char **content_filter, char ***namespace_keys,
    char ***namespace_uris) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_onvif_trigger_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_onvif_trigger_receive(
    void *handle, unsigned char block, char const *target, char *request_id, char **trigger_name,
    char **topic_filter, char **topic_filter_dialect, char **content_filter, char ***namespace_keys,
    char ***namespace_uris) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_onvif_trigger_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **trigger_name, char **topic_filter,
    char **topic_filter_dialect, char **content_filter, char ***namespace_keys,
    char ***namespace_uris) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_onvif_trigger_send_async(
    void *handle, char const *target, unsigned int trigger_id,
    korvo_api_action_engine_get_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_onvif_trigger_cancel_async(
    void *handle, korvo_api_action_engine_get_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_onvif_trigger: replaces all settings of an ONVIF trigger; there is no way to change a single one.
 *
 * Inputs
 *   trigger_id            the trigger to change.
 *   trigger_name          the trigger's name.
 *   topic_filter          the filter on an event's topic.
 *   topic_filter_dialect  the dialect that topic_filter is written in.
 *   content_filter        the filter on an event's content.
 *   namespace_keys        list of the XML namespace prefixes that the filters use.
 *   namespace_uris        list, parallel to namespace_keys, of their URIs.
 * Ownership
 *   Inputs: texts and lists are borrowed for the call.
 * Statuses
 *   1 for a NULL text or list as an input; nothing is sent. 9 when the service knows no such trigger, or it
 *   is of another kind.
 * Log lines
 *   "Initiator: action_engine_modify_onvif_trigger_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "Initiator:action_engine_modify_onvif_trigger_utility_send called with null input pointer <name>"
 *       warning: the list <name> is NULL. On purpose without the blank.
 *   "received a callback for Modify_onvif_trigger but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_onvif_triggerCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_onvif_trigger_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_onvif_trigger_send(
    void *handle, char const *target, unsigned int trigger_id, char const *trigger_name,
    char const *topic_filter, char const *topic_filter_dialect, char const *content_filter,
    char **namespace_keys, char **namespace_uris) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_onvif_trigger_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int trigger_id, char const *trigger_name,
    char const *topic_filter, char const *topic_filter_dialect, char const *content_filter,
    char **namespace_keys, char **namespace_uris) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_onvif_trigger_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int trigger_id, char const *trigger_name,
    char const *topic_filter, char const *topic_filter_dialect, char const *content_filter,
    char **namespace_keys, char **namespace_uris) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_onvif_trigger_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_onvif_trigger_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_onvif_trigger_send_async(
    void *handle, char const *target, unsigned int trigger_id, char const *trigger_name,
    char const *topic_filter, char const *topic_filter_dialect, char const *content_filter,
    char **namespace_keys, char **namespace_uris,
    korvo_api_action_engine_modify_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_onvif_trigger_cancel_async(
    void *handle, korvo_api_action_engine_modify_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_stable_onvif_trigger: makes a trigger that fires on ONVIF events which have been stable for a while.
 * Unlike an ONVIF trigger it has no topic filter dialect.
 *
 * The library interprets no filter, prefix or URI, and does not compare the lengths of the two lists.
 *
 * Inputs
 *   trigger_name       the trigger's name.
 *   topic_filter       the filter on an event's topic.
 *   content_filter     the filter on an event's content.
 *   namespace_keys     list of the XML namespace prefixes that the filters use.
 *   namespace_uris     list, parallel to namespace_keys, of their URIs.
 *   stability_seconds  the stability time, in seconds.
 * Results
 *   trigger_id  identifier that the service gave the new trigger; its type is kStableOnvifEventTrigger.
 * Ownership
 *   Inputs: texts and lists are borrowed for the call.
 * Statuses
 *   1 for a NULL text or list as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_create_stable_onvif_trigger_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "Initiator:action_engine_create_stable_onvif_trigger_utility_send called with null input pointer <name>"
 *       warning: the list <name> is NULL. On purpose without the blank.
 *   "received a callback for Create_stable_onvif_trigger but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_stable_onvif_triggerCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_stable_onvif_trigger_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int trigger_id, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_stable_onvif_trigger_send(
    void *handle, char const *target, char const *trigger_name, char const *topic_filter,
    char const *content_filter, char **namespace_keys, char **namespace_uris, unsigned int stability_seconds,
    unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_stable_onvif_trigger_send_with_timeout(
    void *handle, char const *target, int timeout, char const *trigger_name, char const *topic_filter,
    char const *content_filter, char **namespace_keys, char **namespace_uris, unsigned int stability_seconds,
    unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_stable_onvif_trigger_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *trigger_name, char const *topic_filter,
    char const *content_filter, char **namespace_keys, char **namespace_uris,
    unsigned int stability_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_stable_onvif_trigger_receive(
    void *handle, unsigned char block, char const *target, char *request_id,
    unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_stable_onvif_trigger_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id,
    unsigned int *trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_stable_onvif_trigger_send_async(
    void *handle, char const *target, char const *trigger_name, char const *topic_filter,
    char const *content_filter, char **namespace_keys, char **namespace_uris, unsigned int stability_seconds,
    korvo_api_action_engine_create_stable_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_stable_onvif_trigger_cancel_async(
    void *handle, korvo_api_action_engine_create_stable_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_stable_onvif_trigger: reads the settings of a stable ONVIF trigger.
 *
 * Inputs
 *   trigger_id  the trigger to read.
 * Results
 *   trigger_name       the trigger's name.
 *   topic_filter       the filter on an event's topic.
 *   content_filter     the filter on an event's content.
 *   namespace_keys     list of the XML namespace prefixes that the filters use.
 *   namespace_uris     list, parallel to namespace_keys, of their URIs.
 *   stability_seconds  the stability time, in seconds.
 * Ownership
 *   Texts: caller frees with free(). In a callback: callback owns, frees with free().
 *   Lists: caller frees with korvo_core_free_string_array(). In a callback: borrowed for the call.
 * Statuses
 *   1 for a list variable that was not NULL. 9 when the service knows no such trigger, or it is of another
 *   kind.
 * Log lines
 *   "action_engine_get_stable_onvif_trigger_receive:failed converting STR array (<status>)"
 *       warning: the synchronous reader stopped at a list and returned <status>.
 *   "action_engineGet_stable_onvif_triggerCallback failed converting char array (<status>)"
 *       warning: the asynchronous reader stopped at a list; the callback was not called.
 *   "received a callback for Get_stable_onvif_trigger but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_stable_onvif_triggerCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_stable_onvif_trigger_method_callback_func_ptr)(
    char *target, korvo_core_status status, char *trigger_name, char *topic_filter, char *content_filter,
    char **namespace_keys, char **namespace_uris, unsigned int stability_seconds, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_stable_onvif_trigger_send(
    void *handle, char const *target, unsigned int trigger_id, char **trigger_name, char **topic_filter,
    char **content_filter, char ***namespace_keys, char ***namespace_uris,
    unsigned int *stability_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_stable_onvif_trigger_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int trigger_id, char **trigger_name,
    char **topic_filter, char **content_filter, char ***namespace_keys, char ***namespace_uris,
    unsigned int *stability_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_stable_onvif_trigger_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_stable_onvif_trigger_receive(
    void *handle, unsigned char block, char const *target, char *request_id, char **trigger_name,
    char **topic_filter, char **content_filter, char ***namespace_keys, char ***namespace_uris,
    unsigned int *stability_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_stable_onvif_trigger_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, char **trigger_name, char **topic_filter,
    char **content_filter, char ***namespace_keys, char ***namespace_uris,
    unsigned int *stability_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_stable_onvif_trigger_send_async(
    void *handle, char const *target, unsigned int trigger_id,
    korvo_api_action_engine_get_stable_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_stable_onvif_trigger_cancel_async(
    void *handle, korvo_api_action_engine_get_stable_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * modify_stable_onvif_trigger: replaces all settings of a stable ONVIF trigger; there is no way to change a
 * single one.
 *
 * Inputs
 *   trigger_id         the trigger to change.
 *   trigger_name       the trigger's name.
 *   topic_filter       the filter on an event's topic.
 *   content_filter     the filter on an event's content.
 *   namespace_keys     list of the XML namespace prefixes that the filters use.
 *   namespace_uris     list, parallel to namespace_keys, of their URIs.
 *   stability_seconds  the stability time, in seconds.
 * Ownership
 *   Inputs: texts and lists are borrowed for the call.
 * Statuses
 *   1 for a NULL text or list as an input; nothing is sent. 9 when the service knows no such trigger, or it
 *   is of another kind.
 * Log lines
 *   "Initiator: action_engine_modify_stable_onvif_trigger_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "Initiator:action_engine_modify_stable_onvif_trigger_utility_send called with null input pointer <name>"
 *       warning: the list <name> is NULL. On purpose without the blank.
 *   "received a callback for Modify_stable_onvif_trigger but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineModify_stable_onvif_triggerCallback" (error)
 */
typedef void (*korvo_api_action_engine_modify_stable_onvif_trigger_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_stable_onvif_trigger_send(
    void *handle, char const *target, unsigned int trigger_id, char const *trigger_name,
    char const *topic_filter, char const *content_filter, char **namespace_keys, char **namespace_uris,
    unsigned int stability_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_stable_onvif_trigger_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int trigger_id, char const *trigger_name,
    char const *topic_filter, char const *content_filter, char **namespace_keys, char **namespace_uris,
    unsigned int stability_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_stable_onvif_trigger_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int trigger_id, char const *trigger_name,
    char const *topic_filter, char const *content_filter, char **namespace_keys, char **namespace_uris,
    unsigned int stability_seconds) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_modify_stable_onvif_trigger_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_stable_onvif_trigger_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_stable_onvif_trigger_send_async(
    void *handle, char const *target, unsigned int trigger_id, char const *trigger_name,
    char const *topic_filter, char const *content_filter, char **namespace_keys, char **namespace_uris,
    unsigned int stability_seconds,
    korvo_api_action_engine_modify_stable_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_modify_stable_onvif_trigger_cancel_async(
    void *handle, korvo_api_action_engine_modify_stable_onvif_trigger_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Associations                                                                                             */
/* ======================================================================================================== */

/*
 * get_trigger_associations: lists the actions that a trigger runs.
 *
 * Both lists are empty when nothing is bound to it.
 *
 * Inputs
 *   trigger_id  the trigger asked about.
 * Results
 *   action_id    list of the actions bound to it.
 *   action_type  list, parallel to action_id, of their types: values of ActionType.
 * Ownership
 *   Lists: caller frees with korvo_core_free_uint_array(). In a callback: borrowed for the call.
 * Statuses
 *   1 for a list variable that was not NULL. 9 when the service knows no such trigger.
 * Log lines
 *   "action_engine_get_trigger_associations_receive:failed converting UINT array (<status>)"
 *       warning: the synchronous reader stopped at a list and returned <status>.
 *   "action_engineGet_trigger_associationsCallback failed converting unsigned int array (<status>)"
 *       warning: the asynchronous reader stopped at a list; the callback was not called.
 *   "received a callback for Get_trigger_associations but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_trigger_associationsCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_trigger_associations_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int **action_id, unsigned int **action_type,
    void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_associations_send(
    void *handle, char const *target, unsigned int trigger_id, unsigned int ***action_id,
    unsigned int ***action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_trigger_associations_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int trigger_id, unsigned int ***action_id,
    unsigned int ***action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_trigger_associations_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int trigger_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_associations_receive(
    void *handle, unsigned char block, char const *target, char *request_id, unsigned int ***action_id,
    unsigned int ***action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_trigger_associations_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, unsigned int ***action_id,
    unsigned int ***action_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_trigger_associations_send_async(
    void *handle, char const *target, unsigned int trigger_id,
    korvo_api_action_engine_get_trigger_associations_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_trigger_associations_cancel_async(
    void *handle, korvo_api_action_engine_get_trigger_associations_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * get_action_associations: lists the triggers that run an action.
 *
 * Both lists are empty when nothing is bound to it.
 *
 * Inputs
 *   action_id  the action asked about.
 * Results
 *   trigger_id    list of the triggers bound to it.
 *   trigger_type  list, parallel to trigger_id, of their types: values of TriggerType.
 * Ownership
 *   Lists: caller frees with korvo_core_free_uint_array(). In a callback: borrowed for the call.
 * Statuses
 *   1 for a list variable that was not NULL. 9 when the service knows no such action.
 * Log lines
 *   "action_engine_get_action_associations_receive:failed converting UINT array (<status>)"
 *       warning: the synchronous reader stopped at a list and returned <status>.
 *   "action_engineGet_action_associationsCallback failed converting unsigned int array (<status>)"
 *       warning: the asynchronous reader stopped at a list; the callback was not called.
 *   "received a callback for Get_action_associations but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineGet_action_associationsCallback" (error)
 */
typedef void (*korvo_api_action_engine_get_action_associations_method_callback_func_ptr)(
    char *target, korvo_core_status status, unsigned int **trigger_id, unsigned int **trigger_type,
    void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_associations_send(
    void *handle, char const *target, unsigned int action_id, unsigned int ***trigger_id,
    unsigned int ***trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_action_associations_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int action_id, unsigned int ***trigger_id,
    unsigned int ***trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_action_associations_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_associations_receive(
    void *handle, unsigned char block, char const *target, char *request_id, unsigned int ***trigger_id,
    unsigned int ***trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_get_action_associations_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id, unsigned int ***trigger_id,
    unsigned int ***trigger_type) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_associations_send_async(
    void *handle, char const *target, unsigned int action_id,
    korvo_api_action_engine_get_action_associations_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_get_action_associations_cancel_async(
    void *handle, korvo_api_action_engine_get_action_associations_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * create_association: binds an action to a trigger: when the trigger fires, the service runs the action.
 *
 * An association is named by the pair (trigger, action); it has no identifier of its own.
 *
 * Inputs
 *   trigger_id  the trigger.
 *   action_id   the action that it is to run.
 * Statuses
 *   9 when the service knows no such trigger or action.
 * Log lines
 *   "received a callback for Create_association but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineCreate_associationCallback" (error)
 */
typedef void (*korvo_api_action_engine_create_association_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_association_send(
    void *handle, char const *target, unsigned int trigger_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_association_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int trigger_id,
    unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_association_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int trigger_id,
    unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_association_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_create_association_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_association_send_async(
    void *handle, char const *target, unsigned int trigger_id, unsigned int action_id,
    korvo_api_action_engine_create_association_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_create_association_cancel_async(
    void *handle, korvo_api_action_engine_create_association_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * delete_association: takes the bond between a trigger and an action away; both stay in the catalogue.
 *
 * Inputs
 *   trigger_id  the trigger.
 *   action_id   the action that it is no longer to run.
 * Statuses
 *   9 when the service knows no such association.
 * Log lines
 *   "received a callback for Delete_association but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineDelete_associationCallback" (error)
 */
typedef void (*korvo_api_action_engine_delete_association_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_association_send(
    void *handle, char const *target, unsigned int trigger_id, unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_association_send_with_timeout(
    void *handle, char const *target, int timeout, unsigned int trigger_id,
    unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_association_non_blocking_send(
    void *handle, char const *target, char **request_id, unsigned int trigger_id,
    unsigned int action_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_association_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status
korvo_api_action_engine_delete_association_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_association_send_async(
    void *handle, char const *target, unsigned int trigger_id, unsigned int action_id,
    korvo_api_action_engine_delete_association_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_delete_association_cancel_async(
    void *handle, korvo_api_action_engine_delete_association_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* Injecting an ONVIF event                                                                                 */
/* ======================================================================================================== */

/*
 * onvif_event: hands the service one ONVIF event, as if it had happened.
 *
 * What the service makes of it is its own matter.
 *
 * Inputs
 *   topic           the event's topic; may be empty.
 *   message         the event's message, sent as one text that the library does not read.
 *   namespace_keys  list of the XML namespace prefixes that the two use.
 *   namespace_uris  list, parallel to namespace_keys, of their URIs.
 * Ownership
 *   Inputs: texts and lists are borrowed for the call.
 * Statuses
 *   1 for a NULL text or list as an input; nothing is sent.
 * Log lines
 *   "Initiator: action_engine_onvif_event_utility_send called with null input pointer <name>"
 *       warning: <name> is NULL.
 *   "Initiator:action_engine_onvif_event_utility_send called with null input pointer <name>"
 *       warning: the list <name> is NULL. On purpose without the blank.
 *   "received a callback for Onvif_event but no initiator callback was registered" (warning)
 *   "Threw an exception in function action_engineOnvif_eventCallback" (error)
 */
typedef void (*korvo_api_action_engine_onvif_event_method_callback_func_ptr)(
    char *target, korvo_core_status status, void *context);

KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_onvif_event_send(
    void *handle, char const *target, char const *topic, char const *message, char **namespace_keys,
    char **namespace_uris) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_onvif_event_send_with_timeout(
    void *handle, char const *target, int timeout, char const *topic, char const *message,
    char **namespace_keys, char **namespace_uris) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_onvif_event_non_blocking_send(
    void *handle, char const *target, char **request_id, char const *topic, char const *message,
    char **namespace_keys, char **namespace_uris) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_onvif_event_receive(
    void *handle, unsigned char block, char const *target, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_onvif_event_receive_with_timeout(
    void *handle, char const *target, int timeout, char *request_id) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_onvif_event_send_async(
    void *handle, char const *target, char const *topic, char const *message, char **namespace_keys,
    char **namespace_uris, korvo_api_action_engine_onvif_event_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;
KORVO_API_ACTION_ENGINE_EXPORT korvo_core_status korvo_api_action_engine_onvif_event_cancel_async(
    void *handle, korvo_api_action_engine_onvif_event_method_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/* ======================================================================================================== */
/* The event Action_completed                                                                               */
/* ======================================================================================================== */

/*
 * Handler of the event Action_completed, which the service publishes each time it has run an action. It
 * reaches handles that were made with subscribe_events non-zero.
 *
 *   action_id    the action that was run.
 *   action_name  its name; borrowed for the call, copied by a handler that keeps it.
 *   success      1 when the action succeeded, 0 when it failed.
 *   source       the text that the messaging layer names the event's sender with; borrowed for the call.
 *   context      what was given when the handler was registered.
 *
 * Handlers run on a thread of the messaging layer, one after the other in the order of their registration,
 * while the handlers' mutex is held: a handler neither registers nor unregisters handlers on its handle, and
 * does not end it.
 *
 * Log lines (error)
 *   "Threw an exception in function action_engineAction_completed"  the event lacked a member or had one of
 *       another type, and no handler was called; or a handler threw, and those behind it were not called.
 */
typedef void (*korvo_api_action_engine_action_completed_event_callback_func_ptr)(
    unsigned int action_id, char const *action_name, unsigned char success, char const *source,
    void *context);

/*
 * Adds a handler behind those that are registered already. Nothing keeps it from being there twice: it is
 * then called twice for each event. A NULL callback is kept and skipped. The context is handed to the handler
 * untouched and stays valid until the handler is unregistered or the handle has ended.
 *
 * Waits for a delivery that is just under way on another thread. Fails inside a handler of the same handle,
 * and when memory runs out: it then changes nothing. The first one on a handle that subscribes to events needs no memory.
 *
 * Log lines (error)
 *   "Threw an exception in function korvo_api_action_engine_action_completed_register_event_handler"
 *       it failed. The two functions below log the same with their own names.
 */
KORVO_API_ACTION_ENGINE_EXPORT void korvo_api_action_engine_action_completed_register_event_handler(
    void *handle, korvo_api_action_engine_action_completed_event_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * Removes every registration of a handler, whatever its context; the others keep their order. After the
 * return the handler is not running and will not be called. Nothing happens when it is not registered. Waits
 * and fails as above.
 */
KORVO_API_ACTION_ENGINE_EXPORT void korvo_api_action_engine_action_completed_unregister_event_handler(
    void *handle,
    korvo_api_action_engine_action_completed_event_callback_func_ptr callback) KORVO_API_NOEXCEPT;

/* Removes only those registrations of a handler that were made with this very context; otherwise as above. */
KORVO_API_ACTION_ENGINE_EXPORT void
korvo_api_action_engine_action_completed_unregister_event_handler_with_context(
    void *handle, korvo_api_action_engine_action_completed_event_callback_func_ptr callback,
    void *context) KORVO_API_NOEXCEPT;

/*
 * Registers the default handler, with the context NULL. It prints each event to standard output as one line:
 *
 *     action_engine:action_completed:<source> fired with params: <action_id>, "<action_name>", <success>
 *
 * with true or false for <success>. Registered twice, it prints each event twice. Waits and fails like
 * register_event_handler, and logs that function's name.
 */
KORVO_API_ACTION_ENGINE_EXPORT void korvo_api_action_engine_register_default_callbacks(void *handle)
    KORVO_API_NOEXCEPT;

/*
 * Removes every registration of the default handler. Waits and fails like unregister_event_handler, and logs
 * that function's name.
 */
KORVO_API_ACTION_ENGINE_EXPORT void korvo_api_action_engine_unregister_default_callbacks(void *handle)
    KORVO_API_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#undef KORVO_API_ENUM_BASE

#endif
