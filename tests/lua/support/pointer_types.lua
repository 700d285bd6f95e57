-- SPDX-License-Identifier: Apache-2.0
-- The pointer types: mangled name and spellings. For callbacks of operations, the operations in the place of typedefs.
local rows = {
    {"_p_double", "double *"},
    {"_p_f_p_char_enum_korvo_core_status_p_char_p_char_p_char_p_char_p_char_p_char_p_void__void",
     "void (*)(char *,enum korvo_core_status,char *,char *,char *,char *,char *,char *,void *)",
     callbacks = "get_ftp_action"},
    {"_p_f_p_char_enum_korvo_core_status_p_char_p_char_p_char_p_char_p_p_char_p_p_char_p_void__void",
     "void (*)(char *,enum korvo_core_status,char *,char *,char *,char *,char **,char **,void *)",
     callbacks = "get_onvif_trigger"},
    {"_p_f_p_char_enum_korvo_core_status_p_char_p_char_p_char_p_p_char_p_p_char_unsigned_int_p_void__void",
     "void (*)(char *,enum korvo_core_status,char *,char *,char *,char **,char **,unsigned int,void *)",
     callbacks = "get_stable_onvif_trigger"},
    {"_p_f_p_char_enum_korvo_core_status_p_char_p_char_p_p_char_p_p_char_p_char_p_char_p_char_unsigned_char_unsigned_char_p_void__void",
     "void (*)(char *,enum korvo_core_status,char *,char *,char **,char **,char *,char *,char *,unsigned char,unsigned char,void *)",
     callbacks = "get_email_action"},
    {"_p_f_p_char_enum_korvo_core_status_p_char_p_char_p_void__void",
     "void (*)(char *,enum korvo_core_status,char *,char *,void *)",
     callbacks = "get_ptz_pattern_action get_snapshot_action get_ptz_scan_action get_ptz_tour_action get_ptz_preset_action"},
    {"_p_f_p_char_enum_korvo_core_status_p_char_p_char_unsigned_int_unsigned_char_unsigned_int_unsigned_int_unsigned_int_p_void__void",
     "void (*)(char *,enum korvo_core_status,char *,char *,unsigned int,unsigned char,unsigned int,unsigned int,unsigned int,void *)",
     callbacks = "get_relay_action"},
    {"_p_f_p_char_enum_korvo_core_status_p_char_p_void__void",
     "void (*)(char *,enum korvo_core_status,char *,void *)",
     callbacks = "get_washer_action get_wiper_action"},
    {"_p_f_p_char_enum_korvo_core_status_p_char_unsigned_int_p_void__void",
     "void (*)(char *,enum korvo_core_status,char *,unsigned int,void *)",
     callbacks = "get_timer_trigger"},
    {"_p_f_p_char_enum_korvo_core_status_p_p_unsigned_int_p_p_unsigned_int_p_p_unsigned_int_p_void__void",
     "void (*)(char *,enum korvo_core_status,unsigned int **,unsigned int **,unsigned int **,void *)",
     callbacks = "get_action_filters"},
    {"_p_f_p_char_enum_korvo_core_status_p_p_unsigned_int_p_p_unsigned_int_p_void__void",
     "void (*)(char *,enum korvo_core_status,unsigned int **,unsigned int **,void *)",
     callbacks = "get_actions get_triggers get_action_associations get_trigger_associations"},
    {"_p_f_p_char_enum_korvo_core_status_p_void__void",
     "void (*)(char *,enum korvo_core_status,void *)",
     callbacks = [[modify_email_action modify_ftp_action modify_snapshot_action modify_ptz_pattern_action
        modify_ptz_preset_action modify_ptz_scan_action modify_ptz_tour_action modify_wiper_action
        modify_washer_action modify_relay_action modify_timer_trigger modify_onvif_trigger
        modify_stable_onvif_trigger delete_action delete_trigger set_action_filters create_association
        delete_association onvif_event]]},
    {"_p_f_p_char_enum_korvo_core_status_unsigned_int_p_p_unsigned_int_p_p_unsigned_int_p_void__void",
     "void (*)(char *,enum korvo_core_status,unsigned int,unsigned int **,unsigned int **,void *)",
     callbacks = "get_action_counts get_trigger_counts"},
    {"_p_f_p_char_enum_korvo_core_status_unsigned_int_p_void__void",
     "void (*)(char *,enum korvo_core_status,unsigned int,void *)",
     callbacks = [[create_email_action create_ftp_action create_snapshot_action create_ptz_pattern_action
        create_ptz_preset_action create_ptz_scan_action create_ptz_tour_action create_wiper_action
        create_washer_action create_relay_action create_timer_trigger create_onvif_trigger
        create_stable_onvif_trigger get_action_type get_trigger_type]]},
    {"_p_f_p_char_enum_korvo_core_status_unsigned_int_unsigned_int_p_void__void",
     "void (*)(char *,enum korvo_core_status,unsigned int,unsigned int,void *)",
     callbacks = "__get_target_version__"},
    {"_p_f_p_p_char_p_p_char_p_p_char_p_p_char_p_void__void", "void (*)(char **,char **,char **,char **,void *)"},
    {"_p_f_p_p_char_p_p_char_p_p_char_p_void__void", "void (*)(char **,char **,char **,void *)"},
    {"_p_f_unsigned_int_p_q_const__char_unsigned_char_p_q_const__char_p_void__void",
     "void (*)(unsigned int,char const *,unsigned char,char const *,void *)",
     "korvo_api_action_engine_action_completed_event_callback_func_ptr"},
    {"_p_int", "int *"},
    {"_p_korvo_core_log_priority", "enum korvo_core_log_priority *", "korvo_core_log_priority *"},
    {"_p_korvo_core_settings_type", "enum korvo_core_settings_type *", "korvo_core_settings_type *"},
    {"_p_korvo_core_status", "enum korvo_core_status *", "korvo_core_status *"},
    {"_p_p_char", "char **"},
    {"_p_p_double", "double **"},
    {"_p_p_int", "int **"},
    {"_p_p_p_char", "char ***"},
    {"_p_p_p_double", "double ***"},
    {"_p_p_p_int", "int ***"},
    {"_p_p_p_unsigned_char", "unsigned char ***"},
    {"_p_p_p_unsigned_int", "unsigned int ***"},
    {"_p_p_unsigned_char", "unsigned char **"},
    {"_p_p_unsigned_int", "unsigned int **"},
    {"_p_p_void", "void **"},
    {"_p_unsigned_char", "unsigned char *"},
    {"_p_unsigned_int", "unsigned int *"},
    {"_p_void", "void *"},
}

local pointer_types = {names = {}, spellings = {}, of_callback = {}}
for _, row in ipairs(rows) do
    local name = row[1]
    pointer_types.names[#pointer_types.names + 1] = name
    local spellings = {unpack(row, 2)}
    for operation in (row.callbacks or ""):gmatch("%S+") do
        assert(pointer_types.of_callback[operation] == nil, operation)
        pointer_types.of_callback[operation] = name
        spellings[#spellings + 1] = "korvo_api_action_engine_" .. operation .. "_method_callback_func_ptr"
    end
    table.sort(spellings)
    pointer_types.spellings[name] = spellings
end

--- The spellings in a text that joins them, sorted.
function pointer_types.split(text)
    local spellings = {}
    for spelling in (text .. "|"):gmatch("(.-)|") do
        spellings[#spellings + 1] = spelling
    end
    table.sort(spellings)
    return spellings
end

return pointer_types
