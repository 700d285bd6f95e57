-- SPDX-License-Identifier: Apache-2.0
-- Makes of a run's results what people read: tables on standard output, or docs/performance.md and its pictures.
--
--   lua5.1 bench/report.lua RESULTS                    prints the table of figures
--   lua5.1 bench/report.lua RESULTS --renew MACHINE    renews the page; MACHINE is a file that says where the run was made
--   lua5.1 bench/report.lua RESULTS --record LABEL     adds the run to bench/history.tsv
--   lua5.1 bench/report.lua RESULTS --check            fails when a figure of bench/figures.tsv is missing

package.path = "bench/?.lua;" .. package.path
local svg = require "svg"

local page = "docs/performance.md"
local pictures = "docs/performance"
local history_file = "bench/history.tsv"

local function fail(message)
    io.stderr:write("report: " .. message .. "\n")
    os.exit(1)
end

local function read(path)
    local file = io.open(path) or fail("cannot read " .. path)
    local text = file:read("*a")
    file:close()
    return text
end

local function write(path, text)
    local file = io.open(path, "w") or fail("cannot write " .. path)
    file:write(text)
    file:close()
end

-- The lines of a file as lists of columns, without comments.
local function rows(path)
    local result = {}
    for line in read(path):gmatch("[^\n]+") do
        if line:sub(1, 1) ~= "#" then
            local row = {}
            for column in (line .. "\t"):gmatch("(.-)\t") do
                row[#row + 1] = column
            end
            result[#result + 1] = row
        end
    end
    return result
end

-- Figures in the order of the run. Each: name, unit, sides in their order.
local function load(path)
    local figures, by_name = {}, {}
    for _, row in ipairs(rows(path)) do
        local name = row[2]
        local figure = by_name[name]
        if figure == nil then
            figure = { name = name, kind = row[1], unit = row[5], sides = {} }
            by_name[name] = figure
            figures[#figures + 1] = figure
        end
        figure.sides[#figure.sides + 1] = {
            name = row[3], x = tonumber(row[4]), unit = row[5],
            median = tonumber(row[6]), low = tonumber(row[7]), high = tonumber(row[8]),
            ratio = tonumber(row[9]), ratio_low = tonumber(row[10]), ratio_high = tonumber(row[11]),
            cpu = tonumber(row[12]), cpu_low = tonumber(row[13]), cpu_high = tonumber(row[14]),
        }
    end
    return figures, by_name
end

local function number(value)
    if value == nil then
        return ""
    elseif value >= 100 then
        local text = string.format("%.0f", value)
        local count
        repeat
            text, count = text:gsub("^(%d+)(%d%d%d)", "%1,%2")
        until count == 0
        return text
    elseif value >= 10 then
        return string.format("%.1f", value)
    end
    return string.format("%.2f", value)
end

-- What a figure's kind makes of a side: the number that stands in the tables, and its quartiles.
local function judged(side, kind)
    if kind == "time" then
        return side.ratio, side.ratio_low, side.ratio_high
    elseif kind == "cpu" then
        return side.cpu, side.cpu_low, side.cpu_high
    elseif kind == "rate" then
        return 1 / side.ratio, 1 / side.ratio_high, 1 / side.ratio_low
    end
    return side.median, side.low, side.high
end

-- The figures that are judged, each with what this run says of it, or with nothing.
local function judgements(by_name)
    local result = {}
    for _, row in ipairs(rows("bench/figures.tsv")) do
        local judgement = { figure = row[1], side = row[2], title = row[3], kind = row[4],
                            budget = tonumber(row[6]), aim = tonumber(row[7]) }
        local sides = by_name[row[1]] and by_name[row[1]].sides or {}
        for _, side in ipairs(sides) do
            -- Beside another yardstick, where one is not installed, it would be another figure.
            if side.name == judgement.side and (row[5] == "" or row[5] == sides[1].name) then
                judgement.value, judgement.low, judgement.high = judged(side, judgement.kind)
            end
        end
        result[#result + 1] = judgement
    end
    return result
end

local function verdict(judgement)
    local better = judgement.kind == "rate" and function(limit) return judgement.value >= limit end
        or function(limit) return judgement.value <= limit end
    if judgement.value == nil then
        return "not measured"
    elseif judgement.aim == nil then
        return ""
    elseif better(judgement.aim) then
        return "aim reached"
    elseif better(judgement.budget) then
        return "within budget"
    end
    return "over budget"
end

-- A Markdown table whose columns are as wide as they must be, so that it is read as it is too.
local function tableOf(lines)
    local widths = {}
    local function width(text)
        return #text:gsub("[\128-\191]", "")
    end
    for _, line in ipairs(lines) do
        for column, text in ipairs(line) do
            widths[column] = math.max(widths[column] or 3, width(text))
        end
    end
    local out = {}
    for number_of_line, line in ipairs(lines) do
        local cells, rule = {}, {}
        for column, text in ipairs(line) do
            local padding = (" "):rep(widths[column] - width(text))
            cells[column] = column == 1 and text .. padding or padding .. text
            rule[column] = column == 1 and ("-"):rep(widths[1]) or ("-"):rep(widths[column] - 1) .. ":"
        end
        out[#out + 1] = "| " .. table.concat(cells, " | ") .. " |"
        if number_of_line == 1 then
            out[#out + 1] = "| " .. table.concat(rule, " | ") .. " |"
        end
    end
    return table.concat(out, "\n") .. "\n"
end

local function between(low, high)
    return low ~= nil and low ~= high and number(low) .. " to " .. number(high) or ""
end

local function judgementTable(by_name)
    local lines = { { "figure", "this run", "quartiles", "budget", "aim", "" } }
    for _, judgement in ipairs(judgements(by_name)) do
        lines[#lines + 1] = { judgement.title, number(judgement.value), between(judgement.low, judgement.high),
                              number(judgement.budget), number(judgement.aim), verdict(judgement) }
    end
    return tableOf(lines)
end

-- How the sides of a figure are judged, ours and the others alike.
local function kindOf(figure)
    for _, row in ipairs(rows("bench/figures.tsv")) do
        if row[1] == figure.name then
            return row[4]
        end
    end
    return "time"
end

local words = {
    time = { column = "time × ", picture = "times as long as %s: less is better" },
    cpu = { column = "processor time × ", picture = "times as much processor time as %s: less is better" },
    rate = { column = "rate × ", picture = "times as many a second as %s: more is better" },
}

local function sideTable(figure)
    local kind = kindOf(figure)
    local lines = { { "", "µs", "quartiles", words[kind].column .. figure.sides[1].name, "quartiles" } }
    for _, side in ipairs(figure.sides) do
        local ratio, low, high = judged(side, kind)
        lines[#lines + 1] = { side.name, number(side.median), between(side.low, side.high), number(ratio),
                              between(low, high) }
    end
    return tableOf(lines)
end

local function valueTable(figure)
    local lines = { { "", "median", "quartiles", "unit" } }
    for _, side in ipairs(figure.sides) do
        lines[#lines + 1] = { side.name, number(side.median), between(side.low, side.high), side.unit }
    end
    return tableOf(lines)
end

-- The sides of a curve in their order, and its places on the x axis.
local function curves(figure)
    local names, places, by_name, seen = {}, {}, {}, {}
    for _, point in ipairs(figure.sides) do
        if by_name[point.name] == nil then
            by_name[point.name] = {}
            names[#names + 1] = point.name
        end
        by_name[point.name][point.x] = point
        if not seen[point.x] then
            seen[point.x] = true
            places[#places + 1] = point.x
        end
    end
    table.sort(places)
    return names, places, by_name
end

local function curveTable(figure)
    local names, places, by_name = curves(figure)
    local head = { "µs" }
    for _, place in ipairs(places) do
        head[#head + 1] = number(place)
    end
    local lines = { head }
    for _, name in ipairs(names) do
        local line = { name }
        for _, place in ipairs(places) do
            local point = by_name[name][place]
            line[#line + 1] = point and number(point.median) or "-"
        end
        lines[#lines + 1] = line
    end
    return tableOf(lines)
end

local function fileName(figure)
    return figure.name:gsub("[^%w]+", "-") .. ".svg"
end

local function bars(figure)
    local kind = kindOf(figure)
    local list = {}
    for _, side in ipairs(figure.sides) do
        local ratio, low, high = judged(side, kind)
        list[#list + 1] = { name = side.name, value = ratio, low = low, high = high, label = number(ratio),
                            is_ours = side.name:find("^ours") ~= nil }
    end
    return svg.bars(figure.name, words[kind].picture:format(figure.sides[1].name), list)
end

local function lines(figure)
    local names, places, by_name = curves(figure)
    local list = {}
    for _, name in ipairs(names) do
        local points = {}
        for _, place in ipairs(places) do
            local point = by_name[name][place]
            if point ~= nil then
                points[#points + 1] = { x = place, y = point.median }
            end
        end
        list[#list + 1] = { name = name, points = points }
    end
    return svg.lines(figure.name, "microseconds, both axes logarithmic", list, number)
end

-- All figures of a run, with their pictures written.
local function section(figures)
    local out = {}
    for _, figure in ipairs(figures) do
        out[#out + 1] = "### " .. figure.name:sub(1, 1):upper() .. figure.name:sub(2) .. "\n"
        local draw = figure.kind == "side" and bars or figure.kind == "point" and lines or nil
        if draw ~= nil then
            write(pictures .. "/" .. fileName(figure), draw(figure))
            out[#out + 1] = string.format("![%s](performance/%s)\n", figure.name, fileName(figure))
        end
        local make = figure.kind == "side" and sideTable or figure.kind == "point" and curveTable or valueTable
        out[#out + 1] = make(figure)
    end
    return table.concat(out, "\n")
end

-- One column a recorded run.
local function historyTable(by_name)
    local labels, seen, values = {}, {}, {}
    for _, row in ipairs(rows(history_file)) do
        if not seen[row[1]] then
            seen[row[1]] = true
            labels[#labels + 1] = row[1]
        end
        values[row[1] .. "\t" .. row[2] .. "\t" .. row[3]] = tonumber(row[4])
    end
    if #labels == 0 then
        return "No run is recorded yet.\n"
    end
    local head = { "figure" }
    for _, label in ipairs(labels) do
        head[#head + 1] = label
    end
    local out = { head }
    for _, judgement in ipairs(judgements(by_name)) do
        local line = { judgement.title }
        for _, label in ipairs(labels) do
            line[#line + 1] = number(values[label .. "\t" .. judgement.figure .. "\t" .. judgement.side])
        end
        out[#out + 1] = line
    end
    return tableOf(out)
end

-- Replaces what stands between two comments of the page.
local function replace(text, name, content)
    local first, last = "<!-- " .. name .. " -->\n", "<!-- end of " .. name .. " -->"
    local _, begin = text:find(first, 1, true)
    local finish = begin and text:find(last, begin, true)
    if finish == nil then
        fail(page .. " has no place for: " .. name)
    end
    return text:sub(1, begin) .. "\n" .. content .. "\n" .. text:sub(finish)
end

local results, action, argument = arg[1], arg[2], arg[3]
if results == nil then
    fail("which results?")
end
local figures, by_name = load(results)
if action == nil then
    io.write(judgementTable(by_name))
elseif action == "--renew" then
    os.execute("mkdir -p " .. pictures .. " && rm -f " .. pictures .. "/*.svg")
    local text = read(page)
    text = replace(text, "machine", read(argument))
    text = replace(text, "judgement", judgementTable(by_name))
    text = replace(text, "history", historyTable(by_name))
    text = replace(text, "figures", section(figures))
    write(page, text)
elseif action == "--record" then
    local file = io.open(history_file, "a") or fail("cannot write " .. history_file)
    for _, judgement in ipairs(judgements(by_name)) do
        if judgement.value ~= nil then
            file:write(table.concat({ argument, judgement.figure, judgement.side,
                                      string.format("%.4g", judgement.value) }, "\t"), "\n")
        end
    end
    file:close()
elseif action == "--check" then
    local missing = {}
    for _, judgement in ipairs(judgements(by_name)) do
        -- A short run does not make a million calls.
        if judgement.value == nil and not judgement.side:find("000,000", 1, true) then
            missing[#missing + 1] = "    " .. judgement.figure .. ": " .. judgement.side
        end
    end
    if #missing > 0 then
        fail("these figures were not measured:\n" .. table.concat(missing, "\n"))
    end
else
    fail("what is " .. action .. "?")
end
