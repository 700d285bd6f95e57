-- SPDX-License-Identifier: Apache-2.0
-- Rules, and the catalogue as one document (docs/catalogue-format.md). Each method here takes ask(operation, arguments), which
-- gives the result or raises {message = ..., status = ...}.
local api = require "korvo_api_action_engine"
local arguments = require "korvo.action_engine.arguments"
local operations = require "korvo.action_engine.operations"

local document = {methods = {}}
local methods = document.methods

local format, version = "korvo-action-engine-catalogue", 1

local kinds = {
    action = {
        [api.kSendEmailAction] = "email_action",
        [api.kFtpUploadAction] = "ftp_action",
        [api.kSaveSnapshotAction] = "snapshot_action",
        [api.kPtzPatternAction] = "ptz_pattern_action",
        [api.kPtzPresetAction] = "ptz_preset_action",
        [api.kPtzTourAction] = "ptz_tour_action",
        [api.kPtzScanAction] = "ptz_scan_action",
        [api.kWiperAction] = "wiper_action",
        [api.kWasherAction] = "washer_action",
        [api.kRelayAction] = "relay_action",
    },
    trigger = {
        [api.kOnvifEventTrigger] = "onvif_trigger",
        [api.kReoccurringTimerTrigger] = "timer_trigger",
        [api.kStableOnvifEventTrigger] = "stable_onvif_trigger",
    },
}

local function refuse(message, ...)
    error({message = string.format(message, ...)})
end

local function copy(from)
    local to = {}
    for key, value in pairs(from) do
        to[key] = value
    end
    return to
end

-- Returns what work() does; when that fails, undoes first what was made, the last first.
local function all_or_nothing(ask, work)
    local made = {}
    local succeeded, result = pcall(work, function(operation, given) made[#made + 1] = {operation, given} end)
    if succeeded then
        return result
    end
    local left = {}
    for place = #made, 1, -1 do
        if not pcall(ask, made[place][1], made[place][2]) then
            left[#left + 1] = made[place][1]:gsub("delete_", "") .. " " .. made[place][2]
        end
    end
    if #left > 0 and type(result) == "table" then
        result = {message = result.message .. "; left behind: " .. table.concat(left, ", "), status = result.status}
    end
    error(result, 0)
end

-- ---- Reading the catalogue ----

-- {id, kind, settings, filters}, named as methods take them. An item that was deleted meanwhile is passed over.
local function read_item(ask, noun, entry)
    local kind = kinds[noun][entry[noun .. "_type"]]
    if not kind then
        refuse("%s %.0f is of type %.0f, which this version does not know", noun, entry[noun .. "_id"], entry[noun .. "_type"])
    end
    local item = {id = entry[noun .. "_id"], kind = kind}
    item.settings = ask("get_" .. kind, item.id)
    if noun == "action" then
        item.filters = ask("get_action_filters", item.id)
    end
    return item
end

local function list(ask, noun)
    local items = {}
    for _, entry in ipairs(ask("get_" .. noun .. "s")) do
        local succeeded, item = pcall(read_item, ask, noun, entry)
        if succeeded then
            items[#items + 1] = item
        else
            for _, present in ipairs(ask("get_" .. noun .. "s")) do
                if present[noun .. "_id"] == entry[noun .. "_id"] then
                    error(item, 0)
                end
            end
        end
    end
    table.sort(items, function(left, right) return left.id < right.id end)
    return items
end

function methods.list_actions(ask)
    return list(ask, "action")
end

function methods.list_triggers(ask)
    return list(ask, "trigger")
end

-- ---- The document ----

-- Named as on the wire, where parallel lists stand each by itself.
local function to_wire(fields, named)
    local values = arguments.in_order(fields, named)
    local wire, place = {}, 0
    for _, field in ipairs(fields) do
        for _, part in ipairs(field.parts or {{wire = field.name}}) do
            place = place + 1
            wire[part.wire] = values[place]
        end
    end
    return wire
end

local function from_wire(what, fields, wire)
    if type(wire) ~= "table" then
        refuse("%s must be an object", what)
    end
    local values = {}
    for _, field in ipairs(fields) do
        for _, part in ipairs(field.parts or {{wire = field.name}}) do
            local value = wire[part.wire]
            if field.parts and type(value) ~= "table" then
                refuse("%s: '%s' must be a list", what, part.wire)
            end
            values[#values + 1] = value == nil and document.null or value
        end
    end
    local named = arguments.by_name(fields, values)
    if not named then
        refuse("%s: lists that belong together differ in length", what)
    end
    for name, value in pairs(named) do
        if value == document.null then
            named[name] = nil
        end
    end
    return named
end

--- Stands for JSON's null, also in what libraries give that have a value of their own for it: anything but a text.
document.null = setmetatable({}, {__tostring = function() return "null" end})

local function settings_fields(kind)
    return operations["create_" .. kind].inputs
end

--- The whole catalogue. Passwords are left out unless `passwords` is true.
function methods.export(ask, given)
    given = given or {}
    local exported = {format = format, version = version, actions = {}, triggers = {}, associations = {}}
    for _, item in ipairs(list(ask, "action")) do
        local settings = to_wire(settings_fields(item.kind), item.settings)
        if not given.passwords then
            settings.password = nil
        end
        exported.actions[#exported.actions + 1] = {
            id = item.id, kind = item.kind, settings = settings,
            filters = to_wire(operations.get_action_filters.results, {filters = item.filters}),
        }
    end
    for _, item in ipairs(list(ask, "trigger")) do
        exported.triggers[#exported.triggers + 1] = {
            id = item.id, kind = item.kind, settings = to_wire(settings_fields(item.kind), item.settings),
        }
        for _, action in ipairs(ask("get_trigger_associations", item.id)) do
            exported.associations[#exported.associations + 1] = {trigger_id = item.id, action_id = action.action_id}
        end
    end
    return exported
end

-- Checks everything that can be checked before anything is made.
local function read_items(ask, noun, items)
    if type(items) ~= "table" then
        refuse("import: '%ss' must be a list", noun)
    end
    local read, seen = {}, {}
    for place, item in ipairs(items) do
        local what = string.format("import: %s %s", noun, tostring(type(item) == "table" and item.id or "at place " .. place))
        if type(item) ~= "table" or type(item.id) ~= "number" or seen[item.id] then
            refuse("%s: 'id' must be a number that no other %s has", what, noun)
        end
        seen[item.id] = true
        local is_known = false
        for _, kind in pairs(kinds[noun]) do
            is_known = is_known or kind == item.kind
        end
        if not is_known then
            refuse("%s: there is no kind '%s'", what, tostring(item.kind))
        end
        local fields = settings_fields(item.kind)
        local settings = from_wire(what, fields, item.settings)
        if item.kind == "ftp_action" and type(settings.password) ~= "string" then
            local succeeded, present = pcall(ask, "get_ftp_action", item.id)
            if not succeeded then
                refuse("%s has no password, and there is no such action that has one", what)
            end
            settings.password = present.password
        end
        local fault = arguments.fault(what, fields, settings)
        if fault then
            refuse("%s", fault)
        end
        local filters
        if noun == "action" then
            filters = from_wire(what .. ": filters", operations.get_action_filters.results, item.filters).filters
            fault = arguments.fault(what, operations.set_action_filters.inputs, {action_id = 0, filters = filters})
            if fault then
                refuse("%s", fault)
            end
        end
        read[#read + 1] = {id = item.id, kind = item.kind, settings = settings, filters = filters}
    end
    return read, seen
end

-- Makes an item and notes how it is deleted; gives its identifier.
local function make(ask, note, noun, item)
    local id = ask("create_" .. item.kind, item.settings)
    note("delete_" .. noun, id)
    if item.filters and #item.filters > 0 then
        ask("set_action_filters", {action_id = id, filters = item.filters})
    end
    return id
end

--- Adds what is in a document to the catalogue: all of it, or nothing. Gives the new identifiers by those of the document.
function methods.import(ask, given)
    if type(given) ~= "table" or given.format ~= format or given.version ~= version then
        refuse("import: takes a document with format = \"%s\" and version = %d", format, version)
    end
    local actions, known_actions = read_items(ask, "action", given.actions)
    local triggers, known_triggers = read_items(ask, "trigger", given.triggers)
    if type(given.associations) ~= "table" then
        refuse("import: 'associations' must be a list")
    end
    for place, association in ipairs(given.associations) do
        if type(association) ~= "table" or not known_triggers[association.trigger_id] or
            not known_actions[association.action_id] then
            refuse("import: association %d names what is not in the document", place)
        end
    end
    return all_or_nothing(ask, function(note)
        local new = {actions = {}, triggers = {}}
        for _, item in ipairs(actions) do
            new.actions[item.id] = make(ask, note, "action", item)
        end
        for _, item in ipairs(triggers) do
            new.triggers[item.id] = make(ask, note, "trigger", item)
        end
        for _, association in ipairs(given.associations) do
            ask("create_association", {
                trigger_id = new.triggers[association.trigger_id], action_id = new.actions[association.action_id],
            })
        end
        return new
    end)
end

-- ---- Rules ----

-- {kind = "timer_trigger", trigger_name = ..., timer_seconds = ...} as an item.
local function item_of_rule(what, noun, given)
    if type(given) ~= "table" then
        refuse("%s must be a table", what)
    end
    local is_known = false
    local names = {}
    for _, kind in pairs(kinds[noun]) do
        is_known = is_known or kind == given.kind
        names[#names + 1] = kind
    end
    if not is_known then
        table.sort(names)
        refuse("%s: 'kind' wants one of %s", what, table.concat(names, ", "))
    end
    local settings = copy(given)
    settings.kind = nil
    local filters
    if noun == "action" then
        filters = settings.filters or {}
        settings.filters = nil
        local fault = arguments.fault(what, operations.set_action_filters.inputs, {action_id = 0, filters = filters})
        if fault then
            refuse("%s", fault)
        end
    end
    local fault = arguments.fault(what, settings_fields(given.kind), settings)
    if fault then
        refuse("%s", fault)
    end
    return {kind = given.kind, settings = settings, filters = filters}
end

--- A trigger, the actions that it runs, and what binds them: all of it, or nothing. Gives trigger_id and action_ids.
function methods.rule(ask, given)
    if type(given) ~= "table" or type(given.actions) ~= "table" or #given.actions == 0 then
        refuse("rule: takes a table with a trigger and a list of actions")
    end
    for key in pairs(given) do
        if key ~= "trigger" and key ~= "actions" then
            refuse("rule: there is no '%s'; there are trigger and actions", tostring(key))
        end
    end
    local trigger = item_of_rule("rule: trigger", "trigger", given.trigger)
    local actions = {}
    for place, action in ipairs(given.actions) do
        actions[place] = item_of_rule("rule: action " .. place, "action", action)
    end
    return all_or_nothing(ask, function(note)
        local made = {trigger_id = make(ask, note, "trigger", trigger), action_ids = {}}
        for place, action in ipairs(actions) do
            made.action_ids[place] = make(ask, note, "action", action)
            ask("create_association", {trigger_id = made.trigger_id, action_id = made.action_ids[place]})
        end
        return made
    end)
end

return document
