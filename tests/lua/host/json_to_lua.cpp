// SPDX-License-Identifier: Apache-2.0
#include "host/values.h"

namespace {

class JsonPusher : public json::ConstVisitor {
  public:
    explicit JsonPusher(lua_State *L) : L_(L) {}

    void Visit(json::Object const &object) override {
        lua_newtable(L_);
        for (json::Object::Member const &member : object) {
            member.element.Accept(*this);
            lua_setfield(L_, -2, member.name.c_str());
        }
    }
    void Visit(json::Array const &array) override {
        lua_newtable(L_);
        int place = 0;
        for (json::UnknownElement const &element : array) {
            element.Accept(*this);
            lua_rawseti(L_, -2, ++place);
        }
    }
    void Visit(json::String const &text) override {
        lua_pushlstring(L_, text.value().data(), text.value().size());
    }
    void Visit(json::Number const &number) override { lua_pushnumber(L_, number.value()); }
    void Visit(json::Boolean const &flag) override { lua_pushboolean(L_, flag.value()); }
    void Visit(json::Null const &) override { lua_pushliteral(L_, "null"); }

  private:
    lua_State *L_;
};

}  // namespace

void pushJson(lua_State *L, json::Object const &object) {
    JsonPusher(L).Visit(object);
}
