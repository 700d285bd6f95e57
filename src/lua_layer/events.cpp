// SPDX-License-Identifier: Apache-2.0
// The Lua module korvo_action_engine_events: events and answers that scripts ask for. korvo/action_engine.lua is its one
// user and checks what it hands in.
//
//     events.open(name, target or nil, milliseconds, most_events)  an engine; or nil, a message and a status
//     events.changes(), events.wait(changes, seconds or nil)       waits until something has come since
//     events.now()                                                 seconds of a clock that only goes forward
//     engine:subscribe()                                           a status
//     engine:event()                                               action_id, action_name, success, source, dropped; or nil
//     engine:dropped(), engine:descriptor(), engine:close()
//     engine:start(operation, milliseconds, inputs...)             a call; or nil, a message and a status
//     call:is_answered(), call:cancel()
//     call:take()                                                  a status and the results, or a status and a message;
//                                                                  nothing before there is an answer
//
// Lua raises errors by jumps over our frames: so whatever has a destructor lives in a userdata while Lua is called, and
// exceptions end in the functions that call no Lua.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <lua.hpp>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "korvo/detail/core.hpp"
#include "korvo/detail/operation.hpp"
#include "lua_layer/queue.h"
#include "lua_layer/senders.h"

namespace korvo::lua_layer {
namespace {

struct Engine {
    std::shared_ptr<Queue> queue;
    std::shared_ptr<detail::Core> core;  // NULL when closed
    std::shared_ptr<detail::Listener> listener;

    void close() noexcept {
        if (core != nullptr) {
            core->close();
            core.reset();
            queue->closed();
        }
    }
    ~Engine() { close(); }
};

struct PendingAnswer {
    std::shared_ptr<detail::Core> core;
    std::shared_ptr<QueuedCall> call;
    Values inputs;
    std::string message;

    void cancel() noexcept {
        if (call != nullptr) {
            call->abandon();
            core->cancel(*call);
            core.reset();
        }
        call.reset();
    }
    ~PendingAnswer() { cancel(); }
};

constexpr char const *engine_type = "korvo_action_engine_events.engine";
constexpr char const *call_type = "korvo_action_engine_events.call";
constexpr char const *engine_closed = "the engine is closed";

template <typename T>
T &at(lua_State *L, char const *type) {
    return *static_cast<T *>(luaL_checkudata(L, 1, type));
}

template <typename T>
T &push(lua_State *L, char const *type) {
    T *const made = new (lua_newuserdata(L, sizeof(T))) T;
    luaL_getmetatable(L, type);
    lua_setmetatable(L, -2);
    return *made;
}

template <typename T>
int collect(lua_State *L) {
    static_cast<T *>(lua_touserdata(L, 1))->~T();
    // Who is finalized later may still call it, and is refused like that.
    lua_pushnil(L);
    (void)lua_setmetatable(L, 1);
    return 0;
}

int pushFailure(lua_State *L, char const *message, korvo_core_status status) {
    lua_pushnil(L);
    lua_pushstring(L, message);
    lua_pushnumber(L, status);
    return 3;
}

// ---- Waiting ----

int now(lua_State *L) {
    lua_pushnumber(L, std::chrono::duration<double>(detail::Clock::now().time_since_epoch()).count());
    return 1;
}

int changes(lua_State *L) {
    std::unique_lock<std::mutex> lock(bell().mutex);
    double const count = static_cast<double>(bell().count);
    lock.unlock();
    lua_pushnumber(L, count);
    return 1;
}

/// Seconds as far as clocks go.
std::chrono::duration<double> bounded(double seconds) {
    constexpr double longest = 1e8;
    return std::chrono::duration<double>(seconds > 0 ? std::min(seconds, longest) : 0);
}

int wait(lua_State *L) {
    double const since = luaL_checknumber(L, 1);
    double const seconds = luaL_optnumber(L, 2, std::numeric_limits<double>::infinity());
    auto const has_changed = [&] { return static_cast<double>(bell().count) != since; };
    std::unique_lock<std::mutex> lock(bell().mutex);
    if (std::isinf(seconds)) {
        bell().rings.wait(lock, has_changed);
    } else {
        auto const until =
            detail::Clock::now() + std::chrono::duration_cast<detail::Clock::duration>(bounded(seconds));
        bell().rings.wait_until(lock, until, has_changed);
    }
    return 0;
}

// ---- Engines ----

korvo_core_status openEngine(Engine &engine, char const *name, char const *target, int milliseconds,
                             std::size_t most_events) noexcept {
    try {
        Options options;
        options.name = name;
        if (target != nullptr) {
            options.target = target;
        }
        options.timeout = std::chrono::milliseconds(milliseconds);
        engine.queue = std::make_shared<Queue>(most_events);
        if (engine.queue->descriptor() < 0) {
            return KORVO_CORE_STATUS_ALLOC_FAILED;
        }
        engine.core = std::make_shared<detail::Core>(std::move(options));
        korvo_core_status const status = engine.core->open();
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            engine.close();
        }
        return status;
    } catch (std::exception const &) {
        engine.close();
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    }
}

int open(lua_State *L) {
    char const *const name = luaL_checkstring(L, 1);
    char const *const target = luaL_optstring(L, 2, nullptr);
    int const milliseconds = static_cast<int>(luaL_checknumber(L, 3));
    auto const most_events = static_cast<std::size_t>(luaL_checknumber(L, 4));
    Engine &engine = push<Engine>(L, engine_type);
    korvo_core_status const status = openEngine(engine, name, target, milliseconds, most_events);
    return status == KORVO_CORE_STATUS_NO_ERROR
               ? 1
               : pushFailure(L, "cannot open the connection for events and answers", status);
}

int closeEngine(lua_State *L) {
    at<Engine>(L, engine_type).close();
    return 0;
}

korvo_core_status subscribeEngine(Engine &engine) noexcept {
    if (engine.core == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    if (engine.listener != nullptr) {
        return KORVO_CORE_STATUS_NO_ERROR;
    }
    try {
        auto listener = std::make_shared<detail::Listener>(
            [queue = engine.queue](ActionCompleted const &event) { queue->putEvent(event); });
        korvo_core_status const status = engine.core->subscribe(listener);
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            engine.listener = std::move(listener);
        }
        return status;
    } catch (std::exception const &) {
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    }
}

int subscribe(lua_State *L) {
    lua_pushnumber(L, subscribeEngine(at<Engine>(L, engine_type)));
    return 1;
}

/// A place for an event that Lua destroys, whatever happens meanwhile.
struct TakenEvent {
    std::unique_ptr<Event> event;
};
constexpr char const *event_type = "korvo_action_engine_events.event";

int event(lua_State *L) {
    Engine const &engine = at<Engine>(L, engine_type);
    luaL_checkstack(L, 8, "an event");
    TakenEvent &taken = push<TakenEvent>(L, event_type);
    taken.event = engine.queue->takeEvent();
    if (taken.event == nullptr) {
        return 0;
    }
    ActionCompleted const &what = taken.event->what;
    lua_pushnumber(L, number(what.action_id));
    lua_pushlstring(L, what.action_name.data(), what.action_name.size());
    lua_pushboolean(L, what.success ? 1 : 0);
    lua_pushlstring(L, what.source.data(), what.source.size());
    lua_pushnumber(L, taken.event->dropped);
    return 5;
}

int dropped(lua_State *L) {
    lua_pushnumber(L, at<Engine>(L, engine_type).queue->dropped());
    return 1;
}

int descriptor(lua_State *L) {
    lua_pushnumber(L, at<Engine>(L, engine_type).queue->descriptor());
    return 1;
}

// ---- Calls ----

/// Raises no Lua error. False for what does not fit, which the caller has checked.
bool readInput(lua_State *L, int index, Kind kind, Value &value) {
    int const type = lua_type(L, index);
    auto const text_at = [L](int place) {
        std::size_t size = 0;
        char const *const text = lua_tolstring(L, place, &size);
        return std::string(text, size);
    };
    switch (kind) {
        case Kind::number:
            value.number = type == LUA_TNUMBER ? static_cast<unsigned int>(lua_tonumber(L, index)) : 0;
            return type == LUA_TNUMBER;
        case Kind::flag:
            value.number = static_cast<unsigned int>(lua_toboolean(L, index));
            return type == LUA_TBOOLEAN;
        case Kind::text:
            if (type == LUA_TSTRING) {
                value.text = text_at(index);
            }
            return type == LUA_TSTRING;
        default:
            break;
    }
    if (type != LUA_TTABLE) {
        return false;
    }
    int const wanted = kind == Kind::texts ? LUA_TSTRING : LUA_TNUMBER;
    int const count = static_cast<int>(lua_objlen(L, index));
    bool fits = true;
    for (int place = 1; fits && place <= count; ++place) {
        lua_rawgeti(L, index, place);
        fits = lua_type(L, -1) == wanted;
        if (fits && kind == Kind::texts) {
            value.texts.push_back(text_at(-1));
        } else if (fits) {
            value.numbers.push_back(static_cast<unsigned int>(lua_tonumber(L, -1)));
        }
        lua_pop(L, 1);
    }
    return fits;
}

/// Reads the inputs from place 4 on and begins the call.
korvo_core_status startCall(lua_State *L, Engine &engine, PendingAnswer &pending, Sender const &sender,
                            int milliseconds) noexcept {
    try {
        for (operations::Member const *input = sender.inputs; input->kind != Kind::none; ++input) {
            pending.inputs.emplace_back();
            int const place = 3 + static_cast<int>(pending.inputs.size());
            if (!readInput(L, place, input->kind, pending.inputs.back())) {
                return KORVO_CORE_STATUS_INVALID_PARAMS;
            }
        }
        auto call = std::make_shared<QueuedCall>(sender.name, engine.queue);
        bool const has_begun = engine.core->start(
            call, std::chrono::milliseconds(milliseconds), [&](void *handle, detail::Slot *slot) {
                return sender.send(handle, engine.core->target(), pending.inputs.data(), slot);
            });
        if (!has_begun) {
            return KORVO_CORE_STATUS_IPC_FAILED;
        }
        pending.core = engine.core;
        pending.call = std::move(call);
        pending.inputs.clear();
        return KORVO_CORE_STATUS_NO_ERROR;
    } catch (std::exception const &) {
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    }
}

int start(lua_State *L) {
    Engine &engine = at<Engine>(L, engine_type);
    char const *const name = luaL_checkstring(L, 2);
    int const milliseconds = static_cast<int>(luaL_checknumber(L, 3));
    Sender const *const sender = senderOf(name);
    if (sender == nullptr) {
        return luaL_error(L, "there is no operation '%s'", name);
    }
    if (engine.core == nullptr) {
        return pushFailure(L, engine_closed, KORVO_CORE_STATUS_INVALID_PARAMS);
    }
    luaL_checkstack(L, 8, "a call");
    PendingAnswer &pending = push<PendingAnswer>(L, call_type);
    korvo_core_status const status = startCall(L, engine, pending, *sender, milliseconds);
    return status == KORVO_CORE_STATUS_NO_ERROR ? 1 : pushFailure(L, "the call was not begun", status);
}

int isAnswered(lua_State *L) {
    PendingAnswer const &pending = at<PendingAnswer>(L, call_type);
    lua_pushboolean(L, pending.call == nullptr || pending.call->isAnswered() ? 1 : 0);
    return 1;
}

int cancel(lua_State *L) {
    at<PendingAnswer>(L, call_type).cancel();
    return 0;
}

void pushValue(lua_State *L, Kind kind, Value const &value) {
    switch (kind) {
        case Kind::number:
            lua_pushnumber(L, value.number);
            return;
        case Kind::flag:
            lua_pushboolean(L, value.number != 0 ? 1 : 0);
            return;
        case Kind::text:
            lua_pushlstring(L, value.text.data(), value.text.size());
            return;
        default:
            break;
    }
    lua_newtable(L);
    int place = 0;
    for (std::string const &one : value.texts) {
        lua_pushlstring(L, one.data(), one.size());
        lua_rawseti(L, -2, ++place);
    }
    for (unsigned int const one : value.numbers) {
        lua_pushnumber(L, one);
        lua_rawseti(L, -2, ++place);
    }
}

void keepMessage(PendingAnswer &pending, Result<Values> const &answer) noexcept {
    try {
        pending.message = answer.message();
    } catch (std::bad_alloc const &) {
        pending.message.clear();
    }
}

int take(lua_State *L) {
    PendingAnswer &pending = at<PendingAnswer>(L, call_type);
    Result<Values> *const answer = pending.call != nullptr ? pending.call->take() : nullptr;
    if (answer == nullptr) {
        return 0;
    }
    lua_pushnumber(L, answer->status());
    if (!*answer) {
        keepMessage(pending, *answer);
        lua_pushlstring(L, pending.message.data(), pending.message.size());
        return 2;
    }
    int count = 1;
    luaL_checkstack(L, 32, "results");
    Sender const &sender = *senderOf(pending.call->name());
    for (Value const &value : answer->value()) {
        pushValue(L, sender.results[count - 1].kind, value);
        ++count;
    }
    return count;
}

// ---- The module ----

void makeType(lua_State *L, char const *name, lua_CFunction destroy, luaL_Reg const *methods) {
    luaL_newmetatable(L, name);
    lua_pushcfunction(L, destroy);
    lua_setfield(L, -2, "__gc");
    lua_pushboolean(L, 0);
    lua_setfield(L, -2, "__metatable");
    lua_newtable(L);
    luaL_register(L, nullptr, methods);
    lua_setfield(L, -2, "__index");
    lua_pop(L, 1);
}

}  // namespace
}  // namespace korvo::lua_layer

extern "C" __attribute__((visibility("default"))) int luaopen_korvo_action_engine_events(lua_State *L);
int luaopen_korvo_action_engine_events(lua_State *L) {
    using namespace korvo::lua_layer;
    luaL_Reg const engine_methods[] = {{"subscribe", subscribe},   {"event", event}, {"dropped", dropped},
                                       {"descriptor", descriptor}, {"start", start}, {"close", closeEngine},
                                       {nullptr, nullptr}};
    luaL_Reg const call_methods[] = {
        {"is_answered", isAnswered}, {"take", take}, {"cancel", cancel}, {nullptr, nullptr}};
    luaL_Reg const none[] = {{nullptr, nullptr}};
    luaL_Reg const functions[] = {
        {"open", open}, {"now", now}, {"changes", changes}, {"wait", wait}, {nullptr, nullptr}};
    makeType(L, engine_type, collect<Engine>, engine_methods);
    makeType(L, call_type, collect<PendingAnswer>, call_methods);
    makeType(L, event_type, collect<TakenEvent>, none);
    lua_newtable(L);
    luaL_register(L, nullptr, functions);
    return 1;
}
