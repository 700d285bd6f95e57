-- SPDX-License-Identifier: Apache-2.0
-- Which arguments the functions refuse, in which order and with which words. Nothing is called then.
local call = require "call"
local check = require "check"
local functions = require "functions"
local kinds = require "kinds"
local pointer_types = require "pointer_types"
local module = require "korvo_api_action_engine"

local tests = {}

--- Runs a test for every function, and sees that no C function was called meanwhile.
local function refused(test)
    fake.record_core()
    for _, row in ipairs(functions.all) do
        test(row, module[row.name])
    end
    local lists = {korvo_core_alloc_bool_array = true, korvo_core_alloc_uint_array = true,
                   korvo_core_alloc_int_array = true, korvo_core_alloc_double_array = true,
                   korvo_core_alloc_string_array = true, korvo_core_free_bool_array = true,
                   korvo_core_free_uint_array = true, korvo_core_free_int_array = true,
                   korvo_core_free_double_array = true, korvo_core_free_string_array = true}
    for _, called in ipairs(fake.calls()) do
        check.is_true(lists[called.called] == true, called.called .. " is not called")
    end
end

local function with(arguments, position, value)
    local changed = {unpack(arguments, 1, arguments.n)}
    changed.n = arguments.n
    changed[position] = value
    return changed
end

local function type_error(row, position, expected, got)
    return ("Error in %s (arg %d), expected '%s' got '%s'"):format(row.name, position, expected, got)
end

function tests.other_counts_are_refused()
    local tried = 0
    refused(function(row, f)
        local expected = #row.inputs
        for count = 0, expected + 3 do
            if count ~= expected then
                local message = ("Error in %s expected %d..%d args, got %d"):format(row.name, expected, expected, count)
                local arguments = kinds.good_arguments(row)
                arguments.n = count
                call.fails(f, arguments, message, row.name)
                call.fails(f, {n = count}, message, row.name)
                tried = tried + 1
            end
        end
    end)
    check.is_true(tried > 493 * 3)
end

function tests.the_count_goes_before_the_types()
    call.fails(module.korvo_core_settings_copy_int_key, {{}, {}, {}},
               "Error in korvo_core_settings_copy_int_key expected 2..2 args, got 3")
end

function tests.every_other_type_is_refused_at_every_position()
    local tried = 0
    refused(function(row, f)
        local good = kinds.good_arguments(row)
        for position = 1, #row.inputs do
            local input = kinds.input(row, position)
            for _, value in ipairs(kinds.values()) do
                if not input.accepts[value[1]] then
                    call.fails(f, with(good, position, value[2]), type_error(row, position, input.expected, value[3]),
                               row.name)
                    tried = tried + 1
                end
            end
        end
    end)
    check.is_true(tried > 8000, tried)
end

function tests.the_first_wrong_argument_is_named()
    refused(function(row, f)
        local arguments = {n = #row.inputs}
        for position = 1, #row.inputs do
            local input = kinds.input(row, position)
            arguments[position] = not input.accepts["function"] and print or nil
        end
        for position = 1, #row.inputs do
            call.fails(f, arguments, type_error(row, position, kinds.input(row, position).expected, "function"), row.name)
            arguments[position] = kinds.input(row, position).samples[1][1]
        end
    end)
end

--- Gives the arguments with every one behind a position wrong, one at a time; test(arguments, error message).
local function with_a_wrong_one_behind(row, arguments, position, test)
    for behind = position + 1, #row.inputs do
        test(with(arguments, behind, print), type_error(row, behind, kinds.input(row, behind).expected, "function"))
    end
end

function tests.negative_numbers_are_refused_behind_all_types()
    local tried = 0
    refused(function(row, f)
        for position, kind in ipairs(row.inputs) do
            if kind == "number" then
                for _, number in ipairs {-1, -0.001, -2 ^ 40, -math.huge, 0 / 0, "-1"} do
                    local arguments = with(kinds.good_arguments(row), position, number)
                    call.fails(f, arguments, "number must not be negative", row.name)
                    with_a_wrong_one_behind(row, arguments, position, function(changed, message)
                        call.fails(f, changed, message, row.name)
                    end)
                    tried = tried + 1
                end
            end
        end
    end)
    check.is_true(tried > 6 * 100, tried)
end

local function wrong_pointers(right)
    local values = {{host.pointer(1), "userdata (unknown type)"}, {(host.userdata(24)), "userdata (unknown type)"},
                    {host.null(), "userdata (unknown type)"}}
    for _, name in ipairs(pointer_types.names) do
        if name ~= right then
            local pointer = host.typed(name, host.pointer(1))
            values[#values + 1] = {pointer, swig_type(pointer)}
        end
    end
    return values
end

function tests.pointers_of_other_types_are_refused_behind_all_types()
    local tried = 0
    refused(function(row, f)
        for position = 1, #row.inputs do
            local expected = kinds.input(row, position).type
            for _, value in ipairs(expected ~= nil and wrong_pointers(expected) or {}) do
                local arguments = with(kinds.good_arguments(row), position, value[1])
                local succeeded, message = call.try(f, arguments)
                check.equal(succeeded, false, row.name)
                local name, place, text, got =
                    message:match("^script:3: Error in (%S+) %(arg (%d+)%), expected '(.*)' got '(.*)'$")
                check.equal({name, tonumber(place), got}, {row.name, position, value[2]}, message)
                check.equal(pointer_types.split(text), pointer_types.spellings[expected], row.name)
                with_a_wrong_one_behind(row, arguments, position, function(changed, type_message)
                    call.fails(f, changed, type_message, row.name)
                end)
                tried = tried + 1
            end
        end
    end)
    check.is_true(tried > 110 * 38, tried)
end

function tests.a_light_userdata_without_a_pointer_is_refused()
    local tried = 0
    refused(function(row, f)
        for position, kind in ipairs(row.inputs) do
            if kind == "opaque" then
                local arguments = with(kinds.good_arguments(row), position, host.null())
                call.fails(f, arguments, ("Error in %s, expected a void* at argument number %d\n"):format(row.name, position),
                           row.name)
                with_a_wrong_one_behind(row, arguments, position, function(changed, message)
                    call.fails(f, changed, message, row.name)
                end)
                tried = tried + 1
            end
        end
    end)
    check.is_true(tried > 493, tried)
end

return tests
