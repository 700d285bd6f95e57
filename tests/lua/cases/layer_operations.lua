-- SPDX-License-Identifier: Apache-2.0
-- korvo.action_engine: each operation's command and result, by name.
local ae = require "korvo.action_engine"
local check = require "check"
local json = require "korvo.action_engine.json"
local layer = require "layer"

local tests = {}

local function with(options, test)
    fake.script()
    local engine = assert(ae.open(options))
    test(engine)
    engine:close()
end

local function operations()
    local rows = {}
    for _, row in ipairs(fake.operations()) do
        rows[#rows + 1] = row
    end
    check.equal(#rows, 54)
    return rows
end

local function command_for(row, sent)
    local command = fake.command_for(row.name)
    for name, value in pairs(sent) do
        command[name] = value
    end
    return command
end

function tests.each_sends_its_command_and_gives_its_result_by_name()
    for _, row in ipairs(operations()) do
        with({name = "test", target = "camera-1", timeout = 2.5}, function(engine)
            local given, sent = layer.named(row.inputs)
            local _, answered = layer.named(row.results)
            fake.respond_with(row.name, answered)
            check.equal(engine[row.name](engine, given), layer.result(row.results), row.name)
            local messages = fake.messages("send")
            check.equal(#messages, 1, row.name)
            check.equal(messages[1].json, command_for(row, sent), row.name)
            check.equal(messages[1].target, "camera-1", row.name)
            check.equal(fake.messages("receive")[1].timeout, 2500, row.name)
        end)
    end
end

function tests.each_refuses_what_is_missing_unknown_or_of_another_type_and_sends_nothing()
    local wrong = {number = -1, flag = 1, text = 5, texts = {1}, table = {{key = "a"}}}
    for _, row in ipairs(operations()) do
        with({name = "test"}, function(engine)
            local given = layer.named(row.inputs)
            local function refused(name, what)
                local result, message, status = engine[row.name](engine, given)
                check.equal({result, status}, {nil, 1}, row.name .. " " .. name)
                local begin = row.name .. ": " .. what
                check.equal(message:sub(1, #begin), begin)
            end
            for name, value in pairs(given) do
                given[name] = nil
                refused(name, "'" .. name .. "' is missing; it wants ")
                for _, other in pairs(wrong) do
                    if type(value) ~= type(other) or other == -1 then
                        given[name] = other
                        refused(name, "'" .. name .. "' wants ")
                    end
                end
                given[name] = value
            end
            given.no_such_thing = 1
            refused("no_such_thing", "there is no 'no_such_thing'; it")
            check.equal(#fake.messages("send"), 0, row.name)
        end)
    end
end

function tests.each_tells_of_failures()
    for _, row in ipairs(operations()) do
        with({name = "test"}, function(engine)
            fake.fail("receive", 9)
            local given = layer.named(row.inputs)
            local message = row.name .. ": status 9 (remote function failure)"
            check.equal({engine[row.name](engine, given)}, {nil, message, 9}, row.name)
            fake.fail("receive", 9)
            check.equal({pcall(function() return engine:strict()[row.name](engine, given) end)}, {false, message}, row.name)
        end)
    end
end

function tests.a_call_can_have_a_timeout_of_its_own()
    with({name = "test"}, function(engine)
        fake.respond("get_actions")
        assert(engine:get_actions{timeout = 0.0701})
        check.equal(fake.messages("receive")[1].timeout, 70)
        for _, wrong in ipairs {0, -1, "1", 0 / 0, math.huge} do
            check.equal({engine:get_actions{timeout = wrong}},
                {nil, "get_actions: 'timeout' wants seconds, 0.001 or more", 1})
        end
    end)
end

function tests.an_argument_that_is_the_only_one_can_stand_plainly()
    with({name = "test"}, function(engine)
        fake.respond("delete_action")
        check.equal(engine:delete_action(4294967295), true)
        check.equal(fake.messages("send")[1].json.action_id, 4294967295)
        check.equal({engine:create_association(7)}, {nil, "create_association: takes a table of named arguments, not 7; " ..
            "its arguments are trigger_id, action_id", 1})
        check.equal({engine:get_actions(7)}, {nil,
            "get_actions: takes a table of named arguments, not 7; it has no arguments", 1})
    end)
end

function tests.elements_of_lists_are_what_they_are()
    with({name = "test"}, function(engine)
        fake.respond_with("get_actions", {action_id = {4294967295, 2147483648, 7}, action_type = {1, 2, 9}})
        check.equal(engine:get_actions(), {
            {action_id = 4294967295, action_type = ae.kFtpUploadAction},
            {action_id = 2147483648, action_type = ae.kSaveSnapshotAction},
            {action_id = 7, action_type = ae.kRelayAction},
        })
    end)
end

function tests.lists_that_belong_together_and_differ_are_no_result()
    with({name = "test"}, function(engine)
        for _, types in ipairs {{1}, {1, 2, 3}} do
            fake.respond_with("get_actions", {action_id = {1, 2}, action_type = types})
            check.equal({engine:get_actions()}, {nil, "get_actions: lists that belong together differ in length", 4})
        end
    end)
end

function tests.messages_say_what_is_wrong_and_what_is_wanted()
    with({name = "test"}, function(engine)
        local function message_of(name, given)
            return (select(2, engine[name](engine, given)))
        end
        check.equal(message_of("create_timer_trigger", {trigger_name = "t", timer_seconds = 1.5}),
            "create_timer_trigger: 'timer_seconds' wants a whole number from 0 to 4294967295, and is 1.5")
        check.equal(message_of("create_wiper_action", {action_name = "a\0b"}),
            "create_wiper_action: 'action_name' wants a text without zero bytes, and is a text with a zero byte")
        check.equal(message_of("create_wiper_action", "a\0b"),
            "create_wiper_action: 'action_name' wants a text without zero bytes, and is a text with a zero byte")
        for _, one in ipairs {{{}, "a table"}, {json.null, "null"}, {print, "a function"}, {false, "false"}, {5, "5"}} do
            check.equal(message_of("create_wiper_action", {action_name = one[1]}),
                "create_wiper_action: 'action_name' wants a text without zero bytes, and is " .. one[2])
        end
        local email = {action_name = "a", smtp_server = "s", to_addresses = {"a", 5}, cc_addresses = {}, from_address = "f",
            subject = "s", body = "b", attach_jpeg = true, include_event = false}
        check.equal(message_of("create_email_action", email),
            "create_email_action: 'to_addresses' wants a list of texts (element 2 is 5)")
        email.to_addresses = {"a", nil, "b", x = 1}
        check.equal(message_of("create_email_action", email):match("^.*at '"),
            "create_email_action: 'to_addresses' wants a list of texts (there is an element at '")
        for _, key in ipairs {"x", 1.5, 0, -1, true} do
            email.to_addresses = {"a", "b", [key] = "c"}
            check.equal(message_of("create_email_action", email), "create_email_action: 'to_addresses' wants a list of texts " ..
                "(there is an element at '" .. tostring(key) .. "')")
        end
        email.to_addresses = "a@example.org"
        check.equal(message_of("create_email_action", email),
            "create_email_action: 'to_addresses' wants a list of texts, and is a text")
        local filters = "a list of {weekdays = a whole number from 0 to 4294967295, start = a whole number from 0 to " ..
            "4294967295, stop = a whole number from 0 to 4294967295}"
        check.equal(message_of("set_action_filters", {action_id = 1, filters = {{weekdays = 1, start = 2}}}),
            "set_action_filters: 'filters' wants " .. filters .. " (element 1: 'stop' is nothing)")
        check.equal(message_of("set_action_filters", {action_id = 1, filters = {{weekdays = 1, start = 2, stop = 3, ["end"] = 3}}}),
            "set_action_filters: 'filters' wants " .. filters .. " (element 1: there is no 'end')")
        check.equal(#fake.messages("send"), 0)
    end)
end

function tests.names_that_an_engine_has_not_are_errors()
    with({name = "test"}, function(engine)
        for _, one in ipairs {engine, engine.async} do
            local succeeded, message = pcall(function() return one.get_action_count end)
            check.equal({succeeded, message:match(": (.*)$")},
                {false, "an engine has no 'get_action_count'; there is get_action_counts"})
        end
        local _, message = pcall(function() return engine.nothing_like_it end)
        check.equal(message:match("^.-: (.*)$"), "an engine has no 'nothing_like_it'; docs/lua-layer.md lists what it has")
    end)
end

function tests.opening_says_what_is_wrong()
    fake.script()
    check.equal({ae.open{naem = "x"}}, {nil, "open: there is no 'naem'; there are name, target, timeout, events", 1})
    check.equal({ae.open{name = 5}}, {nil, "open: 'name' wants a text without zero bytes", 1})
    check.equal({ae.open{timeout = 0}}, {nil, "open: 'timeout' wants seconds, 0.001 or more", 1})
    for _, events in ipairs {0, 0.5, 1.5, -1, 1e6 + 1, 1 / 0, "1"} do
        check.equal({ae.open{events = events}}, {nil, "open: 'events' wants how many events may wait, from 1 to 1000000", 1})
    end
    for _, events in ipairs {1, 1e6} do
        assert(ae.open{events = events}):close()
    end
    check.equal({ae.open("x")}, {nil, "open: takes a table: ae.open{name = \"example\"}", 1})
    fake.fail("open", 8)
    local engine, message, status = ae.open{name = "x"}
    check.equal({engine, message, status}, {nil, "open: status 2 (allocation failed)", 2})
end

function tests.what_needs_a_second_connection_says_when_there_is_none()
    with({name = "test"}, function(engine)
        local function failure(name)
            return {nil, name .. ": status 2 (allocation failed): cannot open the connection for events and answers", 2}
        end
        fake.fail("open", 8)
        check.equal({engine.async:get_actions()}, failure("get_actions"))
        fake.fail("open", 8)
        check.equal({engine:subscribe()}, failure("subscribe"))
        fake.script()
        check.equal({engine:subscribe()}, {true})
    end)
end

function tests.a_closed_engine_says_so()
    with({name = "test"}, function(engine)
        check.equal(engine:close(), true)
        check.equal({engine:get_actions()}, {nil, "get_actions: the engine is closed", 1})
        check.equal({engine.async:get_actions()}, {nil, "get_actions: the engine is closed", 1})
        check.equal({engine:next_event()}, {nil, "subscribe: the engine is closed", 1})
        check.equal({engine:descriptor()}, {nil, "descriptor: the engine is closed", 1})
        check.equal({engine:get_initiator_version()}, {nil, "get_initiator_version: the engine is closed", 1})
        check.equal({engine:export()}, {nil, "get_actions: the engine is closed", 1})
        check.equal(engine:events()(), nil)
        check.equal(#fake.messages("send"), 0)
    end)
end

function tests.an_event_tells_whose_action_ended_and_how()
    with({name = "test"}, function(engine)
        assert(engine:subscribe())
        for _, success in ipairs {true, false} do
            fake.complete(7, "wipe", success)
            check.equal(engine:next_event(60),
                {action_id = 7, action_name = "wipe", success = success, source = "camera-1", dropped = 0})
        end
        check.equal({engine:next_event(0)}, {nil, "next_event: no event"})
    end)
end

function tests.subscribing_takes_no_longer_than_the_engine_allows()
    with({name = "test", timeout = 2.5}, function(engine)
        assert(engine:subscribe())
        local received = fake.messages("receive")
        check.equal(#received, 1)
        check.equal(received[1].timeout, 2500)
    end)
end

function tests.the_descriptor_tells_of_the_first_event()
    if host.flavour ~= "luajit" then
        return
    end
    local ffi = require "ffi"
    ffi.cdef "struct pollfd {int fd; short events; short revents;}; int poll(struct pollfd *, unsigned long, int);"
    with({name = "test"}, function(engine)
        assert(engine:subscribe())
        local polled = ffi.new("struct pollfd[1]", {{engine:descriptor(), 1}})
        check.equal(ffi.C.poll(polled, 1, 0), 0)
        fake.complete(7, "wipe", true)
        check.equal(ffi.C.poll(polled, 1, 30000), 1)
        assert(engine:next_event(0))
        check.equal(ffi.C.poll(polled, 1, 0), 0)
    end)
end

function tests.waiting_takes_as_long_as_it_is_told()
    local events = require "korvo_action_engine_events"
    for _, wait in ipairs {ae.sleep, function(seconds) events.wait(events.changes(), seconds) end} do
        local before = events.now()
        wait(0.03)
        check.equal(events.now() - before >= 0.03, true)
    end
end

function tests.the_iterator_of_events_raises_why_there_can_be_none()
    with({name = "test"}, function(engine)
        fake.fail("subscribe", 10)
        local succeeded, message = pcall(engine:events(0))
        check.equal({succeeded, message:match("subscribe: .*$")}, {false, "subscribe: status 2 (allocation failed)"})
    end)
end

function tests.the_iterator_of_events_ends_when_its_engine_is_closed_meanwhile()
    with({name = "test"}, function(engine)
        local ended = false
        local function wait()
            for _ in engine:events(60) do
                error("there was an event")
            end
            ended = true
        end
        -- Whoever is named last is asked first.
        local succeeded, message = pcall(ae.run, function() engine:close() end, wait)
        if host.flavour == "luajit" then
            check.equal({succeeded, message}, {true})
            check.equal(ended, true)
        else
            check.equal({succeeded, message:match("boundary ([^\n]*)")}, {false, "(on Lua 5.1 a function of run() cannot wait " ..
                "inside pcall, nor in a for over events(): call next_event() in a loop)"})
        end
    end)
end

function tests.the_iterator_of_events_ends_in_an_engine_that_raises_failures_too()
    with({name = "test"}, function(engine)
        engine:strict()
        fake.script()
        assert(engine:subscribe())
        fake.complete(7, "wipe", true)
        local seen = 0
        for _ in engine:events(60) do
            seen = seen + 1
            engine:close()
        end
        check.equal(seen, 1)
        check.equal({pcall(engine.next_event, engine)}, {false, "subscribe: the engine is closed"})
        check.equal({pcall(engine.descriptor, engine)}, {false, "descriptor: the engine is closed"})
    end)
end

function tests.finalizers_of_the_script_find_an_engine_closed()
    for _, method in ipairs {"get_actions", "next_event", "descriptor", "dropped_events"} do
        fake.script()
        local outcome
        do
            local late = newproxy(true)
            local engine = assert(ae.open{name = "test"})
            assert(engine:subscribe())
            -- The one that is made first is finalized last.
            getmetatable(late).__gc = function() outcome = {pcall(engine[method], engine, 0)} end
        end
        collectgarbage()
        collectgarbage()
        check.equal(outcome, method == "dropped_events" and {true, 0} or
            {true, nil, (method == "next_event" and "subscribe" or method) .. ": the engine is closed", 1}, method)
    end
end

function tests.coroutines_run_others_in_themselves()
    local order = {}
    local done = false
    ae.run(
        function()
            ae.run(function()
                while not done do
                    ae.sleep(0)
                end
                order[#order + 1] = "inner"
            end)
            order[#order + 1] = "outer"
        end,
        function()
            ae.sleep(0.01)
            done = true
            order[#order + 1] = "done"
        end)
    check.equal(order, {"done", "inner", "outer"})
end

function tests.who_waits_for_an_event_is_woken_when_the_engine_is_closed()
    with({name = "test"}, function(engine)
        local outcome
        ae.run(function() engine:close() end, function() outcome = {engine:next_event(60)} end)
        check.equal(outcome, {nil, "next_event: the engine is closed", 1})
    end)
end

function tests.a_call_that_is_cancelled_wakes_who_waits_for_it()
    with({name = "test"}, function(engine)
        local pending = engine.async:get_actions()
        local outcome
        ae.run(function() pending:cancel() end, function() outcome = {pending:wait(60)} end)
        check.equal(outcome, {nil, "get_actions: the call was cancelled", 1})
    end)
end

function tests.an_answer_is_there_for_all_who_wait_for_it()
    with({name = "test"}, function(engine)
        local pending = engine.async:get_actions()
        local outcomes = {}
        local function wait()
            local outcome = {pending:wait(60)}
            outcomes[#outcomes + 1] = outcome
        end
        ae.run(function() engine:close() end, wait, wait)
        check.equal(#outcomes, 2)
        check.equal(outcomes[1], outcomes[2])
        check.equal(outcomes[1][3], 4)
    end)
end

function tests.an_engine_makes_do_with_the_descriptor_of_a_closed_standard_input()
    with({name = "test"}, function(engine)
        check.equal({host.without_standard_input(function()
            local descriptor = assert(engine:descriptor())
            engine:close()
            return descriptor
        end)}, {true, 0})
    end)
end

function tests.names_that_are_near_are_told()
    with({name = "test"}, function(engine)
        local function told(name, expected)
            local _, message = pcall(function() return engine[name] end)
            check.equal(message:match("^.-: (.*)$"), "an engine has no '" .. tostring(name) .. "'; " .. expected)
        end
        told("get_ptz", "there is get_ptz_pattern_action, get_ptz_preset_action, get_ptz_scan_action, get_ptz_tour_action")
        told("action_counts", "there is get_action_counts")
        told("delete_trigger_now", "there is delete_trigger")
        told("get_action.counts", "docs/lua-layer.md lists what it has")
        told(5, "docs/lua-layer.md lists what it has")
    end)
end

function tests.what_is_no_failure_of_a_call_is_raised()
    with({name = "test"}, function(engine)
        local broken = setmetatable({}, {__index = function() error("a mistake", 0) end})
        check.equal({pcall(engine.import, engine, broken)}, {false, "a mistake"})
    end)
end

function tests.an_engine_has_messaging_of_its_own_and_no_events_before_they_are_asked_for()
    local module = require "korvo_api_action_engine"
    local init = module.korvo_api_action_engine_initiator_init
    local given
    module.korvo_api_action_engine_initiator_init = function(...)
        given = check.pack(...)
        return init(...)
    end
    with({name = "test"}, function() end)
    module.korvo_api_action_engine_initiator_init = init
    check.equal(given, {n = 4, nil, nil, false, "test"})
end

function tests.engines_that_nobody_keeps_are_closed()
    local module = require "korvo_api_action_engine"
    local closed = 0
    local deinit = module.korvo_api_action_engine_initiator_deinit
    module.korvo_api_action_engine_initiator_deinit = function(handle)
        closed = closed + 1
        return deinit(handle)
    end
    fake.script()
    do
        local engine = assert(ae.open{name = "test"})
        assert(engine.get_actions)
        local kept = assert(ae.open{name = "kept"})
        kept:close()
        kept:close()
    end
    collectgarbage()
    collectgarbage()
    module.korvo_api_action_engine_initiator_deinit = deinit
    check.equal(closed, 2)
end

return tests
