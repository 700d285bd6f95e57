-- SPDX-License-Identifier: Apache-2.0
-- Watches what is in the catalogue and says what changes. No event tells of that, so it asks again and again.
--
--     lua5.1 watch.lua [--interval SECONDS] [--count HOW_OFTEN]      (every second, until it is interrupted)

package.path = (arg[0]:match("^.*/") or "./") .. "?.lua;" .. package.path
local ae = require "korvo.action_engine"
local describe = require "describe"

io.stdout:setvbuf("line")

local function options()
    local given = {interval = 1, count = math.huge}
    for place = 1, #arg, 2 do
        local name = arg[place]:match("^%-%-(%a+)$")
        given[given[name] and name or error("unknown option '" .. arg[place] .. "'", 0)] =
            tonumber(arg[place + 1]) or error(arg[place] .. " needs a number", 0)
    end
    return given
end

-- Titles and settings as texts, by "action 1" and so on, or nil and what is wrong.
local function look(engine)
    local seen = {}
    for _, noun in ipairs {"action", "trigger"} do
        local items, problem = engine["list_" .. noun .. "s"](engine)
        if not items then
            return nil, problem
        end
        for _, item in ipairs(items) do
            local texts = {}
            for _, setting in ipairs(describe.settings(item)) do
                texts[setting.name] = setting.text
            end
            seen[string.format("%s %.0f", noun, item.id)] = {title = describe.title(noun, item), texts = texts}
        end
    end
    return seen
end

local function sorted_keys(table_of)
    local keys = {}
    for key in pairs(table_of) do
        keys[#keys + 1] = key
    end
    table.sort(keys)
    return keys
end

local function report(before, now)
    for _, key in ipairs(sorted_keys(before)) do
        if not now[key] then
            print("gone     " .. before[key].title)
        end
    end
    for _, key in ipairs(sorted_keys(now)) do
        if not before[key] then
            print("new      " .. now[key].title)
        else
            for _, name in ipairs(sorted_keys(now[key].texts)) do
                local old, new = before[key].texts[name], now[key].texts[name]
                if old ~= new then
                    print(string.format("changed  %s: %s is now %s, it was %s", key, name, new, tostring(old)))
                end
            end
        end
    end
end

describe.run("watch.lua", function()
    local given = options()
    local engine = assert(ae.open{name = "watch"})
    local before, answers = {}, true
    for round = 1, given.count do
        if round > 1 then
            ae.sleep(given.interval)
        end
        local now, problem = look(engine)
        if now then
            if not answers then
                print("the service answers again")
            end
            report(before, now)
            before = now
        elseif answers then
            print("the service does not answer: " .. problem)
        end
        answers = now ~= nil
    end
end)
