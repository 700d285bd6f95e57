// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_STUB_LUA_TEXTS_H
#define KORVO_LUA_STUB_LUA_TEXTS_H

// What the stub says in words of its own: each entry is read alone in an editor, by somebody who writes Lua.

#include <map>
#include <string>
#include <vector>

namespace korvo::lua::stub {

struct LuaText {
    std::vector<std::string> lines;
    std::map<std::string, std::string> names;  // of arguments and results that need more than their name
};

/// The text for a function that is no form of an operation; NULL when there is none.
LuaText const *luaText(std::string const &function);

/// What a form does, behind "This form"; empty for an unknown form.
std::string formText(std::string const &form);

/// What an argument or result that many functions have is; empty for another.
std::string commonText(std::string const &name);

/// A text that was written for C, in words of Lua.
std::string inLua(std::string text);

}  // namespace korvo::lua::stub

#endif
