-- SPDX-License-Identifier: Apache-2.0
-- Draws figures as SVG texts: horizontal bars, and curves with two logarithmic axes.

local svg = {}

local colours = { "#1f77b4", "#d95f02", "#1b9e77", "#7570b3", "#e7298a", "#66a61e" }
local ours, others = "#1f77b4", "#b8c2cc"

local function escape(text)
    return (text:gsub("[&<>]", { ["&"] = "&amp;", ["<"] = "&lt;", [">"] = "&gt;" }))
end

local function label(x, y, anchor, words, more)
    return string.format('<text x="%.1f" y="%.1f" text-anchor="%s"%s>%s</text>', x, y, anchor, more or "",
                         escape(words))
end

local function picture(width, height, title, subtitle, parts)
    return table.concat({
        string.format('<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" font-family="sans-serif" '
                          .. 'font-size="12" fill="#333">', width, height),
        string.format('<rect width="%d" height="%d" fill="#fff"/>', width, height),
        label(10, 20, "start", title, ' font-size="15" font-weight="bold"'),
        label(10, 38, "start", subtitle, ' fill="#666"'),
        table.concat(parts, "\n"),
        "</svg>",
    }, "\n") .. "\n"
end

-- Bars from 0, longest last; each with its quartiles as a thin line. Each of the list: name, value, low, high, label,
-- is_ours.
function svg.bars(title, subtitle, list)
    local left, right, top, step = 230, 640, 56, 24
    local sorted = {}
    local longest = 0
    for _, bar in ipairs(list) do
        sorted[#sorted + 1] = bar
        longest = math.max(longest, bar.high)
    end
    table.sort(sorted, function(a, b) return a.value < b.value end)
    local function x(value)
        return left + (right - left) * value / longest
    end
    local parts = {}
    for place, bar in ipairs(sorted) do
        local y = top + (place - 1) * step
        parts[#parts + 1] = label(left - 8, y + 13, "end", bar.name, bar.is_ours and ' font-weight="bold"')
        parts[#parts + 1] = string.format('<rect x="%d" y="%d" width="%.1f" height="%d" fill="%s"/>', left, y,
                                          math.max(x(bar.value) - left, 1), step - 6,
                                          bar.is_ours and ours or others)
        parts[#parts + 1] = string.format('<line x1="%.1f" x2="%.1f" y1="%.1f" y2="%.1f" stroke="#333"/>',
                                          x(bar.low), x(bar.high), y + (step - 6) / 2, y + (step - 6) / 2)
        parts[#parts + 1] = label(x(bar.high) + 6, y + 13, "start", bar.label)
    end
    return picture(right + 70, top + #sorted * step + 10, title, subtitle, parts)
end

local function decades(least, most)
    return math.floor(math.log10(least)), math.max(math.ceil(math.log10(most)), math.floor(math.log10(least)) + 1)
end

-- Curves. Each of the list: name, and points with x and y; `number` writes one for people.
function svg.lines(title, subtitle, list, number)
    local left, right, top, bottom = 80, 620, 60, 340
    local least_x, most_x, least_y, most_y = math.huge, 0, math.huge, 0
    for _, line in ipairs(list) do
        for _, point in ipairs(line.points) do
            least_x, most_x = math.min(least_x, point.x), math.max(most_x, point.x)
            least_y, most_y = math.min(least_y, point.y), math.max(most_y, point.y)
        end
    end
    local first_x, last_x = decades(least_x, most_x)
    local first_y, last_y = decades(least_y, most_y)
    local function x(value)
        return left + (right - left) * (math.log10(value) - first_x) / (last_x - first_x)
    end
    local function y(value)
        return bottom - (bottom - top) * (math.log10(value) - first_y) / (last_y - first_y)
    end
    local parts = {}
    for decade = first_x, last_x do
        local place = x(10 ^ decade)
        parts[#parts + 1] = string.format('<line x1="%.1f" x2="%.1f" y1="%d" y2="%d" stroke="#e3e3e3"/>', place,
                                          place, top, bottom)
        parts[#parts + 1] = label(place, bottom + 18, "middle", number(10 ^ decade))
    end
    for decade = first_y, last_y do
        local place = y(10 ^ decade)
        parts[#parts + 1] = string.format('<line x1="%d" x2="%d" y1="%.1f" y2="%.1f" stroke="#e3e3e3"/>', left,
                                          right, place, place)
        parts[#parts + 1] = label(left - 8, place + 4, "end", number(10 ^ decade))
    end
    for place, line in ipairs(list) do
        local colour = colours[(place - 1) % #colours + 1]
        local points = {}
        for _, point in ipairs(line.points) do
            points[#points + 1] = string.format("%.1f,%.1f", x(point.x), y(point.y))
            parts[#parts + 1] = string.format('<circle cx="%.1f" cy="%.1f" r="3" fill="%s"/>', x(point.x),
                                              y(point.y), colour)
        end
        parts[#parts + 1] = string.format('<polyline points="%s" fill="none" stroke="%s" stroke-width="2"/>',
                                          table.concat(points, " "), colour)
        local row = bottom + 40 + (place - 1) * 18
        parts[#parts + 1] = string.format('<rect x="%d" y="%d" width="20" height="4" fill="%s"/>', left, row - 6,
                                          colour)
        parts[#parts + 1] = label(left + 28, row, "start", line.name)
    end
    return picture(right + 60, bottom + 40 + #list * 18, title, subtitle, parts)
end

return svg
