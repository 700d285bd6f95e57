-- SPDX-License-Identifier: Apache-2.0
-- Asks several instances of the service at once what they have, and tells what each runs. One that does not answer holds up
-- none of the others.
--
--     lua5.1 targets.lua [--events HOW_MANY] TARGET...      (events of each until it is interrupted)

local ae = require "korvo.action_engine"

io.stdout:setvbuf("line")

-- Gives the problem, or nothing. It waits in a coroutine of its own.
local function watch(engine, target, how_many)
    local subscribed, problem = engine:subscribe()
    if not subscribed then
        return problem
    end
    -- Both are under way at once.
    local actions, triggers = assert(engine.async:get_action_counts()), assert(engine.async:get_trigger_counts())
    local found, found_triggers
    found, problem = actions:wait()
    if not found then
        return problem
    end
    found_triggers, problem = triggers:wait()
    if not found_triggers then
        return problem
    end
    print(string.format("%s: actions: %.0f, triggers: %.0f", target, found.total, found_triggers.total))
    local seen = 0
    while seen < how_many do
        local event = assert(engine:next_event())
        -- Events of all instances reach every engine.
        if event.source == target then
            seen = seen + 1
            print(string.format("%s: action %.0f %q %s", target, event.action_id, event.action_name,
                event.success and "succeeded" or "failed"))
        end
    end
    return nil
end

local targets, how_many = {}, math.huge
local place = 1
while arg[place] do
    if arg[place] == "--events" then
        place = place + 1
        how_many = tonumber(arg[place])
    else
        targets[#targets + 1] = arg[place]
    end
    place = place + 1
end
if #targets == 0 or not how_many then
    io.stderr:write("usage: targets.lua [--events HOW_MANY] TARGET...\n")
    os.exit(2)
end

local tasks, failures = {}, 0
for number, target in ipairs(targets) do
    tasks[number] = function()
        local engine = assert(ae.open{name = "targets", target = target, timeout = 10})
        local problem = watch(engine, target, how_many)
        engine:close()
        if problem then
            failures = failures + 1
            io.stderr:write(target, ": ", problem, "\n")
        end
    end
end
ae.run(unpack(tasks))
os.exit(failures == 0 and 0 or 1)
