-- SPDX-License-Identifier: Apache-2.0
-- Makes a whole rule from one description: a trigger, its actions, when they may run, and what binds them. Either all of it
-- is there afterwards or nothing.
--
--     lua5.1 build_rule.lua               the rule below
--     lua5.1 build_rule.lua my_rule.lua   the rule that this file returns

local ae = require "korvo.action_engine"

local weekdays = ae.kMonday + ae.kTuesday + ae.kWednesday + ae.kThursday + ae.kFriday
local hour = 3600

local motion_in_office_hours = {
    trigger = {
        kind = "onvif_trigger",
        trigger_name = "motion at the gate",
        topic_filter = "tns1:VideoSource/MotionAlarm",
        topic_filter_dialect = "http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete",
        content_filter = "",
        namespaces = {{key = "tns1", uri = "http://www.onvif.org/ver10/topics"}},
    },
    actions = {
        {
            kind = "relay_action",
            action_name = "open the gate",
            relay_target = "relay 1",
            config_mode = 0,
            config_normally_closed = false,
            config_repeat_cycles = 1,
            config_on_time_ms = 500,
            config_off_time_ms = 500,
            -- What the numbers count is the service's own: this is written for one that takes seconds since midnight.
            filters = {
                {weekdays = weekdays, start = 8 * hour, stop = 12 * hour},
                {weekdays = weekdays, start = 13 * hour, stop = 17 * hour},
            },
        },
        {kind = "snapshot_action", action_name = "who is there", filename = "gate.jpg"},
    },
}

local rule = arg[1] and dofile(arg[1]) or motion_in_office_hours
local made, problem = assert(ae.open{name = "build_rule"}):rule(rule)
if not made then
    io.stderr:write("build_rule.lua: ", problem, "\n")
    os.exit(1)
end
for place, action in ipairs(rule.actions) do
    print(string.format("trigger %.0f %q runs action %.0f %q", made.trigger_id, rule.trigger.trigger_name,
        made.action_ids[place], action.action_name))
end
