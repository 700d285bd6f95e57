// SPDX-License-Identifier: Apache-2.0
// What a script cannot do for itself.

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "fake_platform/fake_platform.h"
#include "host/flavour.h"
#include "host/libraries.h"
#include "host/state.h"
#include "live_blocks/live_blocks.h"
#include "lua/typed_pointer.h"

namespace {

char places[256];

/// host.pointer(number): a light userdata; the same one for the same number from 0 to 255.
int pointer(lua_State *L) {
    lua_pushlightuserdata(L, &places[static_cast<unsigned char>(lua_tointeger(L, 1))]);
    return 1;
}

/// host.null(): a light userdata that holds NULL.
int null(lua_State *L) {
    lua_pushlightuserdata(L, nullptr);
    return 1;
}

/// host.userdata(size [, metatable]): a full userdata of the host's, and its address as a light userdata.
int userdata(lua_State *L) {
    lua_settop(L, 2);
    void *const block = lua_newuserdata(L, static_cast<std::size_t>(lua_tointeger(L, 1)));
    // Lua leaves in it what was there before, a typed pointer for instance.
    std::memset(block, 0x5A, lua_objlen(L, -1));
    if (lua_istable(L, 2)) {
        lua_pushvalue(L, 2);
        lua_setmetatable(L, -2);
    }
    lua_pushlightuserdata(L, block);
    return 2;
}

/// host.typed(type name, light userdata): a typed pointer.
int typed(lua_State *L) {
    korvo::lua::pushTypedPointer(L, lua_tostring(L, 1), lua_touserdata(L, 2));
    return 1;
}

/// host.pointee(typed pointer): what it points to, as a light userdata; the name of its type; its ownership flag.
int pointee(lua_State *L) {
    auto const *const pointer = static_cast<korvo::lua::TypedPointer const *>(lua_touserdata(L, 1));
    lua_pushlightuserdata(L, pointer->pointer);
    lua_pushstring(L, pointer->type->name);
    lua_pushnumber(L, static_cast<double>(pointer->owned));
    return 3;
}

/// host.new(size): zeroed memory as a light userdata; host.delete(pointer).
int newMemory(lua_State *L) {
    lua_pushlightuserdata(L, std::calloc(1, static_cast<std::size_t>(lua_tointeger(L, 1))));
    return 1;
}

int deleteMemory(lua_State *L) {
    std::free(lua_touserdata(L, 1));
    return 0;
}

/// host.uint(pointer), host.byte(pointer), host.word(pointer), host.text(pointer): what is at a place
int uintAt(lua_State *L) {
    lua_pushnumber(L, *static_cast<unsigned int const *>(lua_touserdata(L, 1)));
    return 1;
}

int byteAt(lua_State *L) {
    lua_pushnumber(L, *static_cast<unsigned char const *>(lua_touserdata(L, 1)));
    return 1;
}

int wordAt(lua_State *L) {
    lua_pushlightuserdata(L, *static_cast<void **>(lua_touserdata(L, 1)));
    return 1;
}

int textAt(lua_State *L) {
    lua_pushstring(L, static_cast<char const *>(lua_touserdata(L, 1)));
    return 1;
}

/// host.set_text(pointer to a list of texts, place from 0, text)
int setText(lua_State *L) {
    static_cast<char **>(lua_touserdata(L, 1))[lua_tointeger(L, 2)] = strdup(lua_tostring(L, 3));
    return 0;
}

/// host.left_behind(function, ...): calls it, resets the fake platform, and gives how many heap blocks are left, with
/// the outcome as pcall() gives it behind. Lua's own blocks do not count.
int leftBehind(lua_State *L) {
    fake_platform::reset();
    std::size_t left = 0;
    int outcome = 0;
    {
        live_blocks::Recording recording;
        outcome = lua_pcall(L, lua_gettop(L) - 1, LUA_MULTRET, 0);
        fake_platform::reset();
        live_blocks::Unnoticed const unnoticed;
        left = recording.end().size();
    }
    lua_pushboolean(L, outcome == 0);
    lua_insert(L, 1);
    lua_pushnumber(L, static_cast<double>(left));
    lua_insert(L, 1);
    return lua_gettop(L);
}

/// host.fail_nth_block(n, function): calls it while the nth allocation outside of Lua fails; gives whether it got there,
/// and the outcome as pcall() gives it.
int failNthBlock(lua_State *L) {
    bool const failed = live_blocks::failNth(static_cast<std::size_t>(lua_tointeger(L, 1)), [&] {
        lua_remove(L, 1);
        bool const succeeded = lua_pcall(L, 0, LUA_MULTRET, 0) == 0;
        lua_pushboolean(L, succeeded);
        lua_insert(L, 1);
    });
    lua_pushboolean(L, failed);
    lua_insert(L, 1);
    return lua_gettop(L);
}

/// host.without_standard_input(function, ...): calls it while descriptor 0 is free, and gives what pcall() gives. Who took
/// the descriptor has lost it afterwards.
int withoutStandardInput(lua_State *L) {
    int const kept = fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    (void)close(STDIN_FILENO);
    bool const succeeded = lua_pcall(L, lua_gettop(L) - 1, LUA_MULTRET, 0) == 0;
    if (kept >= 0) {
        (void)dup2(kept, STDIN_FILENO);
        (void)close(kept);
    }
    lua_pushboolean(L, succeeded);
    lua_insert(L, 1);
    return lua_gettop(L);
}

/// host.types(): the names of all types that are known
int types(lua_State *L) {
    lua_newtable(L);
    lua_getfield(L, LUA_REGISTRYINDEX, korvo::lua::pointer_types_key);
    auto *const ring = static_cast<korvo::lua::PointerTypes *>(lua_touserdata(L, -1));
    lua_pop(L, 1);
    int count = 0;
    for (korvo::lua::PointerTypes *module = ring; module != nullptr;) {
        for (std::size_t place = 0; place < module->count; ++place) {
            lua_pushstring(L, module->types[place].name);
            lua_rawseti(L, -2, ++count);
        }
        module = module->next;
        if (module == ring) {
            break;
        }
    }
    return 1;
}

}  // namespace

void openHostLibrary(lua_State *L) {
    luaL_Reg const functions[] = {{"pointer", pointer},
                                  {"null", null},
                                  {"userdata", userdata},
                                  {"typed", typed},
                                  {"pointee", pointee},
                                  {"new", newMemory},
                                  {"delete", deleteMemory},
                                  {"uint", uintAt},
                                  {"byte", byteAt},
                                  {"word", wordAt},
                                  {"text", textAt},
                                  {"set_text", setText},
                                  {"left_behind", leftBehind},
                                  {"fail_nth_block", failNthBlock},
                                  {"without_standard_input", withoutStandardInput},
                                  {"types", types},
                                  {nullptr, nullptr}};
    luaL_register(L, "host", functions);
    lua_pushstring(L, flavour());
    lua_setfield(L, -2, "flavour");
    lua_pushboolean(L, live_blocks::canFail());
    lua_setfield(L, -2, "blocks_can_fail");
    lua_pop(L, 1);
}
