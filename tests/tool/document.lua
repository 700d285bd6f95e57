-- SPDX-License-Identifier: Apache-2.0
-- What the test of the tool and the Lua layer side by side does with a script:
--     document.lua export FILE          like the tool's export
--     document.lua export-all FILE      like its export --show-secrets
--     document.lua import FILE          adds what is in the file; prints what import gives
local ae = require "korvo.action_engine"
local engine = assert(ae.open{name = "json"})
local task, name = arg[1], arg[2]
if task == "import" then
    local file = assert(io.open(name, "rb"))
    local new, message, status = engine:import(file:read("*a"))
    file:close()
    if not new then
        print(message, status)
        return
    end
    local count = 0
    for _ in pairs(new.actions) do
        count = count + 1
    end
    print(count .. " actions")
else
    local file = assert(io.open(name, "wb"))
    assert(file:write(assert(engine:export_json{passwords = task == "export-all"})))
    file:close()
    print("exported")
end
