-- SPDX-License-Identifier: Apache-2.0
-- Answers that are waited for do not pile up: memory after as many calls as the first word says, and after twice as many.
local ae = require "korvo.action_engine"
local engine = assert(ae.open{name = "many"})
local function kilobytes()
    collectgarbage()
    for line in io.lines("/proc/self/status") do
        local size = line:match("^VmRSS:%s+(%d+) kB")
        if size then
            return tonumber(size)
        end
    end
end
local function call(times)
    for _ = 1, times / 10 do
        local pending = {}
        for place = 1, 10 do
            pending[place] = assert(engine.async:get_actions())
        end
        for place = 1, 10 do
            assert(pending[place]:wait(60))
        end
    end
    return kilobytes()
end
local times = tonumber(arg[1])
local before = call(times)
local after = call(times)
print(string.format("%d kB more", math.max(after - before, 0)))
