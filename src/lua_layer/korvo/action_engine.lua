-- SPDX-License-Identifier: Apache-2.0
-- The action_engine service for scripts, on top of the plain functions: docs/lua-layer.md is the manual.
local api = require "korvo_api_action_engine"
local arguments = require "korvo.action_engine.arguments"
local document = require "korvo.action_engine.document"
local events = require "korvo_action_engine_events"
local operations = require "korvo.action_engine.operations"
local waiting = require "korvo.action_engine.waiting"

local ae = {sleep = waiting.sleep, run = waiting.run}

-- kMonday, kSendEmailAction and so on.
for name, value in pairs(api) do
    if type(name) == "string" and name:find("^k%u") then
        ae[name] = value
    end
end

local invalid = api.KORVO_CORE_STATUS_INVALID_PARAMS
local broken = api.KORVO_CORE_STATUS_IPC_FAILED

-- The key of what belongs to an engine alone.
local STATE = {}

-- What a script can do about a status.
local hints = {
    [api.KORVO_CORE_STATUS_IPC_FAILED] = ": no answer in time, or none that can be read; the service may have done it",
    [api.KORVO_CORE_STATUS_DISABLED_TARGET] = ": the service is not running",
}

local function message_of(name, status)
    return string.format("%s: status %d (%s)%s", name, status, api.korvo_core_status_to_string(status), hints[status] or "")
end

-- Every failure ends here.
local function fail(state, message, status)
    if state.is_strict then
        error(message, 0)
    end
    return nil, message, status
end

-- ---- Calls ----

local function finish(state, operation, status, ...)
    if status ~= 0 then
        return fail(state, message_of(operation.name, status), status)
    end
    local named = arguments.by_name(operation.results, arguments.unsigned({...}))
    if not named then
        return fail(state, operation.name .. ": lists that belong together differ in length", broken)
    end
    if operation.gives == "nothing" then
        return true
    end
    return operation.gives == "table" and named or named[operation.results[1].name]
end

local function is_timeout(value)
    return type(value) == "number" and value >= 0.001 and value <= 2147483
end

local function milliseconds(seconds)
    return math.floor(seconds * 1000)
end

-- What a call is made with, or nil and a message.
local function prepare(state, operation, given)
    if state.is_closed then
        return nil, operation.name .. ": the engine is closed"
    end
    given = arguments.named(operation, given)
    local fault = arguments.fault(operation.name, operation.inputs, given)
    if fault then
        return nil, fault
    end
    local timeout = given.timeout or state.timeout
    if not is_timeout(timeout) then
        return nil, operation.name .. ": 'timeout' wants seconds, 0.001 or more"
    end
    return given, milliseconds(timeout)
end

local function call(state, operation, given)
    local named, timeout = prepare(state, operation, given)
    if not named then
        return fail(state, timeout, invalid)
    end
    local values, count = arguments.in_order(operation.inputs, named)
    local plain = "korvo_api_action_engine_" .. operation.plain
    if operation.has_timeout then
        return finish(state, operation,
            api[plain .. "_send_with_timeout"](state.handle, state.target, timeout, unpack(values, 1, count)))
    end
    return finish(state, operation, api[plain .. "_send"](state.handle, state.target))
end

-- ---- Answers that are waited for ----

-- The connection for events and answers, opened with its first use.
local function queue_of(state)
    if not state.queue then
        local queue, message, status = events.open(state.name, state.target, milliseconds(state.timeout), state.most_events)
        if not queue then
            return nil, message, status
        end
        state.queue = queue
    end
    return state.queue
end

local Pending = {}
Pending.__index = Pending

local function start(state, operation, given)
    local named, timeout = prepare(state, operation, given)
    if not named then
        return fail(state, timeout, invalid)
    end
    local queue, message, status = queue_of(state)
    if not queue then
        return fail(state, message_of(operation.name, status) .. ": " .. message, status)
    end
    local values, count = arguments.in_order(operation.inputs, named)
    local begun
    begun, message, status = queue:start(operation.plain, timeout, unpack(values, 1, count))
    if not begun then
        return fail(state, message_of(operation.name, status) .. ": " .. message, status)
    end
    return setmetatable({state = state, operation = operation, call = begun}, Pending)
end

-- Keeps what the call has come to, whatever comes after.
local function settle(pending, status, ...)
    pending.status, pending.results = status, {...}
end

--- Is the answer there? It also is when the call has failed or its time is up.
function Pending:ready()
    return self.status ~= nil or self.call:is_answered()
end

--- Gives what the call without `async` gives. After `seconds` without an answer nil and a message; the call goes on then.
function Pending:wait(seconds)
    -- Another coroutine may take the answer, or cancel the call, meanwhile.
    if not waiting.await(function() return self.is_cancelled or self:ready() end, seconds) then
        return nil, self.operation.name .. ": no answer yet"
    end
    if self.is_cancelled then
        return fail(self.state, self.operation.name .. ": the call was cancelled", invalid)
    end
    if not self.status then
        settle(self, self.call:take())
    end
    if self.status ~= 0 then
        local message = self.results[1] .. (hints[self.status] or "")
        return fail(self.state, (message:gsub("^" .. self.operation.plain, self.operation.name)), self.status)
    end
    return finish(self.state, self.operation, self.status, unpack(self.results))
end

--- Nobody waits any more. The service may carry the command out all the same.
function Pending:cancel()
    self.is_cancelled = true
    self.call:cancel()
end

-- ---- The engine ----

local methods = {}

--- From now on failures are raised as errors.
function methods:strict()
    self[STATE].is_strict = true
    return self
end

--- Ends everything; also the garbage collector does. What is asked of a closed engine fails and says so.
function methods:close()
    local state = self[STATE]
    state.is_closed = true
    if state.queue then
        state.queue:close()
    end
    state.close_handle()
    return true
end

--- The interface version of the library: major and minor.
function methods:get_initiator_version()
    local state = self[STATE]
    if state.is_closed then
        return fail(state, "get_initiator_version: the engine is closed", invalid)
    end
    local status, major, minor = api.korvo_api_action_engine_get_initiator_version(state.handle)
    if status ~= 0 then
        return fail(state, message_of("get_initiator_version", status), status)
    end
    return {initiator_major = major, initiator_minor = minor}
end

-- These three give nil, a message and, where that is a failure, a status.

local function open_queue(state, name)
    if state.is_closed then
        return nil, name .. ": the engine is closed", invalid
    end
    local queue, message, status = queue_of(state)
    if not queue then
        return nil, message_of(name, status) .. ": " .. message, status
    end
    return queue
end

local function subscribe(state)
    local queue, message, status = open_queue(state, "subscribe")
    if not queue then
        return nil, message, status
    end
    status = queue:subscribe()
    if status ~= 0 then
        return nil, message_of("subscribe", status), status
    end
    return true
end

local function next_event(state, seconds)
    local subscribed, message, status = subscribe(state)
    if not subscribed then
        return nil, message, status
    end
    local event
    local function is_here()
        local action_id, action_name, success, source, dropped = state.queue:event()
        if action_id then
            event = {action_id = action_id, action_name = action_name, success = success, source = source, dropped = dropped}
        end
        return event ~= nil or state.is_closed
    end
    if not waiting.await(is_here, seconds) then
        return nil, "next_event: no event"
    end
    if not event then
        return nil, "next_event: the engine is closed", invalid
    end
    return event
end

local function told(state, result, message, status)
    if status then
        return fail(state, message, status)
    end
    return result, message
end

--- From now on events are queued. next_event() and events() do it by themselves.
function methods:subscribe()
    return told(self[STATE], subscribe(self[STATE]))
end

--- The next event. Without one for `seconds` nil and a message; without `seconds` it waits as long as it takes.
function methods:next_event(seconds)
    return told(self[STATE], next_event(self[STATE], seconds))
end

--- for event in engine:events(seconds): until none has come for `seconds`, or the engine is closed.
function methods:events(seconds)
    return function()
        local event, message, status = next_event(self[STATE], seconds)
        if status and not self[STATE].is_closed then
            error(message, 2)
        end
        return event
    end
end

--- How many events were dropped because the queue was full.
function methods:dropped_events()
    local state = self[STATE]
    return state.queue and not state.is_closed and state.queue:dropped() or 0
end

--- For poll(2): readable as long as an event or an answer can be taken.
function methods:descriptor()
    local queue, message, status = open_queue(self[STATE], "descriptor")
    return told(self[STATE], queue and queue:descriptor(), message, status)
end

-- ---- The catalogue ----

-- document.lua raises errors that are tables {message, status}; anything else is a mistake of ours.
for name, method in pairs(document.methods) do
    methods[name] = function(engine, ...)
        local state = engine[STATE]
        local function ask(operation, given)
            local was_strict = state.is_strict
            state.is_strict = false
            local succeeded, result, message, status = pcall(call, state, operations[operation], given)
            state.is_strict = was_strict
            if not succeeded then
                error(result, 0)
            end
            if result == nil then
                error({message = message, status = status})
            end
            return result
        end
        local succeeded, result = pcall(method, ask, ...)
        if succeeded then
            return result
        elseif type(result) == "table" and result.message then
            return fail(state, result.message, result.status or invalid)
        end
        error(result, 0)
    end
end

-- What actions() and triggers() go through.
local function each(noun)
    methods[noun .. "s"] = function(engine)
        local place = 0
        local list, message = methods["list_" .. noun .. "s"](engine)
        if not list then
            error(message, 2)
        end
        return function()
            place = place + 1
            return list[place]
        end
    end
end
each("action")
each("trigger")

-- ---- Names ----

local function unknown(name)
    local nearest = {}
    for known in pairs(operations) do
        if type(name) == "string" and (known:find(name, 1, true) or name:find(known, 1, true)) then
            nearest[#nearest + 1] = known
        end
    end
    table.sort(nearest)
    return "an engine has no '" .. tostring(name) .. "'" ..
        (#nearest > 0 and "; there is " .. table.concat(nearest, ", ") or "; docs/lua-layer.md lists what it has")
end

local Engine = {__tostring = function(engine) return "korvo.action_engine: " .. engine[STATE].name end}
function Engine.__index(_, name)
    local operation = operations[name]
    if not methods[name] and operation then
        methods[name] = function(engine, given) return call(engine[STATE], operation, given) end
    end
    return methods[name] or error(unknown(name), 2)
end

local asynchronous = {}
local Async = {}
function Async.__index(_, name)
    local operation = operations[name]
    if not asynchronous[name] and operation then
        asynchronous[name] = function(async, given) return start(async[STATE], operation, given) end
    end
    return asynchronous[name] or error(unknown(name), 2)
end

-- ---- Opening ----

local options = {
    name = {"a text without zero bytes",
        function(value) return type(value) == "string" and not value:find("\0", 1, true) end},
    target = {"the name of an instance of the service",
        function(value) return type(value) == "string" and not value:find("\0", 1, true) end},
    timeout = {"seconds, 0.001 or more", is_timeout},
    events = {"how many events may wait, from 1 to 1000000", function(value)
        return type(value) == "number" and value >= 1 and value <= 1e6 and value % 1 == 0
    end},
}

--- Opens a client. `name` is the program's, for messaging and the log; `target` the instance of the service that is called
--- (without it the default one); `timeout` how long a call waits, in seconds (5); `events` how many may wait (4096). The
--- service need not run yet. Gives the engine, or nil, a message and a status.
function ae.open(given)
    given = given or {}
    if type(given) ~= "table" then
        return nil, "open: takes a table: ae.open{name = \"example\"}", invalid
    end
    for key, value in pairs(given) do
        local option = options[key]
        if not option then
            return nil, "open: there is no '" .. tostring(key) .. "'; there are name, target, timeout, events", invalid
        elseif not option[2](value) then
            return nil, "open: '" .. key .. "' wants " .. option[1], invalid
        end
    end
    -- All that needs memory is made first: nobody could end a handle for which there is no guard.
    local handle
    local function close_handle()
        if handle then
            local closing = handle
            handle = nil
            api.korvo_api_action_engine_initiator_deinit(closing)
        end
    end
    local guard = newproxy(true)
    local state = {
        name = given.name or "lua", target = given.target, timeout = given.timeout or 5, most_events = given.events or 4096,
        handle = false, close_handle = close_handle, guard = guard, is_closed = false,
    }
    getmetatable(guard).__gc = function()
        -- Finalizers of the script's own may come later, and ask the engine.
        state.is_closed = true
        close_handle()
    end
    local engine = setmetatable({[STATE] = state, async = setmetatable({[STATE] = state}, Async)}, Engine)
    local status
    status, handle = api.korvo_api_action_engine_initiator_init(nil, nil, false, state.name)
    if status ~= 0 then
        return nil, message_of("open", status), status
    end
    state.handle = handle
    return engine
end

return ae
