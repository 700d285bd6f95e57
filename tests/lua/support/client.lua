-- SPDX-License-Identifier: Apache-2.0
-- A client's handle on the fake platform in scripted mode.
local module = require "korvo_api_action_engine"

local client = {}

--- Forgets all recordings and opens a handle.
function client.open()
    fake.script()
    local status, handle = module.korvo_api_action_engine_initiator_init(nil, nil, false, "test")
    assert(status == 0 and handle ~= nil)
    return handle
end

function client.close(handle)
    assert(module.korvo_api_action_engine_initiator_deinit(handle) == 0)
end

--- Calls test(handle) with a handle of its own.
function client.with(test)
    local handle = client.open()
    test(handle)
    client.close(handle)
end

return client
