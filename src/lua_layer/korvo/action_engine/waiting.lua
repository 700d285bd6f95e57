-- SPDX-License-Identifier: Apache-2.0
-- Waiting, for the whole script or within one of several coroutines.
local events = require "korvo_action_engine_events"

local waiting = {}

-- The coroutines of run(), as long as it runs.
local tasks = setmetatable({}, {__mode = "k"})

--- Returns true as soon as ready() does, and false when `seconds` have gone by; nil waits for ever.
function waiting.await(ready, seconds)
    local deadline = seconds and events.now() + seconds
    local thread = coroutine.running()
    while true do
        local since = events.changes()
        if ready() then
            return true
        end
        local rest = deadline and deadline - events.now()
        if rest and rest <= 0 then
            return false
        end
        if thread and tasks[thread] then
            coroutine.yield(deadline or math.huge)
        else
            events.wait(since, rest)
        end
    end
end

--- Lets the script, or the coroutine of run() that calls it, rest.
function waiting.sleep(seconds)
    local thread = coroutine.running()
    if thread and tasks[thread] then
        -- Also for no time at all the others have their turn.
        coroutine.yield(0)
    end
    waiting.await(function() return false end, seconds)
end

--- Runs functions side by side, each as a coroutine: while one waits for an answer or an event the others go on. Returns
--- when all have; an error in one is raised, and ends the others.
function waiting.run(...)
    local threads = {}
    for place = 1, select("#", ...) do
        local thread = coroutine.create((select(place, ...)))
        tasks[thread] = true
        threads[place] = thread
    end
    while #threads > 0 do
        local since, next_deadline = events.changes(), math.huge
        for place = #threads, 1, -1 do
            local thread = threads[place]
            local succeeded, deadline = coroutine.resume(thread)
            if not succeeded then
                local message = tostring(deadline)
                if message:find("attempt to yield across", 1, true) then
                    message = message .. " (on Lua 5.1 a function of run() cannot wait inside pcall, nor in a for over events(): " ..
                        "call next_event() in a loop)"
                end
                error(debug.traceback(thread, message), 0)
            elseif coroutine.status(thread) == "dead" then
                table.remove(threads, place)
            else
                -- Without a deadline it has only let the others go first.
                next_deadline = math.min(next_deadline, tonumber(deadline) or 0)
            end
        end
        if #threads > 0 then
            local outer = coroutine.running()
            if outer and tasks[outer] then
                coroutine.yield(next_deadline)
            else
                events.wait(since, math.max(next_deadline - events.now(), 0))
            end
        end
    end
end

return waiting
