-- SPDX-License-Identifier: Apache-2.0
-- The functions of the library that are no form of an operation.
local call = require "call"
local check = require "check"
local client = require "client"
local module = require "korvo_api_action_engine"

local tests = {}

local prefix = "korvo_api_action_engine_"
local handler_type = "_p_f_unsigned_int_p_q_const__char_unsigned_char_p_q_const__char_p_void__void"

function tests.a_handle_is_a_typed_pointer()
    fake.script()
    local results = call.results(module[prefix .. "initiator_init"], {nil, nil, true, "name", n = 4})
    check.equal(results.n, 2)
    check.equal(results[1], 0)
    check.equal(swig_type(results[2]), "void *")
    local _, type_name, owned = host.pointee(results[2])
    check.equal({type_name, owned}, {"_p_void", 0})
    check.equal(call.results(module[prefix .. "initiator_deinit"], {results[2]}), {0, n = 1})
end

function tests.a_failed_init_gives_nil()
    fake.script()
    fake.fail("open", 2)
    check.equal(call.results(module[prefix .. "initiator_init"], {nil, nil, false, "name", n = 4}), {2, nil, n = 2})
end

function tests.deinit_takes_nil()
    check.equal(call.results(module[prefix .. "initiator_deinit"], {nil, n = 1}), {0, n = 1})
end

function tests.the_version_is_two_numbers()
    client.with(function(handle)
        check.equal(call.results(module[prefix .. "get_initiator_version"], {handle}), {0, 1, 19, n = 3})
    end)
end

function tests.free_uuid_takes_nil_and_gives_nothing()
    check.equal(call.results(module[prefix .. "free_uuid"], {nil, n = 1}), {n = 0})
end

function tests.event_functions_give_nothing()
    client.with(function(handle)
        for _, handler in ipairs {host.typed(handler_type, host.pointer(9)), false} do
            handler = handler or nil
            local context = host.pointer(4)
            check.equal(call.results(module[prefix .. "action_completed_register_event_handler"],
                                     {handle, handler, context, n = 3}), {n = 0})
            check.equal(call.results(module[prefix .. "action_completed_unregister_event_handler_with_context"],
                                     {handle, handler, context, n = 3}), {n = 0})
            check.equal(call.results(module[prefix .. "action_completed_unregister_event_handler"],
                                     {handle, handler, n = 2}), {n = 0})
        end
        check.equal(call.results(module[prefix .. "register_default_callbacks"], {handle}), {n = 0})
        check.equal(call.results(module[prefix .. "unregister_default_callbacks"], {handle}), {n = 0})
    end)
end

return tests
