-- SPDX-License-Identifier: Apache-2.0
-- Every form of every operation: the command that goes out, the response that comes back as results.
local call = require "call"
local check = require "check"
local client = require "client"
local functions = require "functions"
local kinds = require "kinds"
local pointer_types = require "pointer_types"
local module = require "korvo_api_action_engine"

local tests = {}

local target = "camera-1"

local function append(arguments, members)
    for _, member in ipairs(members) do
        arguments.n = arguments.n + 1
        arguments[arguments.n] = member.sample
    end
    return arguments
end

local function add(arguments, ...)
    for place = 1, select("#", ...) do
        arguments.n = arguments.n + 1
        arguments[arguments.n] = (select(place, ...))
    end
    return arguments
end

--- The arguments of a form with the operation's sample inputs.
local function arguments_of(row, handle, request_id)
    local arguments = {n = 0}
    local inputs = row.row.inputs
    if row.form == "send" or row.form == "non_blocking_send" then
        return append(add(arguments, handle, target), inputs)
    elseif row.form == "send_with_timeout" then
        return append(add(arguments, handle, target, -70), inputs)
    elseif row.form == "receive" then
        return add(arguments, handle, true, target, request_id)
    elseif row.form == "receive_with_timeout" then
        return add(arguments, handle, target, 1234, request_id)
    elseif row.form == "send_async" then
        return add(append(add(arguments, handle, target), inputs), nil, host.pointer(77))
    else
        return add(arguments, handle, nil, host.pointer(77))
    end
end

local function rows(...)
    local chosen = {}
    for _, row in ipairs(functions.forms) do
        for _, form in ipairs {...} do
            if row.form == form then
                chosen[#chosen + 1] = row
            end
        end
    end
    return chosen
end

local function respond(row)
    if row.row.is_version then
        fake.respond_version(row.row.results[1].sample, row.row.results[2].sample)
    else
        fake.respond(row.operation)
    end
end

local function command_for(row)
    if row.row.is_version then
        return {command = "__get_target_version__", initiator_major = 1, initiator_minor = 19}
    end
    return fake.command_for(row.operation)
end

local function results_of(row)
    return append({0, n = 1}, row.row.results)
end

local empty = {number = 0, flag = false}

local function failure_of(row, status)
    local results = {status, n = 1}
    for _, result in ipairs(row.row.results) do
        results.n = results.n + 1
        results[results.n] = empty[result.kind]
    end
    return results
end

local function check_sent(row, handle)
    local sent = fake.messages("send")
    check.equal(#sent, 1, row.name .. ": commands")
    check.equal(sent[1].json, command_for(row), row.name)
    check.equal(sent[1].service, "action_engine", row.name)
    check.equal(sent[1].target, target, row.name)
    check.equal(sent[1].object, (host.pointee(handle)), row.name)
    return sent[1]
end

function tests.send_forms_send_and_give_the_results()
    for _, row in ipairs(rows("send", "send_with_timeout")) do
        client.with(function(handle)
            respond(row)
            check.equal(call.results(module[row.name], arguments_of(row, handle)), results_of(row), row.name)
            check_sent(row, handle)
            local received = fake.messages("receive")
            check.equal(#received, 1, row.name)
            check.equal(received[1].timeout, row.form == "send" and 5000 or -70, row.name)
            check.equal(received[1].method, row.row.method, row.name)
        end)
    end
end

function tests.failures_give_a_status_and_empty_results()
    for _, row in ipairs(rows("send", "send_with_timeout")) do
        client.with(function(handle)
            fake.fail("send", 10)
            check.equal(call.results(module[row.name], arguments_of(row, handle)), failure_of(row, 10), row.name)
            check.equal(#fake.messages("receive"), 0)
        end)
        client.with(function(handle)
            fake.fail("receive", 8)
            check.equal(call.results(module[row.name], arguments_of(row, handle)), failure_of(row, 8), row.name)
        end)
        client.with(function(handle)
            fake.fail("send", "number")
            check.equal(call.results(module[row.name], arguments_of(row, handle)), failure_of(row, 4), row.name)
        end)
    end
end

function tests.non_blocking_sends_give_an_identifier_that_the_receives_take()
    local non_blocking = {}
    for _, row in ipairs(rows("non_blocking_send")) do
        non_blocking[row.operation] = row
    end
    for _, row in ipairs(rows("receive", "receive_with_timeout")) do
        local sending = non_blocking[row.operation]
        client.with(function(handle)
            local results = call.results(module[sending.name], arguments_of(sending, handle), sending.name)
            check.equal(results.n, 2, sending.name)
            check.equal(results[1], 0, sending.name)
            local request_id = results[2]
            check.equal(swig_type(request_id), "void *")
            local address, type_name, owned = host.pointee(request_id)
            check.equal({type_name, owned}, {"_p_void", 0})
            local sent = check_sent(row, handle)
            check.equal(host.text(address), sent.request_id)
            check.equal(#fake.messages("receive"), 0)

            respond(row)
            check.equal(call.results(module[row.name], arguments_of(row, handle, request_id)), results_of(row), row.name)
            local received = fake.messages("receive")
            check.equal(#received, 1)
            check.equal(received[1].request_id, sent.request_id, row.name)
            check.equal(received[1].request_id_address, address, row.name)
            check.equal(received[1].target, target)
            check.equal(received[1].timeout, row.form == "receive" and 5000 or 1234, row.name)
        end)
    end
end

function tests.failed_receives_leave_the_identifier_to_the_script()
    local non_blocking = module.korvo_api_action_engine_get_actions_non_blocking_send
    for _, row in ipairs(rows("receive", "receive_with_timeout")) do
        client.with(function(handle)
            local _, request_id = non_blocking(handle, target)
            local arguments = arguments_of(row, handle, request_id)
            if row.form == "receive" then
                arguments[2] = false
            end
            for _, status in ipairs {4, 9} do
                fake.fail("receive", status)
                check.equal(call.results(module[row.name], arguments), failure_of(row, status), row.name)
            end
            check.equal(fake.messages("receive")[1].timeout, row.form == "receive" and 0 or 1234)
            check.equal(select("#", module.korvo_api_action_engine_free_uuid(request_id)), 0)
        end)
    end
end

function tests.a_failed_non_blocking_send_gives_the_identifier_all_the_same()
    for _, row in ipairs(rows("non_blocking_send")) do
        client.with(function(handle)
            fake.fail("send", 10)
            local results = call.results(module[row.name], arguments_of(row, handle))
            check.equal(results.n, 2)
            check.equal(results[1], 10)
            check.equal(host.text((host.pointee(results[2]))), fake.messages("send")[1].request_id)
            module.korvo_api_action_engine_free_uuid(results[2])
        end)
    end
end

function tests.asynchronous_forms_give_a_status()
    for _, row in ipairs(rows("send_async")) do
        client.with(function(handle)
            check.equal(call.results(module[row.name], arguments_of(row, handle)), {0, n = 1}, row.name)
            check_sent(row, handle)
            local registered = fake.messages("register")
            check.equal(#registered, 1)
            check.equal(registered[1].object, (host.pointee(handle)))
        end)
        client.with(function(handle)
            fake.fail("send", 3)
            check.equal(call.results(module[row.name], arguments_of(row, handle)), {3, n = 1}, row.name)
        end)
    end
    for _, row in ipairs(rows("cancel_async")) do
        client.with(function(handle)
            check.equal(call.results(module[row.name], arguments_of(row, handle)), {0, n = 1}, row.name)
            check.equal(#fake.messages("send"), 0)
        end)
    end
end

function tests.callbacks_of_their_row_are_taken()
    for _, row in ipairs(rows("send_async", "cancel_async")) do
        client.with(function(handle)
            local arguments = arguments_of(row, handle)
            for position, kind in ipairs(row.inputs) do
                if kind == "callback" then
                    arguments[position] = host.typed(pointer_types.of_callback[row.operation], host.pointer(5))
                end
            end
            for _, context in ipairs {host.pointer(1), handle, host.typed("_p_int", host.pointer(3)),
                                      (host.userdata(8)), false} do
                arguments[arguments.n] = context or nil
                check.equal(call.results(module[row.name], arguments), {0, n = 1}, row.name)
            end
        end)
    end
end

function tests.inputs_take_all_that_their_kinds_take()
    for _, row in ipairs(rows("send", "send_async")) do
        for place, input in ipairs(row.row.inputs) do
            for _, sample in ipairs(kinds.inputs[input.kind].samples) do
                client.with(function(handle)
                    local arguments = arguments_of(row, handle)
                    arguments[2 + place] = sample[1]
                    local sent_members = {}
                    for name, value in pairs(command_for(row)) do
                        sent_members[name] = value
                    end
                    local status = call.results(module[row.name], arguments, row.name)[1]
                    local sent = fake.messages("send")
                    if sample[2] == nil then
                        check.equal({status, #sent}, {1, 0}, row.name)
                    else
                        check.equal(#sent, 1, row.name)
                        local found, wanted = 0, sample[2]
                        if input.kind == "flag" then
                            wanted = wanted == 1
                        end
                        for name, value in pairs(sent[1].json) do
                            if not check.same(value, sent_members[name]) then
                                check.equal(value, wanted, row.name .. " " .. name)
                                found = found + 1
                            end
                        end
                        check.is_true(found == 1 or check.same(wanted, input.sample), row.name .. " input " .. place)
                    end
                end)
            end
        end
    end
end

function tests.a_target_may_be_nil()
    client.with(function(handle)
        fake.respond("get_action_type")
        check.equal({module.korvo_api_action_engine_get_action_type_send(handle, nil, 41)}, {0, 7})
        check.equal(fake.messages("send")[1].target, nil)
    end)
end

function tests.examples_hold()
    client.with(function(handle)
        fake.respond("get_action_type")
        check.equal({module.korvo_api_action_engine_get_action_type_send(handle, target, 1)}, {0, 7})
        call.fails(module.korvo_api_action_engine_get_action_type_send, {handle, 1},
                   "Error in korvo_api_action_engine_get_action_type_send expected 3..3 args, got 2")
    end)
    client.with(function(handle)
        fake.respond("set_action_filters")
        check.equal(module.korvo_api_action_engine_set_action_filters_send(
            handle, target, 5, {module.kSunday + module.kMonday}, {}, {}), 0)
        local json = fake.messages("send")[1].json
        check.equal({json.weekday_filters, json.time_filters_start, json.time_filters_end}, {{3}, {}, {}})
    end)
    client.with(function(handle)
        check.equal(module.korvo_api_action_engine_set_action_filters_send(handle, target, 5, {"1"}, {}, {}), 1)
        check.equal(#fake.messages("send"), 0)
    end)
end

return tests
