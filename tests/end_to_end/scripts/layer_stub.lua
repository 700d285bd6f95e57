-- SPDX-License-Identifier: Apache-2.0
-- The stub of korvo.action_engine beside the module: layer_stub.lua STUB
local ae = require "korvo.action_engine"
local operations = require "korvo.action_engine.operations"
local engine = assert(ae.open{name = "stub"})

local file = assert(io.open(arg[1]))
local text = file:read("*a")
file:close()

local chunk = assert(loadstring(text))
local succeeded, message = pcall(chunk)
assert(not succeeded and message:find("the stub of korvo.action_engine is for editors", 1, true), message)

local declared, count = {}, 0
for class, name in text:gmatch("\nfunction ([%w]+)[:.]([%w_]+)%(") do
    declared[class .. ":" .. name] = true
    count = count + 1
    if class == "Engine" then
        assert(type(engine[name]) == "function", name)
    elseif class == "Async" then
        assert(type(engine.async[name]) == "function", name)
    elseif class == "ae" then
        assert(type(ae[name]) == "function", name)
    end
end
for name, value in pairs(ae) do
    assert(type(value) ~= "function" or declared["ae:" .. name], name)
end
local calls = 0
for name, operation in pairs(operations) do
    calls = calls + 1
    assert(declared["Engine:" .. name] and declared["Async:" .. name], name)
    local class = text:match("\n%-%-%-@class korvo%." .. name .. "%.arguments\n(.-)\n\n")
    for _, field in ipairs(operation.inputs) do
        assert(class:find("---@field " .. field.name .. " ", 1, true), name .. "." .. field.name)
    end
end
for _, name in ipairs {"strict", "close", "subscribe", "next_event", "events", "dropped_events", "descriptor", "actions", "triggers",
    "list_actions", "list_triggers", "rule", "export", "export_json", "import", "get_initiator_version"} do
    assert(declared["Engine:" .. name], name)
end
print(calls .. " operations, " .. count .. " functions")
