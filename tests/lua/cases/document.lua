-- SPDX-License-Identifier: Apache-2.0
-- Rules and documents of the Lua layer, asked of a service that is a table: what is asked in which order, what is undone when
-- something fails, and the order of a document.
local check = require "check"
local document = require "korvo.action_engine.document"

local tests = {}
local methods = document.methods

--- A service: `answers` has for each operation a value, or a function that makes one of the arguments. `asked` grows by
--- what was asked for; an operation with a single number has that behind its name.
local function service(answers)
    local asked = {}
    return function(operation, given)
        asked[#asked + 1] = operation .. (type(given) == "number" and " " .. given or "")
        local answer = answers[operation]
        if type(answer) == "function" then
            return answer(given)
        end
        assert(answer ~= nil, operation)
        return answer
    end, asked
end

--- An answer that fails.
local function failing(message, status)
    return function() error({message = message, status = status}) end
end

--- An answer that is 1, then 2, and so on.
local function counting()
    local count = 0
    return function()
        count = count + 1
        return count
    end
end

local function fails(expected, what, ...)
    local succeeded, result = pcall(methods[what], ...)
    check.is_true(not succeeded, what)
    check.equal(result, expected)
end

--- The same with what the method takes alone: nothing is asked for.
local function refused(message, what, given)
    fails({message = message}, what, service{}, given)
end

local timer = {kind = "timer_trigger", trigger_name = "t", timer_seconds = 9}
local function wiper(name, filters)
    return {kind = "wiper_action", action_name = name, filters = filters}
end

-- ---- Rules ----

function tests.rules_are_made_in_their_order()
    local bound, filtered = {}, {}
    local ask, asked = service{
        create_timer_trigger = 7, create_wiper_action = counting(),
        set_action_filters = function(given) filtered[#filtered + 1] = given return true end,
        create_association = function(given) bound[#bound + 1] = given return true end,
    }
    local filters = {{weekdays = 1, start = 2, stop = 3}}
    check.equal(methods.rule(ask, {trigger = timer, actions = {wiper("a"), wiper("b", filters), wiper("c", {})}}),
        {trigger_id = 7, action_ids = {1, 2, 3}})
    check.equal(asked, {
        "create_timer_trigger", "create_wiper_action", "create_association", "create_wiper_action", "set_action_filters",
        "create_association", "create_wiper_action", "create_association",
    })
    check.equal(bound, {{trigger_id = 7, action_id = 1}, {trigger_id = 7, action_id = 2}, {trigger_id = 7, action_id = 3}})
    check.equal(filtered, {{action_id = 2, filters = filters}})
end

function tests.what_failed_is_undone_from_its_end()
    local ask, asked = service{
        create_timer_trigger = 7, create_wiper_action = counting(), delete_action = true, delete_trigger = true,
        create_association = function(given) return given.action_id == 1 or error({message = "full", status = 9}) end,
    }
    fails({message = "full", status = 9}, "rule", ask, {trigger = timer, actions = {wiper "a", wiper "b"}})
    check.equal({asked[#asked - 2], asked[#asked - 1], asked[#asked]}, {"delete_action 2", "delete_action 1", "delete_trigger 7"})
end

function tests.what_cannot_be_undone_is_told()
    local rule = {trigger = timer, actions = {wiper "a"}}
    local answers = {
        create_timer_trigger = 7, create_wiper_action = 3, create_association = failing("full", 9),
        delete_action = failing("gone", 4), delete_trigger = true,
    }
    fails({message = "full; left behind: action 3", status = 9}, "rule", service(answers), rule)
    answers.delete_trigger = failing("gone", 4)
    fails({message = "full; left behind: action 3, trigger 7", status = 9}, "rule", service(answers), rule)
    -- What is no failure of a call stays as it is.
    answers.create_association = function() error("a mistake", 0) end
    fails("a mistake", "rule", service(answers), rule)
end

function tests.rules_are_checked_before_anything_is_asked_for()
    local takes = "rule: takes a table with a trigger and a list of actions"
    for _, given in ipairs{5, {trigger = timer}, {trigger = timer, actions = 5}, {trigger = timer, actions = {}}} do
        refused(takes, "rule", given)
    end
    for _, actions in ipairs {{wiper "a", nil, wiper "c"}, {wiper "a", x = wiper "b"}} do
        refused("rule: 'actions' must be a list, without holes or names", "rule", {trigger = timer, actions = actions})
    end
    refused("rule: trigger must be a table", "rule", {trigger = 5, actions = {wiper "a"}})
    refused("rule: action 2 must be a table", "rule", {trigger = timer, actions = {wiper "a", "b"}})
    refused("rule: trigger: 'kind' wants one of onvif_trigger, stable_onvif_trigger, timer_trigger", "rule",
        {trigger = wiper "a", actions = {wiper "a"}})
    refused("rule: action 1: 'kind' wants one of email_action, ftp_action, ptz_pattern_action, ptz_preset_action, " ..
        "ptz_scan_action, ptz_tour_action, relay_action, snapshot_action, washer_action, wiper_action", "rule",
        {trigger = timer, actions = {timer}})
    local number = "a whole number from 0 to 4294967295"
    local entry = ("{weekdays = %s, start = %s, stop = %s}"):format(number, number, number)
    refused("rule: action 1: 'filters' wants a list of " .. entry .. ", and is 5", "rule",
        {trigger = timer, actions = {wiper("a", 5)}})
    refused("rule: trigger: 'timer_seconds' is missing; it wants a whole number from 0 to 4294967295", "rule",
        {trigger = {kind = "timer_trigger", trigger_name = "t"}, actions = {wiper "a"}})
end

-- ---- Reading ----

--- Answers of a service that has these actions {id, type, settings} and triggers, and binds what `bound` says.
local function having(actions, triggers, bound)
    local answers = {get_actions = {}, get_triggers = {}}
    local settings = {}
    for _, action in ipairs(actions) do
        table.insert(answers.get_actions, {action_id = action[1], action_type = action[2]})
        settings[action[1]] = action[3]
    end
    for _, trigger in ipairs(triggers) do
        table.insert(answers.get_triggers, {trigger_id = trigger, trigger_type = 1})
    end
    answers.get_wiper_action = function(id) return settings[id] end
    answers.get_washer_action = answers.get_wiper_action
    answers.get_ftp_action = answers.get_wiper_action
    answers.get_action_filters = function(id) return settings[id].filters or {} end
    answers.get_timer_trigger = function(id) return {trigger_name = "t" .. id, timer_seconds = 9} end
    answers.get_trigger_associations = function(id)
        local found = {}
        for place, action in ipairs(bound[id] or {}) do
            found[place] = {action_id = action}
        end
        return found
    end
    return answers
end

local function names_of(items)
    local names = {}
    for place, item in ipairs(items) do
        names[place] = item.id .. " " .. item.kind .. " " .. (item.settings.action_name or item.settings.trigger_name)
    end
    return names
end

function tests.items_are_listed_by_their_identifiers()
    local answers = having({{9, 7, {action_name = "a"}}, {4, 8, {action_name = "b"}}}, {3, 2}, {})
    check.equal(names_of(methods.list_actions(service(answers))), {"4 washer_action b", "9 wiper_action a"})
    check.equal(names_of(methods.list_triggers(service(answers))), {"2 timer_trigger t2", "3 timer_trigger t3"})
end

function tests.an_item_that_is_deleted_meanwhile_is_passed_over()
    local answers = having({{1, 7, {action_name = "a"}}, {2, 8, {}}}, {}, {})
    answers.get_washer_action = failing("get_washer_action: status 9", 9)
    fails({message = "get_washer_action: status 9", status = 9}, "list_actions", service(answers))
    local before, after, calls = answers.get_actions, {answers.get_actions[1]}, 0
    answers.get_actions = function()
        calls = calls + 1
        return calls == 1 and before or after
    end
    check.equal(names_of(methods.list_actions(service(answers))), {"1 wiper_action a"})
end

function tests.a_trigger_that_is_deleted_before_its_bindings_are_read_is_passed_over()
    local answers = having({{1, 7, {action_name = "a"}}}, {2, 3}, {[3] = {1}})
    local bound_to = answers.get_trigger_associations
    answers.get_trigger_associations = function(id)
        if id == 2 then
            error({message = "get_trigger_associations: status 9", status = 9})
        end
        return bound_to(id)
    end
    fails({message = "get_trigger_associations: status 9", status = 9}, "export", service(answers))
    local before, after, calls = answers.get_triggers, {answers.get_triggers[2]}, 0
    answers.get_triggers = function()
        calls = calls + 1
        return calls == 1 and before or after
    end
    local found = methods.export(service(answers))
    check.equal(#found.triggers, 1)
    check.equal(found.triggers[1].settings.trigger_name, "t3")
    check.equal(found.associations, {{trigger_id = 1, action_id = 1}})
end

function tests.an_item_of_an_unknown_type_is_told()
    local answers = having({{5, 99, {}}}, {}, {})
    fails({message = "action 5 is of type 99, which this version does not know"}, "list_actions", service(answers))
end

-- ---- Documents ----

function tests.documents_are_in_their_own_order()
    local function up(password, path)
        return {action_name = "n", server_name = "s", username = "u", password = password, path = path, filename = "f"}
    end
    local filter = {{weekdays = 1, start = 2, stop = 3}}
    local answers = having({
        {11, 7, {action_name = "nn"}}, {12, 7, {action_name = "n"}}, {13, 8, {action_name = "n"}}, {14, 1, up("a", "2")},
        {15, 1, up("b", "1")}, {16, 7, {action_name = "\200"}}, {17, 7, {action_name = "N"}}, {18, 1, up("x", "1")},
        {19, 7, {action_name = "n", filters = filter}},
    }, {22, 21}, {[21] = {11, 12, 99}, [22] = {19, 13}})
    local found = methods.export(service(answers), {passwords = true})
    local told = {}
    for place, action in ipairs(found.actions) do
        check.equal(action.id, place)
        told[place] = action.kind .. " " .. action.settings.action_name .. " " .. (action.settings.password or "-") ..
            #action.filters.weekday_filters
    end
    -- By name, kind and content, without passwords; what is equal stays in the order of identifiers.
    check.equal(told, {
        "wiper_action N -0", "ftp_action n b0", "ftp_action n x0", "ftp_action n a0", "washer_action n -0",
        "wiper_action n -1", "wiper_action n -0", "wiper_action nn -0", "wiper_action \200 -0",
    })
    check.equal({found.triggers[1].settings.trigger_name, found.triggers[2].settings.trigger_name}, {"t21", "t22"})
    check.equal(found.associations, {
        {trigger_id = 1, action_id = 7}, {trigger_id = 1, action_id = 8}, {trigger_id = 2, action_id = 5},
        {trigger_id = 2, action_id = 6},
    })
    check.equal(found.format .. " " .. found.version, "korvo-action-engine-catalogue 1")
end

function tests.passwords_are_told_only_when_asked_for()
    local answers = having({{1, 1,
        {action_name = "n", server_name = "s", username = "u", password = "p", path = "/", filename = "f"}}}, {}, {})
    for _, given in ipairs{{}, {passwords = false}} do
        check.equal(methods.export(service(answers), given).actions[1].settings.password, nil)
    end
    check.equal(methods.export(service(answers)).actions[1].settings.password, nil)
    check.equal(methods.export(service(answers), {passwords = true}).actions[1].settings.password, "p")
    refused("export: takes a table: export{passwords = true}", "export", 5)
    refused("export: there is no 'other'; there is passwords", "export", {other = true})
end

--- A document with these actions, triggers and associations.
local function written(actions, triggers, associations)
    return {
        format = "korvo-action-engine-catalogue", version = 1, actions = actions, triggers = triggers or {},
        associations = associations or {},
    }
end

local no_filters = {weekday_filters = {}, time_filters_start = {}, time_filters_end = {}}
local function written_wiper(id)
    return {id = id, kind = "wiper_action", settings = {action_name = "w"}, filters = no_filters}
end
local function written_upload(id, name, password)
    return {id = id, kind = "ftp_action", filters = no_filters,
        settings = {action_name = name, server_name = "s", username = "u", password = password, path = "/", filename = "f"}}
end

function tests.what_is_imported_is_numbered_anew()
    local bound = {}
    local ask, asked = service{
        create_wiper_action = 41, create_timer_trigger = 51,
        create_association = function(given) bound[#bound + 1] = given return true end,
    }
    check.equal(methods.import(ask, written({written_wiper(4294967295)},
        {{id = 1, kind = "timer_trigger", settings = {trigger_name = "t", timer_seconds = 9}}},
        {{trigger_id = 1, action_id = 4294967295}})), {actions = {[4294967295] = 41}, triggers = {51}})
    check.equal(asked, {"create_wiper_action", "create_timer_trigger", "create_association"})
    check.equal(bound, {{trigger_id = 51, action_id = 41}})
end

function tests.missing_passwords_are_those_that_are_there()
    local here = {action_name = "n", server_name = "s", username = "u", password = "first", path = "/", filename = "f"}
    local second = {action_name = "n", server_name = "s", username = "u", password = "second", path = "/", filename = "g"}
    local answers = having({{1, 1, here}, {2, 1, second}}, {}, {})
    local made = {}
    answers.create_ftp_action = function(given)
        made[#made + 1] = given.password
        return #made
    end
    -- Nothing, and what JSON libraries give for null.
    local null = setmetatable({}, {})
    methods.import(service(answers), written{
        written_upload(1, "n"), written_upload(2, "n", null), written_upload(3, "other", "own"), written_upload(4, "e", ""),
    })
    check.equal(made, {"first", "second", "own", ""})
    fails({message = "import: action 3 has no password, and there is no ftp_action of its name that has one"}, "import",
        service(answers), written{written_upload(1, "n"), written_upload(2, "n"), written_upload(3, "n")})
    check.equal(#made, 4)
end

function tests.documents_are_checked_before_anything_is_asked_for()
    local action, trigger = written_wiper(1), {id = 1, kind = "timer_trigger", settings = {trigger_name = "t", timer_seconds = 9}}
    local form = 'import: takes a document with format = "korvo-action-engine-catalogue" and version = 1'
    refused(form, "import", {format = "korvo-action-engine-catalogue", version = 2})
    refused(form, "import", {format = "another", version = 1})
    refused(form, "import", 5)
    refused("import: line 1, column 1: a value is missing", "import", "")
    refused("import: 'actions' must be a list", "import", written(5))
    for _, actions in ipairs{{first = action}, {[2] = action}, {action, nil, action}} do
        refused("import: 'actions' must be a list, without holes or names", "import", written(actions))
    end
    refused("import: 'associations' must be a list", "import", written({action}, {trigger}, 5))
    for _, name in ipairs{"actions", "triggers", "associations"} do
        local text = '{"format":"korvo-action-engine-catalogue","version":1,"actions":[],"triggers":[],"associations":[]}'
        refused("import: '" .. name .. "' must be a list", "import", (text:gsub('("' .. name .. '":)%[%]', "%1null")))
    end
    refused("import: trigger 1 must be an object", "import", written({}, {{id = 1, kind = "timer_trigger"}}))
    refused("import: action 1: 'id' must be a whole number from 1 to 4294967295 that no other action has", "import",
        written{action, action})
    local filters = {weekday_filters = {1}, time_filters_start = {2}, time_filters_end = {"3"}}
    local number = "a whole number from 0 to 4294967295"
    local entry = ("{weekdays = %s, start = %s, stop = %s}"):format(number, number, number)
    refused("import: action 1: 'filters' wants a list of " .. entry .. " (element 1: 'stop' is a text)", "import",
        written{{id = 1, kind = "wiper_action", settings = {action_name = "w"}, filters = filters}})
    local unbound = "import: association 1 names what is not in the document"
    for _, association in ipairs{
        5, {action_id = 1}, {trigger_id = 1}, {trigger_id = 1, action_id = 2}, {trigger_id = 2, action_id = 1},
    } do
        refused(unbound, "import", written({action}, {trigger}, {association}))
    end
    refused("import: association 2 names what is not in the document", "import",
        written({action}, {trigger}, {{trigger_id = 1, action_id = 1}, {trigger_id = 1}}))
end

return tests
