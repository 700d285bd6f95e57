// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_LUA_FLAVOUR_H
#define KORVO_TESTS_LUA_FLAVOUR_H

/// The Lua that this program is linked with: "lua51" or "luajit".
char const *flavour();

#endif
