-- SPDX-License-Identifier: Apache-2.0
-- Tables as lists and lists as tables, in calls.
local call = require "call"
local check = require "check"
local client = require "client"
local module = require "korvo_api_action_engine"

local tests = {}

local setters = {
    arrayofstring = {good = {"a", "bb"}, bad = {"a", 5}},
    arrayofint = {good = {1, -2}, bad = {1, "2"}},
    arrayofbool = {good = {true, false}, bad = {1, 0}},
    arrayofdouble = {good = {0.5}, bad = {true}},
}

local function set(kind, list)
    return module["korvo_core_settings_set_" .. kind .. "_value"]("key", list)
end

local function received(kind)
    local calls = fake.calls("korvo_core_settings_set_" .. kind .. "_value")
    check.equal(#calls, 1)
    return calls[1].arguments[2]
end

--- Releases, one for each list, when every list is released once.
local function check_releases(count)
    local expected = {}
    for place = 1, count do
        expected[place] = 1
    end
    check.equal(fake.releases(), expected)
end

function tests.lists_are_released_after_the_call()
    for kind, samples in pairs(setters) do
        fake.record_core()
        fake.count_releases()
        check.equal(set(kind, samples.good), 0)
        check_releases(1)
    end
end

function tests.lists_that_cannot_be_made_are_null_and_released()
    for kind, samples in pairs(setters) do
        fake.record_core()
        fake.count_releases()
        check.equal(set(kind, samples.bad), 0)
        check.equal(received(kind), nil)
        check_releases(1)
    end
end

function tests.a_value_is_refused_in_its_turn_between_the_lists()
    local read = {}
    local function watched(name)
        return setmetatable({x = 1}, {__index = function() read[#read + 1] = name return "a" end})
    end
    -- The number stands behind the lists, and in front of them.
    call.fails(module.korvo_api_action_engine_create_stable_onvif_trigger_send,
               {nil, nil, "name", "topic", "content", watched("keys"), watched("uris"), -1, n = 8},
               "number must not be negative")
    check.equal(read, {"keys", "uris"})
    read = {}
    call.fails(module.korvo_api_action_engine_set_action_filters_send,
               {nil, nil, -1, watched("days"), watched("starts"), watched("ends"), n = 6},
               "number must not be negative")
    check.equal(read, {})
    -- Of two values the first, and the type of a later one before both.
    call.fails(module.korvo_api_action_engine_set_action_filters_send,
               {host.null(), nil, -1, watched("days"), {}, {}, n = 6},
               "Error in korvo_api_action_engine_set_action_filters_send, expected a void* at argument number 1\n")
    call.fails(module.korvo_api_action_engine_set_action_filters_send,
               {host.null(), nil, -1, watched("days"), {}, 5, n = 6},
               "Error in korvo_api_action_engine_set_action_filters_send (arg 6), expected 'unsigned int **' got 'number'")
    check.equal(read, {})
end

function tests.no_memory_for_a_list_is_null()
    fake.record_core()
    fake.answer("korvo_core_alloc_int_array", nil)
    check.equal(set("arrayofint", {1}), 0)
    check.equal(received("arrayofint"), nil)
end

function tests.elements_come_from_metamethods()
    fake.record_core()
    local read = {}
    local list = setmetatable({x = 1, y = 2, z = 3}, {__index = function(_, key)
        read[#read + 1] = key
        collectgarbage()
        return key * 11
    end})
    check.equal(set("arrayofint", list), 0)
    check.equal(received("arrayofint"), {11, 22, 33, n = 3})
    check.equal(read, {1, 2, 3})
end

function tests.errors_of_metamethods_reach_the_script_as_they_are()
    for kind, samples in pairs(setters) do
        fake.record_core()
        fake.count_releases()
        local thrown = {}
        local list = setmetatable({samples.good[1], x = 1}, {__index = function() error(thrown) end})
        local succeeded, raised = pcall(set, kind, list)
        check.equal(succeeded, false)
        check.is_true(rawequal(raised, thrown), "the error is the metamethod's own")
        check.equal(#fake.calls("korvo_core_settings_set_" .. kind .. "_value"), 0)
        check_releases(1)
    end
end

function tests.an_error_in_a_later_list_releases_the_earlier_ones()
    client.with(function(handle)
        fake.count_releases()
        local broken = setmetatable({1, x = 1}, {__index = function() error("broken", 0) end})
        local succeeded, message = pcall(module.korvo_api_action_engine_set_action_filters_send, handle, "t", 5,
                                         {1, 2}, {3}, broken)
        check.equal({succeeded, message}, {false, "broken"})
        check_releases(3)
        check.equal(#fake.messages("send"), 0)
    end)
end

function tests.calls_from_metamethods_are_calls_like_others()
    fake.record_core()
    fake.count_releases()
    local list = setmetatable({x = 1}, {__index = function()
        assert(set("arrayofstring", {"inner"}) == 0)
        return 5
    end})
    check.equal(set("arrayofint", list), 0)
    check.equal(received("arrayofint"), {5, n = 1})
    check.equal(received("arrayofstring"), {"inner", n = 1})
    check_releases(2)
    local succeeded = pcall(function()
        return set("arrayofint", setmetatable({x = 1}, {__index = function()
            return module.korvo_core_settings_set_arrayofint_value(5)
        end}))
    end)
    check.equal(succeeded, false)
    check_releases(3)
end

function tests.a_metamethod_that_yields_fails_and_leaks_nothing()
    fake.record_core()
    fake.count_releases()
    local routine = coroutine.create(function()
        return set("arrayofint", setmetatable({x = 1}, {__index = coroutine.yield}))
    end)
    local succeeded = coroutine.resume(routine)
    check.equal(succeeded, false)
    check.equal(#fake.calls("korvo_core_settings_set_arrayofint_value"), 0)
    check_releases(1)
end

function tests.finalizers_that_raise_during_a_conversion_leak_nothing()
    fake.record_core()
    fake.count_releases()
    local list = setmetatable({x = 1, y = 2}, {__index = function(_, key)
        local proxy = newproxy(true)
        getmetatable(proxy).__gc = function() error("from a finalizer", 0) end
        proxy = nil
        for _ = 1, 3 do
            collectgarbage()
        end
        return key
    end})
    local succeeded, message = pcall(set, "arrayofint", list)
    check.is_true(succeeded or tostring(message):find("from a finalizer", 1, true) ~= nil, tostring(message))
    check_releases(1)
end

function tests.results_are_released_and_collected_tables_are_no_lists()
    fake.record_core()
    fake.answer("korvo_core_settings_get_arrayofstring_value", 0, {{"a", "b"}, 2})
    fake.count_releases()
    collectgarbage("setpause", 0)
    collectgarbage("setstepmul", 100000)
    for _ = 1, 50 do
        local status, list, count = module.korvo_core_settings_get_arrayofstring_value("key")
        check.equal({status, list, count}, {0, {"a", "b"}, 2})
    end
end

function tests.lists_survive_collections_at_every_line()
    fake.record_core()
    fake.answer("korvo_core_settings_get_arrayofint_value", 0, {{1, 2, 3}, 3})
    debug.sethook(function() collectgarbage() end, "", 1)
    local status, list, count = module.korvo_core_settings_get_arrayofint_value("k" .. "ey")
    local set_status = set("arrayofstring", {"a" .. status, "b" .. count})
    debug.sethook()
    check.equal({status, list, count, set_status}, {0, {1, 2, 3}, 3, 0})
    check.equal(received("arrayofstring"), {"a0", "b3", n = 2})
end

function tests.numbers_given_as_texts_stay_valid_for_the_call()
    fake.record_core()
    debug.sethook(function() collectgarbage() end, "", 1)
    module.korvo_core_settings_set_arrayofstring_value(12.25, {"x"})
    module.korvo_core_settings_copy_int_key(1.5, 2.5)
    debug.sethook()
    check.equal(fake.calls("korvo_core_settings_set_arrayofstring_value")[1].arguments[1], "12.25")
    check.equal(fake.calls("korvo_core_settings_copy_int_key")[1].arguments, {"1.5", "2.5", n = 2})
end

function tests.large_lists_travel()
    fake.record_core()
    local list = {}
    for place = 1, 5000 do
        list[place] = "element " .. place
    end
    check.equal(set("arrayofstring", list), 0)
    list.n = #list
    check.equal(received("arrayofstring"), list)
    fake.answer("korvo_core_settings_get_all_keys", list)
    list.n = nil
    check.equal(module.korvo_core_settings_get_all_keys(), list)
end

function tests.missing_lists_are_refused()
    call.fails(module.korvo_core_settings_set_arrayofint_value, {"key", nil, n = 2},
               "Error in korvo_core_settings_set_arrayofint_value (arg 2), expected 'int **' got 'nil'")
end

return tests
