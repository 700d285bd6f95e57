-- SPDX-License-Identifier: Apache-2.0
-- Makes one small mistake in a source file: lua5.1 mutate.lua SEED NUMBER EQUIVALENT FILE...
-- Lines up all places where one can be made, in an order that the seed gives, makes the one of that number in its file and
-- prints "FILE:LINE: what it was -> what it is". Comments, texts, preprocessor lines and static assertions are left alone. Of a
-- mistake that the file EQUIVALENT has as "FILE: what it was -> what it is" it prints "equivalent" and makes nothing. Without
-- such a number it prints nothing and exits with 1.

local seed, number = tonumber(arg[1]), tonumber(arg[2])
assert(seed and number and arg[4], "usage: lua5.1 mutate.lua SEED NUMBER EQUIVALENT FILE...")

-- What stands in code, and what takes its place.
local both = {
    { " < ", " <= " }, { " <= ", " < " }, { " > ", " >= " }, { " >= ", " > " },
    { " + ", " - " }, { " - ", " + " },
    { "true", "false" }, { "false", "true" },
}
local cpp = {
    { " == ", " != " }, { " != ", " == " },
    { " && ", " || " }, { " || ", " && " },
    { "++", "--" }, { "--", "++" },
}
local lua = {
    { " == ", " ~= " }, { " ~= ", " == " },
    { " and ", " or " }, { " or ", " and " },
    { "not ", "" },
}

-- What is no code: how it begins, how it ends, and whether it may go on in the next line.
local texts = {
    cpp = { { "//" }, { "/*", "*/", true }, { 'R"lua(', ')lua"', true }, { '"', '"' }, { "'", "'" } },
    lua = { { "--" }, { "[[", "]]", true }, { '"', '"' }, { "'", "'" } },
}

-- The same line with everything that is no code made blank, and what ends a text or comment that goes on.
local function code_of(line, ending, is_lua)
    local kept, place = {}, 1
    while place <= #line do
        local finish
        if ending then
            local _, last = line:find(ending, place, true)
            finish = last or #line
            if last then ending = nil end
        else
            for _, text in ipairs(texts[is_lua and "lua" or "cpp"]) do
                if line:sub(place, place + #text[1] - 1) == text[1] then
                    local _, last
                    local from = place + #text[1]
                    if text[2] and #text[2] == 1 then
                        while line:find("^\\", from) or from <= #line and line:sub(from, from) ~= text[2] do
                            from = from + (line:find("^\\", from) and 2 or 1)
                        end
                        last = from
                    elseif text[2] then
                        _, last = line:find(text[2], from, true)
                        if not last then ending = text[2] end
                    end
                    finish = math.min(last or #line, #line)
                    break
                end
            end
        end
        if finish then
            kept[#kept + 1] = (" "):rep(finish - place + 1)
            place = finish + 1
        else
            local special = line:find(is_lua and "[\"'%-%[]" or "[\"'/R]", place + 1) or #line + 1
            kept[#kept + 1] = line:sub(place, special - 1)
            place = special
        end
    end
    return table.concat(kept), ending
end

-- Calls found(first, last, text) for each mistake that can be made in a line: its characters from first to last become text.
local function mistakes_in(code, is_lua, found)
    for _, replacements in ipairs { both, is_lua and lua or cpp } do
        for _, replacement in ipairs(replacements) do
            local from = 1
            while true do
                local first, last = code:find(replacement[1], from, true)
                if not first then break end
                found(first, last, replacement[2])
                from = last + 1
            end
        end
    end
    for first, digits in code:gmatch("()%f[%w_.](%d+)%f[^%w_.]") do
        found(first, first + #digits - 1, tostring(tonumber(digits) + 1))
    end
    if not is_lua then
        for first in code:gmatch("()!%f[%w_(]") do found(first, first, "") end
    end
    -- A condition without an operator that is changed above.
    local first, condition = code:match(is_lua and "^%s*if ()(.*) then" or "^%s*if ()(%(.*%)) {$")
    if condition and not condition:find("[<>=!&|]") and not condition:find("%f[%w]not%f[%W]") and not condition:find(" and ", 1, true)
        and not condition:find(" or ", 1, true) then
        found(first, first + #condition - 1, is_lua and "not (\0)" or "(!\0)")
    end
    -- A call whose result nobody takes.
    local call = code:match(is_lua and "^%s+()[%w_:.]+%b()%s*$" or "^%s+()[%w_:>.%-]+%b();%s*$")
    if call and not code:find("^%s+return") then found(call, #code, is_lua and "" or ";") end
end

local function trimmed(text) return text:match("^%s*(.-)%s*$") end

local function contents(path)
    local lines = {}
    for line in assert(io.lines(path)) do lines[#lines + 1] = line end
    return lines
end

local equivalent = {}
for _, line in ipairs(contents(arg[3])) do equivalent[line] = true end

local places = {}
for index = 4, #arg do
    local path = arg[index]
    local is_lua, ending = path:find("%.lua$") ~= nil, nil
    for line_number, line in ipairs(contents(path)) do
        local code
        code, ending = code_of(line, ending, is_lua)
        local passive = not is_lua and
            (code:find("^%s*#") or code:find("static_assert", 1, true) or code:find("^%s*template") or code:find("^%s*virtual"))
        if not passive then
            mistakes_in(code, is_lua, function(first, last, text)
                text = text:gsub("%z", function() return line:sub(first, last) end)
                local changed = line:sub(1, first - 1) .. text .. line:sub(last + 1)
                local told = trimmed(line) .. " -> " .. trimmed(changed)
                places[#places + 1] = { path = path, line = line_number, changed = changed, told = told }
            end)
        end
    end
end

-- Moves a place drawn by lot to each position in turn. The same numbers everywhere, which math.random() does not promise.
local state = seed % 2147483646 + 1
local function draw(limit)
    state = state * 16807 % 2147483647
    return state % limit
end
for _ = 1, 10 do draw(1) end
if number > #places then os.exit(1) end
for position = 1, number do
    local drawn = position + draw(#places - position + 1)
    places[position], places[drawn] = places[drawn], places[position]
end

local place = places[number]
if equivalent[place.path .. ": " .. place.told] then
    print("equivalent")
    os.exit(0)
end
local lines = contents(place.path)
lines[place.line] = place.changed
local file = assert(io.open(place.path, "w"))
file:write(table.concat(lines, "\n"), "\n")
file:close()
print(("%s:%d: %s"):format(place.path, place.line, place.told))
