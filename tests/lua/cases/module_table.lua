-- SPDX-License-Identifier: Apache-2.0
-- What the module's table holds, and how it behaves where it holds nothing.
local check = require "check"
local functions = require "functions"
local constants = require "constants"

local tests = {}

function tests.is_returned_and_global()
    local module = require "korvo_api_action_engine"
    check.is_true(rawequal(module, _G.korvo_api_action_engine), "the global is the module")
    check.is_true(rawequal(module, require "korvo_api_action_engine"), "a second require gives the same table")
    check.is_true(rawequal(module, package.loaded.korvo_api_action_engine))
end

function tests.holds_the_functions_and_constants_and_nothing_else()
    local expected = {}
    for _, row in ipairs(functions.all) do
        expected[row.name] = "function"
    end
    local function_count = 0
    for _ in pairs(expected) do
        function_count = function_count + 1
    end
    check.equal(function_count, 493, "functions in the test's table")
    local constant_count = 0
    for name in pairs(constants) do
        expected[name] = "number"
        constant_count = constant_count + 1
    end
    check.equal(constant_count, 51, "constants in the test's table")

    local found = {}
    local module = require "korvo_api_action_engine"
    for name, value in next, module do
        found[name] = type(value)
    end
    for name, kind in pairs(expected) do
        check.equal(found[name], kind, name)
    end
    for name in pairs(found) do
        check.is_true(expected[name] ~= nil, tostring(name) .. " is expected")
    end
    for name, value in pairs(constants) do
        check.equal(rawget(module, name), value, name)
    end
end

function tests.functions_are_c_functions()
    for _, row in ipairs(functions.all) do
        check.equal(debug.getinfo(rawget(require "korvo_api_action_engine", row.name), "S").what, "C", row.name)
    end
end

function tests.its_metatable_holds_three_empty_tables_and_two_functions()
    local metatable = getmetatable(require "korvo_api_action_engine")
    local found = {}
    for key, value in pairs(metatable) do
        found[key] = type(value)
    end
    check.equal(found, {[".get"] = "table", [".set"] = "table", [".fn"] = "table", __index = "function",
                        __newindex = "function"})
    for _, key in ipairs {".get", ".set", ".fn"} do
        check.equal(next(metatable[key]), nil, key)
    end
end

function tests.unknown_keys_read_as_nil()
    local module = require "korvo_api_action_engine"
    for _, key in ipairs {"nothing", 1, true, module} do
        check.equal(module[key], nil)
    end
    check.equal(select("#", getmetatable(module).__index(module, "nothing")), 0, "results of __index")
end

function tests.get_calls_c_functions_alone_and_without_arguments()
    local module = require "korvo_api_action_engine"
    local metatable = getmetatable(module)
    metatable[".get"].elapsed = os.clock
    check.equal(type(module.elapsed), "number")
    -- With an argument, this would fail or do something else.
    metatable[".get"].kind = _G.collectgarbage
    check.equal(module.kind, 0)
    metatable[".get"].written = function() return "a Lua function" end
    check.equal(module.written, nil)
    metatable[".get"].number = 5
    check.equal(module.number, nil)
    metatable[".get"] = 5
    check.equal(module.elapsed, nil)
end

function tests.get_gives_errors_of_its_functions()
    local module = require "korvo_api_action_engine"
    getmetatable(module)[".get"].broken = error
    check.is_true(not pcall(function() return module.broken end), "an error is raised")
end

function tests.fn_gives_functions_of_both_kinds()
    local module = require "korvo_api_action_engine"
    local metatable = getmetatable(module)
    local function written() end
    metatable[".fn"].written = written
    metatable[".fn"].print = print
    metatable[".fn"].number = 5
    check.equal(module.written, written)
    check.equal(module.print, print)
    check.equal(module.number, nil)
    metatable[".get"].print = os.clock
    check.equal(type(module.print), "number", ".get goes first")
end

function tests.new_keys_are_stored_as_they_are()
    local module = require "korvo_api_action_engine"
    module.mine = 5
    check.equal(rawget(module, "mine"), 5)
    module[1] = "one"
    check.equal(rawget(module, 1), "one")
    module.kSunday = "replaced"
    check.equal(rawget(module, "kSunday"), "replaced")
    module.korvo_core_init = nil
    check.equal(module.korvo_core_init, nil)
end

function tests.set_calls_c_functions_alone()
    local module = require "korvo_api_action_engine"
    local metatable = getmetatable(module)
    local sink = {}
    -- error() shows what a C function gets: it raises its first argument.
    metatable[".set"].raising = error
    local succeeded, raised = pcall(function() module.raising = sink end)
    check.equal(succeeded, false)
    check.is_true(rawequal(raised, sink), "the value is the first argument")
    check.equal(rawget(module, "raising"), nil)

    metatable[".set"].written = function() error "a Lua function is called" end
    module.written = 6
    check.equal(rawget(module, "written"), 6)
    metatable[".set"] = nil
    module.raising = 7
    check.equal(rawget(module, "raising"), 7)
end

return tests
