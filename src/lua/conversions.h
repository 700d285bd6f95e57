// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_CONVERSIONS_H
#define KORVO_LUA_CONVERSIONS_H

// Lists of the C interface and Lua tables, and references to Lua values, for hosts that extend the module.
//
// A list is a NULL-terminated array of pointers to elements, made and released by the platform core. Its Lua form is a
// sequence: a table with the keys 1 to n.
//
// All functions must be called on the thread that runs the Lua state, and need three free slots of its stack. A Lua
// error that comes up in the middle (a metamethod's, or memory) is raised when the list has been released: nothing
// leaks.

#include <lua.hpp>

#include "korvo_core.h"

/// Counts the pairs of the table at a positive stack index, whatever their keys are. 0 for what is no table.
KORVO_CORE_EXPORT int getNumberOfTableEntries(lua_State *L, int index);

/// Makes a list of the elements 1 to n of the table at a positive stack index, where n counts all pairs of the table;
/// elements are read with their metamethods. So a hole or another key makes an element come out as nil, which no kind
/// of list takes.
/// @return the list, which the caller frees with korvo_core_free_bool_array and so on; NULL when an element is of the
///         wrong type, when the value is no table, or when memory runs out.
///
///   kind  element in Lua  becomes
///   Bool  boolean         1 or 0
///   Uint  number          truncated toward zero; a negative one wraps (-1 is 4294967295), what does not fit 32 bits
///                         gives the nearest value
///   Int   number          truncated toward zero; what does not fit gives the nearest value
///   Dbl   number          itself
///   Str   string          a copy, up to its first zero byte; a number is no string here
KORVO_CORE_EXPORT unsigned char **convertTableToBoolArray(lua_State *L, int index);
KORVO_CORE_EXPORT unsigned int **convertTableToUintArray(lua_State *L, int index);
KORVO_CORE_EXPORT int **convertTableToIntArray(lua_State *L, int index);
KORVO_CORE_EXPORT double **convertTableToDblArray(lua_State *L, int index);
KORVO_CORE_EXPORT char **convertTableToStrArray(lua_State *L, int index);

/// Pushes one value: a new table with the list's elements, or nil for NULL. Takes the list over and frees it.
/// On purpose: an unsigned number of 2147483648 or more arrives in Lua less 4294967296, as a signed 32-bit integer.
KORVO_CORE_EXPORT void convertBoolArrayToTable(lua_State *L, unsigned char **list);
KORVO_CORE_EXPORT void convertUintArrayToTable(lua_State *L, unsigned int **list);
KORVO_CORE_EXPORT void convertIntArrayToTable(lua_State *L, int **list);
KORVO_CORE_EXPORT void convertDblArrayToTable(lua_State *L, double **list);
KORVO_CORE_EXPORT void convertStrArrayToTable(lua_State *L, char **list);

/// Keeps a Lua value alive until it is cleared. A record that is all zero is empty.
struct SWIGLUA_REF {
    lua_State *L;  // NULL when empty
    int ref;
};

/// Refers to the value at a stack index. Does not clear what the record referred to before.
KORVO_CORE_EXPORT void swiglua_ref_set(SWIGLUA_REF *ref, lua_State *L, int index);
/// Pushes the value; pushes nothing for an empty record.
KORVO_CORE_EXPORT void swiglua_ref_get(SWIGLUA_REF *ref);
/// Lets the value go and empties the record; an empty one stays empty.
KORVO_CORE_EXPORT void swiglua_ref_clear(SWIGLUA_REF *ref);

#endif
