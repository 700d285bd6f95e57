// SPDX-License-Identifier: Apache-2.0
#include "host/values.h"

using fake_platform::Value;

namespace {

/// Pushes a table of elements, each pushed by `push`.
template <typename T, typename Push>
void pushSequence(lua_State *L, std::vector<T> const &list, Push push) {
    lua_newtable(L);
    int place = 0;
    for (T const &element : list) {
        push(element);
        lua_rawseti(L, -2, ++place);
    }
}

void pushText(lua_State *L, std::string const &text) {
    lua_pushlstring(L, text.data(), text.size());
}

}  // namespace

void pushValue(lua_State *L, Value const &value) {
    switch (value.type) {
        case Value::Type::null:
            lua_pushnil(L);
            break;
        case Value::Type::number:
            lua_pushnumber(L, value.number);
            break;
        case Value::Type::text:
            pushText(L, value.text);
            break;
        case Value::Type::pointer:
            lua_pushlightuserdata(L, const_cast<void *>(value.pointer));
            break;
        case Value::Type::list:
            pushSequence(L, value.list, [L](Value const &element) { pushValue(L, element); });
            lua_pushnumber(L, static_cast<double>(value.list.size()));
            lua_setfield(L, -2, "n");
            break;
    }
}

void pushContent(lua_State *L, typed_calls::Value const &content) {
    if (auto const *number = std::get_if<unsigned int>(&content)) {
        lua_pushnumber(L, *number);
    } else if (auto const *flag = std::get_if<unsigned char>(&content)) {
        lua_pushboolean(L, *flag);
    } else if (auto const *text = std::get_if<std::string>(&content)) {
        pushText(L, *text);
    } else if (auto const *texts = std::get_if<Texts>(&content)) {
        pushSequence(L, *texts, [L](std::string const &element) { pushText(L, element); });
    } else if (auto const *numbers = std::get_if<Numbers>(&content)) {
        pushSequence(L, *numbers, [L](unsigned int element) { lua_pushnumber(L, element); });
    } else {
        lua_pushnil(L);
    }
}

Value valueAt(lua_State *L, int index) {
    switch (lua_type(L, index)) {
        case LUA_TNUMBER:
            return lua_tonumber(L, index);
        case LUA_TBOOLEAN:
            return lua_toboolean(L, index) != 0 ? 1.0 : 0.0;
        case LUA_TSTRING:
            return lua_tostring(L, index);
        case LUA_TLIGHTUSERDATA:
            return Value::ofPointer(lua_touserdata(L, index));
        case LUA_TTABLE: {
            lua_getfield(L, index, "n");
            int const count = lua_isnil(L, -1) ? static_cast<int>(lua_objlen(L, index))
                                               : static_cast<int>(lua_tonumber(L, -1));
            lua_pop(L, 1);
            Value::List list;
            for (int place = 1; place <= count; ++place) {
                lua_rawgeti(L, index, place);
                list.push_back(valueAt(L, lua_gettop(L)));
                lua_pop(L, 1);
            }
            return list;
        }
        default:
            return {};
    }
}
