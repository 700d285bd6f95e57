-- SPDX-License-Identifier: Apache-2.0
-- Lists everything that the service keeps: actions with their settings and filters, triggers, and which runs which.
--
--     lua5.1 list_catalogue.lua

package.path = (arg[0]:match("^.*/") or "./") .. "?.lua;" .. package.path
local camera = require "camera"
local catalogue = require "catalogue"

local function show_item(service, which, identifier, kind)
    if not kind then
        print(string.format("%s %.0f: of a type that this program does not know", which.noun, identifier))
        return
    end
    local item = catalogue.read(service, which, identifier, kind)
    print(string.format("%s %.0f: %s %q", which.noun, identifier, kind:gsub("_", " "), catalogue.name(which, item)))
    for _, setting in ipairs(catalogue.settings(which, item)) do
        if setting ~= which.noun .. "_name" then
            print(string.format("    %s = %s", setting, catalogue.setting_as_text(setting, item[setting])))
        end
    end
end

local function show_filters(service, identifier)
    for _, text in ipairs(catalogue.filters_as_texts(catalogue.read_filters(service, identifier))) do
        print("    runs only " .. text)
    end
end

local function show_bound_actions(service, identifier)
    local action_ids = camera.identifiers((service.get_trigger_associations(identifier)))
    for place, action_id in ipairs(action_ids) do
        action_ids[place] = string.format("%.0f", action_id)
    end
    print("    runs " .. (action_ids[1] and "action " .. table.concat(action_ids, ", ") or "nothing"))
end

camera.run(function()
    local service = camera.open("list_catalogue")
    local actions, action_kinds = catalogue.list(service, catalogue.actions)
    local triggers, trigger_kinds = catalogue.list(service, catalogue.triggers)
    print(string.format("actions: %d, triggers: %d", #actions, #triggers))
    for _, identifier in ipairs(actions) do
        show_item(service, catalogue.actions, identifier, action_kinds[identifier])
        show_filters(service, identifier)
    end
    for _, identifier in ipairs(triggers) do
        show_item(service, catalogue.triggers, identifier, trigger_kinds[identifier])
        show_bound_actions(service, identifier)
    end
    service.close()
end)
