-- SPDX-License-Identifier: Apache-2.0
-- What lua_test.cpp does with both Lua modules while memory runs out: families of calls by their names. Each function prepares and
-- gives two more: the work, in which allocations fail, and what must hold afterwards. The work gives a status: 0 when it is done, or
-- that of the first failure. A third value says that lists are given: one for which memory runs out is NULL, which is refused with
-- status 1. `is_for_ever` tells that no allocation will succeed again, has_failed() that all has failed that is going to, or for ever.
local api = require "korvo_api_action_engine"
local ae = require "korvo.action_engine"

local families = {}

local function no_more() end

-- ---- The fixed module ----

-- Both at once would say that the settings are half written.
local function setting(kind, old, new, show)
    show = show or tostring
    families["setting of " .. kind] = function()
        local set, get = api["korvo_core_settings_set_" .. kind .. "_value"], api["korvo_core_settings_get_" .. kind .. "_value"]
        local copy = api["korvo_core_settings_copy_" .. kind .. "_key"]
        assert(set("torture." .. kind, old) == 0)
        return function()
            local status = set("torture." .. kind, new)
            if status == 0 then
                status = copy("torture." .. kind, "torture.copy." .. kind)
            end
            if status == 0 then
                status = get("torture.copy." .. kind)
            end
            return status
        end, function(status)
            local read, value = get("torture." .. kind)
            assert(read == 0, "status " .. read)
            local found = show(value)
            assert(found == show(new) or (status ~= 0 and found == show(old)), found)
        end, type(old) == "table"
    end
end
local function list(value)
    local texts = {}
    for place, element in ipairs(value) do
        texts[place] = tostring(element)
    end
    return table.concat(texts, " ")
end
setting("string", "old", "new")
setting("json", "{}", "[1]")
setting("int", 1, 2)
setting("bool", false, true)
setting("double", 0.5, 1.5)
setting("arrayofstring", {"old"}, {"new", "and longer"}, list)
setting("arrayofint", {1}, {2, 3}, list)
setting("arrayofbool", {false}, {true, false}, list)
setting("arrayofdouble", {0.5}, {1.5, 2.5}, list)

families["default setting"] = function()
    return function()
        local status = api.korvo_core_settings_set_default_arrayofstring_value("torture.default", {"a", "b"})
        return status == 0 and (api.korvo_core_settings_get_default_arrayofstring_value("torture.default")) or status
    end, function()
        assert(api.korvo_core_settings_set_default_arrayofstring_value("torture.default", {"a", "b"}) == 0)
        local status, value = api.korvo_core_settings_get_arrayofstring_value("torture.default")
        assert(status == 0 and list(value) == "a b")
    end, true
end

-- They give no status: a text, a list, a flag, or nil where memory has run out.
families["keys of settings"] = function()
    assert(api.korvo_core_settings_set_int_value("torture.key", 1) == 0)
    return function()
        api.korvo_core_settings_does_key_exist("torture.key")
        local all, some = api.korvo_core_settings_get_all_keys(), api.korvo_core_settings_get_keys_starting_with("torture.k")
        return all and some and api.korvo_core_debug_get_setting_path() and 0 or 2
    end, function()
        assert(api.korvo_core_settings_get_keys_starting_with("torture.k")[1] == "torture.key")
    end
end

families["deleted setting"] = function()
    assert(api.korvo_core_settings_set_int_value("torture.deleted", 1) == 0)
    return function() return api.korvo_core_settings_delete_key("torture.deleted") end, function(status)
        assert(api.korvo_core_settings_does_key_exist("torture.deleted") == (status ~= 0), "status " .. tostring(status))
    end
end

-- There is none, so that every read is refused; 2 is what memory gives.
families["configuration"] = function()
    local refused = api.korvo_core_configuration_get_arrayofstring_value("torture.missing")
    assert(refused ~= 0)
    return function()
        api.korvo_core_configuration_get_all_keys()
        local status = api.korvo_core_configuration_get_arrayofstring_value("torture.missing")
        return status == refused and 0 or status
    end, no_more
end

families["log"] = function()
    return function()
        return api.korvo_core_logging_log(nil, api.KORVO_CORE_LOG_PRIORITY_ALERT, "about memory") ~= 0 and 2 or 0
    end, no_more
end

families["opening and closing"] = function()
    local handle
    return function()
        local status
        status, handle = api.korvo_api_action_engine_initiator_init(nil, nil, true, "torture")
        return status
    end, function(status)
        assert((status == 0) == (handle ~= nil) or status == nil)
        if handle then
            assert(api.korvo_api_action_engine_get_actions_send(handle, nil) == 0)
            assert(api.korvo_api_action_engine_initiator_deinit(handle) == 0)
        end
    end
end

-- What is done with a handle that works afterwards.
local function with_handle(name, work, gives_lists)
    families[name] = function()
        local status, handle = api.korvo_api_action_engine_initiator_init(nil, nil, false, "torture")
        assert(status == 0)
        return function() return work(handle) end, function()
            assert(api.korvo_api_action_engine_get_actions_send(handle, nil) == 0)
            api.korvo_api_action_engine_initiator_deinit(handle)
        end, gives_lists
    end
end

with_handle("lists there", function(handle)
    return (api.korvo_api_action_engine_set_action_filters_send(handle, nil, 1, {62, 65}, {1, 2}, {3, 4}))
end, true)
with_handle("lists back", function(handle) return (api.korvo_api_action_engine_get_action_filters_send(handle, nil, 1)) end)
with_handle("texts back", function(handle) return (api.korvo_api_action_engine_get_email_action_send(handle, nil, 2)) end)
with_handle("texts there", function(handle)
    return (api.korvo_api_action_engine_modify_email_action_send(handle, nil, 2, "mail", "server", {"a@example.org"}, {"b@example.org"},
        "c@example.org", "subject", string.rep("body ", 50), true, false))
end, true)
with_handle("two steps", function(handle)
    local status, request = api.korvo_api_action_engine_get_actions_non_blocking_send(handle, nil)
    status = status ~= 0 and status or api.korvo_api_action_engine_get_actions_receive_with_timeout(handle, nil, 10000, request)
    if status ~= 0 and request then
        api.korvo_api_action_engine_free_uuid(request)
    end
    return status
end)
with_handle("versions", function(handle)
    local status = api.korvo_api_action_engine___get_target_version___send(handle, nil)
    return status ~= 0 and status or (api.korvo_api_action_engine_get_initiator_version(handle))
end)

-- What the platform keeps of the settings in memory is no leak.
for name, prepare in pairs(families) do
    if name:find "setting" then
        families[name] = function()
            assert(api.korvo_core_settings_init() == 0)
            local work, afterwards, gives_lists = prepare()
            return work, function(status)
                afterwards(status)
                assert(api.korvo_core_settings_deinit() == 0)
            end, gives_lists
        end
    end
end

-- ---- The layer ----

-- What is done with an engine that works afterwards. The work gives what methods give.
local function with_engine(name, work, gives_lists)
    families["layer, " .. name] = function()
        local engine = assert(ae.open{name = "torture", timeout = is_for_ever and 0.05 or 10})
        return function()
            local result, message, status
            repeat
                result, message, status = work(engine)
                -- On a machine that is busy the short time may be over before anything has failed.
            until not (is_for_ever and status == 4 and result == nil) or has_failed()
            assert(result ~= nil or status ~= nil, message)
            return result ~= nil and 0 or status
        end, function()
            assert(engine:get_actions{timeout = 10})
            assert(assert(engine.async:get_actions{timeout = 10}):wait())
            engine:close()
        end, gives_lists
    end
end

families["layer, opening and closing"] = function()
    return function()
        local engine, _, status = ae.open{name = "torture"}
        return engine and engine:close() and 0 or status
    end, function() collectgarbage() end
end

with_engine("lists of entries", function(engine)
    local done, message, status = engine:set_action_filters{action_id = 1, filters = {{weekdays = 62, start = 1, stop = 2}}}
    if not done then
        return nil, message, status
    end
    return engine:get_action_filters(1)
end, true)
with_engine("what does not fit", function(engine)
    local _, message, status = engine:create_timer_trigger{trigger_name = "t", timer_seconds = "5"}
    assert(status == 1 and message:find "wants a whole number")
    return true
end)
with_engine("answers", function(engine)
    local pending, message, status = engine.async:get_action_type(1)
    if not pending then
        return nil, message, status
    end
    -- Without memory to read a response nobody is told of it.
    local patience = 5
    while not pending:ready() and patience > 0 do
        pending:wait(0.01)
        patience = patience - (has_failed() and 1 or 0)
    end
    if pending:ready() then
        return pending:wait()
    end
    pending:cancel()
    return nil, "no answer", 4
end)
with_engine("events", function(engine)
    local subscribed, message, status = engine:subscribe()
    if not subscribed then
        return nil, message, status
    end
    engine:next_event(0)
    return true
end)
with_engine("coroutines", function(engine)
    local result, message, status
    ae.run(function() result, message, status = engine:get_actions() end, function() ae.sleep(0) end)
    return result, message, status
end)
with_engine("export", function(engine) return engine:export_json{passwords = true} end)
with_engine("rule", function(engine)
    local made, message, status = engine:rule{
        trigger = {kind = "timer_trigger", trigger_name = "t", timer_seconds = 0},
        actions = {{kind = "wiper_action", action_name = "made"}},
    }
    if not made then
        return nil, message, status
    end
    local deleted
    deleted, message, status = engine:delete_trigger(made.trigger_id)
    if not deleted then
        return nil, message, status
    end
    return engine:delete_action(made.action_ids[1])
end)

-- The service that all use has these two.
function families.prepare()
    local engine = assert(ae.open{name = "prepare"})
    assert(engine:create_wiper_action("wipe") == 1)
    assert(engine:create_email_action{
        action_name = "mail", smtp_server = "server", to_addresses = {"a@example.org"}, cc_addresses = {}, from_address = "c@example.org",
        subject = "subject", body = "body", attach_jpeg = true, include_event = false,
    } == 2)
    engine:close()
end

return families
