-- SPDX-License-Identifier: Apache-2.0
-- Every operation of korvo.action_engine against a service with an empty catalogue. The word "async" has each answer waited
-- for. Prints how many operations were called.
local ae = require "korvo.action_engine"

local engine = assert(ae.open{name = "layer"})
local called = {}

local function call(name, given)
    called[name] = true
    if arg[1] ~= "async" then
        return engine[name](engine, given)
    end
    return assert(engine.async[name](engine.async, given)):wait(60)
end

local function show(value)
    if type(value) ~= "table" then
        return type(value) == "string" and string.format("%q", value) or tostring(value)
    end
    local parts = {}
    for key, element in pairs(value) do
        parts[#parts + 1] = tostring(key) .. "=" .. show(element)
    end
    table.sort(parts)
    return "{" .. table.concat(parts, " ") .. "}"
end

local function expect(name, given, expected)
    local found, message = call(name, given)
    if show(found) ~= show(expected) then
        error(name .. ": found " .. show(found) .. " (" .. tostring(message) .. "), expected " .. show(expected), 2)
    end
end

local function with(table, key, value)
    local copy = {}
    for name, element in pairs(table) do
        copy[name] = element
    end
    copy[key] = value
    return copy
end

local weekdays = ae.kMonday + ae.kFriday
local namespaces = {{key = "tns1", uri = "http://www.onvif.org/ver10/topics"}}
local concrete = "http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete"

-- Kind, type, what it is made with, and another value of its last setting.
local actions = {
    {"email_action", ae.kSendEmailAction, {action_name = "mail", smtp_server = "mail.example.org", to_addresses = {"a@example.org",
        "b@example.org"}, cc_addresses = {}, from_address = "c@example.org", subject = "s", body = "b\nc", attach_jpeg = true,
        include_event = false}, "cc_addresses", {"d@example.org"}},
    {"ftp_action", ae.kFtpUploadAction, {action_name = "up", server_name = "ftp.example.org", username = "u", password = "p",
        path = "/x", filename = "f.jpg"}, "filename", "g.jpg"},
    {"snapshot_action", ae.kSaveSnapshotAction, {action_name = "door", filename = "door.jpg"}, "filename", "gate.jpg"},
    {"ptz_pattern_action", ae.kPtzPatternAction, {action_name = "p", pattern_id = "1"}, "pattern_id", "2"},
    {"ptz_preset_action", ae.kPtzPresetAction, {action_name = "p", preset_id = "1"}, "preset_id", "2"},
    {"ptz_scan_action", ae.kPtzScanAction, {action_name = "p", scan_id = "1"}, "scan_id", "2"},
    {"ptz_tour_action", ae.kPtzTourAction, {action_name = "p", tour_id = "1"}, "tour_id", "2"},
    {"wiper_action", ae.kWiperAction, {action_name = "wipe"}, "action_name", "wipe again"},
    {"washer_action", ae.kWasherAction, {action_name = "wash"}, "action_name", "wash again"},
    {"relay_action", ae.kRelayAction, {action_name = "gate", relay_target = "relay 1", config_mode = 0,
        config_normally_closed = true, config_repeat_cycles = 2, config_on_time_ms = 300, config_off_time_ms = 400},
        "config_normally_closed", false},
}
local triggers = {
    {"timer_trigger", ae.kReoccurringTimerTrigger, {trigger_name = "hourly", timer_seconds = 3600}, "timer_seconds", 7200},
    {"onvif_trigger", ae.kOnvifEventTrigger, {trigger_name = "motion", topic_filter = "tns1:VideoSource/MotionAlarm",
        topic_filter_dialect = concrete, content_filter = "", namespaces = namespaces}, "trigger_name", "moved"},
    {"stable_onvif_trigger", ae.kStableOnvifEventTrigger, {trigger_name = "still", topic_filter = "tns1:VideoSource/MotionAlarm",
        content_filter = "", namespaces = namespaces, stability_seconds = 5}, "stability_seconds", 6},
}

local function exercise(noun, rows)
    local list, counts = {}, {}
    for id, row in ipairs(rows) do
        local kind, kind_type, settings, key, other = unpack(row)
        local id_name = noun .. "_id"
        expect("create_" .. kind, settings, id)
        expect("get_" .. kind, id, settings)
        expect("modify_" .. kind, with(with(settings, key, other), id_name, id), true)
        expect("get_" .. kind, {[id_name] = id}, with(settings, key, other))
        expect("get_" .. noun .. "_type", id, kind_type)
        list[id] = {[id_name] = id, [noun .. "_type"] = kind_type}
        counts[id] = {[noun .. "_type"] = kind_type, count = 1}
    end
    expect("get_" .. noun .. "s", nil, list)
    local found = assert(call("get_" .. noun .. "_counts"))
    assert(found.total == #rows)
    local seen = 0
    for _, entry in ipairs(found.counts) do
        seen = seen + entry.count
    end
    assert(seen == #rows)
end
exercise("action", actions)
exercise("trigger", triggers)

expect("get_action_filters", 1, {})
local filters = {{weekdays = weekdays, start = 3600, stop = 7200}, {weekdays = 1, start = 0, stop = 86400}}
expect("set_action_filters", {action_id = 1, filters = filters}, true)
expect("get_action_filters", 1, filters)

expect("create_association", {trigger_id = 2, action_id = 8}, true)
expect("get_trigger_associations", 2, {{action_id = 8, action_type = ae.kWiperAction}})
expect("get_action_associations", 8, {{trigger_id = 2, trigger_type = ae.kOnvifEventTrigger}})

assert(engine:subscribe())
expect("onvif_event", {topic = "tns1:VideoSource/MotionAlarm", message = "<State>true</State>", namespaces = namespaces}, true)
local event = assert(engine:next_event(60))
assert(event.action_id == 8 and event.action_name == "wipe again" and event.success == true and event.dropped == 0, show(event))

expect("delete_association", {trigger_id = 2, action_id = 8}, true)
expect("delete_action", 8, true)
expect("delete_trigger", 2, true)
expect("get_target_version", nil, {target_major = 1, target_minor = 19})
assert(show(engine:get_initiator_version()) == "{initiator_major=1 initiator_minor=19}")

local _, message, status = call("delete_action", 8)
assert(message == "delete_action: status 9 (remote function failure)" and status == 9, message)

local count = 0
for _ in pairs(called) do
    count = count + 1
end
print(count .. " operations")
assert(engine:close())
