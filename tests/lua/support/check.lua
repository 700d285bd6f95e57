-- SPDX-License-Identifier: Apache-2.0
-- Comparisons that say what was different.
local check = {}

local function show(value, depth)
    if type(value) == "string" then
        return string.format("%q", value)
    end
    if type(value) ~= "table" or (depth or 0) > 4 then
        return tostring(value)
    end
    local parts = {}
    for key, element in pairs(value) do
        parts[#parts + 1] = "[" .. tostring(key) .. "]=" .. show(element, (depth or 0) + 1)
    end
    table.sort(parts)
    return "{" .. table.concat(parts, ", ") .. "}"
end
check.show = show

local function same(left, right)
    if type(left) ~= type(right) then
        return false
    end
    if type(left) ~= "table" then
        return left == right or (left ~= left and right ~= right)
    end
    for key, value in pairs(left) do
        if not same(value, right[key]) then
            return false
        end
    end
    for key in pairs(right) do
        if left[key] == nil then
            return false
        end
    end
    return true
end
check.same = same

function check.equal(found, expected, what)
    if not same(found, expected) then
        error((what or "a value") .. ": found " .. show(found) .. ", expected " .. show(expected), 2)
    end
end

function check.is_true(value, what)
    if value ~= true then
        error((what or "a condition") .. " does not hold: " .. show(value), 2)
    end
end

--- All values, nil included, with their number in the field n.
function check.pack(...)
    return {n = select("#", ...), ...}
end

return check
