// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_RESULTS_H
#define KORVO_LUA_RESULTS_H

// How C values look in Lua.

#include <cstddef>

#include <lua.hpp>
#include "korvo_core.h"
#include "lua/lists.h"
#include "lua/typed_pointer.h"

namespace korvo::lua {

/// What has been made ready for the results.
struct Prepared {
    /// The lengths of the texts that come back, in their order.
    std::size_t const *lengths;
    /// The index of the typed pointers that some results fill.
    int empty_pointer;
};

inline void pushValue(lua_State *L, unsigned int number) {
    lua_pushnumber(L, number);
}

inline void pushValue(lua_State *L, int number) {
    lua_pushnumber(L, number);
}

inline void pushValue(lua_State *L, double number) {
    lua_pushnumber(L, number);
}

inline void pushValue(lua_State *L, unsigned char flag) {
    lua_pushboolean(L, flag);
}

inline void pushValue(lua_State *L, korvo_core_settings_type type) {
    lua_pushnumber(L, type);
}

/// nil for NULL, as everywhere below.
inline void pushValue(lua_State *L, char const *text) {
    lua_pushstring(L, text);
}

inline void pushText(lua_State *L, char const *text, Prepared &prepared) {
    std::size_t const length = *prepared.lengths++;
    if (text == nullptr) {
        lua_pushnil(L);
    } else {
        lua_pushlstring(L, text, length);
    }
}

template <typename T>
void pushValue(lua_State *L, T **list) {
    pushList(L, list);
}

/// Fills the next one of the typed pointers that have been made before the call.
inline void pushPointer(lua_State *L, void *pointer, Prepared &prepared) {
    int const empty = prepared.empty_pointer++;
    if (pointer == nullptr) {
        lua_pushnil(L);
        return;
    }
    static_cast<TypedPointer *>(lua_touserdata(L, empty))->pointer = pointer;
    lua_pushvalue(L, empty);
}

}  // namespace korvo::lua

#endif
