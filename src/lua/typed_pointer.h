// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_TYPED_POINTER_H
#define KORVO_LUA_TYPED_POINTER_H

// C pointers in the hands of scripts. A script can pass them on and compare them, nothing else. They come without a
// metatable, and nothing happens when they are collected; a host may give them one.
//
// A host that wants to give a script a pointer the module cannot make, such as a callback or the place for a handle,
// makes it with pushTypedPointer(), once the module is loaded:
//
//     static void *messaging;
//     korvo::lua::pushTypedPointer(L, "_p_p_void", &messaging);
//
// The functions here are called on the thread that runs the Lua state, need two free slots of its stack, and raise Lua's
// error when memory runs out.

#include <lua.hpp>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace korvo::lua {

/// The type of a pointer. Types of equal names are the same type, whichever module describes them.
struct PointerType {
    char const *name;  // mangled: "_p_p_void"
    char const *text;  // as C spells it: "void **"; all spellings, joined by "|"
};

/// A Lua state's link to the types of one module. The links of the modules that a state has opened form a ring; it is the
/// state's alone, so whoever runs the state reads and changes it without a lock.
struct PointerTypes {
    PointerType const *types;
    std::size_t count;
    PointerTypes *next;
};

/// The userdata of a typed pointer.
struct TypedPointer {
    PointerType const *type;
    std::intptr_t owned;  // 0: nobody frees the pointer when the userdata is collected
    void *pointer;
};

/// Where a Lua state's registry has the ring, as a light userdata.
inline constexpr char const *pointer_types_key = "korvo_pointer_types";

/// A type by its mangled name; NULL when no module that is loaded has it.
inline PointerType const *findPointerType(lua_State *L, char const *name) {
    lua_getfield(L, LUA_REGISTRYINDEX, pointer_types_key);
    auto *const ring = static_cast<PointerTypes *>(lua_touserdata(L, -1));
    lua_pop(L, 1);
    PointerTypes *module = ring;
    while (module != nullptr) {
        for (std::size_t place = 0; place < module->count; ++place) {
            if (std::strcmp(module->types[place].name, name) == 0) {
                return &module->types[place];
            }
        }
        module = module->next;
        if (module == ring) {
            break;
        }
    }
    return nullptr;
}

/// Pushes a pointer of a type given by its mangled name; pushes nil for NULL and for an unknown type. What it points to
/// stays the host's.
inline void pushTypedPointer(lua_State *L, char const *type_name, void *pointer) {
    PointerType const *const type = findPointerType(L, type_name);
    if (type == nullptr || pointer == nullptr) {
        lua_pushnil(L);
        return;
    }
    *static_cast<TypedPointer *>(lua_newuserdata(L, sizeof(TypedPointer))) = {type, 0, pointer};
}

}  // namespace korvo::lua

#endif
