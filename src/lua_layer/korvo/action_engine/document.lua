-- SPDX-License-Identifier: Apache-2.0
-- Rules, and the catalogue as one document (docs/catalogue-format.md). Each method here takes ask(operation, arguments), which
-- gives the result or raises {message = ..., status = ...}.
local api = require "korvo_api_action_engine"
local arguments = require "korvo.action_engine.arguments"
local json = require "korvo.action_engine.json"
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

local function is_gone(ask, noun, id)
    for _, present in ipairs(ask("get_" .. noun .. "s")) do
        if present[noun .. "_id"] == id then
            return false
        end
    end
    return true
end

local function list(ask, noun)
    local items = {}
    for _, entry in ipairs(ask("get_" .. noun .. "s")) do
        local succeeded, item = pcall(read_item, ask, noun, entry)
        if succeeded then
            items[#items + 1] = item
        elseif not is_gone(ask, noun, entry[noun .. "_id"]) then
            error(item, 0)
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

local function settings_fields(kind)
    return operations["create_" .. kind].inputs
end

local filters_fields = operations.get_action_filters.results

-- Named as on the wire and in its order, where parallel lists stand each by itself.
local function to_wire(fields, named)
    local values = arguments.in_order(fields, named)
    local wire = {}
    for _, field in ipairs(fields) do
        for _, part in ipairs(field.parts or {{wire = field.name}}) do
            wire[#wire + 1] = {part.wire, values[#wire + 1]}
        end
    end
    return json.members(wire)
end

local function settings_to_wire(item, with_passwords)
    local settings = item.settings
    if settings.password and not with_passwords then
        settings = copy(settings)
        settings.password = json.null
    end
    return to_wire(settings_fields(item.kind), settings)
end

-- Less than 0 where the left text comes first. As bytes, since `<` goes by the program's locale.
local function compare(left, right)
    for place = 1, math.min(#left, #right) do
        local difference = left:byte(place) - right:byte(place)
        if difference ~= 0 then
            return difference
        end
    end
    return #left - #right
end

-- Items in the order of documents: by what they are called, their kind and their content. One that is exported with passwords and
-- one without have the same.
local function canonical(noun, items)
    local keys, sorted = {}, copy(items)
    for place, item in ipairs(items) do
        local filters = item.filters and json.compact(to_wire(filters_fields, {filters = item.filters})) or ""
        keys[item] = {item.settings[noun .. "_name"], item.kind, json.compact(settings_to_wire(item)) .. filters, place}
    end
    table.sort(sorted, function(left, right)
        left, right = keys[left], keys[right]
        for part = 1, 3 do
            local difference = compare(left[part], right[part])
            if difference ~= 0 then
                return difference < 0
            end
        end
        return left[4] < right[4]
    end)
    return sorted
end

-- The whole catalogue as members in the document's order. Items are numbered anew, so that equal catalogues give equal texts.
local function whole_document(ask, name, given)
    given = given == nil and {} or given
    if type(given) ~= "table" then
        refuse("%s: takes a table: %s{passwords = true}", name, name)
    end
    for key in pairs(given) do
        if key ~= "passwords" then
            refuse("%s: there is no '%s'; there is passwords", name, tostring(key))
        end
    end
    local present = {action = list(ask, "action"), trigger = {}}
    local bound = {}
    for _, trigger in ipairs(list(ask, "trigger")) do
        local succeeded, actions = pcall(ask, "get_trigger_associations", trigger.id)
        if succeeded then
            present.trigger[#present.trigger + 1] = trigger
            bound[trigger.id] = actions
        elseif not is_gone(ask, "trigger", trigger.id) then
            error(actions, 0)
        end
    end
    local lists, numbers = {}, {}
    for _, noun in ipairs{"action", "trigger"} do
        lists[noun], numbers[noun] = {}, {}
        for number, item in ipairs(canonical(noun, present[noun])) do
            numbers[noun][item.id] = number
            lists[noun][number] = json.members{
                {"id", number}, {"kind", item.kind}, {"settings", settings_to_wire(item, given.passwords)},
                item.filters and {"filters", to_wire(filters_fields, {filters = item.filters})},
            }
        end
    end
    local associations = {}
    for trigger_id, trigger in pairs(numbers.trigger) do
        for _, action in ipairs(bound[trigger_id]) do
            -- One that was made meanwhile is not in the document.
            if numbers.action[action.action_id] then
                associations[#associations + 1] = {trigger, numbers.action[action.action_id]}
            end
        end
    end
    table.sort(associations, function(left, right)
        return left[1] < right[1] or (left[1] == right[1] and left[2] < right[2])
    end)
    for place, association in ipairs(associations) do
        associations[place] = json.members{{"trigger_id", association[1]}, {"action_id", association[2]}}
    end
    return json.members{
        {"format", format}, {"version", version}, {"actions", lists.action}, {"triggers", lists.trigger},
        {"associations", associations},
    }
end

--- The whole catalogue as a table. Passwords are left out unless `passwords` is true.
function methods.export(ask, given)
    return json.to_table(whole_document(ask, "export", given))
end

--- The whole catalogue as a JSON text, to the byte what the tool's `export` writes. Passwords are null unless `passwords` is true.
function methods.export_json(ask, given)
    return json.pretty(whole_document(ask, "export_json", given)) .. "\n"
end

local function check_list(what, value)
    if type(value) ~= "table" or value == json.null or json.is_object(value) then
        refuse("%s must be a list", what)
    end
    local count = 0
    for _ in pairs(value) do
        count = count + 1
    end
    for place = 1, count do
        if value[place] == nil then
            refuse("%s must be a list, without holes or names", what)
        end
    end
end

local function from_wire(what, fields, wire)
    if type(wire) ~= "table" then
        refuse("%s must be an object", what)
    end
    local values = {}
    for _, field in ipairs(fields) do
        for _, part in ipairs(field.parts or {{wire = field.name}}) do
            local value = wire[part.wire]
            if field.parts or json.is_object(value) then
                check_list(what .. ": '" .. part.wire .. "'", value)
            end
            values[#values + 1] = value == nil and json.null or value
        end
    end
    local named = arguments.by_name(fields, values)
    if not named then
        refuse("%s: lists that belong together differ in length", what)
    end
    for name, value in pairs(named) do
        if value == json.null then
            named[name] = nil
        end
    end
    return named
end

-- JSON libraries have values of their own for null.
local function is_null(value)
    local kind = type(value)
    return kind ~= "string" and kind ~= "number" and kind ~= "boolean"
end

local function check(what, fields, given)
    local fault = arguments.fault(what, fields, given)
    if fault then
        refuse("%s", fault)
    end
end

local function check_filters(what, filters)
    check(what, operations.set_action_filters.inputs, {action_id = 0, filters = filters})
end

-- The items of a document, checked as calls check their arguments. Passwords that are null are empty then; `hidden` has those items.
local function read_items(noun, items, hidden)
    check_list("import: '" .. noun .. "s'", items)
    local read, seen = {}, {}
    for place, item in ipairs(items) do
        local what = string.format("import: %s %s", noun, tostring(type(item) == "table" and item.id or "at place " .. place))
        if type(item) ~= "table" or not arguments.is_number(item.id) or item.id == 0 or seen[item.id] then
            refuse("%s: 'id' must be a whole number from 1 to 4294967295 that no other %s has", what, noun)
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
        local found = {id = item.id, kind = item.kind, settings = settings}
        if item.kind == "ftp_action" and is_null(settings.password) then
            settings.password = ""
            hidden[found] = what
        end
        check(what, fields, settings)
        if noun == "action" then
            found.filters = from_wire(what .. ": filters", filters_fields, item.filters).filters
            check_filters(what, found.filters)
        end
        read[place] = found
    end
    return read, seen
end

-- FTP actions in canonical order with what tells them apart: their name, and which of that name they are.
local function each_ftp_action(items, visit)
    local count = {}
    for _, item in ipairs(canonical("action", items)) do
        if item.kind == "ftp_action" then
            local name = item.settings.action_name
            count[name] = (count[name] or 0) + 1
            visit(name .. "\0" .. count[name], item)
        end
    end
end

-- A document without passwords means those that the service has now.
local function fill_passwords(ask, actions, hidden)
    if not next(hidden) then
        return
    end
    local passwords = {}
    each_ftp_action(list(ask, "action"), function(key, item) passwords[key] = item.settings.password end)
    each_ftp_action(actions, function(key, item)
        if hidden[item] then
            item.settings.password = passwords[key] or
                refuse("%s has no password, and there is no ftp_action of its name that has one", hidden[item])
        end
    end)
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

--- Adds what is in a document, a table or a JSON text, to the catalogue: all of it, or nothing. Gives the new identifiers by those
--- of the document. Everything that can be checked is, before anything is made.
function methods.import(ask, given)
    if type(given) == "string" then
        local read, fault = json.read(given)
        if read == nil then
            refuse("import: %s", fault)
        end
        given = read
    end
    if type(given) ~= "table" or given.format ~= format or given.version ~= version then
        refuse("import: takes a document with format = \"%s\" and version = %d", format, version)
    end
    local hidden = {}
    local actions, known_actions = read_items("action", given.actions, hidden)
    local triggers, known_triggers = read_items("trigger", given.triggers, {})
    check_list("import: 'associations'", given.associations)
    for place, association in ipairs(given.associations) do
        if type(association) ~= "table" or not known_triggers[association.trigger_id] or
            not known_actions[association.action_id] then
            refuse("import: association %d names what is not in the document", place)
        end
    end
    fill_passwords(ask, actions, hidden)
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
        check_filters(what, filters)
    end
    check(what, settings_fields(given.kind), settings)
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
    check_list("rule: 'actions'", given.actions)
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
