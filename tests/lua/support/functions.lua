-- SPDX-License-Identifier: Apache-2.0
-- All 493 functions: {name = name, inputs = {kind, ...}, results = {kind, ...}, operation = name or nil}.
local function split(text)
    local words = {}
    for word in text:gmatch("%S+") do
        words[#words + 1] = word
    end
    return words
end

local functions = {all = {}, core = {}, library = {}, forms = {}, by_name = {}}

local function add(to, name, inputs, results, operation, form)
    local row = {name = name, inputs = split(inputs), results = split(results), operation = operation, form = form}
    to[#to + 1] = row
    functions.all[#functions.all + 1] = row
    functions.by_name[name] = row
    return row
end

for _, row in ipairs(require "core_functions") do
    add(functions.core, "korvo_core_" .. row[1], row[2], row[3])
end

local library = "korvo_api_action_engine_"
add(functions.library, library .. "initiator_init", "opaque opaque flag text", "status handle")
add(functions.library, library .. "initiator_deinit", "opaque", "status")
add(functions.library, library .. "get_initiator_version", "opaque", "status number number")
add(functions.library, library .. "free_uuid", "opaque", "")
add(functions.library, library .. "register_default_callbacks", "opaque", "")
add(functions.library, library .. "unregister_default_callbacks", "opaque", "")
add(functions.library, library .. "action_completed_register_event_handler", "opaque event_handler opaque", "")
add(functions.library, library .. "action_completed_unregister_event_handler", "opaque event_handler", "")
add(functions.library, library .. "action_completed_unregister_event_handler_with_context",
    "opaque event_handler opaque", "")

local function kinds_of(members)
    local kinds = {}
    for place, member in ipairs(members) do
        kinds[place] = member.kind
    end
    return table.concat(kinds, " ")
end

-- The arguments and results of the forms; IN and OUT are the operation's.
local forms = {
    send = {"opaque text IN", "status OUT"},
    send_with_timeout = {"opaque text int IN", "status OUT"},
    non_blocking_send = {"opaque text IN", "status handle"},
    receive = {"opaque flag text opaque", "status OUT"},
    receive_with_timeout = {"opaque text int opaque", "status OUT"},
    send_async = {"opaque text IN callback opaque", "status"},
    cancel_async = {"opaque callback opaque", "status"},
}

functions.operations = fake.operations()
functions.operations[#functions.operations + 1] = {
    name = "__get_target_version__",
    method = "__get_target_version__",
    inputs = {},
    results = {{kind = "number", sample = 1}, {kind = "number", sample = 19}},
    is_version = true,
}
for _, operation in ipairs(functions.operations) do
    for form, shape in pairs(forms) do
        if not (operation.is_version and form:find("with_timeout")) then
            local row = add(functions.forms, library .. operation.name .. "_" .. form,
                            (shape[1]:gsub("IN", kinds_of(operation.inputs))),
                            (shape[2]:gsub("OUT", kinds_of(operation.results))), operation.name, form)
            row.row = operation
        end
    end
end

return functions
