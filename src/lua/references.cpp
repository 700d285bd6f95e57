// SPDX-License-Identifier: Apache-2.0
#include <lua.hpp>
#include "lua/conversions.h"

void swiglua_ref_set(SWIGLUA_REF *ref, lua_State *L, int index) {
    // Until the reference is there, clearing must release nothing.
    ref->L = L;
    ref->ref = LUA_NOREF;
    lua_pushvalue(L, index);
    ref->ref = luaL_ref(L, LUA_REGISTRYINDEX);
}

void swiglua_ref_get(SWIGLUA_REF *ref) {
    if (ref->L != nullptr) {
        lua_rawgeti(ref->L, LUA_REGISTRYINDEX, ref->ref);
    }
}

void swiglua_ref_clear(SWIGLUA_REF *ref) {
    if (ref->L != nullptr) {
        // Releases nothing for LUA_NOREF and LUA_REFNIL.
        luaL_unref(ref->L, LUA_REGISTRYINDEX, ref->ref);
    }
    *ref = {};
}
