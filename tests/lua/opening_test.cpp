// SPDX-License-Identifier: Apache-2.0
// Opening the module as hosts do.

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "host/flavour.h"
#include "host/state.h"
#include "lua/module.h"
#include "lua/typed_pointer.h"

namespace {

int openDirectly(lua_State *L) {
    return luaopen_korvo_api_action_engine(L);
}

}  // namespace

TEST(Opening, HappensOnTheLuaThatTheProgramIsFor) {
    State state;
    EXPECT_EQ(state.run("return jit ~= nil"), "");
    EXPECT_EQ(lua_toboolean(state, -1) != 0, std::string(flavour()) == "luajit");
}

TEST(Opening, GivesTheTableOnTopOfTheStack) {
    State state;
    lua_pushliteral(state, "below");
    EXPECT_EQ(luaopen_korvo_api_action_engine(state), 1);
    EXPECT_TRUE(lua_istable(state, -1));
    lua_getglobal(state, "korvo_api_action_engine");
    EXPECT_TRUE(lua_rawequal(state, -1, -2));
    EXPECT_STREQ(lua_tostring(state, 1), "below");
    EXPECT_EQ(lua_gettop(state), 3);
}

TEST(Opening, CalledAsAFunctionGivesOneResult) {
    State state;
    lua_pushcfunction(state, openDirectly);
    lua_pushliteral(state, "argument");
    ASSERT_EQ(lua_pcall(state, 1, LUA_MULTRET, 0), 0) << lua_tostring(state, -1);
    EXPECT_EQ(lua_gettop(state), 1);
    EXPECT_TRUE(lua_istable(state, 1));
}

TEST(Opening, AgainMakesAnotherWholeTable) {
    State state;
    state.requireModule();
    lua_getfield(state, -1, "korvo_core_init");
    EXPECT_TRUE(lua_isfunction(state, -1));
    lua_pop(state, 1);
    EXPECT_EQ(luaopen_korvo_api_action_engine(state), 1);
    EXPECT_FALSE(lua_rawequal(state, 1, 2));
    EXPECT_EQ(state.run("local function names(module)\n"
                        "  local found = {}\n"
                        "  for name in next, module do found[#found + 1] = name end\n"
                        "  table.sort(found)\n"
                        "  return table.concat(found, ' ')\n"
                        "end\n"
                        "local first = names(package.loaded.korvo_api_action_engine)\n"
                        "return #first > 0 and names(korvo_api_action_engine) == first"),
              "");
    EXPECT_TRUE(lua_toboolean(state, -1));
}

TEST(Opening, AgainKeepsTheTypesOfPointersThatAreThere) {
    State state;
    state.requireModule();
    int target = 0;
    korvo::lua::pushTypedPointer(state, "_p_void", &target);
    lua_setglobal(state, "pointer");
    luaopen_korvo_api_action_engine(state);
    EXPECT_EQ(state.run("return swig_type(pointer)"), "");
    EXPECT_STREQ(lua_tostring(state, -1), "void *");
}

TEST(Opening, SetsTheFunctionsAnewWhenTheyWereReplaced) {
    State state;
    EXPECT_EQ(state.run("swig_type, swig_equals = 1, 2"), "");
    state.requireModule();
    EXPECT_EQ(state.run("assert(swig_type(1) == 'number' and type(swig_equals) == 'function')"), "");
}

TEST(Opening, ServesTwoStatesAtOnce) {
    State one;
    one.requireModule();
    {
        State other;
        other.requireModule();
        EXPECT_EQ(other.run("korvo_api_action_engine.mine = 1"), "");
    }
    EXPECT_EQ(
        one.run("assert(korvo_api_action_engine.mine == nil and korvo_api_action_engine.kSaturday == 64)"),
        "");
    int target = 0;
    korvo::lua::pushTypedPointer(one, "_p_p_void", &target);
    lua_setglobal(one, "pointer");
    EXPECT_EQ(one.run("assert(swig_type(pointer) == 'void **')"), "");
}

TEST(Opening, KeepsThePointersOfOneStateKnownWhenAnotherOneIsClosed) {
    auto closed = std::make_unique<State>();
    closed->requireModule();
    State state;
    state.requireModule();
    closed.reset();
    EXPECT_EQ(state.run("assert(not pcall(korvo_api_action_engine.korvo_core_settings_is_new_file, 5))"), "");
    int target = 0;
    korvo::lua::pushTypedPointer(state, "_p_int", &target);
    EXPECT_TRUE(lua_isuserdata(state, -1));
}

TEST(Opening, TakesNoMoreStackThanAHostHasToHaveFree) {
    State state;
    lua_settop(state, 0);
    for (int place = 0; place < 10; ++place) {
        lua_pushnumber(state, place);
    }
    EXPECT_EQ(luaopen_korvo_api_action_engine(state), 1);
    EXPECT_EQ(lua_gettop(state), 11);
}

TEST(Opening, UserEntryDoesNothingAndKeepsTheStack) {
    State state;
    lua_pushliteral(state, "below");
    testing::internal::CaptureStderr();
    EXPECT_EQ(luaopen_korvo_api_action_engine_user(state), 0);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(lua_gettop(state), 1);
    lua_getglobal(state, "korvo_api_action_engine");
    EXPECT_TRUE(lua_isnil(state, -1));
}

TEST(Opening, PutsTheTypesUnderTheSharedKeyWhenNobodyElseHas) {
    State state;
    state.requireModule();
    lua_getfield(state, LUA_REGISTRYINDEX, "swig_runtime_data_type_pointer4");
    EXPECT_TRUE(lua_islightuserdata(state, -1));
    lua_getfield(state, LUA_REGISTRYINDEX, korvo::lua::pointer_types_key);
    EXPECT_TRUE(lua_rawequal(state, -1, -2));
}

TEST(Opening, NeitherReadsNorReplacesWhatStrangersHavePutThere) {
    // Whoever reads this record, or what its words would point to, crashes.
    void *const unreadable = reinterpret_cast<void *>(std::uintptr_t{64});
    State state;
    lua_pushlightuserdata(state, unreadable);
    lua_setfield(state, LUA_REGISTRYINDEX, "swig_runtime_data_type_pointer4");
    state.requireModule();
    luaopen_korvo_api_action_engine(state);
    lua_getfield(state, LUA_REGISTRYINDEX, "swig_runtime_data_type_pointer4");
    EXPECT_EQ(lua_touserdata(state, -1), unreadable);
    int target = 0;
    korvo::lua::pushTypedPointer(state, "_p_void", &target);
    lua_setglobal(state, "pointer");
    EXPECT_EQ(state.run("assert(swig_type(pointer) == 'void *')"), "");
}

TEST(Opening, ShowsNothingOfUserdataOfStrangersThatLookLikeTypedPointers) {
    State state;
    state.requireModule();
    auto *const words = static_cast<std::uintptr_t *>(lua_newuserdata(state, 3 * sizeof(void *)));
    words[0] = words[2] = 64;
    words[1] = 0;
    lua_setglobal(state, "stranger");
    EXPECT_EQ(state.run("assert(swig_type(stranger) == 'userdata (unknown type)')"), "");
    EXPECT_EQ(state.run("assert(not pcall(korvo_api_action_engine.korvo_core_free_string_array, stranger))"),
              "");
}
