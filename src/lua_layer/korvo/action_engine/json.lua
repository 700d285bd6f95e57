-- SPDX-License-Identifier: Apache-2.0
-- JSON texts: written as the tool writes documents, read so that a message says where the mistake is.
local json = {}

--- Stands for null. Libraries have values of their own for it.
json.null = setmetatable({}, {__tostring = function() return "null" end})

-- Objects that were read, so that {} is not taken for a list.
local Object = {}
-- Objects that are written: a list of {name, value}, since a table has no order.
local Members = {}

function json.is_object(value)
    return type(value) == "table" and getmetatable(value) == Object
end

function json.members(list)
    return setmetatable(list, Members)
end

--- Members as a table, without those that are null.
function json.to_table(value)
    if type(value) ~= "table" or value == json.null then
        return value
    end
    local result = {}
    if getmetatable(value) == Members then
        for _, member in ipairs(value) do
            if member[2] ~= json.null then
                result[member[1]] = json.to_table(member[2])
            end
        end
    else
        for place, element in ipairs(value) do
            result[place] = json.to_table(element)
        end
    end
    return result
end

-- ---- Writing ----

local escapes = {['"'] = '\\"', ["\\"] = "\\\\", ["\b"] = "\\b", ["\f"] = "\\f", ["\n"] = "\\n", ["\r"] = "\\r", ["\t"] = "\\t"}

local function quoted(text)
    return '"' .. text:gsub('[%z\1-\31"\\]', function(character)
        return escapes[character] or string.format("\\u%04x", character:byte())
    end) .. '"'
end

local function joined(value, write)
    local texts = {}
    for place, element in ipairs(value) do
        texts[place] = write(element)
    end
    return table.concat(texts, ",")
end

--- Everything in one line. Numbers are whole ones.
function json.compact(value)
    if type(value) == "string" then
        return quoted(value)
    elseif type(value) == "number" then
        return string.format("%.0f", value)
    elseif type(value) ~= "table" or value == json.null then
        return tostring(value)
    elseif getmetatable(value) == Members then
        return "{" .. joined(value, function(member) return quoted(member[1]) .. ":" .. json.compact(member[2]) end) .. "}"
    end
    return "[" .. joined(value, json.compact) .. "]"
end

local longest_line = 100

--- Indented by two blanks; what fits into a line stands in one.
function json.pretty(value, indent)
    indent = indent or 0
    local compact = json.compact(value)
    local is_object = type(value) == "table" and getmetatable(value) == Members
    local is_short = #compact + indent <= longest_line
    if type(value) ~= "table" or value == json.null or #value == 0 or (is_short and not (is_object and indent == 0)) then
        return compact
    end
    local margin, lines = string.rep(" ", indent + 2), {}
    for place, element in ipairs(value) do
        lines[place] = margin ..
            (is_object and quoted(element[1]) .. ": " .. json.pretty(element[2], indent + 2) or json.pretty(element, indent + 2))
    end
    local open, close = "[", "]"
    if is_object then
        open, close = "{", "}"
    end
    return open .. "\n" .. table.concat(lines, ",\n") .. "\n" .. string.rep(" ", indent) .. close
end

-- ---- Reading ----

local deepest = 32

local function fail(position, what, ...)
    error({position = position, what = string.format(what, ...)})
end

-- One line each: the shortest form of each character, and no halves of surrogate pairs.
local characters = {
    "^[\194-\223][\128-\191]()",
    "^\224[\160-\191][\128-\191]()",
    "^[\225-\236\238\239][\128-\191][\128-\191]()",
    "^\237[\128-\159][\128-\191]()",
    "^\240[\144-\191][\128-\191][\128-\191]()",
    "^[\241-\243][\128-\191][\128-\191][\128-\191]()",
    "^\244[\128-\143][\128-\191][\128-\191]()",
}

local function check_utf8(text)
    local position = text:find("[\128-\255]")
    while position do
        local behind
        for _, pattern in ipairs(characters) do
            behind = behind or text:match(pattern, position)
        end
        if not behind then
            fail(position, "this is no UTF-8")
        end
        position = text:find("[\128-\255]", behind)
    end
end

local function utf8(code)
    if code < 0x80 then
        return string.char(code)
    end
    local bytes = ""
    local first = 0xC0
    local room = 0x20
    repeat
        bytes = string.char(0x80 + code % 0x40) .. bytes
        code = math.floor(code / 0x40)
        if code < room then
            return string.char(first + code) .. bytes
        end
        first, room = first + room, room / 2
    until false
end

local unescaped = {
    ['"'] = '"', ["\\"] = "\\", ["/"] = "/", b = "\b", f = "\f", n = "\n", r = "\r", t = "\t",
}

-- What the escape at a position stands for, and what is behind it.
local function read_escape(text, position)
    local plain = unescaped[text:sub(position + 1, position + 1)]
    if plain then
        return plain, position + 2
    end
    local digits, behind = text:match("^\\u(%x%x%x%x)()", position)
    local code = digits and tonumber(digits, 16)
    if not code then
        fail(position, "there is no such escape")
    end
    if code >= 0xD800 and code < 0xE000 then
        local low, behind_low = text:match("^\\u([Dd][C-Fc-f]%x%x)()", behind)
        if code >= 0xDC00 or not low then
            fail(position, "this is half a character")
        end
        code, behind = 0x10000 + (code - 0xD800) * 0x400 + tonumber(low, 16) - 0xDC00, behind_low
    end
    return utf8(code), behind
end

local function read_text(text, position)
    local parts, begin = {}, position
    position = position + 1
    while true do
        local special = text:find('[%z\1-\31"\\]', position)
        if not special then
            fail(begin, "the text has no end")
        end
        parts[#parts + 1] = text:sub(position, special - 1)
        local character = text:sub(special, special)
        if character == '"' then
            return table.concat(parts), special + 1
        elseif character ~= "\\" then
            fail(special, "a control character must be written as an escape")
        end
        parts[#parts + 1], position = read_escape(text, special)
    end
end

-- Without its point, for which a program's locale may want a comma.
local function read_number(text, position)
    local whole, behind = text:match("^(-?[0-9]+)()", position)
    if not whole or whole:find("^-?0[0-9]") then
        fail(position, "this is no number")
    end
    local fraction, behind_fraction = text:match("^%.([0-9]+)()", behind)
    behind = behind_fraction or behind
    local exponent, behind_exponent = text:match("^[eE]([+-]?[0-9]+)()", behind)
    local power = (tonumber(exponent) or 0) - #(fraction or "")
    local number = string.format("%s%se%d", whole, fraction or "", math.max(-1e6, math.min(1e6, power)))
    return tonumber(number), behind_exponent or behind
end

local function skip(text, position)
    return text:match("^[ \t\r\n]*()", position)
end

local words = {["true"] = true, ["false"] = false, null = json.null}
local read_value

-- What stands between the brackets, by read_one(position), which gives the position behind.
local function read_all(text, position, close, read_one)
    position = skip(text, position + 1)
    if text:sub(position, position) == close then
        return position + 1
    end
    while true do
        position = skip(text, read_one(position))
        local character = text:sub(position, position)
        if character == close then
            return position + 1
        elseif character ~= "," then
            fail(position, "'%s' or ',' is missing", close)
        end
        position = skip(text, position + 1)
    end
end

local function read_object(text, position, depth)
    local object = setmetatable({}, Object)
    return object, read_all(text, position, "}", function(at)
        if text:sub(at, at) ~= '"' then
            fail(at, "the name of a member is missing")
        end
        local name
        name, at = read_text(text, at)
        at = skip(text, at)
        if text:sub(at, at) ~= ":" then
            fail(at, "':' is missing")
        end
        object[name], at = read_value(text, skip(text, at + 1), depth)
        return at
    end)
end

local function read_array(text, position, depth)
    local array = {}
    return array, read_all(text, position, "]", function(at)
        array[#array + 1], at = read_value(text, at, depth)
        return at
    end)
end

function read_value(text, position, depth)
    local character = text:sub(position, position)
    if character == "{" or character == "[" then
        if depth == deepest then
            fail(position, "more than %d levels", deepest)
        end
        return (character == "{" and read_object or read_array)(text, position, depth + 1)
    elseif character == '"' then
        return read_text(text, position)
    elseif character:find("^[-0-9]") then
        return read_number(text, position)
    end
    local word, behind = text:match("^([a-z]+)()", position)
    if words[word or ""] == nil then
        fail(position, "a value is missing")
    end
    return words[word], behind
end

local function read_whole(text)
    check_utf8(text)
    local value, behind = read_value(text, skip(text, 1), 0)
    behind = skip(text, behind)
    if behind <= #text then
        fail(behind, "something stands behind the end")
    end
    return value
end

-- Lines and characters from 1 on, as editors count.
local function place_of(text, position)
    local line, start = 1, 1
    for newline in text:sub(1, position - 1):gmatch("()\n") do
        line, start = line + 1, newline + 1
    end
    local _, continued = text:sub(start, position - 1):gsub("[\128-\191]", "")
    return string.format("line %d, column %d", line, position - start - continued + 1)
end

--- The value that a text holds, or nil and a message with line and column.
function json.read(text)
    local succeeded, result = pcall(read_whole, text)
    if succeeded then
        return result
    elseif type(result) ~= "table" then
        error(result, 0)
    end
    return nil, place_of(text, result.position) .. ": " .. result.what
end

return json
