// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_LISTS_H
#define KORVO_LUA_LISTS_H

// The two directions between lists and tables, for callers that own the list while Lua may raise an error.

#include <cstring>

#include <lua.hpp>
#include "json/lists.h"
#include "lua/conversions.h"
#include "lua/numbers.h"

namespace korvo::lua {

/// What the platform core and Lua call the elements of a list.
template <typename T>
struct ListOf;

template <>
struct ListOf<unsigned char> {
    static constexpr int type = LUA_TBOOLEAN;
    static unsigned char **allocate(unsigned int count) { return korvo_core_alloc_bool_array(count); }
    static void release(unsigned char **list) { korvo_core_free_bool_array(list); }
    static void push(lua_State *L, unsigned char const *element) { lua_pushboolean(L, *element); }
    static bool store(lua_State *L, unsigned char **slot) {
        **slot = lua_toboolean(L, -1) != 0 ? 1 : 0;
        return true;
    }
};

template <>
struct ListOf<unsigned int> {
    static constexpr int type = LUA_TNUMBER;
    static unsigned int **allocate(unsigned int count) { return korvo_core_alloc_uint_array(count); }
    static void release(unsigned int **list) { korvo_core_free_uint_array(list); }
    static void push(lua_State *L, unsigned int const *element) {
        lua_pushnumber(L, fromListElement(*element));
    }
    static bool store(lua_State *L, unsigned int **slot) {
        **slot = toListElement(lua_tonumber(L, -1));
        return true;
    }
};

template <>
struct ListOf<int> {
    static constexpr int type = LUA_TNUMBER;
    static int **allocate(unsigned int count) { return korvo_core_alloc_int_array(count); }
    static void release(int **list) { korvo_core_free_int_array(list); }
    static void push(lua_State *L, int const *element) { lua_pushnumber(L, *element); }
    static bool store(lua_State *L, int **slot) {
        **slot = toInt(lua_tonumber(L, -1));
        return true;
    }
};

template <>
struct ListOf<double> {
    static constexpr int type = LUA_TNUMBER;
    static double **allocate(unsigned int count) { return korvo_core_alloc_double_array(count); }
    static void release(double **list) { korvo_core_free_double_array(list); }
    static void push(lua_State *L, double const *element) { lua_pushnumber(L, *element); }
    static bool store(lua_State *L, double **slot) {
        **slot = lua_tonumber(L, -1);
        return true;
    }
};

template <>
struct ListOf<char> {
    static constexpr int type = LUA_TSTRING;
    static char **allocate(unsigned int count) { return korvo_core_alloc_string_array(count); }
    static void release(char **list) { korvo_core_free_string_array(list); }
    static void push(lua_State *L, char const *element) { lua_pushstring(L, element); }
    static bool store(lua_State *L, char **slot) {
        *slot = strdup(lua_tostring(L, -1));
        return *slot != nullptr;
    }
};

/// Frees a list, NULL included.
template <typename T>
void releaseList(T **list) {
    if (list == nullptr) {
        return;
    }
    try {
        ListOf<T>::release(list);
    } catch (...) {
        // Another core than ours may throw; there is nothing left to do for this list.
    }
}

template <typename T>
T **allocateList(int count) {
    try {
        return ListOf<T>::allocate(static_cast<unsigned int>(count));
    } catch (...) {
        return nullptr;
    }
}

/// Makes a list of a table. *list has it from the moment it exists, so that its owner can release it when Lua raises
/// an error from in here. On purpose: what cannot be a list (a hole, another key, an element of another type) is NULL
/// and no Lua error; the C function says what it makes of that.
template <typename T>
void readList(lua_State *L, int index, T ***list) {
    int const count = getNumberOfTableEntries(L, index);
    *list = allocateList<T>(count);
    if (*list == nullptr) {
        return;
    }
    for (int place = 1; place <= count; ++place) {
        lua_pushinteger(L, place);
        lua_gettable(L, index);
        bool const stored = lua_type(L, -1) == ListOf<T>::type && ListOf<T>::store(L, *list + place - 1);
        lua_pop(L, 1);
        if (!stored) {
            releaseList(*list);
            *list = nullptr;
            return;
        }
    }
}

/// Pushes a table of a list's elements, or nil for NULL. The list stays with its owner.
template <typename T>
[[gnu::noinline]] void pushList(lua_State *L, T *const *list) {
    if (list == nullptr) {
        lua_pushnil(L);
        return;
    }
    int count = 0;
    while (list[count] != nullptr) {
        ++count;
    }
    lua_createtable(L, count, 0);
    for (int place = 1; place <= count; ++place) {
        ListOf<T>::push(L, list[place - 1]);
        lua_rawseti(L, -2, place);
    }
}

}  // namespace korvo::lua

#endif
