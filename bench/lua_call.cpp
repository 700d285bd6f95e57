// SPDX-License-Identifier: Apache-2.0
// A call from Lua through the module beside one through a wrapper written by hand for this one function. Both call the
// same C function, which is replaced by one that only fills in its results, so that the way there and back is measured.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <lua.hpp>
#include <stdexcept>

#include "korvo_api_action_engine.h"
#include "lua/module.h"
#include "program.h"
#include "side_by_side.h"

// In place of the library's own: the program's functions go before those of its libraries.
korvo_core_status korvo_api_action_engine_get_relay_action_send(
    void *, char const *, unsigned int action_id, char **action_name, char **relay_target,
    unsigned int *config_mode, unsigned char *config_normally_closed, unsigned int *config_repeat_cycles,
    unsigned int *config_on_time_ms, unsigned int *config_off_time_ms) noexcept {
    *action_name = strdup("open the gate");
    *relay_target = strdup("relay 1");
    *config_mode = action_id;
    *config_normally_closed = 1;
    *config_repeat_cycles = 3;
    *config_on_time_ms = 500;
    *config_off_time_ms = 250;
    return KORVO_CORE_STATUS_NO_ERROR;
}

namespace {

int pushResults(lua_State *L, korvo_core_status status, char *name, char *relay, unsigned int mode,
                unsigned char normally_closed, unsigned int cycles, unsigned int on_time,
                unsigned int off_time) {
    lua_pushnumber(L, status);
    lua_pushstring(L, name);
    std::free(name);
    lua_pushstring(L, relay);
    std::free(relay);
    lua_pushnumber(L, mode);
    lua_pushboolean(L, normally_closed);
    lua_pushnumber(L, cycles);
    lua_pushnumber(L, on_time);
    lua_pushnumber(L, off_time);
    return 8;
}

// As one writes it by hand: checks its arguments, and leaks the texts when memory runs out.
int callByHand(lua_State *L) {
    if (lua_gettop(L) != 3) {
        return luaL_error(L, "get_relay_action_send takes 3 arguments");
    }
    luaL_argcheck(L, lua_isuserdata(L, 1) || lua_isnil(L, 1), 1, "handle expected");
    void *const handle = lua_touserdata(L, 1);
    char const *const target = luaL_optstring(L, 2, nullptr);
    lua_Number const action_id = luaL_checknumber(L, 3);
    luaL_argcheck(L, action_id >= 0, 3, "must not be negative");
    char *name = nullptr;
    char *relay = nullptr;
    unsigned int mode = 0;
    unsigned char normally_closed = 0;
    unsigned int cycles = 0;
    unsigned int on_time = 0;
    unsigned int off_time = 0;
    korvo_core_status const status = korvo_api_action_engine_get_relay_action_send(
        handle, target, static_cast<unsigned int>(action_id), &name, &relay, &mode, &normally_closed, &cycles,
        &on_time, &off_time);
    return pushResults(L, status, name, relay, mode, normally_closed, cycles, on_time, off_time);
}

/// What remains when nothing is checked.
int callUnchecked(lua_State *L) {
    char *name = nullptr;
    char *relay = nullptr;
    unsigned int mode = 0;
    unsigned char normally_closed = 0;
    unsigned int cycles = 0;
    unsigned int on_time = 0;
    unsigned int off_time = 0;
    korvo_core_status const status = korvo_api_action_engine_get_relay_action_send(
        lua_touserdata(L, 1), lua_tostring(L, 2), static_cast<unsigned int>(lua_tonumber(L, 3)), &name,
        &relay, &mode, &normally_closed, &cycles, &on_time, &off_time);
    return pushResults(L, status, name, relay, mode, normally_closed, cycles, on_time, off_time);
}

constexpr char script[] =
    "local call, count = ...\n"
    "for i = 1, count do local status, name, relay, mode = call(nil, 'camera', 7) end";

void callOften(lua_State *L, int function, int calls) {
    lua_getfield(L, LUA_REGISTRYINDEX, "script");
    lua_pushvalue(L, function);
    lua_pushinteger(L, calls);
    if (lua_pcall(L, 2, 0, 0) != 0) {
        throw std::runtime_error(lua_tostring(L, -1));
    }
}

void compareLuaCalls(Run &run) {
    useOneCore();
    int const calls = run.calls(50000);
    lua_State *const L = luaL_newstate();
    luaL_openlibs(L);
    lua_pushcfunction(L, luaopen_korvo_api_action_engine);
    lua_call(L, 0, 1);
    lua_getfield(L, -1, "korvo_api_action_engine_get_relay_action_send");
    int const of_the_module = lua_gettop(L);
    lua_pushcfunction(L, callByHand);
    int const by_hand = lua_gettop(L);
    lua_pushcfunction(L, callUnchecked);
    int const unchecked = lua_gettop(L);
    require(luaL_loadstring(L, script), "loading the script");
    lua_setfield(L, LUA_REGISTRYINDEX, "script");

    run.results.compared(
        "call from " KORVO_LUA_NAME,
        compareSideBySide({{"by hand", [&] { callOften(L, by_hand, calls); }, {}},
                           {"ours", [&] { callOften(L, of_the_module, calls); }, {}},
                           {"by hand, unchecked", [&] { callOften(L, unchecked, calls); }, {}}},
                          calls, run.rounds()));
    lua_close(L);
}

}  // namespace

int main(int argc, char **argv) {
    return runBenchmark(argc, argv, compareLuaCalls);
}
