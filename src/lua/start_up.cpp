// SPDX-License-Identifier: Apache-2.0
#include "lua/start_up.h"

#include <cstdio>

namespace korvo::lua {

void runStartUpText(lua_State *L, char const *text) {
    if (*text == '\0') {
        return;
    }
    int const height = lua_gettop(L);
    if (luaL_loadstring(L, text) != 0 || lua_pcall(L, 0, 0, 0) != 0) {
        char const *const message = lua_tostring(L, -1);
        std::fprintf(stderr, "%s\n", message != nullptr ? message : luaL_typename(L, -1));
    }
    lua_settop(L, height);
}

}  // namespace korvo::lua
