// SPDX-License-Identifier: Apache-2.0
#include "lua/start_up.h"

#include <gtest/gtest.h>

namespace {

class StartUp : public testing::Test {
  protected:
    StartUp() : L_(luaL_newstate()) {
        luaL_openlibs(L_);
        lua_pushliteral(L_, "below");
    }
    ~StartUp() override { lua_close(L_); }

    /// What running the text writes to standard error. The stack must stay as it is.
    std::string run(char const *text) {
        testing::internal::CaptureStderr();
        korvo::lua::runStartUpText(L_, text);
        EXPECT_EQ(lua_gettop(L_), 1);
        EXPECT_STREQ(lua_tostring(L_, 1), "below");
        return testing::internal::GetCapturedStderr();
    }

    bool isSet(char const *global) {
        lua_getglobal(L_, global);
        bool const set = !lua_isnil(L_, -1);
        lua_pop(L_, 1);
        return set;
    }

    lua_State *L_;
};

}  // namespace

TEST_F(StartUp, RunsAText) {
    EXPECT_EQ(run("ran = select('#', ...) == 0 or nil; return 1, 2, 3"), "");
    EXPECT_TRUE(isSet("ran"));
}

TEST_F(StartUp, DoesNothingWithAnEmptyText) {
    lua_pushnil(L_);
    lua_setglobal(L_, "pcall");
    EXPECT_EQ(run(""), "");
}

TEST_F(StartUp, TellsAboutATextThatCannotBeLoaded) {
    EXPECT_EQ(run("this is = no Lua"), "[string \"this is = no Lua\"]:1: '=' expected near 'is'\n");
}

TEST_F(StartUp, TellsAboutATextThatFails) {
    EXPECT_EQ(run("before = 1\nerror 'broken'"), "[string \"before = 1...\"]:2: broken\n");
    EXPECT_TRUE(isSet("before"));
}

TEST_F(StartUp, TellsAboutErrorsThatAreNoText) {
    EXPECT_EQ(run("error {}"), "table\n");
    EXPECT_EQ(run("error(nil)"), "nil\n");
    EXPECT_EQ(run("error(5, 0)"), "5\n");
}
