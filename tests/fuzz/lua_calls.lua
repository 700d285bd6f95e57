-- SPDX-License-Identifier: Apache-2.0
-- Bytes as calls of the fixed module's 493 functions with arguments of any type. A call must give what its row promises, or raise an
-- error with the function's name before it has called anything.
--
-- The first byte says which half of the functions: those of the core, on one that answers anything, or those of the library. Then
-- come calls: two bytes for the function, one for the number of arguments, and for each argument one and what it needs.
--
-- Left out is what crashes a process, as docs/lua.md tells: nil and any userdata pass for a handle, so only a live one is given there, and
-- for a request identifier only one that is not yet spent.
local functions = require "functions"
local kinds = require "kinds"
local module = require "korvo_api_action_engine"

local most_calls = 24

local function sorted(...)
    local rows = {}
    for _, list in ipairs {...} do
        for _, row in ipairs(list) do
            rows[#rows + 1] = row
        end
    end
    table.sort(rows, function(left, right) return left.name < right.name end)
    return rows
end
local core, library = sorted(functions.core), sorted(functions.library, functions.forms)
assert(#core + #library == 493, "there are " .. #core + #library .. " functions")

local input, position, handle, requests

local function take()
    local byte = input:byte(position) or 0
    position = position + 1
    return byte
end

local numbers = {
    0, 1, -1, 0.5, 2 ^ 31 - 1, 2 ^ 31, -2 ^ 31, -2 ^ 31 - 1, 2 ^ 32 - 1, 2 ^ 32, 2 ^ 53, 1e308, -1e308, 5e-324, math.huge, -math.huge,
    0 / 0,
}

local function number()
    local byte = take()
    return numbers[byte + 1] or byte - 128
end

local function text()
    local length = take()
    local found = input:sub(position, position + length % 64 - 1)
    position = position + #found
    return length < 192 and found or string.rep(found, 20)
end

local any

local function list(element)
    local found = {}
    for place = 1, take() % 6 do
        found[place] = element()
    end
    return found
end

local function refuse()
    error("raised by a metamethod", 0)
end

-- Without userdata, which pass for handles.
local anything = {
    [0] = function() return nil end,
    function() return true end,
    function() return false end,
    number,
    text,
    function() return tostring(number()) end,
    function() return list(any) end,
    function() return setmetatable(list(any), {__index = refuse}) end,
    function() return setmetatable(list(any), {__index = function(_, key) return key end}) end,
    function()
        local found = list(any)
        found[text()] = any()
        found[take()] = any()
        return found
    end,
    function() return refuse end,
    function() return coroutine.create(refuse) end,
}

local depth = 0
function any()
    if depth > 3 then
        return nil
    end
    depth = depth + 1
    local found = anything[take() % (#anything + 1)]()
    depth = depth - 1
    return found
end

-- Nearly always an element that fits.
local function element(fitting)
    return function() return take() < 240 and fitting() or any() end
end

local fitting = {
    text = text,
    number = number,
    int = number,
    double = number,
    status = number,
    priority = number,
    flag = function() return take() % 2 == 1 end,
    texts = function() return list(element(text)) end,
    numbers = function() return list(element(number)) end,
    integers = function() return list(element(number)) end,
    reals = function() return list(element(number)) end,
    flags = function() return list(element(function() return take() % 2 == 1 end)) end,
}

-- What takes an identifier of a request, and which argument that is.
local function request_place(row)
    return (row.name:find "free_uuid$" and 1) or ((row.form == "receive" or row.form == "receive_with_timeout") and 4) or nil
end

local function wants_handle(row, place)
    return place == 1 and row.name:find "_api_action_engine_" and not row.name:find "_initiator_init$" and
        not row.name:find "free_uuid$"
end

local function argument(row, place)
    local kind = row.inputs[place]
    if wants_handle(row, place) then
        if take() >= 16 then
            return handle
        end
        local given = any()
        return given == nil and handle or given
    elseif kind and take() < 200 then
        if fitting[kind] then
            return fitting[kind]()
        elseif request_place(row) == place then
            return table.remove(requests)
        elseif kind ~= "text_list" and not (kind == "opaque" and row.name:find "_initiator_init$") then
            local samples = kinds.input(row, place).samples
            return samples[take() % #samples + 1][1]
        end
        return nil
    end
    return any()
end

local function open()
    local status, opened = module.korvo_api_action_engine_initiator_init(nil, nil, false, "fuzz")
    assert(status == 0)
    return opened
end

-- Answers of the core of every kind, also where a function does not look at them.
local function arrange_core(row)
    fake.record_core()
    fake.count_releases()
    -- As many elements as memory has room for would take their time.
    if row.name:find "_alloc_.*_array$" then
        fake.answer(row.name, nil)
        return
    end
    local returned, outs = nil, {n = 0}
    for place, kind in ipairs(row.results) do
        local samples = kinds.results[kind] and kinds.results[kind].samples or {{nil}}
        local sample = samples[take() % #samples + 1][1]
        if place == 1 then
            returned = sample
        else
            outs.n = outs.n + 1
            outs[outs.n] = sample
        end
    end
    fake.answer(row.name, returned, outs)
end

local function is_refusal(row, message)
    return type(message) == "string" and (message:find("Error in " .. row.name, 1, true) ~= nil or
        message:find("number must not be negative", 1, true) ~= nil or message:find("raised by a metamethod", 1, true) ~= nil)
end

local function calls_of(row, is_core)
    return is_core and #fake.calls(row.name) or #fake.messages("send")
end

local function pack(...)
    return {n = select("#", ...), ...}
end

local function try(row, is_core)
    local count = take()
    count = count < 16 and count or #row.inputs
    if is_core then
        arrange_core(row)
    elseif row.operation and not row.row.is_version and take() < 128 then
        fake.respond(row.operation)
    end
    local given = {}
    for place = 1, count do
        given[place] = argument(row, place)
    end
    local before = calls_of(row, is_core)
    local results = pack(pcall(module[row.name], unpack(given, 1, count)))
    if not results[1] then
        assert(is_refusal(row, results[2]), tostring(results[2]))
        assert(calls_of(row, is_core) == before or row.name:find "free_.*_array$", row.name .. " was called and refused")
    else
        assert(count == #row.inputs, row.name .. " took another number of arguments")
        assert(results.n - 1 == #row.results, row.name .. " gave another number of results")
    end
    if is_core then
        return
    end
    -- What the call has made or ended.
    local succeeded = results[1] and results[2] == 0
    local request = request_place(row) and given[request_place(row)]
    if type(request) == "userdata" and not (results[1] and (succeeded or row.name:find "free_uuid$")) then
        requests[#requests + 1] = request
    end
    if row.form == "non_blocking_send" and results[1] then
        -- One that could not be sent, too.
        requests[#requests + 1] = results[3]
    elseif row.name:find "_initiator_init$" and succeeded then
        module.korvo_api_action_engine_initiator_deinit(results[3])
    elseif row.name:find "_initiator_deinit$" and results[1] and given[1] == handle then
        handle = open()
    end
end

return function(bytes)
    input, position = bytes, 1
    local is_core = take() % 2 == 1
    local rows = is_core and core or library
    if not is_core then
        fake.script()
        handle, requests = open(), {}
    end
    for _ = 1, most_calls do
        if position > #input then
            break
        end
        try(rows[(take() * 256 + take()) % #rows + 1], is_core)
    end
    if not is_core then
        for _, request in ipairs(requests) do
            module.korvo_api_action_engine_free_uuid(request)
        end
        module.korvo_api_action_engine_initiator_deinit(handle)
        handle = nil
    end
    fake.reset()
end
