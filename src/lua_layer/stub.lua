-- SPDX-License-Identifier: Apache-2.0
---@meta korvo.action_engine
-- Declares the Lua module korvo.action_engine for the Lua language server. Written by the build; not to be loaded.
-- docs/lua-layer.md is the manual.

local ae = {}

---@class korvo.Options
---@field name? string of this program, for messaging and the log
---@field target? string which instance of the service is called; without it the default one
---@field timeout? number how long a call waits, in seconds; 5 unless told otherwise
---@field events? integer how many events may wait; 4096 unless told otherwise

---Opens a client. The service need not run yet.
---@param options? korvo.Options
---@return korvo.Engine? engine
---@return string? message
---@return integer? status
function ae.open(options) end

---Runs functions side by side, each as a coroutine: while one waits for an answer or an event the others go on.
---@param ... fun()
function ae.run(...) end

---Lets the script, or the coroutine of run() that calls it, rest.
---@param seconds number
function ae.sleep(seconds) end

---@class korvo.Event
---@field action_id integer the action that the service has run
---@field action_name string
---@field success boolean
---@field source string what the messaging names the sender with
---@field dropped integer how many events were dropped right before this one

---@class korvo.PendingAnswer
local PendingAnswer = {}

---Is the answer there? It also is when the call has failed or its time is up.
---@return boolean
function PendingAnswer:ready() end

---Gives what the call without `async` gives. After `seconds` without an answer nil and a message; the call goes on then.
---@param seconds? number
---@return any result
---@return string? message
---@return integer? status
function PendingAnswer:wait(seconds) end

---Nobody waits any more. The service may carry the command out all the same.
function PendingAnswer:cancel() end

---@class korvo.Item
---@field id integer
---@field kind string the create operation without its verb: "snapshot_action"
---@field settings table what the create operation takes
---@field filters? korvo.ActionFilter[] of actions

---@class korvo.Async
local Async = {}

---@class korvo.Engine
---@field async korvo.Async
local Engine = {}

---From now on failures are raised as errors.
---@return korvo.Engine
function Engine:strict() end

---Ends everything; also the garbage collector does.
---@return boolean
function Engine:close() end

---The interface version of the library.
---@return {initiator_major: integer, initiator_minor: integer}?
---@return string? message
---@return integer? status
function Engine:get_initiator_version() end

---From now on events are queued. next_event() and events() do it by themselves.
---@return boolean?
---@return string? message
---@return integer? status
function Engine:subscribe() end

---The next event; nil when there is none for `seconds`. Without `seconds` it waits as long as it takes.
---@param seconds? number
---@return korvo.Event?
---@return string? message
---@return integer? status
function Engine:next_event(seconds) end

---Events, until none has come for `seconds` or the engine is closed.
---@param seconds? number
---@return fun(): korvo.Event?
function Engine:events(seconds) end

---How many events were dropped because the queue was full.
---@return integer
function Engine:dropped_events() end

---For poll: readable as long as an event or an answer can be taken.
---@return integer?
---@return string? message
---@return integer? status
function Engine:descriptor() end

---The actions with their settings and filters.
---@return fun(): korvo.Item?
function Engine:actions() end

---The triggers with their settings.
---@return fun(): korvo.Item?
function Engine:triggers() end

---The same as a list, or nil, a message and a status.
---@return korvo.Item[]?
---@return string? message
---@return integer? status
function Engine:list_actions() end

---The same as a list, or nil, a message and a status.
---@return korvo.Item[]?
---@return string? message
---@return integer? status
function Engine:list_triggers() end

---A trigger, the actions that it runs, and what binds them: all of it, or nothing.
---@param rule {trigger: table, actions: table[]}
---@return {trigger_id: integer, action_ids: integer[]}?
---@return string? message
---@return integer? status
function Engine:rule(rule) end

---The whole catalogue as a document.
---@param options? {passwords: boolean}
---@return table? document
---@return string? message
---@return integer? status
function Engine:export(options) end

---The whole catalogue as a JSON text, as the tool writes it.
---@param options? {passwords: boolean}
---@return string? text
---@return string? message
---@return integer? status
function Engine:export_json(options) end

---Adds what is in a document, a table or a JSON text, to the catalogue: all of it, or nothing.
---@param document table|string
---@return {actions: table<integer, integer>, triggers: table<integer, integer>}? new identifiers by those of the document
---@return string? message
---@return integer? status
function Engine:import(document) end
