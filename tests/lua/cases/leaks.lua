-- SPDX-License-Identifier: Apache-2.0
-- No call leaves a heap block behind, whether it succeeds or fails at whatever place.
local check = require "check"
local client = require "client"
local functions = require "functions"
local kinds = require "kinds"
local module = require "korvo_api_action_engine"

local tests = {}

--- Expects the function to leave nothing behind; gives its outcome.
local function leaves_nothing(what, f, ...)
    local left, succeeded, message = host.left_behind(f, ...)
    check.equal(left, 0, what .. ": blocks left behind")
    return succeeded, message
end

-- These release twice what they are given, or give what the script has to release.
local function is_array_function(row)
    return row.name:find("_array$") ~= nil
end

local samples = {text = "a text", constant_text = "a text", texts = {"a", "b"}, integers = {1, 2}, flags = {1},
                 reals = {1}}

local function answer(row)
    local values = {n = #row.results}
    for place, kind in ipairs(row.results) do
        values[place] = samples[kind] or 5
    end
    fake.answer(row.name, values[1], {n = values.n - 1, unpack(values, 2, values.n)})
end

function tests.counting_works()
    local left, _, memory = host.left_behind(function() return host.new(10) end)
    check.equal(left, 1)
    host.delete(memory)
end

function tests.core_functions_leave_nothing()
    for _, row in ipairs(functions.core) do
        if not is_array_function(row) then
            local arguments = kinds.good_arguments(row)
            check.is_true(leaves_nothing(row.name, function()
                fake.record_core()
                answer(row)
                module[row.name](unpack(arguments, 1, arguments.n))
            end))
        end
    end
end

local function fails_at_every_argument(row)
    for position = 0, #row.inputs do
        for _, wrong in ipairs {print, -1, host.null(), "-1", {x = 1}, setmetatable({x = 1}, {__index = error}),
                                host.pointer(1)} do
            local arguments = kinds.good_arguments(row)
            -- Real lists in front, so that there is something to release.
            for place, kind in ipairs(row.inputs) do
                if kind == "texts" then
                    arguments[place] = {"a", "b"}
                elseif kind == "numbers" then
                    arguments[place] = {1, 2}
                end
            end
            arguments[position] = wrong
            leaves_nothing(row.name .. " argument " .. position, function()
                fake.record_core()
                -- Some of the values are right for some arguments, and the call succeeds.
                pcall(module[row.name], unpack(arguments, 1, arguments.n))
            end)
        end
    end
end

function tests.long_texts_leave_nothing()
    for _, size in ipairs {10, 1000, 5000} do
        check.is_true(leaves_nothing("texts of " .. size, function()
            fake.record_core()
            local text = ("x"):rep(size)
            fake.answer("korvo_core_ipc_initiator_response_receive", 0, {text, text, text, text})
            module.korvo_core_ipc_initiator_response_receive(nil, 5)
            fake.answer("korvo_core_debug_get_setting_path", text)
            module.korvo_core_debug_get_setting_path()
        end))
    end
end

function tests.failing_calls_leave_nothing()
    for _, row in ipairs(functions.core) do
        if not is_array_function(row) then
            fails_at_every_argument(row)
        end
    end
end

local function operation_arguments(row, handle)
    local arguments = {handle, "target", n = 2}
    for _, input in ipairs(row.row.inputs) do
        arguments.n = arguments.n + 1
        arguments[arguments.n] = input.sample
    end
    return arguments
end

function tests.operations_leave_nothing()
    for _, row in ipairs(functions.forms) do
        if row.form == "send" and not row.row.is_version then
            local function succeed()
                client.with(function(handle)
                    local arguments = operation_arguments(row, handle)
                    fake.respond(row.operation)
                    assert(module[row.name](unpack(arguments, 1, arguments.n)) == 0)
                    fake.fail("receive", 9)
                    assert(module[row.name](unpack(arguments, 1, arguments.n)) == 9)
                    -- A wrong argument at every place.
                    for position = 1, arguments.n do
                        for _, wrong in ipairs {print, -1, {x = 1}, setmetatable({x = 1}, {__index = error})} do
                            local changed = {unpack(arguments, 1, arguments.n)}
                            changed[position] = wrong
                            if position > 1 then
                                pcall(module[row.name], unpack(changed, 1, arguments.n))
                            else
                                assert(not pcall(module[row.name], unpack(changed, 1, arguments.n)))
                            end
                        end
                    end
                end)
            end
            check.is_true(leaves_nothing(row.name, succeed), row.name)
        end
    end
end

function tests.exceptions_leave_nothing()
    for _, row in ipairs(functions.core) do
        if not is_array_function(row) then
            local arguments = kinds.good_arguments(row)
            check.is_true(leaves_nothing(row.name, function()
                fake.record_core()
                fake.throw(row.name, "standard")
                module[row.name](unpack(arguments, 1, arguments.n))
            end))
        end
    end
end

--- Calls test(n) with the nth heap block failing, for n = 1 and up, until none fails. Memory that is not Lua's runs out
-- without a Lua error, and without a crash.
local function without_memory(what, test)
    local succeeded, failures = true, 0
    for nth = 1, 2000 do
        local failed, status
        leaves_nothing(what, function()
            failed, succeeded, status = test(nth)
        end)
        check.equal(succeeded, true, what .. ": " .. tostring(status))
        check.equal(type(status), "number", what)
        if not failed then
            check.is_true(failures > 0, what .. " takes memory")
            check.equal(status, 0, what)
            return
        end
        failures = failures + 1
    end
    error(what .. " never succeeds")
end

function tests.blocks_that_cannot_be_had_raise_no_errors()
    if not host.blocks_can_fail then
        return
    end
    local samples_of_lists = {arrayofstring = {"a", "b"}, arrayofint = {1}, arrayofbool = {true}, arrayofdouble = {1}}
    for kind, sample in pairs(samples_of_lists) do
        local f = module["korvo_core_settings_set_" .. kind .. "_value"]
        without_memory(kind, function(nth)
            fake.reset()
            return host.fail_nth_block(nth, function() return f("key", sample) end)
        end)
    end
end

return tests
