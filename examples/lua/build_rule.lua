-- SPDX-License-Identifier: Apache-2.0
-- Makes a whole rule from one description: a trigger, its actions, when they may run, and what binds them. Either all of it
-- is there afterwards or nothing.
--
--     lua5.1 build_rule.lua               the rule below
--     lua5.1 build_rule.lua my_rule.lua   the rule that this file returns

package.path = (arg[0]:match("^.*/") or "./") .. "?.lua;" .. package.path
local api = require "korvo_api_action_engine"
local camera = require "camera"
local catalogue = require "catalogue"

local weekdays = api.kMonday + api.kTuesday + api.kWednesday + api.kThursday + api.kFriday

local motion_in_office_hours = {
    trigger = {
        kind = "onvif",
        trigger_name = "motion at the gate",
        topic_filter = "tns1:VideoSource/MotionAlarm",
        topic_filter_dialect = "http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete",
        content_filter = "",
        namespace_keys = {"tns1"},
        namespace_uris = {"http://www.onvif.org/ver10/topics"},
    },
    actions = {
        {
            kind = "relay",
            action_name = "open the gate",
            relay_target = "relay 1",
            config_mode = 0,
            config_normally_closed = false,
            config_repeat_cycles = 1,
            config_on_time_ms = 500,
            config_off_time_ms = 500,
            windows = {{days = weekdays, from = "08:00", to = "12:00"}, {days = weekdays, from = "13:00", to = "17:00"}},
        },
        {
            kind = "snapshot",
            action_name = "who is there",
            filename = "gate.jpg",
        },
    },
}

local function seconds(time, where)
    local hours, minutes = tostring(time):match("^(%d%d?):(%d%d)$")
    hours, minutes = tonumber(hours), tonumber(minutes)
    if not hours or hours * 60 + minutes > 24 * 60 or minutes > 59 then
        error(where .. ": '" .. tostring(time) .. "' is no time of day, write it like 08:30", 0)
    end
    return hours * 3600 + minutes * 60
end

-- Windows as three lists. How the lists go together, and what their numbers count, is the service's own: this is written for
-- one that takes the n-th entries as one filter and times as seconds since midnight, as the one for development machines
-- does.
local function filters_of(windows, where)
    local filters = {weekday_filters = {}, time_filters_start = {}, time_filters_end = {}}
    for place, window in ipairs(windows) do
        filters.weekday_filters[place] = window.days
        filters.time_filters_start[place] = seconds(window.from, where)
        filters.time_filters_end[place] = seconds(window.to, where)
    end
    return filters
end

-- Checks the whole rule before anything is made. Gives the actions with their windows turned into filters.
local function checked(rule)
    camera.must(type(rule) == "table" and type(rule.actions) == "table",
        "a rule is a table with a trigger and actions")
    catalogue.check(catalogue.triggers, rule.trigger, "the trigger")
    local actions = {}
    for place, description in ipairs(rule.actions) do
        local where = "action " .. place
        local action = {}
        for setting, value in pairs(type(description) == "table" and description or {}) do
            action[setting] = value
        end
        action.filters = action.windows and filters_of(action.windows, where)
        action.windows = nil
        catalogue.check(catalogue.actions, action, where)
        actions[place] = action
    end
    return actions
end

local function build(service, rule)
    local actions = checked(rule)
    local made = {}
    catalogue.all_or_nothing(service, function(create)
        local trigger_id = create(catalogue.triggers, rule.trigger)
        for _, action in ipairs(actions) do
            local action_id = create(catalogue.actions, action)
            if action.filters then
                catalogue.set_filters(service, action_id, action.filters)
            end
            service.create_association(trigger_id, action_id)
            table.insert(made, string.format("trigger %.0f %q runs action %.0f %q", trigger_id,
                rule.trigger.trigger_name, action_id, action.action_name))
        end
    end)
    print(table.concat(made, "\n"))
end

camera.run(function(arguments)
    local rule = arguments[1] and dofile(arguments[1]) or motion_in_office_hours
    local service = camera.open("build_rule")
    build(service, rule)
    service.close()
end)
