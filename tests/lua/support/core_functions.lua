-- SPDX-License-Identifier: Apache-2.0
-- The functions of the core: name, inputs, results. kinds.lua tells what the kinds are.
local rows = {
    {"status_to_string", "status", "constant_text"},
    {"init", "", "status"},
    {"deinit", "", "status"},
    {"ipc_initiator_init", "opaque text handle_place", "status"},
    {"ipc_target_init", "opaque text text text handle_place", "status"},
    {"ipc_deinit", "opaque", "status"},
    {"ipc_initiator_command_send", "opaque text text text text", "status"},
    {"ipc_initiator_response_receive", "opaque int", "status text text text text"},
    {"ipc_initiator_response_receive_callback", "opaque response_callback opaque", "status"},
    {"ipc_initiator_event_subscribe", "opaque text", "status"},
    {"ipc_initiator_event_unsubscribe", "opaque text", "status"},
    {"ipc_initiator_event_receive_callback", "opaque message_callback opaque", "status"},
    {"ipc_target_command_receive", "opaque number", "status text text text"},
    {"ipc_target_command_receive_callback", "opaque message_callback opaque", "status"},
    {"ipc_target_response_send", "opaque text text text", "status"},
    {"ipc_target_event_send", "opaque text", "status"},
    {"logging_init", "text handle_place", "status"},
    {"logging_deinit", "opaque", "status"},
    {"logging_is_priority_active", "opaque priority", "status integer"},
    {"logging_log", "opaque priority text", "status"},
    {"settings_init", "", "status"},
    {"settings_deinit", "", "status"},
    {"settings_get_all_keys", "", "texts"},
    {"settings_get_keys_starting_with", "text", "texts"},
    {"settings_get_type", "text", "status number"},
    {"settings_does_key_exist", "text", "flag"},
    {"settings_delete_key", "text", "status"},
    {"settings_get_and_set_version", "number_place number", "status"},
    {"settings_get_versions", "number_place number_place", "status"},
    {"settings_is_new_file", "flag_place", "status"},
    {"debug_settings_dump", "", ""},
    {"debug_get_setting_path", "", "text"},
    {"configuration_init", "", "status"},
    {"configuration_deinit", "", "status"},
    {"configuration_get_all_keys", "", "texts"},
    {"configuration_get_type", "text", "status number"},
    {"configuration_does_key_exist", "text", "flag"},
    {"alloc_bool_array", "number", "flags_pointer"},
    {"alloc_uint_array", "number", "numbers_pointer"},
    {"alloc_int_array", "number", "integers_pointer"},
    {"alloc_double_array", "number", "reals_pointer"},
    {"alloc_string_array", "number", "texts"},
    {"free_bool_array", "flags", ""},
    {"free_uint_array", "numbers", ""},
    {"free_int_array", "integers", ""},
    {"free_double_array", "reals", ""},
    {"free_string_array", "text_list", ""},
}

-- The nine types of settings: what a script gives, and what it gets.
local types = {
    string = {"text", "text"},
    json = {"text", "text"},
    int = {"int", "integer"},
    bool = {"flag", "flag"},
    double = {"double", "real"},
    arrayofstring = {"texts", "texts number"},
    arrayofint = {"integers", "integers number"},
    arrayofbool = {"flags", "flags number"},
    arrayofdouble = {"reals", "reals number"},
}
for name, kinds in pairs(types) do
    for _, family in ipairs {"settings_get", "settings_get_default", "configuration_get"} do
        rows[#rows + 1] = {family .. "_" .. name .. "_value", "text", "status " .. kinds[2]}
    end
    for _, family in ipairs {"settings_set", "settings_set_default"} do
        rows[#rows + 1] = {family .. "_" .. name .. "_value", "text " .. kinds[1], "status"}
    end
    rows[#rows + 1] = {"settings_copy_" .. name .. "_key", "text text", "status"}
end

return rows
