-- SPDX-License-Identifier: Apache-2.0
-- What the operations of the contract's table look like in korvo.action_engine.
local layer = {}

-- Lists that are one list of entries there, and what their elements are called.
local parts_of = {
    namespace_keys = {"namespaces", "key"}, namespace_uris = {"namespaces", "uri"},
    weekday_filters = {"filters", "weekdays"}, time_filters_start = {"filters", "start"},
    time_filters_end = {"filters", "stop"},
    action_types = {"counts", "action_type"}, trigger_types = {"counts", "trigger_type"}, counts = {"counts", "count"},
}
local parts_of_catalogue = {
    action_id = {"actions", "action_id"}, action_type = {"actions", "action_type"},
    trigger_id = {"triggers", "trigger_id"}, trigger_type = {"triggers", "trigger_type"},
}

local function part_of(member)
    return parts_of[member.name] or (member.kind == "numbers" and parts_of_catalogue[member.name]) or nil
end

--- Members as named values, and those with lists that belong together cut to one length.
function layer.named(members)
    local shortest = math.huge
    for _, member in ipairs(members) do
        if part_of(member) then
            shortest = math.min(shortest, #member.sample)
        end
    end
    local named, cut = {}, {}
    for _, member in ipairs(members) do
        local part = part_of(member)
        local sample = member.sample
        if part then
            sample = {}
            named[part[1]] = named[part[1]] or {}
            for place = 1, shortest do
                -- The contract's samples are what the fixed module gives: elements are signed there.
                local element = member.sample[place]
                sample[place] = type(element) == "number" and element % 2 ^ 32 or element
                named[part[1]][place] = named[part[1]][place] or {}
                named[part[1]][place][part[2]] = sample[place]
            end
        else
            named[member.name] = sample
        end
        cut[member.name] = sample
    end
    return named, cut
end

-- What gives its one result plainly.
local plain = {actions = true, triggers = true, action_id = true, trigger_id = true, action_type = true,
    trigger_type = true, filters = true}

--- What a call with these results gives.
function layer.result(members)
    if #members == 0 then
        return true
    end
    local named = layer.named(members)
    local key = next(named)
    return next(named, key) == nil and plain[key] and named[key] or named
end

return layer
