// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_CALL_H
#define KORVO_LUA_CALL_H

#include <lua.hpp>

namespace korvo::lua {

/// Pushes every function of the module and stores it in the table below it on the stack under its name.
void registerFunctions(lua_State *L);

}  // namespace korvo::lua

#endif
