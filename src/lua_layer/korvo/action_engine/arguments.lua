-- SPDX-License-Identifier: Apache-2.0
-- Between named values, as scripts see them, and values in the order of the plain functions. Everything is checked before
-- anything is sent; operations.lua says what there is.
local json = require "korvo.action_engine.json"

local arguments = {}

local largest = 4294967295

local function is_text(value)
    return type(value) == "string" and not value:find("\0", 1, true)
end

function arguments.is_number(value)
    return type(value) == "number" and value >= 0 and value <= largest and value % 1 == 0
end

-- nil when every element fits, and the table holds nothing else; otherwise what is wrong.
local function fault_of_list(value, fault_of_element)
    if type(value) ~= "table" then
        return ""
    end
    for key in pairs(value) do
        if type(key) ~= "number" or key % 1 ~= 0 or key < 1 or key > #value then
            return " (there is an element at '" .. tostring(key) .. "')"
        end
    end
    for place = 1, #value do
        local fault = fault_of_element(value[place])
        if fault then
            return " (element " .. place .. fault .. ")"
        end
    end
    return nil
end

-- Long texts and secrets are not repeated in messages.
local function shown(value)
    if type(value) == "number" or type(value) == "boolean" then
        return tostring(value)
    elseif type(value) == "string" then
        return value:find("\0", 1, true) and "a text with a zero byte" or "a text"
    end
    return (value == nil and "nothing") or (value == json.null and "null") or "a " .. type(value)
end

local function unless(fits)
    return function(value)
        return not fits(value) and " is " .. shown(value) or nil
    end
end

local wants = {
    number = "a whole number from 0 to 4294967295",
    flag = "true or false",
    text = "a text without zero bytes",
    texts = "a list of texts",
    numbers = "a list of whole numbers from 0 to 4294967295",
}

-- What is wrong with a value of a kind, to be put behind what is wanted; nil when nothing is.
local faults = {
    number = unless(arguments.is_number),
    flag = unless(function(value) return type(value) == "boolean" end),
    text = unless(is_text),
    texts = function(value) return fault_of_list(value, unless(is_text)) end,
    numbers = function(value) return fault_of_list(value, unless(arguments.is_number)) end,
}

local function wanted(field)
    if field.kind ~= "entries" then
        return wants[field.kind]
    end
    local parts = {}
    for place, part in ipairs(field.parts) do
        parts[place] = part.name .. " = " .. wants[part.kind]
    end
    return "a list of {" .. table.concat(parts, ", ") .. "}"
end

local function fault_of_entry(field, entry)
    if type(entry) ~= "table" then
        return " is " .. shown(entry)
    end
    local known = {}
    for _, part in ipairs(field.parts) do
        known[part.name] = true
        if faults[part.kind](entry[part.name]) then
            return ": '" .. part.name .. "' is " .. shown(entry[part.name])
        end
    end
    for key in pairs(entry) do
        if not known[key] then
            return ": there is no '" .. tostring(key) .. "'"
        end
    end
    return nil
end

local function fault_of(field, value)
    if field.kind == "entries" then
        return fault_of_list(value, function(entry) return fault_of_entry(field, entry) end)
    end
    return faults[field.kind](value)
end

local function names_of(fields)
    local names = {}
    for place, field in ipairs(fields) do
        names[place] = field.name
    end
    return #names > 0 and "its arguments are " .. table.concat(names, ", ") or "it has no arguments"
end

--- The table of arguments that a method was called with: one that has a single argument takes it plainly, too.
function arguments.named(operation, given)
    local only = operation.inputs[1]
    if given == nil then
        return {}
    elseif type(given) ~= "table" and only and #operation.inputs == 1 then
        return {[only.name] = given}
    end
    return given
end

--- A message when the fields of a table are not those of `fields`, each as it must be; also `timeout` may be there.
function arguments.fault(operation, fields, given)
    if type(given) ~= "table" then
        return operation .. ": takes a table of named arguments, not " .. shown(given) .. "; " .. names_of(fields)
    end
    local known = {timeout = true}
    for _, field in ipairs(fields) do
        known[field.name] = true
    end
    for key in pairs(given) do
        if not known[key] then
            return operation .. ": there is no '" .. tostring(key) .. "'; " .. names_of(fields)
        end
    end
    for _, field in ipairs(fields) do
        local value = given[field.name]
        if value == nil then
            return operation .. ": '" .. field.name .. "' is missing; it wants " .. wanted(field)
        end
        local fault = fault_of(field, value)
        if fault then
            local is_plain = field.kind == "number" or field.kind == "flag" or field.kind == "text"
            return operation .. ": '" .. field.name .. "' wants " .. wanted(field) ..
                (is_plain and ", and" .. fault or fault ~= "" and fault or ", and is " .. shown(value))
        end
    end
    return nil
end

--- Values in the order of the plain function, and their number.
function arguments.in_order(fields, given)
    local values, count = {}, 0
    for _, field in ipairs(fields) do
        if field.kind == "entries" then
            for _, part in ipairs(field.parts) do
                local list = {}
                for place, entry in ipairs(given[field.name]) do
                    list[place] = entry[part.name]
                end
                count = count + 1
                values[count] = list
            end
        else
            count = count + 1
            values[count] = given[field.name]
        end
    end
    return values, count
end

--- The fixed module gives elements of lists as signed numbers of 32 bits; here they are what they were.
function arguments.unsigned(values)
    for _, list in pairs(values) do
        for place, element in ipairs(type(list) == "table" and list or {}) do
            list[place] = type(element) == "number" and element % (largest + 1) or element
        end
    end
    return values
end

local function entries(field, lists, first)
    local list = {}
    for place = 1, #lists[first] do
        local entry = {}
        for offset, part in ipairs(field.parts) do
            entry[part.name] = lists[first + offset - 1][place]
        end
        list[place] = entry
    end
    for offset = 2, #field.parts do
        if #lists[first + offset - 1] ~= #list then
            return nil
        end
    end
    return list
end

--- The opposite of in_order: named values. nil when lists that belong together differ in length.
function arguments.by_name(fields, values)
    local named, place = {}, 1
    for _, field in ipairs(fields) do
        if field.kind == "entries" then
            named[field.name] = entries(field, values, place)
            if not named[field.name] then
                return nil
            end
            place = place + #field.parts
        else
            named[field.name] = values[place]
            place = place + 1
        end
    end
    return named
end

return arguments
