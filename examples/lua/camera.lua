-- SPDX-License-Identifier: Apache-2.0
-- What the examples share: a connection to the service whose calls either give their results or raise an error that says
-- what was wrong and what to do. Plain Lua on top of the module; copy it into programs of your own.
--
--     local camera = require "camera"
--     camera.run(function(arguments)
--         local service = camera.open("my program")
--         local id = service.create_wiper_action("wipe")   -- korvo_api_action_engine_create_wiper_action_send()
--     end)

local api = require "korvo_api_action_engine"

local camera = {}

-- What a person can do about a status. What the service did not like is in its own log.
local advice = {
    [api.KORVO_CORE_STATUS_INVALID_PARAMS] =
        "an argument is nil, or a list has a hole, a key that is no index or an element of another type",
    [api.KORVO_CORE_STATUS_IPC_FAILED] =
        "no answer came in time, or the connection was lost; the service may have done it all the same",
    [api.KORVO_CORE_STATUS_UNSUPPORTED_FUNCTION] = "the service is older than this program; update it",
    [api.KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE] =
        "the service refused; is there something with this identifier, and is it of this kind? Its log says why",
    [api.KORVO_CORE_STATUS_DISABLED_TARGET] =
        "start the service, and give both the same KORVO_RUNTIME_DIR",
}

-- Errors are tables, so that a program can ask for the status, and look like texts.
local failure = {}
failure.__tostring = function(self)
    local text = string.format("%s: %s (status %d)", self.operation,
        api.korvo_core_status_to_string(self.status), self.status)
    return advice[self.status] and text .. "\n  " .. advice[self.status] or text
end

-- Raises an error unless the status is 0. Gives the further results back:
--     local major, minor = camera.check("the version", api.korvo_api_action_engine_get_initiator_version(handle))
function camera.check(operation, status, ...)
    if status ~= api.KORVO_CORE_STATUS_NO_ERROR then
        error(setmetatable({operation = operation, status = status}, failure))
    end
    return ...
end

-- Raises the second value as an error for people, as it is, unless there is a first one. Else gives that back:
--     local file = camera.must(io.open(name))
function camera.must(value, problem)
    if not value then
        error(problem, 0)
    end
    return value
end

-- The status of an error that camera.check() has raised; nil for any other error.
function camera.status_of(problem)
    return getmetatable(problem) == failure and problem.status or nil
end

-- Elements of lists are signed 32-bit numbers in Lua: an identifier of 2147483648 or more arrives negative in a list, and
-- is refused as an argument until it is what it was before.
function camera.identifiers(list)
    local result = {}
    for place, element in ipairs(list) do
        result[place] = element % 2^32
    end
    return result
end

-- Opens a connection. Each operation of the service is a function of it, which sends, waits for the answer and gives
-- the results without the status.
function camera.open(name)
    local handle = camera.check("initiator_init",
        api.korvo_api_action_engine_initiator_init(nil, nil, false, name))
    local service = {}

    function service.close()
        if handle then
            api.korvo_api_action_engine_initiator_deinit(handle)
            handle = nil
        end
    end

    return setmetatable(service, {__index = function(_, operation)
        local send = api["korvo_api_action_engine_" .. operation .. "_send"]
        if not send then
            error("the service has no operation '" .. tostring(operation) .. "'", 2)
        end
        return function(...)
            if not handle then
                error("the connection is closed", 2)
            end
            return camera.check(operation, send(handle, nil, ...))
        end
    end})
end

-- Runs a program: main(arguments). An error goes to standard error and ends it with exit status 1.
function camera.run(main)
    local succeeded, problem = pcall(main, arg)
    if not succeeded then
        io.stderr:write(arg[0]:match("[^/]*$"), ": ", tostring(problem), "\n")
        os.exit(1)
    end
end

return camera
