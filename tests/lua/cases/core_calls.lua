-- SPDX-License-Identifier: Apache-2.0
-- Every function of the core: what the core gets, and what comes back.
local call = require "call"
local check = require "check"
local functions = require "functions"
local kinds = require "kinds"
local module = require "korvo_api_action_engine"

local tests = {}

-- Where the core gets more than the script gives.
local additions = {
    korvo_core_ipc_initiator_init = function(arguments)
        arguments[4], arguments.n = 1, 4
    end,
    korvo_core_logging_log = function(arguments)
        arguments[3], arguments[4], arguments.n = arguments[3] and "%s", arguments[3], 4
    end,
}

-- The array functions have tests of their own.
local function rows()
    local chosen = {}
    for _, row in ipairs(functions.core) do
        if not row.name:find("_array$") then
            chosen[#chosen + 1] = row
        end
    end
    check.equal(#chosen, 91)
    return chosen
end

local function only_call(name)
    local calls = fake.calls(name)
    check.equal(#calls, 1, "calls of " .. name)
    return calls[1].arguments
end

function tests.every_sample_of_every_argument_arrives()
    for _, row in ipairs(rows()) do
        for position = 1, #row.inputs do
            for _, sample in ipairs(kinds.input(row, position).samples) do
                local arguments, expected = {n = #row.inputs}, {n = #row.inputs}
                for other = 1, #row.inputs do
                    local chosen = other == position and sample or kinds.input(row, other).samples[1]
                    arguments[other], expected[other] = chosen[1], chosen[2]
                end
                fake.record_core()
                call.results(module[row.name], arguments, row.name)
                local add = additions[row.name]
                if add then
                    add(expected)
                end
                local found = only_call(row.name)
                for place = 1, expected.n do
                    local value = expected[place]
                    if type(value) == "table" then
                        value.n = #value
                    end
                    check.equal(found[place], value, row.name .. " argument " .. place)
                end
                check.equal(found.n, expected.n, row.name)
            end
        end
        if #row.inputs == 0 then
            fake.record_core()
            call.results(module[row.name], {}, row.name)
            check.equal(only_call(row.name), {n = 0}, row.name)
        end
    end
end

--- Arranges the nth samples as answers; gives what a script must get.
local function arrange(row, nth, status)
    local returned, outs, expected = nil, {n = 0}, {n = #row.results}
    for place, kind in ipairs(row.results) do
        local samples = kinds.results[kind].samples
        local sample = samples[(nth - 1) % #samples + 1]
        if kind == "status" then
            sample = {status, status}
        end
        if place == 1 then
            returned = sample[1]
        else
            outs.n = outs.n + 1
            outs[outs.n] = sample[1]
        end
        expected[place] = sample[2]
    end
    fake.answer(row.name, returned, outs)
    return expected
end

function tests.every_sample_of_every_result_comes_back()
    for _, row in ipairs(rows()) do
        for nth = 1, 3 do
            -- Out-values come back whatever the status is.
            for _, status in ipairs {0, 9, 4000000000} do
                fake.record_core()
                local expected = arrange(row, nth, status)
                check.equal(call.results(module[row.name], kinds.good_arguments(row)), expected, row.name)
            end
        end
    end
end

function tests.results_that_the_core_leaves_come_back_empty()
    for _, row in ipairs(rows()) do
        fake.record_core()
        local expected = {n = #row.results}
        for place, kind in ipairs(row.results) do
            expected[place] = kinds.results[kind].empty
        end
        if row.results[1] == "status" then
            fake.answer(row.name, 6)
            expected[1] = 6
        end
        check.equal(call.results(module[row.name], kinds.good_arguments(row)), expected, row.name)
    end
end

function tests.a_throwing_core_gives_status_4_and_empty_results()
    for _, row in ipairs(rows()) do
        for _, what in ipairs {"standard", "json", "number"} do
            fake.record_core()
            fake.throw(row.name, what)
            local expected = {n = #row.results}
            for place, kind in ipairs(row.results) do
                expected[place] = kinds.results[kind].empty
            end
            if row.results[1] == "status" then
                expected[1] = 4
            end
            check.equal(call.results(module[row.name], kinds.good_arguments(row)), expected, row.name)
        end
    end
end

function tests.texts_of_statuses_are_the_cores()
    fake.reset()
    check.equal(module.korvo_core_status_to_string(module.KORVO_CORE_STATUS_IPC_FAILED), "messaging failed")
end

function tests.texts_of_every_size_come_back_whole()
    for _, size in ipairs {0, 1, 255, 511, 512, 1022, 1023, 1024, 1025, 4096, 100000} do
        local text = ("x"):rep(size)
        fake.record_core()
        fake.answer("korvo_core_settings_get_string_value", 0, {text})
        check.equal({module.korvo_core_settings_get_string_value("key")}, {0, text})
        fake.answer("korvo_core_debug_get_setting_path", text)
        check.equal({module.korvo_core_debug_get_setting_path()}, {text})
        -- Four texts of one size, and one that is longer than the others at every place.
        for longest = 0, 4 do
            local texts = {text, text .. "2", text .. "33", text .. "444"}
            if longest > 0 then
                texts[longest] = ("y"):rep(3000)
            end
            fake.answer("korvo_core_ipc_initiator_response_receive", 0, texts)
            check.equal({module.korvo_core_ipc_initiator_response_receive(nil, 5)}, {0, unpack(texts)})
        end
    end
end

function tests.a_logged_text_is_data()
    fake.record_core()
    check.equal(module.korvo_core_logging_log(nil, module.KORVO_CORE_LOG_PRIORITY_ERR, "100 %s %n %d"), 0)
    local arguments = fake.calls("korvo_core_logging_log")[1].arguments
    check.equal(arguments[4], "100 %s %n %d")
end

function tests.a_log_record_without_a_text_is_the_cores_to_refuse()
    fake.record_core()
    fake.answer("korvo_core_logging_log", 1)
    check.equal(module.korvo_core_logging_log(nil, module.KORVO_CORE_LOG_PRIORITY_ERR, nil), 1)
    local calls = fake.calls("korvo_core_logging_log")
    check.equal(#calls, 1)
    check.equal(calls[1].arguments[3], nil)
end

function tests.places_that_the_script_hands_in_are_filled_and_not_returned()
    local memory = host.new(16)
    fake.record_core()
    fake.answer("korvo_core_settings_get_and_set_version", 0, {17})
    local place = host.typed("_p_unsigned_int", memory)
    check.equal(call.results(module.korvo_core_settings_get_and_set_version, {place, 18}), {0, n = 1})
    check.equal(host.uint(memory), 17)
    fake.answer("korvo_core_settings_is_new_file", 0, {1})
    check.equal(call.results(module.korvo_core_settings_is_new_file, {host.typed("_p_unsigned_char", memory)}),
                {0, n = 1})
    check.equal(host.byte(memory), 1)
    fake.answer("korvo_core_ipc_initiator_init", 0, {host.pointer(9)})
    check.equal(call.results(module.korvo_core_ipc_initiator_init, {nil, "name", host.typed("_p_p_void", memory), n = 3}),
                {0, n = 1})
    check.equal(host.word(memory), host.pointer(9))
    host.delete(memory)
end

return tests
