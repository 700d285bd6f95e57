// SPDX-License-Identifier: Apache-2.0
// The exported list conversions, one pair for all kinds. Lua raises errors by a long jump, so whatever may raise one
// runs in a protected call, and the list is owned outside of it.

#include "lua/conversions.h"

#include "lua/lists.h"

namespace korvo::lua {
namespace {

// Called with the table and a pointer to the list.
template <typename T>
int readProtected(lua_State *L) {
    readList(L, 1, static_cast<T ***>(lua_touserdata(L, 2)));
    return 0;
}

template <typename T>
T **tableToList(lua_State *L, int index) {
    if (!lua_istable(L, index)) {
        return nullptr;
    }
    T **list = nullptr;
    lua_pushcfunction(L, readProtected<T>);
    lua_pushvalue(L, index);
    lua_pushlightuserdata(L, &list);
    if (lua_pcall(L, 2, 0, 0) != 0) {
        releaseList(list);
        lua_error(L);
    }
    return list;
}

// Called with a pointer to the list. A call through lua_cpcall() gives no results, so the table goes through the
// registry, where that pointer is its key.
template <typename T>
int pushProtected(lua_State *L) {
    lua_pushvalue(L, 1);
    pushList(L, *static_cast<T ***>(lua_touserdata(L, 1)));
    lua_rawset(L, LUA_REGISTRYINDEX);
    return 0;
}

template <typename T>
void listToTable(lua_State *L, T **list) {
    int const outcome = lua_cpcall(L, pushProtected<T>, &list);
    releaseList(list);
    if (outcome != 0) {
        lua_error(L);
    }
    lua_pushlightuserdata(L, &list);
    lua_rawget(L, LUA_REGISTRYINDEX);
    lua_pushlightuserdata(L, &list);
    lua_pushnil(L);
    lua_rawset(L, LUA_REGISTRYINDEX);
}

}  // namespace
}  // namespace korvo::lua

using korvo::lua::listToTable;
using korvo::lua::tableToList;

int getNumberOfTableEntries(lua_State *L, int index) {
    if (!lua_istable(L, index)) {
        return 0;
    }
    int count = 0;
    lua_pushnil(L);
    while (lua_next(L, index) != 0) {
        lua_pop(L, 1);
        ++count;
    }
    return count;
}

unsigned char **convertTableToBoolArray(lua_State *L, int index) {
    return tableToList<unsigned char>(L, index);
}

unsigned int **convertTableToUintArray(lua_State *L, int index) {
    return tableToList<unsigned int>(L, index);
}

int **convertTableToIntArray(lua_State *L, int index) {
    return tableToList<int>(L, index);
}

double **convertTableToDblArray(lua_State *L, int index) {
    return tableToList<double>(L, index);
}

char **convertTableToStrArray(lua_State *L, int index) {
    return tableToList<char>(L, index);
}

void convertBoolArrayToTable(lua_State *L, unsigned char **list) {
    listToTable(L, list);
}

void convertUintArrayToTable(lua_State *L, unsigned int **list) {
    listToTable(L, list);
}

void convertIntArrayToTable(lua_State *L, int **list) {
    listToTable(L, list);
}

void convertDblArrayToTable(lua_State *L, double **list) {
    listToTable(L, list);
}

void convertStrArrayToTable(lua_State *L, char **list) {
    listToTable(L, list);
}
