-- SPDX-License-Identifier: Apache-2.0
-- Actions and triggers, as list_actions() and list_triggers() give them, in words. Shared by list_catalogue.lua and watch.lua.
local describe = {}

function describe.title(noun, item)
    return string.format("%s %.0f: %s %q", noun, item.id, item.kind, item.settings[noun .. "_name"])
end

local function as_text(value)
    if type(value) == "table" then
        local texts = {}
        for place, element in ipairs(value) do
            texts[place] = element.uri and element.key .. "=" .. element.uri or as_text(element)
        end
        return "{" .. table.concat(texts, ", ") .. "}"
    elseif type(value) == "number" then
        return string.format("%.0f", value)
    end
    return type(value) == "string" and string.format("%q", value) or tostring(value)
end

--- {name, text} for each setting, by name. Passwords are not shown.
function describe.settings(item)
    local settings = {}
    for name, value in pairs(item.settings) do
        settings[#settings + 1] = {name = name, text = name == "password" and "(hidden)" or as_text(value)}
    end
    table.sort(settings, function(left, right) return left.name < right.name end)
    return settings
end

--- Says on standard error what has gone wrong, and ends the program.
function describe.run(program, main)
    local succeeded, problem = pcall(main)
    if not succeeded then
        io.stderr:write(program, ": ", tostring(problem), "\n")
        os.exit(1)
    end
end

return describe
