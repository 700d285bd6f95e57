-- SPDX-License-Identifier: Apache-2.0
-- Watches what is in the catalogue and says what changes. Scripts cannot be called back, so it asks again and again.
--
--     lua5.1 watch.lua [--interval SECONDS] [--count HOW_OFTEN]      (every second, until it is interrupted)

package.path = (arg[0]:match("^.*/") or "./") .. "?.lua;" .. package.path
local api = require "korvo_api_action_engine"
local camera = require "camera"
local catalogue = require "catalogue"

io.stdout:setvbuf("line")

local function options(arguments)
    local given = {interval = 1, count = math.huge}
    for place = 1, #arguments, 2 do
        local name = arguments[place]:match("^%-%-(%a+)$")
        given[given[name] and name or error("unknown option '" .. arguments[place] .. "'", 0)] =
            tonumber(arguments[place + 1]) or error(arguments[place] .. " needs a number", 0)
    end
    return given
end

-- Lua has no way to wait by itself. False when somebody has interrupted the waiting.
local function wait(seconds)
    return os.execute(string.format("sleep %f", seconds)) == 0
end

-- Everything as texts: settings by their names, by "action 1" and so on.
local function look(service)
    local seen = {}
    for _, which in ipairs {catalogue.actions, catalogue.triggers} do
        local identifiers, kinds = catalogue.list(service, which)
        for _, identifier in ipairs(identifiers) do
            local found, item = pcall(catalogue.read, service, which, identifier, kinds[identifier])
            if found then
                local texts = {}
                for _, setting in ipairs(catalogue.settings(which, item)) do
                    texts[setting] = catalogue.setting_as_text(setting, item[setting])
                end
                local key = string.format("%s %.0f", which.noun, identifier)
                seen[key] = {title = string.format("%s: %s %q", key, (item.kind:gsub("_", " ")),
                    catalogue.name(which, item)), texts = texts}
            elseif camera.status_of(item) ~= api.KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE then
                -- Status 9 is one that has been deleted since it was listed.
                error(item, 0)
            end
        end
    end
    return seen
end

local function sorted_keys(table_of)
    local keys = {}
    for key in pairs(table_of) do
        table.insert(keys, key)
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
            for _, setting in ipairs(sorted_keys(now[key].texts)) do
                local old, new = before[key].texts[setting], now[key].texts[setting]
                if old ~= new then
                    print(string.format("changed  %s: %s is now %s, it was %s", key, setting, new, tostring(old)))
                end
            end
        end
    end
end

camera.run(function(arguments)
    local given = options(arguments)
    local service = camera.open("watch")
    local before, answers = {}, true
    local rounds = 0
    repeat
        local succeeded, now = pcall(look, service)
        if succeeded then
            if not answers then
                print("the service answers again")
            end
            report(before, now)
            before, answers = now, true
        elseif not camera.status_of(now) then
            error(now, 0)
        elseif answers then
            print("the service does not answer: " .. tostring(now))
            answers = false
        end
        rounds = rounds + 1
    until rounds >= given.count or not wait(given.interval)
    service.close()
end)
