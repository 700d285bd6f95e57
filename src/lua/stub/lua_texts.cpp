// SPDX-License-Identifier: Apache-2.0
#include "lua/stub/lua_texts.h"

#include <utility>

namespace korvo::lua::stub {
namespace {

/// The functions whose names begin and end so; the first entry that fits is taken.
struct Entry {
    char const *beginning;
    char const *ending;
    LuaText text;
};

std::string const status_1_key = "Status 1: the key is nil or no UTF-8.";
std::string const status_7_settings = "Status 7: the settings file cannot be read or written (logged).";
std::string const status_7_configuration =
    "Status 7: the configuration file is damaged or cannot be read (logged).";
std::string const only_host =
    "a typed pointer that a host program has made, or nil: no Lua function can be one.";
std::string const result_place =
    "a typed pointer of a host program to the place for the result; nil is refused with status 1.";
std::string const messaging = "a messaging handle of the host program.";

std::vector<Entry> const entries = {
    {"korvo_core_status_to_string", "", {{"A short text for a status; there is one for every number."}, {}}},
    {"korvo_core_init",
     "",
     {{"Tells the core that the process begins to use it. Returns 0. Nothing depends on it."}, {}}},
    {"korvo_core_deinit",
     "",
     {{"Tells the core that the process has ended its use of it. Returns 0. Closes no handle."}, {}}},

    {"korvo_core_ipc_initiator_init",
     "",
     {{"Opens a messaging handle for a client. Only for scripts of a host program that supplies the place "
       "for the handle;",
       "korvo_api_action_engine_initiator_init opens messaging of its own and needs none.",
       "Status 4: the runtime folder cannot be used (logged)."},
      {{"logging", "a logging handle of the host program; nil is the default logger."},
       {"name", "name of the process in log lines; nil is an empty one."},
       {"messaging",
        "a typed pointer of a host program to the place for the handle; nil is refused with status 1."}}}},
    {"korvo_core_ipc_target_init",
     "",
     {{"Opens the service's side of the messaging and listens. Only for scripts of a host program that "
       "supplies the place for",
       "the handle. Status 4: another process listens under service and target, or the runtime folder cannot "
       "be used (logged)."},
      {{"logging", "a logging handle of the host program; nil is the default logger."},
       {"service", "name of the service."},
       {"target", "tells targets of a service apart; nil is the default target."},
       {"name", "name of the process in log lines; nil is an empty one."},
       {"messaging",
        "a typed pointer of a host program to the place for the handle; nil is refused with status 1."}}}},
    {"korvo_core_ipc_deinit",
     "",
     {{"Closes a messaging handle of a host program. Waits for a callback that is just running. Calls of "
       "other threads that",
       "wait on the handle return with status 4."},
      {{"messaging", messaging}}}},
    {"korvo_core_ipc_initiator_command_send",
     "",
     {{"Sends a command on a messaging handle.",
       "Status 10: nobody listens there. 4: the connection was lost, the service takes nothing, or the "
       "command is too large."},
      {{"messaging", messaging},
       {"service", "name of the service."},
       {"target", "which of the service's targets is meant; nil is the default one."},
       {"request_id", "a text of the script's choice, which comes back with the response."},
       {"command", "by convention a JSON object with a member \"command\"; less than 1 MiB."}}}},
    {"korvo_core_ipc_initiator_response_receive_callback",
     "",
     {{"Registers a host program's callback for the responses of a messaging handle; nil as the callback "
       "removes it.",
       "Status 4: no thread can be started (logged)."},
      {{"messaging", messaging}, {"callback", only_host}, {"context", "what the callback is given."}}}},
    {"korvo_core_ipc_initiator_response_receive",
     "",
     {{"Waits for the next response to a command that korvo_core_ipc_initiator_command_send has sent on the "
       "handle. The texts",
       "are nil unless the status is 0. Status 4: none came in time, or the connection was lost."},
      {{"messaging", messaging},
       {"timeout", "in milliseconds; 0 only looks, a negative one waits without limit."}}}},
    {"korvo_core_ipc_initiator_event_subscribe",
     "",
     {{"Asks for the events of all targets of a service, present and future. They go to the callback of a "
       "host program.",
       "Status 4: the runtime folder cannot be watched (logged)."},
      {{"messaging", messaging}, {"service", "name of the service."}}}},
    {"korvo_core_ipc_initiator_event_unsubscribe",
     "",
     {{"Ends a subscription to the events of a service. Status 1: there is none."},
      {{"messaging", messaging}, {"service", "name of the service."}}}},
    {"korvo_core_ipc_initiator_event_receive_callback",
     "",
     {{"Registers a host program's callback for the events of a messaging handle; nil as the callback "
       "removes it.",
       "Status 4: no thread can be started (logged)."},
      {{"messaging", messaging}, {"callback", only_host}, {"context", "what the callback is given."}}}},
    {"korvo_core_ipc_target_command_receive_callback",
     "",
     {{"Registers a host program's callback for the commands that a service's handle gets; nil as the "
       "callback removes it.",
       "Status 4: no thread can be started (logged)."},
      {{"messaging", messaging}, {"callback", only_host}, {"context", "what the callback is given."}}}},
    {"korvo_core_ipc_target_command_receive",
     "",
     {{"Waits for the next command to a service's handle. The texts are nil unless the status is 0; `source` "
       "is the address of",
       "the client, for the response. Status 4: none came in time. 3: the handle has a callback for "
       "commands."},
      {{"messaging", messaging},
       {"timeout", "in milliseconds; 0 only looks, and more than 2147483647 waits without limit."}}}},
    {"korvo_core_ipc_target_response_send",
     "",
     {{"Sends the response to a command; never waits. Status 10: the client is gone. 4: the response is too "
       "large, or the",
       "client leaves too much unread and was disconnected."},
      {{"messaging", messaging},
       {"source", "what came with the command."},
       {"request_id", "what came with the command."},
       {"response",
        "by convention a JSON object with the command's name in \"command\" and the outcome in "
        "\"status\"."}}}},
    {"korvo_core_ipc_target_event_send",
     "",
     {{"Publishes an event to every subscriber; never waits. Status 4: the event is too large."},
      {{"messaging", messaging},
       {"event", "by convention a JSON object with the event's name in \"event\"."}}}},

    {"korvo_core_logging_init",
     "",
     {{"Opens a logger. Only for scripts of a host program that supplies the place for the handle; without "
       "one, nil as a",
       "logging handle is the default logger. Status 2: memory ran out."},
      {{"name", "of the part of the process that logs; nil is an empty one."},
       {"logging",
        "a typed pointer of a host program to the place for the handle; nil is refused with status 1."}}}},
    {"korvo_core_logging_deinit",
     "",
     {{"Closes a logger. Records for a closed one go to the default logger."},
      {{"logging", "a logging handle of the host program."}}}},
    {"korvo_core_logging_is_priority_active",
     "",
     {{"Tells whether records of a priority are written: `active` is 1, else 0."},
      {{"logging", "a logging handle of the host program; nil is the default logger."}}}},
    {"korvo_core_logging_log",
     "",
     {{"Writes a record, at most 16 KiB of it. The text is written as it is, also with per cent signs. Audit "
       "records are",
       "always written; a record without a priority, or with an unknown one, counts as debug. Status 1: the "
       "text is nil."},
      {{"logging", "a logging handle of the host program; nil is the default logger."}}}},

    {"korvo_core_settings_init",
     "",
     {{"Begins the use of the settings: makes the folder and the file where they are missing, and reads the "
       "file. The other",
       "functions for settings work without it; who calls it learns at once what is wrong. The file stays "
       "the same one until",
       "korvo_core_settings_deinit was called as often.", status_7_settings},
      {}}},
    {"korvo_core_settings_deinit",
     "",
     {{"Ends the use of the settings that korvo_core_settings_init has begun. Settings can still be used. "
       "Returns 0."},
      {}}},
    {"korvo_core_configuration_init",
     "",
     {{"Begins the use of the configuration, and reads its file. A file that is missing is a configuration "
       "without keys. The",
       "other functions for the configuration work without it.", status_7_configuration},
      {}}},
    {"korvo_core_configuration_deinit",
     "",
     {{"Ends the use of the configuration that korvo_core_configuration_init has begun. Returns 0."}, {}}},

    {"korvo_core_settings_get_default_arrayof",
     "_value",
     {{"Gives the default value of a key, whether it has a value or not: a table, and how many elements it "
       "has.",
       "Status 5: the key has another type. 6: there is no such key, or it has no default value.",
       status_1_key, status_7_settings},
      {}}},
    {"korvo_core_settings_get_default_",
     "_value",
     {{"Gives the default value of a key, whether it has a value or not.",
       "Status 5: the key has another type. 6: there is no such key, or it has no default value.",
       status_1_key, status_7_settings},
      {}}},
    {"korvo_core_settings_get_arrayof",
     "_value",
     {{"Gives the value of a key; where it has none, its default value: a table, and how many elements it "
       "has.",
       "Status 5: the key has another type. 6: there is no such key.", status_1_key, status_7_settings},
      {}}},
    {"korvo_core_settings_get_",
     "_value",
     {{"Gives the value of a key; where it has none, its default value.",
       "Status 5: the key has another type. 6: there is no such key.", status_1_key, status_7_settings},
      {}}},
    {"korvo_core_settings_set_default_",
     "_value",
     {{"Sets the default value of a key; its value stays, if it has one. The key is made when there is none.",
       "Status 1: the key or the value cannot be kept (logged). 5: the key has another type; delete it first "
       "to change that.",
       status_7_settings},
      {}}},
    {"korvo_core_settings_set_",
     "_value",
     {{"Sets the value of a key; its default value stays. The key is made when there is none.",
       "Status 1: the key or the value cannot be kept (logged). 5: the key has another type; delete it first "
       "to change that.",
       status_7_settings},
      {}}},
    {"korvo_core_settings_get_all_keys",
     "",
     {{"Gives all keys of the settings, those with only a default value included, sorted by their bytes; nil "
       "when the file",
       "cannot be read (logged)."},
      {}}},
    {"korvo_core_settings_get_keys_starting_with",
     "",
     {{"Gives the keys of the settings that begin with `prefix`, those with only a default value included, "
       "sorted by their",
       "bytes; nil when `prefix` is nil or the file cannot be read (logged)."},
      {}}},
    {"korvo_core_settings_get_type",
     "",
     {{"Gives the type of a key. Status 6: there is no such key.", status_1_key, status_7_settings}, {}}},
    {"korvo_core_settings_does_key_exist",
     "",
     {{"True where there is such a key, with a value or a default value; false otherwise, and on every "
       "failure."},
      {}}},
    {"korvo_core_settings_delete_key",
     "",
     {{"Deletes a key with its value, its default value and its type. Status 6: there is no such key.",
       status_1_key, status_7_settings},
      {}}},
    {"korvo_core_settings_copy_",
     "_key",
     {{"Copies a key: `to` gets the value and the default value that `from` has, and nothing stays of what "
       "it had before. A",
       "key that is copied to itself is unchanged.",
       "Status 5: `from`, or a key `to` that is already there, has another type than the function. 6: there "
       "is no key `from`.",
       status_1_key, status_7_settings},
      {}}},
    {"korvo_core_settings_get_and_set_version",
     "",
     {{"Gives the version that is stored and stores another one, as one change: of several processes only "
       "one gets the old",
       "number. The old version goes to the host program and is no result.", status_7_settings},
      {{"old_version", result_place}}}},
    {"korvo_core_settings_get_versions",
     "",
     {{"Gives the version that is stored, and the one that it has replaced; 0 when there was none. Both go "
       "to the host program",
       "and are no results.", status_7_settings},
      {{"version", result_place}, {"previous_version", result_place}}}},
    {"korvo_core_settings_is_new_file",
     "",
     {{"Tells whether this process has begun with no settings file, or with a damaged one that was put "
       "aside. The answer goes",
       "to the host program and is no result.", status_7_settings},
      {{"is_new", result_place}}}},
    {"korvo_core_debug_settings_dump",
     "",
     {{"Writes all settings to the default logger with priority notice, one record a key, values included."},
      {}}},
    {"korvo_core_debug_get_setting_path",
     "",
     {{"Gives the path of the settings file, which need not exist; nil when no folder is known (logged)."},
      {}}},

    {"korvo_core_configuration_get_arrayof",
     "_value",
     {{"Gives the value of a key of the configuration: a table, and how many elements it has.",
       "Status 5: the key has another type. 6: there is no such key.", status_1_key, status_7_configuration},
      {}}},
    {"korvo_core_configuration_get_",
     "_value",
     {{"Gives the value of a key of the configuration.",
       "Status 5: the key has another type. 6: there is no such key.", status_1_key, status_7_configuration},
      {}}},
    {"korvo_core_configuration_get_all_keys",
     "",
     {{"Gives all keys of the configuration, sorted by their bytes; nil when the file cannot be read "
       "(logged)."},
      {}}},
    {"korvo_core_configuration_get_type",
     "",
     {{"Gives the type of a key of the configuration. Status 6: there is no such key.", status_1_key,
       status_7_configuration},
      {}}},
    {"korvo_core_configuration_does_key_exist",
     "",
     {{"True where the configuration has such a key; false otherwise, and on every failure."}, {}}},

    {"korvo_core_alloc_string_array",
     "",
     {{"Gives an empty table, whatever the count is. Scripts do not need it: tables become lists by "
       "themselves."},
      {}}},
    {"korvo_core_alloc_",
     "_array",
     {{"Makes a C list of `count` elements, which a script can neither fill nor read nor free: it is a leak. "
       "Scripts do not",
       "need it: tables become lists by themselves."},
      {}}},
    {"korvo_core_free_string_array",
     "",
     {{"Frees a C list of texts that a host program has made. Scripts have none: tables belong to Lua."},
      {{"list", "a typed pointer that a host program has made; nil does nothing."}}}},
    {"korvo_core_free_",
     "_array",
     {{"Never call it: it makes a C list of the table and frees that twice, which ruins the memory of the "
       "process. Nothing that",
       "a script has needs it: tables belong to Lua."},
      {}}},

    {"korvo_api_action_engine_initiator_init",
     "",
     {{"Makes a client handle, which every operation is called with. Keep one for the whole program.",
       "Status 2: it failed, for whatever reason (logged)."},
      {{"messaging_handle",
        "a messaging handle of the host program to share, which stays the host's; nil: the handle opens "
        "messaging of its own and closes it in korvo_api_action_engine_initiator_deinit."},
       {"logging_handle",
        "a logging handle of the host program, which gets the handle's log lines; nil is the default "
        "logger."},
       {"subscribe_events", "true subscribes to the service's events, for the handlers of a host program."},
       {"initiator_name", "name of this client for the messaging."},
       {"handle",
        "the new handle, which ends with korvo_api_action_engine_initiator_deinit; nil unless the status is "
        "0."}}}},
    {"korvo_api_action_engine_initiator_deinit",
     "",
     {{"Ends a client handle and frees it; nil does nothing. Messaging of its own is closed with it. A "
       "messaging handle that it",
       "shares with a host program is closed before, with korvo_core_ipc_deinit. Returns 0. A handle that "
       "has ended must not be",
       "used again: that crashes the process."},
      {{"handle", "the client handle."}}}},
    {"korvo_api_action_engine_get_initiator_version",
     "",
     {{"Tells the interface version of this library: 1 and 19. Nothing is sent; the service tells its own "
       "version by",
       "korvo_api_action_engine___get_target_version___send."},
      {{"handle", "the client handle."}}}},
    {"korvo_api_action_engine_free_uuid",
     "",
     {{"Frees the identifier of a request that no receive form has answered with status 0; nil does nothing. "
       "An identifier must",
       "not be used after it was freed."},
      {}}},
    {"korvo_api_action_engine_action_completed_register_event_handler",
     "",
     {{"Registers a host program's handler for the event Action_completed, which a handle gets that "
       "subscribes to events. A",
       "handler that is registered twice is called twice. Whether it worked is not told."},
      {}}},
    {"korvo_api_action_engine_action_completed_unregister_event_handler_with_context",
     "",
     {{"Removes the registrations of a handler that were made with this very context. Waits for an event "
       "that is just being",
       "delivered. Whether it worked is not told."},
      {}}},
    {"korvo_api_action_engine_action_completed_unregister_event_handler",
     "",
     {{"Removes all registrations of a handler, whatever their contexts are. Waits for an event that is just "
       "being delivered.",
       "Whether it worked is not told."},
      {}}},
    {"korvo_api_action_engine_register_default_callbacks",
     "",
     {{"Registers the default handler for the event Action_completed, which prints each event to standard "
       "output as one line.",
       "The handle must subscribe to events. Whether it worked is not told."},
      {}}},
    {"korvo_api_action_engine_unregister_default_callbacks",
     "",
     {{"Removes the default handler for the event Action_completed. Whether it worked is not told."}, {}}},
};

bool fits(Entry const &entry, std::string const &name) {
    std::string const beginning = entry.beginning;
    std::string const ending = entry.ending;
    if (ending.empty()) {
        return name == beginning;
    }
    return name.size() >= beginning.size() + ending.size() &&
           name.compare(0, beginning.size(), beginning) == 0 &&
           name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
}

std::string found(std::map<std::string, std::string> const &texts, std::string const &name) {
    auto const place = texts.find(name);
    return place == texts.end() ? "" : place->second;
}

}  // namespace

LuaText const *luaText(std::string const &function) {
    for (Entry const &entry : entries) {
        if (fits(entry, function)) {
            return &entry.text;
        }
    }
    return nullptr;
}

std::string formText(std::string const &form) {
    static std::string const identifier =
        " When it returns 0 the identifier is used up; after another status it may be received again, or is "
        "freed with "
        "korvo_api_action_engine_free_uuid.";
    static std::map<std::string, std::string> const texts = {
        {"_send", "sends the command and waits for the response, up to 5000 ms."},
        {"_send_with_timeout", "sends the command and waits for the response, up to `timeout`."},
        {"_non_blocking_send",
         "sends the command and returns at once. It gives the request's identifier, also when the sending "
         "has failed; the "
         "operation's receive forms take the response with it, and korvo_api_action_engine_free_uuid frees "
         "it where none of "
         "them has returned 0."},
        {"_receive",
         "takes the response to a request of the non-blocking form: with `block` it waits up to 5000 ms, "
         "else it only "
         "looks." +
             identifier},
        {"_receive_with_timeout",
         "takes the response to a request of the non-blocking form, and waits for it up to `timeout`." +
             identifier},
        {"_send_async",
         "sends the command and returns at once; the response goes to a callback that only a host program "
         "can make. Each call "
         "leaves a registration behind that stays until the handle ends, also with nil for the callback, and "
         "also when the "
         "sending has failed. To send without waiting, scripts use the non-blocking form."},
        {"_cancel_async",
         "does not take back the request that it is given: of the operation's registrations, in the order of "
         "their random "
         "identifiers, it drops those that follow one which holds this callback and context. No script needs "
         "it."},
    };
    return found(texts, form);
}

std::string commonText(std::string const &name) {
    static std::map<std::string, std::string> const texts = {
        {"status", "0 for success."},
        {"handle", "the client handle."},
        {"target", "which instance of the service is meant; nil is the default one."},
        {"timeout", "in milliseconds; 0 polls, a negative one waits without limit."},
        {"block", "true waits up to 5000 ms, false polls."},
        {"request_id", "the request's identifier."},
        {"callback", only_host},
        {"handler", only_host},
        {"context", "what the callback is given."},
    };
    return found(texts, name);
}

std::string inLua(std::string text) {
    // The longer ones first. A list is a table already when an operation is called; NULL is one that is no list.
    static std::pair<char const *, char const *> const words[] = {
        {"1 for a list variable that was not NULL.", ""},
        {"a NULL input or a NULL `request_id` pointer (nothing was sent); a list variable that was not NULL; "
         "init or "
         "get_initiator_version with a NULL pointer.",
         "an argument that is nil or no list of the right elements (nothing was sent), or a value that "
         "cannot be kept."},
        {"a NULL text or list as an input",
         "a text that is nil, or a table that is no list of the right elements"},
        {"a NULL list as an input", "a table that is no list of the right elements"},
        {"a NULL text as an input", "a text that is nil"},
        {"non-zero", "true"},
        {"NULL", "nil"},
    };
    for (auto const &[in_c, in_lua] : words) {
        std::string const from = in_c;
        for (std::size_t place = text.find(from); place != std::string::npos;
             place = text.find(from, place)) {
            text.replace(place, from.size(), in_lua);
        }
    }
    auto const begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? "" : text.substr(begin);
}

}  // namespace korvo::lua::stub
