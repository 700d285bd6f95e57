-- SPDX-License-Identifier: Apache-2.0
-- Which line an error message names.
local check = require "check"
local module = require "korvo_api_action_engine"

local tests = {}

local function run(text)
    return pcall(assert(loadstring(text, "@file.lua")), module)
end

-- One function without a list or text, one with.
local functions = {korvo_core_settings_get_int_value = "int", korvo_core_settings_get_string_value = "string"}

function tests.errors_name_the_line_of_the_call()
    for name in pairs(functions) do
        local succeeded, message = run("local m = ...\n\nlocal x = m." .. name .. "()\nreturn x")
        check.equal(succeeded, false)
        check.equal(message, "file.lua:3: Error in " .. name .. " expected 1..1 args, got 0")
        succeeded, message = run("local m = ...\n\n\nlocal x = m." .. name .. "({})\nreturn x")
        check.equal(message, "file.lua:4: Error in " .. name .. " (arg 1), expected 'char const *' got 'table'")
    end
    local succeeded, message = run("local m = ...\nlocal x = m.korvo_core_alloc_string_array(-1) return x")
    check.equal(succeeded, false)
    check.equal(message, "file.lua:2: number must not be negative")
    succeeded, message = run("local m = ...\nlocal x = m.korvo_core_alloc_int_array(-1) return x")
    check.equal(message, "file.lua:2: number must not be negative")
end

function tests.a_call_without_a_calling_line_has_none()
    for name in pairs(functions) do
        local succeeded, message = pcall(module[name])
        check.equal(succeeded, false)
        check.equal(message, "Error in " .. name .. " expected 1..1 args, got 0")
    end
    local succeeded, message = pcall(module.korvo_core_alloc_string_array, -1)
    check.equal(succeeded, false)
    check.equal(message, "number must not be negative")
end

function tests.tail_calls_fail_with_the_same_text()
    for name in pairs(functions) do
        local succeeded, message = run("local m = ...\nlocal x = (function() return m." .. name .. "() end)()\nreturn x")
        check.equal(succeeded, false)
        check.equal(message:match("Error in .*$"), "Error in " .. name .. " expected 1..1 args, got 0")
    end
end

function tests.coroutines_name_their_own_lines()
    for name in pairs(functions) do
        local routine = coroutine.create(assert(loadstring("local m = ...\n\nlocal x = m." .. name .. "()", "@inside.lua")))
        local succeeded, message = coroutine.resume(routine, module)
        check.equal(succeeded, false)
        check.equal(message, "inside.lua:3: Error in " .. name .. " expected 1..1 args, got 0")
    end
end

function tests.coroutines_call_and_yield_between_calls()
    fake.record_core()
    fake.answer("korvo_core_settings_get_arrayofint_value", 0, {{1, 2}, 2})
    local routine = coroutine.wrap(function()
        for _ = 1, 3 do
            coroutine.yield(module.korvo_core_settings_get_arrayofint_value("key"))
        end
    end)
    for _ = 1, 3 do
        check.equal({routine()}, {0, {1, 2}, 2})
    end
end

return tests
