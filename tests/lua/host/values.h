// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_LUA_VALUES_H
#define KORVO_TESTS_LUA_VALUES_H

// Values of the test's side in Lua: pointers are light userdata; sequences keep their length in the field n.

#include <lua.hpp>
#include "contract/expectations.h"
#include "fake_platform/core_calls.h"
#include "json/json.h"

void pushValue(lua_State *L, fake_platform::Value const &value);

/// A table is a list of its field n, or of its length.
fake_platform::Value valueAt(lua_State *L, int index);

void pushJson(lua_State *L, json::Object const &object);

void pushContent(lua_State *L, typed_calls::Value const &content);

#endif
