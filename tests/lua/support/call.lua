-- SPDX-License-Identifier: Apache-2.0
-- Calls from a known position, since error messages begin with it.
local check = require "check"

local caller = assert(loadstring([[
local pack, f = ...
return function(...)
    local results = pack(f(...)) return results
end]], "=script"))

local call = {}

--- What the messages of errors in a call begin with.
call.position = "script:3: "

--- Calls f with a packed list of arguments; gives what pcall() gives: true and the packed results, or false and the
-- message.
function call.try(f, arguments)
    return pcall(caller(check.pack, f), unpack(arguments, 1, arguments.n or #arguments))
end

--- Calls f and gives the packed results.
function call.results(f, arguments, what)
    local succeeded, results = call.try(f, arguments)
    if not succeeded then
        error((what or "a call") .. " failed: " .. tostring(results), 2)
    end
    return results
end

--- Expects the call to fail with this message behind the position.
function call.fails(f, arguments, message, what)
    local succeeded, found = call.try(f, arguments)
    if succeeded then
        error((what or "a call") .. " succeeded with " .. check.show(arguments) .. ", expected: " .. message, 2)
    end
    check.equal(found, call.position .. message, what)
end

return call
