-- SPDX-License-Identifier: Apache-2.0
-- korvo.action_engine where no service is: every form fails, says so, and ends.
local ae = require "korvo.action_engine"
local engine = assert(ae.open{name = "alone", timeout = 0.2})
local _, message, status = engine:get_actions()
assert(message:match("^get_actions: status 10 %b(): the service is not running$") and status == 10, message)
_, message, status = engine.async:get_actions():wait(60)
assert(message:match("^get_actions: status 10 ") and status == 10, message)
_, message, status = engine:export()
assert(status == 10, message)
local succeeded, why = pcall(function() for _ in engine:actions() do end end)
assert(not succeeded and why:find("get_actions: status 10 ", 1, true), why)
-- Subscribing works: a service that comes later is subscribed to then.
assert(engine:subscribe())
assert(select(2, engine:next_event(0)) == "next_event: no event")
succeeded, why = pcall(function() engine:strict():get_actions() end)
assert(not succeeded and why:find("get_actions: status 10 ", 1, true), why)
print("done")
