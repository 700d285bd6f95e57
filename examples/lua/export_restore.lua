-- SPDX-License-Identifier: Apache-2.0
-- Writes everything that the service keeps to a file, and puts it back into this or another service.
--
--     lua5.1 export_restore.lua export catalogue.json
--     lua5.1 export_restore.lua restore catalogue.json
--
-- The file is the one that the tool writes with "korvo-action-engine export --show-secrets", and either reads the other's. It holds
-- the passwords of FTP actions as they are: only you can read it, and see that it stays so where you copy it to. What a service
-- has already stays when a file is restored; what is restored gets new identifiers, since the service gives them.

local ae = require "korvo.action_engine"

-- Raises what is wrong as it is, without a place in this file.
local function must(value, problem)
    if not value then
        error(problem, 0)
    end
    return value
end

-- Makes an empty file that only its owner can read. Lua itself cannot say who may.
local function make_private_file(name)
    os.remove(name)
    local quoted = "'" .. name:gsub("'", "'\\''") .. "'"
    must(os.execute("umask 077 && : > " .. quoted) == 0, "cannot make " .. name)
end

local function export(engine, name)
    local text = engine:export_json{passwords = true}
    -- The file is either the old one or all of the new one, whatever happens meanwhile.
    make_private_file(name .. ".new")
    local file = must(io.open(name .. ".new", "wb"))
    must(file:write(text))
    must(file:close())
    must(os.rename(name .. ".new", name))
    print("exported")
end

local function restore(engine, name)
    local file = must(io.open(name, "rb"))
    local text = must(file:read("*a"))
    file:close()
    local new = engine:import(text)
    for _, noun in ipairs{"action", "trigger"} do
        local ids = {}
        for id in pairs(new[noun .. "s"]) do
            ids[#ids + 1] = id
        end
        table.sort(ids)
        for _, id in ipairs(ids) do
            print(string.format("%s %.0f is now %.0f", noun, id, new[noun .. "s"][id]))
        end
    end
    print("restored")
end

local task = ({export = export, restore = restore})[arg[1]]
if not task or not arg[2] then
    io.stderr:write("usage: export_restore.lua export|restore FILE\n")
    os.exit(2)
end
local succeeded, problem = pcall(task, assert(ae.open{name = "export_restore"}):strict(), arg[2])
if not succeeded then
    io.stderr:write("export_restore.lua: ", tostring(problem), "\n")
    os.exit(1)
end
