// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_POINTER_TYPES_H
#define KORVO_LUA_POINTER_TYPES_H

// The module's pointer types, and what a userdata holds.

#include <lua.hpp>
#include "lua/typed_pointer.h"
#include "operations/operation.h"

namespace korvo::lua {

enum class PointerTypeId : unsigned char {
#define POINTER_TYPE(name, text) name,
#include "lua/pointer_types.def"
};

PointerType const &pointerType(PointerTypeId id);

/// The type of the callbacks of an operation; operations with results of the same kinds share it.
PointerType const &callbackType(operations::Operation const &operation);

/// Puts the module's types into the state's registry, or links them to those that other modules have put there. Once
/// for each state, however often it opens the module.
void joinPointerTypes(lua_State *L);

/// The type of the userdata at an index; NULL for one that is no typed pointer or has a type of strangers.
PointerType const *typeOfUserdata(lua_State *L, int index);

/// The C pointer in the userdata at an index: what a typed pointer points to, else the userdata itself.
void *pointerOfUserdata(lua_State *L, int index);

inline bool isSameType(PointerType const *left, PointerType const *right) {
    return left == right || (left != nullptr && std::strcmp(left->name, right->name) == 0);
}

/// What a value is, for people: the text of a typed pointer's type, "userdata (unknown type)", or the name of the Lua
/// type.
char const *typeText(lua_State *L, int index);

}  // namespace korvo::lua

#endif
