-- SPDX-License-Identifier: Apache-2.0
-- Texts as JSON and as documents of korvo.action_engine. What is accepted is written and read back alike, and what is refused has
-- a reason and has made nothing.
local api = require "korvo_api_action_engine"
local document = require "korvo.action_engine.document"
local json = require "korvo.action_engine.json"

local types = {
    email_action = api.kSendEmailAction, ftp_action = api.kFtpUploadAction, snapshot_action = api.kSaveSnapshotAction,
    ptz_pattern_action = api.kPtzPatternAction, ptz_preset_action = api.kPtzPresetAction, ptz_tour_action = api.kPtzTourAction,
    ptz_scan_action = api.kPtzScanAction, wiper_action = api.kWiperAction, washer_action = api.kWasherAction,
    relay_action = api.kRelayAction, onvif_trigger = api.kOnvifEventTrigger, timer_trigger = api.kReoccurringTimerTrigger,
    stable_onvif_trigger = api.kStableOnvifEventTrigger,
}

-- A service that keeps what it is told, as the function that document.lua asks.
local function new_service()
    local kept, last, bound = {action = {}, trigger = {}}, 0, {}

    local function list(noun)
        local entries = {}
        for id, item in pairs(kept[noun]) do
            entries[#entries + 1] = {[noun .. "_id"] = id, [noun .. "_type"] = types[item.kind]}
        end
        return entries
    end

    local operations = {
        get_actions = function() return list("action") end,
        get_triggers = function() return list("trigger") end,
        get_action_filters = function(id) return kept.action[id].filters end,
        set_action_filters = function(given) kept.action[given.action_id].filters = given.filters end,
        create_association = function(given) bound[#bound + 1] = given end,
        get_trigger_associations = function(id)
            local found = {}
            for _, association in ipairs(bound) do
                found[#found + 1] = association.trigger_id == id and {action_id = association.action_id} or nil
            end
            return found
        end,
    }
    return function(operation, given)
        if operations[operation] then
            return operations[operation](given)
        end
        local verb, kind = operation:match("^(%l+)_([%l_]+)$")
        local noun = kind:match("%l+$")
        if verb == "create" then
            assert(types[kind], operation)
            last = last + 1
            kept[noun][last] = {kind = kind, settings = given, filters = {}}
            return last
        end
        assert(verb == "get" and kept[noun][given].kind == kind, operation)
        return kept[noun][given].settings
    end
end

-- A value as it can be written: members in an order, and numbers whole, as all in a document are.
local function writable(value)
    if type(value) == "number" then
        assert(value == value, "a number that is none was read")
        return math.abs(value) <= 2 ^ 53 and math.floor(value) or tostring(value)
    elseif type(value) ~= "table" or value == json.null then
        return value
    end
    local made = {}
    if json.is_object(value) then
        local names = {}
        for name in pairs(value) do
            names[#names + 1] = name
        end
        table.sort(names)
        for place, name in ipairs(names) do
            made[place] = {name, writable(value[name])}
        end
        return json.members(made)
    end
    for place, element in ipairs(value) do
        made[place] = writable(element)
    end
    return made
end

local function exported(text)
    local service = new_service()
    document.methods.import(service, text)
    return document.methods.export_json(service, {passwords = true})
end

return function(text)
    local value, reason = json.read(text)
    if value == nil then
        assert(reason:find("^line [1-9]%d*, column [1-9]%d*: ."), reason)
    else
        for _, write in ipairs{json.compact, json.pretty} do
            local once = write(writable(value))
            local again, fault = json.read(once)
            assert(fault == nil, fault)
            assert(write(writable(again)) == once, once)
        end
    end
    local made = false
    local service = new_service()
    local accepted, failure = pcall(document.methods.import, function(operation, given)
        made = made or operation:find("^create") ~= nil
        return service(operation, given)
    end, text)
    if not accepted then
        assert(type(failure) == "table" and type(failure.message) == "string" and #failure.message > 0, tostring(failure))
        assert(not made, failure.message)
        return
    end
    local once = exported(text)
    assert(exported(once) == once, once)
end
