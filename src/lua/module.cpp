// SPDX-License-Identifier: Apache-2.0
// Opening the module, and the functions that come with it.

#include "lua/module.h"

#include <initializer_list>
#include <iterator>

#include <lua.hpp>
#include "korvo_api_action_engine.h"
#include "lua/call.h"
#include "lua/functions.h"
#include "lua/pointer_types.h"
#include "lua/start_up.h"

namespace korvo::lua {
namespace {

constexpr char const *module_name = "korvo_api_action_engine";

struct Constant {
    char const *name;
    unsigned int value;
};

constexpr Constant constants[] = {
#define CONSTANT(name) {#name, name},
#include "lua/constants.def"
};

int tellType(lua_State *L) {
    lua_pushstring(L, typeText(L, 1));
    return 1;
}

int holdSamePointer(lua_State *L) {
    if (lua_isuserdata(L, 1) == 0 || lua_isuserdata(L, 2) == 0) {
        return 0;
    }
    lua_pushboolean(L, pointerOfUserdata(L, 1) == pointerOfUserdata(L, 2));
    return 1;
}

/// Pushes entry `key` (an index) of one of the tables in the metatable of the module; nil when there is none.
void pushFromMetatable(lua_State *L, char const *table, int key) {
    if (lua_getmetatable(L, 1) == 0) {
        lua_pushnil(L);
        return;
    }
    lua_getfield(L, -1, table);
    if (lua_istable(L, -1)) {
        lua_pushvalue(L, key);
        lua_rawget(L, -2);
    } else {
        lua_pushnil(L);
    }
}

/// Called with the module and a key that it does not hold.
int readUnknown(lua_State *L) {
    pushFromMetatable(L, ".get", 2);
    if (lua_iscfunction(L, -1) != 0) {
        lua_call(L, 0, 1);
        return 1;
    }
    pushFromMetatable(L, ".fn", 2);
    return lua_isfunction(L, -1) ? 1 : 0;
}

/// Called with the module, a key that it does not hold, and a value.
int storeUnknown(lua_State *L) {
    luaL_checktype(L, 1, LUA_TTABLE);
    pushFromMetatable(L, ".set", 2);
    if (lua_iscfunction(L, -1) != 0) {
        lua_pushvalue(L, 3);
        lua_call(L, 1, 0);
        return 0;
    }
    lua_settop(L, 3);
    lua_rawset(L, 1);
    return 0;
}

void pushModule(lua_State *L) {
    // At its final size: a table that grows leaves its smaller selves behind as holes in the heap.
    lua_createtable(L, 0, function_count + static_cast<int>(std::size(constants)));

    lua_newtable(L);
    for (char const *const name : {".get", ".set", ".fn"}) {
        lua_newtable(L);
        lua_setfield(L, -2, name);
    }
    lua_pushcfunction(L, readUnknown);
    lua_setfield(L, -2, "__index");
    lua_pushcfunction(L, storeUnknown);
    lua_setfield(L, -2, "__newindex");
    lua_setmetatable(L, -2);

    for (Constant const &constant : constants) {
        lua_pushstring(L, constant.name);
        lua_pushnumber(L, constant.value);
        lua_rawset(L, -3);
    }
    registerFunctions(L);
}

}  // namespace
}  // namespace korvo::lua

int luaopen_korvo_api_action_engine(lua_State *L) {
    using namespace korvo::lua;
    joinPointerTypes(L);
    lua_pushcfunction(L, tellType);
    lua_setglobal(L, "swig_type");
    lua_pushcfunction(L, holdSamePointer);
    lua_setglobal(L, "swig_equals");

    pushModule(L);
    lua_pushvalue(L, -1);
    lua_setglobal(L, module_name);

    luaopen_korvo_api_action_engine_user(L);
    return 1;
}

int luaopen_korvo_api_action_engine_user(lua_State *L) {
    korvo::lua::runStartUpText(L, "");
    return 0;
}
