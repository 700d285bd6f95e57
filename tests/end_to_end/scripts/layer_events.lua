-- SPDX-License-Identifier: Apache-2.0
-- Events and answers of korvo.action_engine that are waited for, against a service with an empty catalogue.
local ae = require "korvo.action_engine"
local events = require "korvo_action_engine_events"

local namespaces = {{key = "tns1", uri = "http://www.onvif.org/ver10/topics"}}
local topic = "tns1:VideoSource/MotionAlarm"
local engine = assert(ae.open{name = "events", events = 3})
local made = assert(engine:rule{
    trigger = {kind = "onvif_trigger", trigger_name = "motion", topic_filter = topic, content_filter = "", namespaces = namespaces,
        topic_filter_dialect = "http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete"},
    actions = {{kind = "wiper_action", action_name = "wipe"}},
})

local function fire(times)
    for _ = 1, times do
        assert(engine:onvif_event{topic = topic, message = "<State>true</State>", namespaces = namespaces})
    end
end

-- Nothing comes, and that takes no longer than it should at least.
assert(engine:subscribe())
local begin = events.now()
assert(select(2, engine:next_event(0.05)) == "next_event: no event")
assert(events.now() - begin >= 0.05)

-- In order, through the iterator.
fire(2)
local count = 0
for event in engine:events(60) do
    assert(event.action_id == made.action_ids[1] and event.dropped == 0)
    count = count + 1
    if count == 2 then
        break
    end
end

-- More than there is room for: the oldest stay, and the next one says how many are missing before it.
local watcher = assert(ae.open{name = "watcher"})
assert(watcher:subscribe())
fire(8)
for _ = 1, 8 do
    assert(watcher:next_event(60))
end
local function wait_for_drops()
    for _ = 1, 600 do
        if engine:dropped_events() == 5 then
            return true
        end
        ae.sleep(0.1)
    end
end
assert(wait_for_drops(), engine:dropped_events())
for _ = 1, 3 do
    assert(assert(engine:next_event(60)).dropped == 0)
end
fire(1)
assert(assert(engine:next_event(60)).dropped == 5)
assert(engine:dropped_events() == 5)

-- Answers: several at once, in any order, more than once, and not at all.
local pending = {}
for place = 1, 20 do
    pending[place] = assert(engine.async:get_action_type(made.action_ids[1]))
end
for place = 20, 1, -1 do
    assert(pending[place]:wait() == ae.kWiperAction)
    assert(pending[place]:ready() and pending[place]:wait() == ae.kWiperAction)
end
local cancelled = assert(engine.async:get_actions())
cancelled:cancel()
cancelled:cancel()
local _, message, status = cancelled:wait()
assert(message == "get_actions: the call was cancelled" and status == 1)
engine.async:get_actions()   -- nobody keeps it
collectgarbage()
local unkept = assert(engine.async:get_actions{timeout = 60})
assert(#unkept:wait() == 1)

-- What is wrong is told before anything begins.
_, message, status = engine.async:delete_action(-1)
assert(message == "delete_action: 'action_id' wants a whole number from 0 to 4294967295, and is -1" and status == 1)

-- The descriptor is readable exactly as long as there is something to take.
if package.loaded.ffi or pcall(require, "ffi") then
    local ffi = require "ffi"
    ffi.cdef "struct pollfd { int fd; short events; short revents; }; int poll(struct pollfd *, unsigned long, int);"
    local polled = ffi.new("struct pollfd[1]", {{fd = assert(engine:descriptor()), events = 1}})
    assert(ffi.C.poll(polled, 1, 0) == 0)
    local answer = assert(engine.async:get_actions())
    assert(ffi.C.poll(polled, 1, 60000) == 1)
    assert(#answer:wait() == 1)
    assert(ffi.C.poll(polled, 1, 0) == 0)
    fire(1)
    assert(ffi.C.poll(polled, 1, 60000) == 1)
    assert(engine:next_event(0))
    assert(ffi.C.poll(polled, 1, 0) == 0)
    answer = assert(engine.async:get_actions())
    assert(ffi.C.poll(polled, 1, 60000) == 1)
    answer:cancel()
    assert(ffi.C.poll(polled, 1, 0) == 0)
end
assert(engine:descriptor() >= 0)

-- Coroutines wait side by side; errors in one are raised with its traceback.
local order = {}
ae.run(
    function()
        for _ = 1, 3 do
            assert(engine.async:get_actions():wait())
        end
        ae.sleep(0.05)
        fire(1)
        order[#order + 1] = "fired"
    end,
    function()
        assert(watcher:next_event(0.001) or true)
        local event
        repeat
            event = assert(watcher:next_event(60))
        until order[1]
        order[#order + 1] = "seen " .. event.action_id
    end,
    function()
        coroutine.yield()
        order[#order + 1] = nil
    end)
assert(#order == 2 and order[1] == "fired" and order[2] == "seen " .. made.action_ids[1], table.concat(order, ", "))
local succeeded, trace = pcall(ae.run, function() ae.sleep(0.01) error("broken") end)
assert(not succeeded and trace:find("broken", 1, true) and trace:find("stack traceback", 1, true), trace)

-- The end: what waits is told so.
local late = assert(engine.async:get_actions())
engine:close()
local result, why, ended = late:wait()
assert(result and #result == 1 or (ended == 4 and why:find("the engine has ended", 1, true)), why)
assert(select(3, engine:next_event()) == 1)
for _ in engine:events() do
    error("an event of a closed engine")
end
print("done")
