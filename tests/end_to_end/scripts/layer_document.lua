-- SPDX-License-Identifier: Apache-2.0
-- Rules and documents of korvo.action_engine, against a service with an empty catalogue. The word "failing": the service refuses
-- to bind, so that nothing may be left behind.
local ae = require "korvo.action_engine"
local engine = assert(ae.open{name = "document"})

local rule = {
    trigger = {kind = "timer_trigger", trigger_name = "hourly", timer_seconds = 3600},
    actions = {
        {kind = "wiper_action", action_name = "wipe", filters = {{weekdays = ae.kSunday, start = 1, stop = 2}}},
        {kind = "ftp_action", action_name = "up", server_name = "ftp.example.org", username = "u", password = "secret", path = "/",
            filename = "f"},
    },
}

local function counts()
    return assert(engine:get_action_counts()).total .. " " .. assert(engine:get_trigger_counts()).total
end

local function refused(message, what, given)
    local result, found, status = engine[what](engine, given)
    assert(result == nil and found == message and status == 1, found)
end

if arg[1] == "failing" then
    local _, message, status = engine:rule(rule)
    assert(message:find("^create_association: status 9 ") and status == 9, message)
    assert(counts() == "0 0")
    local document = {
        format = "korvo-action-engine-catalogue", version = 1,
        actions = {{id = 1, kind = "wiper_action", settings = {action_name = "wipe"},
            filters = {weekday_filters = {}, time_filters_start = {}, time_filters_end = {}}}},
        triggers = {{id = 1, kind = "timer_trigger", settings = {trigger_name = "t", timer_seconds = 9}}},
        associations = {{trigger_id = 1, action_id = 1}},
    }
    _, message, status = engine:import(document)
    assert(message:find("^create_association: status 9 ") and status == 9, message)
    assert(counts() == "0 0")
    print("done")
    return
end

-- A rule is there as it was told, and binds.
local made = assert(engine:rule(rule))
assert(counts() == "2 1")
for place, action in ipairs(assert(engine:get_trigger_associations(made.trigger_id))) do
    assert(action.action_id == made.action_ids[place])
end
assert(engine:get_action_filters(made.action_ids[1])[1].stop == 2)
assert(engine:get_ftp_action(made.action_ids[2]).password == "secret")

-- Rules that are wrong make nothing.
refused("rule: takes a table with a trigger and a list of actions", "rule", {trigger = rule.trigger})
refused("rule: there is no 'name'; there are trigger and actions", "rule", {name = "r", trigger = {}, actions = {{}}})
refused("rule: trigger: 'kind' wants one of onvif_trigger, stable_onvif_trigger, timer_trigger", "rule",
    {trigger = {}, actions = {{}}})
refused("rule: action 1: 'action_name' is missing; it wants a text without zero bytes", "rule",
    {trigger = rule.trigger, actions = {{kind = "wiper_action"}}})
assert(counts() == "2 1")

-- What is exported is the document's form, without passwords.
local exported = assert(engine:export())
assert(exported.format == "korvo-action-engine-catalogue" and exported.version == 1)
local ftp, wiper = exported.actions[1], exported.actions[2]
assert(wiper.kind == "wiper_action" and wiper.settings.action_name == "wipe")
assert(wiper.filters.weekday_filters[1] == 1 and wiper.filters.time_filters_start[1] == 1 and wiper.filters.time_filters_end[1] == 2)
assert(ftp.settings.password == nil and ftp.settings.username == "u" and #ftp.filters.weekday_filters == 0)
assert(engine:export{passwords = true}.actions[1].settings.password == "secret")
assert(exported.triggers[1].settings.timer_seconds == 3600 and #exported.associations == 2)

-- The password of a document without one is that of the action that is there.
local new = assert(engine:import(exported))
assert(ftp.id == 1 and wiper.id == 2 and new.actions[1] == 3 and new.actions[2] == 4 and new.triggers[1] == 2 and counts() == "4 2")
assert(engine:get_ftp_action(3).password == "secret")
assert(#engine:get_trigger_associations(2) == 2)
assert(engine:get_action_filters(4)[1].weekdays == 1)

-- Namespaces stand in parallel lists there.
assert(engine:create_onvif_trigger{trigger_name = "o", topic_filter = "tns1:X", content_filter = "",
    topic_filter_dialect = "http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete",
    namespaces = {{key = "tns1", uri = "http://www.onvif.org/ver10/topics"}}})
-- The third by its name.
local onvif = assert(engine:export()).triggers[3].settings
assert(onvif.namespace_keys[1] == "tns1" and onvif.namespace_uris[1] == "http://www.onvif.org/ver10/topics" and not onvif.namespaces)

-- Documents that are wrong change nothing, and the message names the entry.
local function broken(message, change)
    local document = assert(engine:export{passwords = true})
    local before = counts()
    change(document)
    refused(message, "import", document)
    assert(counts() == before)
end
local form = 'import: takes a document with format = "korvo-action-engine-catalogue" and version = 1'
refused(form, "import", 5)
broken(form, function(document) document.version = 2 end)
broken("import: 'triggers' must be a list", function(document) document.triggers = nil end)
local identifier = "'id' must be a whole number from 1 to 4294967295 that no other action has"
broken("import: action 2: " .. identifier, function(document) document.actions[3].id = 2 end)
for _, id in ipairs {0, -1, 1.5, 4294967296, 0 / 0} do
    broken("import: action " .. tostring(id) .. ": " .. identifier, function(document) document.actions[1].id = id end)
end
broken("import: action at place 1: " .. identifier, function(document) document.actions[1] = true end)
broken("import: 'actions' must be a list, without holes or names", function(document) document.actions.first = {} end)
broken("import: 'actions' must be a list, without holes or names", function(document) document.actions[2] = nil end)
broken("import: action 1: 'password' wants a text without zero bytes, and is 5", function(document)
    document.actions[1].settings.password = 5
end)
broken("import: action 2: there is no kind 'timer_trigger'", function(document) document.actions[2].kind = "timer_trigger" end)
broken("import: action 1: 'action_name' is missing; it wants a text without zero bytes", function(document)
    document.actions[1].settings.action_name = nil
end)
broken("import: action 1: filters: 'time_filters_end' must be a list", function(document)
    document.actions[1].filters.time_filters_end = nil
end)
broken("import: action 3: filters: lists that belong together differ in length", function(document)
    document.actions[3].filters.time_filters_end = {}
end)
broken("import: action 1 has no password, and there is no ftp_action of its name that has one", function(document)
    document.actions[1].settings.action_name = "unknown"
    document.actions[1].settings.password = nil
end)
broken("import: association 1 names what is not in the document", function(document)
    document.associations[1].action_id = 1000
end)
broken("import: action 1: filters must be an object", function(document) document.actions[1].filters = nil end)
broken("import: trigger 3: 'timer_seconds' wants a whole number from 0 to 4294967295, and is a text", function(document)
    document.triggers = {{id = 3, kind = "timer_trigger", settings = {trigger_name = "t", timer_seconds = "9"}}}
    document.associations = {}
end)

refused("export: there is no 'password'; there is passwords", "export", {password = true})
refused("export_json: takes a table: export_json{passwords = true}", "export_json", true)

-- As a text it is the same document.
local text = assert(engine:export_json{passwords = true})
local function broken_text(message, from, to)
    local before = counts()
    local wrong, count = text:gsub(from, to, 1)
    assert(count == 1, from)
    refused(message, "import", wrong)
    assert(counts() == before)
end
broken_text("import: line 1, column 1: a value is missing", "^.*$", "")
broken_text("import: line 2, column 13: ':' is missing", '"format":', '"format" ')
broken_text("import: line 3, column 16: '}' or ',' is missing", '1,\n  "actions"', '1 "actions"')
broken_text(form, '"version": 1', '"version": 1.5')
broken_text(form, "^.*$", "[]")
broken_text("import: 'actions' must be a list", '"actions": %[.-\n  %]', '"actions": {}')
broken_text("import: action 1: 'password' wants a text without zero bytes, and is a text with a zero byte", '"secret"', '"\\u0000"')
broken_text("import: action 1: 'username' must be a list", '"username": "u"', '"username": {}')
broken_text("import: action 1: 'username' is missing; it wants a text without zero bytes", '"username": "u"', '"username": null')
broken_text("import: action 1: filters: 'time_filters_end' must be a list", '"time_filters_end":%[%]', '"time_filters_end":{}')
local masked = assert(engine:export_json())
assert(masked:find('"password": null', 1, true) and not masked:find("secret", 1, true))
local associations = #engine:export().associations
new = assert(engine:import(masked))
assert(counts() == "8 6" and #engine:export().associations == 2 * associations)
assert(engine:get_ftp_action(new.actions[1]).password == "secret")
for _, id in pairs(new.actions) do
    assert(engine:delete_action(id))
end
for _, id in pairs(new.triggers) do
    assert(engine:delete_trigger(id))
end
assert(engine:export_json{passwords = true} == text)

-- The iterators see the same, in the order of identifiers.
local kinds = {}
for action in engine:actions() do
    kinds[#kinds + 1] = action.id .. " " .. action.kind
end
for trigger in engine:triggers() do
    kinds[#kinds + 1] = trigger.id .. " " .. trigger.settings.trigger_name
end
assert(table.concat(kinds, ", ") == "1 wiper_action, 2 ftp_action, 3 ftp_action, 4 wiper_action, 1 hourly, 2 hourly, 3 o",
    table.concat(kinds, ", "))
print("done")
