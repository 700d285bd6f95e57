-- SPDX-License-Identifier: Apache-2.0
-- Compares the stub for the Lua language server with the module itself, both ways: names, constants, what arguments a
-- function takes, how many results it gives and of what types. Needs a running service and a configuration.
--
--     lua5.1 lua_stub_agreement.lua STUB [without-leaks]
--
-- without-leaks leaves out what a script can only leak, for programs that look for leaks.
-- First it compares the stub, which must agree; then stubs with one mistake each, which must not.

local api = require "korvo_api_action_engine"

local differences

local function differs(...)
    table.insert(differences, string.format(...))
end

-- ---- What the stub says ----

-- {name = {arguments = {type, ...}, results = {type, ...}, names = "a, b"}}, {name = value}
local function read_stub(text)
    assert(loadstring(text, "=stub"))
    local functions, constants = {}, {}
    local arguments, names, results = {}, {}, {}
    for line in text:gmatch("[^\n]*") do
        local parameter, type_of_parameter = line:match("^%-%-%-@param (%S+) (%S+)")
        local result = line:match("^%-%-%-@return (%S+)")
        local name, list = line:match("^function korvo_api_action_engine%.([%w_]+)%((.-)%) end$")
        local constant, value = line:match("^korvo_api_action_engine%.([%w_]+) = (%d+)$")
        if parameter then
            table.insert(arguments, type_of_parameter)
            table.insert(names, parameter)
        elseif result then
            table.insert(results, result)
        elseif name then
            if functions[name] then
                differs("%s is declared twice", name)
            end
            if table.concat(names, ", ") ~= list then
                differs("%s has the parameters (%s) and explains (%s)", name, list, table.concat(names, ", "))
            end
            functions[name] = {arguments = arguments, results = results}
        elseif constant then
            constants[constant] = tonumber(value)
        end
        if line ~= "" and line:sub(1, 3) ~= "---" then
            arguments, names, results = {}, {}, {}
        end
    end
    return functions, constants
end

-- ---- Names and constants ----

local function compare_names(functions, constants)
    for name, value in pairs(api) do
        if type(value) == "function" and not functions[name] then
            differs("the stub lacks the function %s", name)
        elseif type(value) == "number" and constants[name] ~= value then
            differs("the constant %s is %s in the module and %s in the stub", name, value, tostring(constants[name]))
        end
    end
    for name in pairs(functions) do
        if type(rawget(api, name)) ~= "function" then
            differs("the module lacks the function %s", name)
        end
    end
    for name in pairs(constants) do
        if type(rawget(api, name)) ~= "number" then
            differs("the module lacks the constant %s", name)
        end
    end
end

-- ---- Arguments: the module's own error messages tell what it expects ----

-- What a message calls each type of the stub.
local expected_texts = {
    ["string"] = {["char const *"] = true}, ["string?"] = {["char const *"] = true},
    ["integer"] = {["unsigned int"] = true, ["int"] = true},
    ["number"] = {["double const"] = true},
    ["boolean"] = {["unsigned char"] = true},
    ["korvo_core_status"] = {korvo_core_status = true},
    ["korvo_core_log_priority"] = {korvo_core_log_priority = true},
    ["userdata"] = {["void *"] = true}, ["userdata?"] = {["void *"] = true}, ["_p_void?"] = {["void *"] = true},
    ["boolean[]"] = {["unsigned char **"] = true}, ["integer[]"] = {["unsigned int **"] = true, ["int **"] = true},
    ["number[]"] = {["double **"] = true}, ["string[]"] = {["char **"] = true},
    ["_p_p_void?"] = {["void **"] = true}, ["_p_p_char?"] = {["char **"] = true},
    ["_p_unsigned_int?"] = {["unsigned int *"] = true}, ["_p_unsigned_char?"] = {["unsigned char *"] = true},
    ["_p_f_p_p_char_p_p_char_p_p_char_p_p_char_p_void__void?"] =
        {["void (*)(char **,char **,char **,char **,void *)"] = true},
    ["_p_f_p_p_char_p_p_char_p_p_char_p_void__void?"] = {["void (*)(char **,char **,char **,void *)"] = true},
}

-- A value of each type. Those that may be nil are nil.
local fitting = {
    ["string"] = "text", ["integer"] = 0, ["number"] = 0, ["boolean"] = true, ["korvo_core_status"] = 0,
    ["korvo_core_log_priority"] = 7, ["boolean[]"] = {}, ["integer[]"] = {}, ["number[]"] = {}, ["string[]"] = {},
}

local misfit = coroutine.create(function() end)

local function compare_arguments(name, stub)
    local call = api[name]
    local _, message = pcall(call, unpack({}, 1, 100))
    local count = tonumber(tostring(message):match("expected (%d+)%.%.%d+ args, got 100$"))
    if count ~= #stub.arguments then
        differs("%s takes %s arguments and %d in the stub", name, tostring(count), #stub.arguments)
        return
    end
    for place, type_in_stub in ipairs(stub.arguments) do
        local arguments = {}
        for before = 1, place - 1 do
            arguments[before] = fitting[stub.arguments[before]]
        end
        arguments[place] = misfit
        -- The arguments before it fit, so it is the one that is refused, and no C function is called.
        local _, refusal = pcall(call, unpack(arguments, 1, count))
        local position, expected = tostring(refusal):match("%(arg (%d+)%), expected '(.-)' got 'thread'$")
        local fits = expected_texts[type_in_stub]
        if tonumber(position) ~= place then
            differs("%s: argument %d: %s", name, place, tostring(refusal))
        elseif not (fits and fits[expected]) and expected .. "?" ~= type_in_stub then
            differs("%s: argument %d is '%s' and %s in the stub", name, place, expected, type_in_stub)
        end
    end
end

-- ---- Results: calls that succeed, compared with the stub ----

local seen = {}  -- name .. place: a value other than nil has come

local function fits(value, type_in_stub)
    local base, may_be_nil = type_in_stub:gsub("%?$", "")
    if value == nil then
        return may_be_nil == 1
    elseif base:sub(-2) == "[]" then
        for _, element in ipairs(type(value) == "table" and value or {}) do
            if not fits(element, base:sub(1, -3)) then
                return false
            end
        end
        return type(value) == "table"
    elseif base:sub(1, 3) == "_p_" then
        local texts = {_p_void = "void *", _p_p_int = "int **", _p_p_unsigned_int = "unsigned int **",
            _p_p_unsigned_char = "unsigned char **", _p_p_double = "double **"}
        return swig_type(value) == texts[base]
    elseif base == "integer" or base:sub(1, 11) == "korvo_core_" then
        return type(value) == "number" and value == math.floor(value)
    end
    return type(value) == base
end

local functions_of_stub

local function pack(...)
    return {n = select("#", ...), ...}
end

-- Calls and compares. Gives the results back.
local function call(name, ...)
    local results = pack(api[name](...))
    local stub = functions_of_stub[name]
    if stub then
        seen[name] = seen[name] or {}
        if results.n ~= #stub.results then
            differs("%s gives %d results and %d in the stub", name, results.n, #stub.results)
        end
        for place, type_in_stub in ipairs(stub.results) do
            if not fits(results[place], type_in_stub) then
                differs("%s: result %d is %s and %s in the stub", name, place, swig_type(results[place]), type_in_stub)
            end
            seen[name][place] = seen[name][place] or results[place] ~= nil
        end
    end
    return unpack(results, 1, results.n)
end

local prefix = "korvo_api_action_engine_"

-- Inputs by their types in the stub; identifiers are the ones that exist.
local function inputs_of(operation, first, identifiers)
    local kind = operation:match("^%l+_(%l.*_action)$") or operation:match("^%l+_(%l.*_trigger)$")
    local sample = {["string"] = "text", ["integer"] = 3, ["boolean"] = true, ["string[]"] = {"one", "two"},
        ["integer[]"] = {1, 2, 3000000000}}
    local arguments, count = {}, 0
    local stub = functions_of_stub[prefix .. operation .. "_send"]
    for place = first, #stub.arguments do
        count = count + 1
        arguments[count] = sample[stub.arguments[place]]
    end
    if not operation:match("^create_") or operation == "create_association" then
        local identifier = identifiers[kind] or identifiers[operation:match("trigger") or operation:match("action")]
        if stub.arguments[first] == "integer" then
            arguments[1] = identifier
        end
        if operation:match("ate_association$") or operation:match("ete_association$") then
            arguments[1], arguments[2] = identifiers.trigger, identifiers.action
        end
    end
    return unpack(arguments, 1, count)
end

-- Calls an operation in every form that it has.
local function call_forms(handle, operation, identifiers)
    local name = prefix .. operation
    local function has(form)
        return functions_of_stub[name .. form]
    end
    local function inputs()
        return inputs_of(operation, 3, identifiers)
    end
    local status, result = call(name .. "_send", handle, nil, inputs())
    if status ~= 0 then
        differs("%s_send did not succeed: %s", operation, api.korvo_core_status_to_string(status))
    end
    -- Each of the others needs something of its own to delete.
    local deletes = operation:match("^delete_(%l+)$")
    local function again()
        if deletes == "association" then
            api.korvo_api_action_engine_create_association_send(handle, nil, identifiers.trigger, identifiers.action)
        elseif deletes == "action" then
            identifiers.action = select(2, api.korvo_api_action_engine_create_wiper_action_send(handle, nil, "w"))
        elseif deletes == "trigger" then
            identifiers.trigger = select(2, api.korvo_api_action_engine_create_timer_trigger_send(handle, nil, "t", 0))
        end
    end
    if has("_send_with_timeout") then
        again()
        call(name .. "_send_with_timeout", handle, nil, 5000, inputs())
    end
    again()
    local _, request = call(name .. "_non_blocking_send", handle, nil, inputs())
    call(name .. "_receive", handle, true, nil, request)
    if has("_receive_with_timeout") then
        again()
        _, request = call(name .. "_non_blocking_send", handle, nil, inputs())
        call(name .. "_receive_with_timeout", handle, nil, 5000, request)
    end
    again()
    call(name .. "_cancel_async", handle, nil, nil)
    return result
end

local function compare_operations(handle)
    local operations, identifiers = {}, {}
    for name in pairs(functions_of_stub) do
        local operation = name:match("^" .. prefix .. "(.*)_send$")
        if operation and not operation:match("_non_blocking$") then
            table.insert(operations, operation)
        end
    end
    local function rank(operation)
        if operation == "create_association" then
            return 2
        end
        return operation:match("^create_") and 1 or operation == "set_action_filters" and 2 or
            operation == "delete_association" and 4 or operation:match("^delete_") and 5 or 3
    end
    table.sort(operations, function(left, right)
        if rank(left) ~= rank(right) then
            return rank(left) < rank(right)
        end
        return left < right
    end)
    for _, operation in ipairs(operations) do
        local made = call_forms(handle, operation, identifiers)
        local kind, half = operation:match("^create_(.*_(%l+))$")
        if half then
            identifiers[kind] = made
            identifiers[half] = made
        end
    end
    -- At last, on a handle of their own: a registration stays as long as its handle.
    local _, another = call("korvo_api_action_engine_initiator_init", nil, nil, false, "asynchronous")
    identifiers = setmetatable({}, {__index = function() return 0 end})
    for _, operation in ipairs(operations) do
        local arguments = {inputs_of(operation, 3, identifiers)}
        local count = select("#", inputs_of(operation, 3, identifiers))
        call(prefix .. operation .. "_send_async", another, nil, unpack(arguments, 1, count + 2))
    end
    call("korvo_api_action_engine_initiator_deinit", another)
end

-- Functions that release a list twice.
local never_called = {
    korvo_core_free_bool_array = true, korvo_core_free_uint_array = true, korvo_core_free_int_array = true,
    korvo_core_free_double_array = true,
}
if arg[2] == "without-leaks" then
    for _, kind in ipairs {"bool", "uint", "int", "double"} do
        never_called["korvo_core_alloc_" .. kind .. "_array"] = true
    end
end

-- Results of calls that need a messaging handle, which no script has.
local only_nil = {
    korvo_core_ipc_initiator_response_receive = true, korvo_core_ipc_target_command_receive = true,
}

local function compare_core(handle)
    call("korvo_core_status_to_string", 4)
    call("korvo_core_init")
    call("korvo_core_settings_init")
    call("korvo_core_configuration_init")
    local values = {
        {"string", "text"}, {"json", "{}"}, {"int", -5}, {"bool", true}, {"double", 0.5},
        {"arrayofstring", {"a", "b"}}, {"arrayofint", {1, -2}}, {"arrayofbool", {true, false}},
        {"arrayofdouble", {0.5, 1}},
    }
    for _, value in ipairs(values) do
        local kind, key = value[1], "key of " .. value[1]
        call("korvo_core_settings_set_" .. kind .. "_value", key, value[2])
        call("korvo_core_settings_set_default_" .. kind .. "_value", key, value[2])
        call("korvo_core_settings_get_" .. kind .. "_value", key)
        call("korvo_core_settings_get_default_" .. kind .. "_value", key)
        call("korvo_core_settings_copy_" .. kind .. "_key", key, "copy of " .. kind)
        call("korvo_core_configuration_get_" .. kind .. "_value", kind)
    end
    call("korvo_core_settings_get_all_keys")
    call("korvo_core_settings_get_keys_starting_with", "key")
    call("korvo_core_configuration_get_all_keys")
    call("korvo_core_settings_get_type", "key of int")
    call("korvo_core_configuration_get_type", "int")
    call("korvo_core_settings_does_key_exist", "key of int")
    call("korvo_core_configuration_does_key_exist", "int")
    call("korvo_core_settings_delete_key", "key of int")
    call("korvo_core_settings_get_and_set_version", nil, 1)
    call("korvo_core_settings_get_versions", nil, nil)
    call("korvo_core_settings_is_new_file", nil)
    call("korvo_core_debug_settings_dump")
    call("korvo_core_debug_get_setting_path")
    call("korvo_core_settings_deinit")
    call("korvo_core_configuration_deinit")

    -- A script has no messaging handle; nil is refused with a status.
    call("korvo_core_ipc_initiator_init", nil, "name", nil)
    call("korvo_core_ipc_target_init", nil, "service", nil, nil, nil)
    call("korvo_core_ipc_deinit", nil)
    call("korvo_core_ipc_initiator_command_send", nil, "service", nil, "1", "{}")
    call("korvo_core_ipc_initiator_response_receive", nil, 0)
    call("korvo_core_ipc_initiator_response_receive_callback", nil, nil, nil)
    call("korvo_core_ipc_initiator_event_subscribe", nil, "service")
    call("korvo_core_ipc_initiator_event_unsubscribe", nil, "service")
    call("korvo_core_ipc_initiator_event_receive_callback", nil, nil, nil)
    call("korvo_core_ipc_target_command_receive", nil, 0)
    call("korvo_core_ipc_target_command_receive_callback", nil, nil, nil)
    call("korvo_core_ipc_target_response_send", nil, "source", "1", "{}")
    call("korvo_core_ipc_target_event_send", nil, "{}")
    call("korvo_core_logging_init", "name", nil)
    call("korvo_core_logging_deinit", nil)
    call("korvo_core_logging_is_priority_active", nil, 7)
    call("korvo_core_logging_log", nil, 7, "100 %s of it")
    for _, kind in ipairs {"bool", "uint", "int", "double", "string"} do
        local name = "korvo_core_alloc_" .. kind .. "_array"
        if not never_called[name] then
            call(name, 0)
        end
    end
    call("korvo_core_free_string_array", nil)

    call("korvo_api_action_engine_get_initiator_version", handle)
    call("korvo_api_action_engine_free_uuid", nil)
    call("korvo_api_action_engine_register_default_callbacks", handle)
    call("korvo_api_action_engine_unregister_default_callbacks", handle)
    call("korvo_api_action_engine_action_completed_register_event_handler", handle, nil, nil)
    call("korvo_api_action_engine_action_completed_unregister_event_handler", handle, nil)
    call("korvo_api_action_engine_action_completed_unregister_event_handler_with_context", handle, nil, nil)
end

local function compare_results()
    local status, handle = call("korvo_api_action_engine_initiator_init", nil, nil, false, "agreement")
    assert(status == 0, "no client handle")
    compare_operations(handle)
    compare_core(handle)
    call("korvo_api_action_engine_initiator_deinit", handle)
    call("korvo_core_deinit")
    for name, stub in pairs(functions_of_stub) do
        if not seen[name] and not never_called[name] then
            differs("%s was not called", name)
        end
        for place in ipairs(seen[name] and stub.results or {}) do
            if not seen[name][place] and not only_nil[name] then
                differs("%s: result %d was never there", name, place)
            end
        end
    end
end

-- ---- The comparison ----

local function compare(text)
    differences, seen = {}, {}
    local functions, constants = read_stub(text)
    functions_of_stub = functions
    compare_names(functions, constants)
    for name, stub in pairs(functions) do
        if rawget(api, name) then
            compare_arguments(name, stub)
        end
    end
    return functions, constants
end

local function count(entries)
    local number = 0
    for _ in pairs(entries) do
        number = number + 1
    end
    return number
end

local file = assert(io.open(arg[1]))
local text = file:read("*a")
file:close()

local functions, constants = compare(text)
compare_results()
for _, difference in ipairs(differences) do
    print(difference)
end
print(string.format("%d functions, %d constants, %d differences", count(functions), count(constants), #differences))
local agrees = #differences == 0

local function replaced(from, to)
    local place, last = text:find(from, 1, true)
    assert(place, "the stub does not hold: " .. from)
    return text:sub(1, place - 1) .. to .. text:sub(last + 1)
end

local function with(line)
    return replaced("\nreturn korvo_api_action_engine\n", "\n" .. line .. "\n\nreturn korvo_api_action_engine\n")
end

local relay = "function korvo_api_action_engine.korvo_api_action_engine_get_relay_action_send(handle, target, action_id) end"
local mistakes = {
    {"a function less", replaced(relay, "")},
    {"a function more", with("function korvo_api_action_engine.korvo_core_more() end")},
    {"a constant less", replaced("korvo_api_action_engine.kRelayAction = 9", "")},
    {"a constant more", with("korvo_api_action_engine.kMoreAction = 10")},
    {"another value", replaced("kRelayAction = 9", "kRelayAction = 8")},
    {"a parameter that is not explained", replaced(relay, (relay:gsub("action_id", "action_id, more")))},
    {"a parameter less", replaced("---@param status korvo_core_status\n---@return string text\n" ..
        "function korvo_api_action_engine.korvo_core_status_to_string(status)",
        "---@return string text\nfunction korvo_api_action_engine.korvo_core_status_to_string()")},
    {"another type of argument", replaced("---@param status korvo_core_status", "---@param status string")},
    {"another type of result", replaced("---@return integer major", "---@return string major"), true},
    {"a result less", replaced("---@return integer minor", "---"), true},
    {"a result more", replaced("---@return integer minor", "---@return integer minor\n---@return integer more"), true},
}
for _, mistake in ipairs(mistakes) do
    compare(mistake[2])
    if mistake[3] then
        local _, handle = call("korvo_api_action_engine_initiator_init", nil, nil, false, "agreement")
        call("korvo_api_action_engine_get_initiator_version", handle)
        call("korvo_api_action_engine_initiator_deinit", handle)
    end
    print(string.format("%s: %s", mistake[1], differences[1] and "found" or "not found"))
    agrees = agrees and differences[1] ~= nil
end

os.exit(agrees and 0 or 1)
