-- SPDX-License-Identifier: Apache-2.0
-- Writes everything that the service keeps to a file, and puts it back into this or another service.
--
--     lua5.1 export_restore.lua export catalogue.saved
--     lua5.1 export_restore.lua restore catalogue.saved
--
-- The file is a Lua table that people can read and edit. It holds the passwords of FTP actions as they are: only you can
-- read it, and see that it stays so where you copy it to. What a service has already stays when a file is restored; what
-- is restored gets new identifiers, since the service gives them, and associations follow.

package.path = (arg[0]:match("^.*/") or "./") .. "?.lua;" .. package.path
local camera = require "camera"
local catalogue = require "catalogue"

local format_of_the_file = 1

-- ---- Writing ----

-- Numbers as whole ones with all their digits: "%d" knows only 32 bits on the camera.
local function literal(value, indent)
    if type(value) == "number" then
        return string.format("%.0f", value)
    elseif type(value) == "string" then
        return string.format("%q", value)
    elseif type(value) ~= "table" then
        return tostring(value)
    end
    local lines, inner = {}, indent .. "    "
    for _, element in ipairs(value) do
        table.insert(lines, inner .. literal(element, inner))
    end
    local names = {}
    for name in pairs(value) do
        if type(name) == "string" then
            table.insert(names, name)
        end
    end
    table.sort(names)
    for _, name in ipairs(names) do
        table.insert(lines, inner .. name .. " = " .. literal(value[name], inner))
    end
    return lines[1] and "{\n" .. table.concat(lines, ",\n") .. "\n" .. indent .. "}" or "{}"
end

-- Makes an empty file that only its owner can read. Lua itself cannot say who may.
local function make_private_file(name)
    os.remove(name)
    local quoted = "'" .. name:gsub("'", "'\\''") .. "'"
    camera.must(os.execute("umask 077 && : > " .. quoted) == 0, "cannot make " .. name)
end

-- A file is either the old one or all of the new one, whatever happens meanwhile.
local function write_file(name, text)
    make_private_file(name .. ".new")
    local file = camera.must(io.open(name .. ".new", "wb"))
    camera.must(file:write(text))
    camera.must(file:close())
    camera.must(os.rename(name .. ".new", name))
end

local function export_half(service, which, further)
    local entries = {}
    local identifiers, kinds = catalogue.list(service, which)
    for _, identifier in ipairs(identifiers) do
        local entry = {id = identifier, item = catalogue.read(service, which, identifier, kinds[identifier])}
        further(entry)
        table.insert(entries, entry)
    end
    return entries
end

local function export(service, name)
    local saved = {format = format_of_the_file, associations = {}}
    saved.actions = export_half(service, catalogue.actions, function(entry)
        entry.filters = catalogue.read_filters(service, entry.id)
    end)
    saved.triggers = export_half(service, catalogue.triggers, function(entry)
        for _, action_id in ipairs(camera.identifiers((service.get_trigger_associations(entry.id)))) do
            table.insert(saved.associations, {trigger = entry.id, action = action_id})
        end
    end)
    write_file(name, "-- Saved by export_restore.lua.\nreturn " .. literal(saved, "") .. "\n")
    return saved
end

-- ---- Reading ----

-- A saved file is data: it is read as text, and what it says can reach nothing of this program.
local function read_file(name)
    local file = camera.must(io.open(name, "rb"))
    local text = camera.must(file:read("*a"))
    file:close()
    if text:sub(1, 1) == "\27" then
        error(name .. ": is a compiled program, not a saved catalogue", 0)
    end
    local chunk, problem = loadstring(text, "@" .. name)
    if not chunk then
        error(problem, 0)
    end
    local succeeded, saved = pcall(setfenv(chunk, {}))
    if not succeeded then
        error(saved, 0)
    elseif type(saved) ~= "table" or saved.format ~= format_of_the_file or type(saved.actions) ~= "table" or
        type(saved.triggers) ~= "table" or type(saved.associations) ~= "table" then
        error(name .. ": is no catalogue that this program has saved", 0)
    end
    return saved
end

local function check_filters(filters, where)
    for _, list in ipairs(catalogue.filter_lists) do
        if type(filters) ~= "table" or type(filters[list]) ~= "table" then
            error(where .. ": 'filters' must have the list '" .. list .. "'", 0)
        end
    end
end

local function check(saved, name)
    local known = {}
    for _, which in ipairs {catalogue.actions, catalogue.triggers} do
        known[which.noun] = {}
        for place, entry in ipairs(saved[which.noun .. "s"]) do
            local where = string.format("%s: %s %d", name, which.noun, place)
            catalogue.check(which, entry.item, where)
            if type(entry.id) ~= "number" or known[which.noun][entry.id] then
                error(where .. ": 'id' must be a number that no other has", 0)
            end
            known[which.noun][entry.id] = true
            if which == catalogue.actions then
                check_filters(entry.filters, where)
            end
        end
    end
    for place, association in ipairs(saved.associations) do
        if not known.trigger[association.trigger] or not known.action[association.action] then
            error(string.format("%s: association %d names what is not in the file", name, place), 0)
        end
    end
end

local function restore(service, name)
    local saved = read_file(name)
    check(saved, name)
    local new = {action = {}, trigger = {}}
    catalogue.all_or_nothing(service, function(create)
        for _, entry in ipairs(saved.actions) do
            new.action[entry.id] = create(catalogue.actions, entry.item)
            catalogue.set_filters(service, new.action[entry.id], entry.filters)
        end
        for _, entry in ipairs(saved.triggers) do
            new.trigger[entry.id] = create(catalogue.triggers, entry.item)
        end
        for _, association in ipairs(saved.associations) do
            service.create_association(new.trigger[association.trigger], new.action[association.action])
        end
    end)
    for _, which in ipairs {catalogue.actions, catalogue.triggers} do
        for _, entry in ipairs(saved[which.noun .. "s"]) do
            print(string.format("%s %.0f is now %.0f", which.noun, entry.id, new[which.noun][entry.id]))
        end
    end
    return saved
end

camera.run(function(arguments)
    local work = {export = export, restore = restore}
    local done = {export = "exported", restore = "restored"}
    local task, name = arguments[1], arguments[2]
    if not work[task] or not name then
        error("usage: export_restore.lua export|restore FILE", 0)
    end
    local service = camera.open("export_restore")
    local saved = work[task](service, name)
    service.close()
    print(string.format("%s: actions %d, triggers %d, associations %d", done[task], #saved.actions, #saved.triggers,
        #saved.associations))
end)
