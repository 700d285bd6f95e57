-- SPDX-License-Identifier: Apache-2.0
-- The two global functions, and the pointer types they tell about.
local check = require "check"
local pointer_types = require "pointer_types"
require "korvo_api_action_engine"

local tests = {}

function tests.type_names_every_lua_type()
    for expected, value in pairs {boolean = true, number = 1, string = "text", table = {}, ["function"] = print,
                                  thread = coroutine.create(function() end)} do
        check.equal(swig_type(value), expected)
    end
    check.equal(swig_type(nil), "nil")
    check.equal(swig_type(true, 5, {}), "boolean", "the first of several")
end

function tests.type_knows_no_userdata_of_others()
    for _, value in ipairs {host.pointer(1), host.null(), (host.userdata(0)), (host.userdata(1)), (host.userdata(12)),
                            (host.userdata(24)), (host.userdata(4096)), (host.userdata(24, {})), io.stdout} do
        check.equal(swig_type(value), "userdata (unknown type)")
    end
end

function tests.type_gives_all_spellings_of_a_typed_pointer()
    check.equal(#pointer_types.names, 36)
    local known = {}
    for _, name in ipairs(host.types()) do
        known[name] = true
    end
    for _, name in ipairs(pointer_types.names) do
        check.is_true(known[name] == true, name .. " is known")
        known[name] = nil
        local text = swig_type(host.typed(name, host.pointer(1)))
        check.equal(pointer_types.split(text), pointer_types.spellings[name], name)
    end
    check.equal(known, {}, "types that nobody expects")
end

function tests.unknown_types_and_null_make_nil()
    check.equal(host.typed("_p_nothing", host.pointer(1)), nil)
    check.equal(host.typed("_p_void", host.null()), nil)
end

function tests.typed_pointers_are_plain_userdata()
    local pointer = host.typed("_p_void", host.pointer(1))
    check.equal(type(pointer), "userdata")
    check.equal(getmetatable(pointer), nil)
    check.equal(tostring(pointer):match("^userdata: 0x%x+$") ~= nil, true, tostring(pointer))
end

function tests.equals_compares_c_pointers()
    local one = host.typed("_p_void", host.pointer(1))
    check.equal(swig_equals(one, one), true)
    check.equal(swig_equals(one, host.typed("_p_void", host.pointer(1))), true)
    check.equal(swig_equals(one, host.typed("_p_unsigned_int", host.pointer(1))), true)
    check.equal(swig_equals(one, host.pointer(1)), true)
    check.equal(swig_equals(host.pointer(1), one), true)
    check.equal(swig_equals(one, host.typed("_p_void", host.pointer(2))), false)
    check.equal(swig_equals(host.pointer(1), host.pointer(2)), false)
    local full, address = host.userdata(24)
    check.equal(swig_equals(full, full), true)
    check.equal(swig_equals(full, address), true)
    check.equal(swig_equals(full, (host.userdata(24))), false)
    check.equal(select("#", swig_equals(one, one)), 1)
end

function tests.a_metatable_changes_nothing()
    local pointer = host.typed("_p_p_void", host.pointer(1))
    local text = swig_type(pointer)
    debug.setmetatable(pointer, {__gc = function() end, __eq = function() return false end})
    check.equal(swig_type(pointer), text)
    check.equal(swig_equals(pointer, host.pointer(1)), true)
end

function tests.equals_gives_nothing_for_other_values()
    local one = host.typed("_p_void", host.pointer(1))
    for _, value in ipairs {true, 5, "text", {}, print, coroutine.create(function() end)} do
        check.equal(select("#", swig_equals(one, value)), 0)
        check.equal(select("#", swig_equals(value, one)), 0)
        check.equal(select("#", swig_equals(value, value)), 0)
    end
    check.equal(select("#", swig_equals(one, nil)), 0)
    check.equal(select("#", swig_equals(nil, nil)), 0)
    check.equal(select("#", swig_equals(one)), 0)
    check.equal(select("#", swig_equals()), 0)
end

return tests
