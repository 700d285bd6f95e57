-- SPDX-License-Identifier: Apache-2.0
-- Lists everything that the service keeps: actions with their settings and filters, triggers, and which runs which.
--
--     lua5.1 list_catalogue.lua

package.path = (arg[0]:match("^.*/") or "./") .. "?.lua;" .. package.path
local ae = require "korvo.action_engine"
local describe = require "describe"

local days = {
    {ae.kSunday, "Sun"}, {ae.kMonday, "Mon"}, {ae.kTuesday, "Tue"}, {ae.kWednesday, "Wed"}, {ae.kThursday, "Thu"},
    {ae.kFriday, "Fri"}, {ae.kSaturday, "Sat"},
}

-- What the numbers count is the service's own: this is written for one that takes seconds since midnight.
local function window(filter)
    local names = {}
    for _, day in ipairs(days) do
        if math.floor(filter.weekdays / day[1]) % 2 == 1 then
            names[#names + 1] = day[2]
        end
    end
    local function time(seconds)
        return string.format("%02d:%02d", math.floor(seconds / 3600), math.floor(seconds / 60) % 60)
    end
    return table.concat(names, " ") .. " from " .. time(filter.start) .. " to " .. time(filter.stop)
end

local function show(noun, item)
    print(describe.title(noun, item))
    for _, setting in ipairs(describe.settings(item)) do
        if setting.name ~= noun .. "_name" then
            print("    " .. setting.name .. " = " .. setting.text)
        end
    end
end

describe.run("list_catalogue.lua", function()
    local engine = assert(ae.open{name = "list_catalogue"}):strict()
    local actions, triggers = engine:list_actions(), engine:list_triggers()
    print(string.format("actions: %d, triggers: %d", #actions, #triggers))
    for _, action in ipairs(actions) do
        show("action", action)
        for _, filter in ipairs(action.filters) do
            print("    runs only " .. window(filter))
        end
    end
    for _, trigger in ipairs(triggers) do
        show("trigger", trigger)
        local ids = {}
        for place, action in ipairs(engine:get_trigger_associations(trigger.id)) do
            ids[place] = string.format("%.0f", action.action_id)
        end
        print("    runs " .. (ids[1] and "action " .. table.concat(ids, ", ") or "nothing"))
    end
end)
