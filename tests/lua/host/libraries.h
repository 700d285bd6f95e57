// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_LUA_LIBRARIES_H
#define KORVO_TESTS_LUA_LIBRARIES_H

#include <lua.hpp>

/// Sets the global table `fake`: the fake platform (fake_library.cpp tells what it holds).
void openFakeLibrary(lua_State *L);

/// Sets the global table `host`: what a script cannot do for itself (host_library.cpp).
void openHostLibrary(lua_State *L);

#endif
