// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_MODULE_H
#define KORVO_LUA_MODULE_H

// The Lua 5.1 module "korvo_api_action_engine". Scripts load it with require(); docs/lua.md tells how it is used.

#include <lua.hpp>

#include "korvo_core.h"

extern "C" {

/// Opens the module: pushes its table, which it also stores in a global variable of the module's name, and sets two
/// global functions. Takes no arguments; returns 1. Opening again makes another table. The library stays loaded until
/// the process ends. Raises Lua's error when memory runs out. Called on the thread that runs the Lua state; several
/// threads may open the module at once, each in a state of its own.
KORVO_CORE_EXPORT int luaopen_korvo_api_action_engine(lua_State *L);

/// Runs the start-up text of the module, which is empty. Returns 0.
KORVO_CORE_EXPORT int luaopen_korvo_api_action_engine_user(lua_State *L);
}

#endif
