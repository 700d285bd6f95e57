// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_START_UP_H
#define KORVO_LUA_START_UP_H

#include <lua.hpp>

namespace korvo::lua {

/// Runs Lua text that comes with the module. An error goes to standard error and no further; the stack stays as it is.
void runStartUpText(lua_State *L, char const *text);

}  // namespace korvo::lua

#endif
