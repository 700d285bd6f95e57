// SPDX-License-Identifier: Apache-2.0
// Any text that scripts import is read or refused with a reason; lua_imports.lua has what must hold.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <lua.hpp>

#include "fuzz_input.h"

namespace {

#ifdef KORVO_FUZZER
/// How often each line of Lua was run: what the fuzzer learns from, beside what the compiler counts.
__attribute__((section("__libfuzzer_extra_counters"))) std::array<std::uint8_t, 1 << 14> lines;

void countLine(lua_State *L, lua_Debug *record) {
    (void)lua_getinfo(L, "S", record);
    auto const function = reinterpret_cast<std::uintptr_t>(record->source) >> 4;
    ++lines[(function * 31 + static_cast<std::uintptr_t>(record->currentline)) % lines.size()];
}
#endif

[[noreturn]] void end(lua_State *L) {
    char const *const error = lua_tostring(L, -1);
    (void)std::fprintf(stderr, "%s\n", error != nullptr ? error : "an error that is no text");
    std::abort();
}

/// With the function that takes an input on its stack.
lua_State *newState() {
    lua_State *const L = luaL_newstate();
    luaL_openlibs(L);
    if (luaL_dostring(L, "package.path = '" KORVO_LUA_MODULE_FOLDER "/?.lua'\n"
                         "package.cpath = '" KORVO_LUA_MODULE_FOLDER "/?.so'") != 0 ||
        luaL_dofile(L, KORVO_LUA_IMPORTS) != 0) {
        end(L);
    }
#ifdef KORVO_FUZZER
    (void)lua_sethook(L, countLine, LUA_MASKLINE, 0);
#endif
    return L;
}

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    static lua_State *const L = newState();
    lua_pushvalue(L, 1);
    lua_pushlstring(L, reinterpret_cast<char const *>(data), size);
    if (lua_pcall(L, 1, 0, 0) != 0) {
        end(L);
    }
    return 0;
}
