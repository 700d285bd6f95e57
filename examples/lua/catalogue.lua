-- SPDX-License-Identifier: Apache-2.0
-- Actions and triggers as Lua tables. An item is what its create operation takes, by name, and its kind:
--
--     {kind = "relay", action_name = "gate", relay_target = "relay 1", config_mode = 0, ...}
--     {kind = "timer", trigger_name = "every minute", timer_seconds = 60}

local api = require "korvo_api_action_engine"
local camera = require "camera"

local catalogue = {}

-- The settings of each kind, in the order in which its operations take and give them.
local relay = {
    "action_name", "relay_target", "config_mode", "config_normally_closed", "config_repeat_cycles",
    "config_on_time_ms", "config_off_time_ms",
}
local email = {
    "action_name", "smtp_server", "to_addresses", "cc_addresses", "from_address", "subject", "body",
    "attach_jpeg", "include_event",
}
local ftp = {"action_name", "server_name", "username", "password", "path", "filename"}
local onvif = {
    "trigger_name", "topic_filter", "topic_filter_dialect", "content_filter", "namespace_keys", "namespace_uris",
}
local stable_onvif = {
    "trigger_name", "topic_filter", "content_filter", "namespace_keys", "namespace_uris", "stability_seconds",
}

-- Settings that are not texts.
local types = {
    attach_jpeg = "boolean", include_event = "boolean", config_normally_closed = "boolean",
    config_mode = "number", config_repeat_cycles = "number", config_on_time_ms = "number",
    config_off_time_ms = "number", timer_seconds = "number", stability_seconds = "number",
    to_addresses = "table", cc_addresses = "table", namespace_keys = "table", namespace_uris = "table",
}

-- One half of the catalogue: its operations end with its noun.
local function half(noun, kinds)
    local by_type = {}
    for kind, description in pairs(kinds) do
        by_type[description.type] = kind
    end
    return {noun = noun, kinds = kinds, by_type = by_type}
end

catalogue.actions = half("action", {
    email = {type = api.kSendEmailAction, settings = email},
    ftp = {type = api.kFtpUploadAction, settings = ftp},
    snapshot = {type = api.kSaveSnapshotAction, settings = {"action_name", "filename"}},
    ptz_pattern = {type = api.kPtzPatternAction, settings = {"action_name", "pattern_id"}},
    ptz_preset = {type = api.kPtzPresetAction, settings = {"action_name", "preset_id"}},
    ptz_tour = {type = api.kPtzTourAction, settings = {"action_name", "tour_id"}},
    ptz_scan = {type = api.kPtzScanAction, settings = {"action_name", "scan_id"}},
    wiper = {type = api.kWiperAction, settings = {"action_name"}},
    washer = {type = api.kWasherAction, settings = {"action_name"}},
    relay = {type = api.kRelayAction, settings = relay},
})

catalogue.triggers = half("trigger", {
    timer = {type = api.kReoccurringTimerTrigger, settings = {"trigger_name", "timer_seconds"}},
    onvif = {type = api.kOnvifEventTrigger, settings = onvif},
    stable_onvif = {type = api.kStableOnvifEventTrigger, settings = stable_onvif},
})

-- The names of an item's settings, in order.
function catalogue.settings(which, item)
    return which.kinds[item.kind].settings
end

function catalogue.name(which, item)
    return item[which.noun .. "_name"]
end

-- All identifiers of a half, in the service's order, and the kind of each. A kind that a newer service has is nil.
function catalogue.list(service, which)
    local identifiers, type_numbers = service["get_" .. which.noun .. "s"]()
    identifiers = camera.identifiers(identifiers)
    local kinds = {}
    for place, identifier in ipairs(identifiers) do
        kinds[identifier] = which.by_type[type_numbers[place]]
    end
    return identifiers, kinds
end

function catalogue.read(service, which, identifier, kind)
    if not kind then
        error(string.format("%s %.0f is of a type that this program does not know", which.noun, identifier), 0)
    end
    local values = {service["get_" .. kind .. "_" .. which.noun](identifier)}
    local item = {kind = kind}
    for place, setting in ipairs(which.kinds[kind].settings) do
        item[setting] = values[place]
    end
    return item
end

-- Raises an error for an item that the service could not take. `where` says where it stands, for people.
function catalogue.check(which, item, where)
    local function wrong(...)
        error(where .. ": " .. string.format(...), 0)
    end
    if type(item) ~= "table" or not which.kinds[item.kind] then
        wrong("'%s' is no kind of %s", type(item) == "table" and tostring(item.kind) or type(item), which.noun)
    end
    local expected = {kind = "string", filters = "table"}
    for _, setting in ipairs(catalogue.settings(which, item)) do
        expected[setting] = types[setting] or "string"
        if type(item[setting]) ~= expected[setting] then
            wrong("'%s' must be a %s, it is a %s", setting, expected[setting], type(item[setting]))
        end
        if expected[setting] == "number" and not (item[setting] >= 0 and item[setting] < 2^32) then
            wrong("'%s' must be 0 to 4294967295", setting)
        end
        for _, element in pairs(expected[setting] == "table" and item[setting] or {}) do
            if type(element) ~= "string" then
                wrong("'%s' must hold texts, it holds a %s", setting, type(element))
            end
        end
    end
    for setting in pairs(item) do
        if not expected[setting] then
            wrong("a %s %s has no '%s'", item.kind, which.noun, tostring(setting))
        end
    end
end

-- Gives the new item's identifier. The item has been checked.
function catalogue.create(service, which, item)
    local settings = catalogue.settings(which, item)
    local values = {}
    for place, setting in ipairs(settings) do
        values[place] = item[setting]
    end
    return service["create_" .. item.kind .. "_" .. which.noun](unpack(values, 1, #settings))
end

-- Calls work(create), where create(which, item) is catalogue.create(). When the work ends with an error, all that it has
-- created is deleted again.
function catalogue.all_or_nothing(service, work)
    local made = {}
    local function create(which, item)
        local identifier = catalogue.create(service, which, item)
        table.insert(made, {which = which, identifier = identifier})
        return identifier
    end
    local succeeded, problem = pcall(work, create)
    if succeeded then
        return
    end
    -- Associations and filters go with the actions and triggers that they belong to.
    for place = #made, 1, -1 do
        local noun, identifier = made[place].which.noun, made[place].identifier
        local undone, why = pcall(service["delete_" .. noun], identifier)
        if not undone then
            problem = string.format("%s\n%s %.0f was made and could not be deleted: %s", tostring(problem), noun,
                identifier, tostring(why))
        end
    end
    error(problem, 0)
end

-- The filters of an action, three lists by name.
catalogue.filter_lists = {"weekday_filters", "time_filters_start", "time_filters_end"}

function catalogue.read_filters(service, identifier)
    local filters = {}
    filters.weekday_filters, filters.time_filters_start, filters.time_filters_end =
        service.get_action_filters(identifier)
    for _, name in ipairs(catalogue.filter_lists) do
        filters[name] = camera.identifiers(filters[name])
    end
    return filters
end

function catalogue.set_filters(service, identifier, filters)
    service.set_action_filters(identifier, filters.weekday_filters, filters.time_filters_start,
        filters.time_filters_end)
end

local days = {
    {api.kSunday, "Sun"}, {api.kMonday, "Mon"}, {api.kTuesday, "Tue"}, {api.kWednesday, "Wed"},
    {api.kThursday, "Thu"}, {api.kFriday, "Fri"}, {api.kSaturday, "Sat"},
}

local function days_as_text(set)
    local names = {}
    for _, day in ipairs(days) do
        if math.floor(set / day[1]) % 2 == 1 then
            table.insert(names, day[2])
        end
    end
    return table.concat(names, " ")
end

local function time_as_text(seconds)
    return string.format("%02d:%02d", math.floor(seconds / 3600), math.floor(seconds / 60) % 60)
end

-- Each filter in words. What a shorter list lacks sets no bound.
function catalogue.filters_as_texts(filters)
    local texts = {}
    local weekdays, starts, ends = filters.weekday_filters, filters.time_filters_start, filters.time_filters_end
    for place = 1, math.max(#weekdays, #starts, #ends) do
        texts[place] = string.format("%s from %s to %s",
            weekdays[place] and days_as_text(weekdays[place]) or "any day",
            starts[place] and time_as_text(starts[place]) or "00:00",
            ends[place] and time_as_text(ends[place]) or "24:00")
    end
    return texts
end

-- A setting for people. Passwords are not shown.
function catalogue.setting_as_text(setting, value)
    if setting == "password" then
        return "(hidden)"
    elseif type(value) == "table" then
        return "{" .. table.concat(value, ", ") .. "}"
    elseif type(value) == "number" then
        return string.format("%.0f", value)
    elseif type(value) == "string" then
        return string.format("%q", value)
    end
    return tostring(value)
end

return catalogue
