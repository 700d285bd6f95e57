-- SPDX-License-Identifier: Apache-2.0
-- The array functions, which do not all keep to the rules of the others.
local call = require "call"
local check = require "check"
local module = require "korvo_api_action_engine"

local tests = {}

local pointer_types = {bool = "unsigned char **", uint = "unsigned int **", int = "int **", double = "double **"}

function tests.allocating_gives_typed_pointers()
    for kind, expected in pairs(pointer_types) do
        fake.record_core()
        fake.count_releases()
        local name = "korvo_core_alloc_" .. kind .. "_array"
        local results = call.results(module[name], {3})
        check.equal(results.n, 1)
        check.equal(swig_type(results[1]), expected)
        check.equal(fake.calls(), {{called = name, arguments = {3, n = 1}}})
        check.equal(fake.releases(), {0})
        check.is_true(host.word((host.pointee(results[1]))) ~= host.null(), "the list has elements")
    end
end

function tests.allocating_texts_gives_an_empty_table_and_releases_the_list()
    fake.record_core()
    fake.count_releases()
    check.equal(call.results(module.korvo_core_alloc_string_array, {3}), {{}, n = 1})
    check.equal(fake.releases(), {1})
    check.equal(#fake.calls("korvo_core_alloc_string_array"), 1)
end

function tests.no_memory_gives_nil()
    for kind in pairs {bool = 1, uint = 1, int = 1, double = 1, string = 1} do
        local name = "korvo_core_alloc_" .. kind .. "_array"
        fake.record_core()
        fake.answer(name, nil)
        check.equal(call.results(module[name], {3}), {nil, n = 1}, name)
        fake.throw(name, "standard")
        check.equal(call.results(module[name], {3}), {nil, n = 1}, name)
    end
end

function tests.counts_arrive()
    fake.record_core()
    for kind in pairs(pointer_types) do
        fake.answer("korvo_core_alloc_" .. kind .. "_array", nil)
        for given, expected in pairs {[0] = 0, [1.9] = 1, [4294967295] = 4294967295, [2 ^ 40] = 4294967295} do
            local before = #fake.calls()
            module["korvo_core_alloc_" .. kind .. "_array"](given)
            check.equal(fake.calls()[before + 1].arguments, {expected, n = 1})
        end
    end
end

local samples = {bool = {true}, uint = {1, 2}, int = {-1}, double = {0.5}}

function tests.freeing_a_table_releases_its_list_twice()
    for kind, sample in pairs(samples) do
        for _, list in ipairs {sample, {}} do
            fake.record_core()
            fake.count_releases()
            local name = "korvo_core_free_" .. kind .. "_array"
            check.equal(call.results(module[name], {list}), {n = 0}, name)
            check.equal(fake.releases(), {2}, name)
            local calls = fake.calls(name)
            check.equal(#calls, 2)
            check.equal(calls[1].arguments, calls[2].arguments, "both times the same list")
        end
    end
end

function tests.freeing_a_table_that_makes_no_list_passes_null_once()
    for kind in pairs(samples) do
        fake.record_core()
        fake.count_releases()
        local name = "korvo_core_free_" .. kind .. "_array"
        check.equal(call.results(module[name], {{x = 1}}), {n = 0})
        -- One release is that of the list that came to nothing.
        check.equal(fake.releases(), {1})
        local calls = fake.calls(name)
        check.equal(calls[#calls].arguments[1], nil)
    end
end

function tests.freeing_texts_takes_a_pointer_and_releases_once()
    fake.record_core()
    local memory = host.new(64)
    host.set_text(memory, 0, "text")
    check.equal(call.results(module.korvo_core_free_string_array, {host.typed("_p_p_char", memory)}), {n = 0})
    check.equal(fake.calls(), {{called = "korvo_core_free_string_array", arguments = {memory, n = 1}}})
    fake.record_core()
    check.equal(call.results(module.korvo_core_free_string_array, {nil, n = 1}), {n = 0})
    check.equal(fake.calls(), {{called = "korvo_core_free_string_array", arguments = {n = 1}}})
end

function tests.freeing_swallows_exceptions()
    fake.record_core()
    fake.count_releases()
    fake.throw("korvo_core_free_int_array", "number")
    check.equal(call.results(module.korvo_core_free_int_array, {{1}}), {n = 0})
    check.equal(#fake.calls("korvo_core_free_int_array"), 2)
    fake.throw("korvo_core_free_string_array", "standard")
    check.equal(call.results(module.korvo_core_free_string_array, {nil, n = 1}), {n = 0})
end

return tests
