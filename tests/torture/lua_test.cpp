// SPDX-License-Identifier: Apache-2.0
// Both Lua modules on the real platform, while memory runs out at each place in turn: in the interpreter, in the modules, in the
// client and in the platform. lua_calls.lua has the calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <lua.hpp>
#include <memory>
#include <string>
#include <vector>

#include "korvo_core.h"
#include "support/rounds.h"
#include "support/service.h"
#include "support/workspace.h"

namespace torture {

namespace {

/// A Lua state whose memory is the process's.
class State {
  public:
    State() {
        // More blocks than a recording has room for.
        live_blocks::Unnoticed const unnoticed;
        L_ = luaL_newstate();
        luaL_openlibs(L_);
        expect(luaL_dostring(L_, "package.path = '" KORVO_LUA_MODULE_FOLDER "/?.lua'\n"
                                 "package.cpath = '" KORVO_LUA_MODULE_FOLDER "/?.so'") == 0);
        expect(luaL_dofile(L_, KORVO_LUA_CALLS) == 0);
    }
    ~State() { lua_close(L_); }
    State(State const &) = delete;
    State &operator=(State const &) = delete;

    operator lua_State *() const { return L_; }

    /// Fails the test with the message on the stack unless all is well.
    void expect(bool is_well) const {
        if (!is_well) {
            char const *const message = lua_tostring(L_, -1);
            ADD_FAILURE() << (message != nullptr ? message : "an error that is no text");
        }
    }

  private:
    lua_State *L_ = nullptr;
};

std::vector<std::string> families() {
    State const state;
    std::vector<std::string> names;
    lua_pushnil(state);
    while (lua_next(state, -2) != 0) {
        lua_pop(state, 1);
        names.emplace_back(lua_tostring(state, -1));
    }
    names.erase(std::remove(names.begin(), names.end(), "prepare"), names.end());
    std::sort(names.begin(), names.end());
    return names;
}

class LuaCalls : public ::testing::TestWithParam<std::string> {
  protected:
    static void SetUpTestSuite() {
        openLog("alert");
        setenv("KORVO_STATE_DIR", end_to_end::Workspace::ofThisProgram().newFolder("settings").c_str(), 1);
        service = new end_to_end::Service({"--lenient"});
        State const state;
        lua_getfield(state, -1, "prepare");
        state.expect(lua_pcall(state, 0, 0, 0) == 0);
    }
    static void TearDownTestSuite() {
        delete service;
        service = nullptr;
    }

    static end_to_end::Service *service;
};

end_to_end::Service *LuaCalls::service = nullptr;

INSTANTIATE_TEST_SUITE_P(, LuaCalls, ::testing::ValuesIn(families()), [](auto const &tested) {
    std::string name = tested.param;
    std::replace_if(
        name.begin(), name.end(), [](char character) { return character == ' ' || character == ','; }, '_');
    return name;
});

/// What memory that has run out ends a call with, where a status does.
bool isShortage(korvo_core_status status, bool gives_lists) {
    return status == KORVO_CORE_STATUS_ALLOC_FAILED || status == KORVO_CORE_STATUS_IPC_FAILED ||
           (gives_lists && status == KORVO_CORE_STATUS_INVALID_PARAMS);
}

int tellWhetherFailed(lua_State *L) {
    auto const &fault = *static_cast<Fault const *>(lua_touserdata(L, lua_upvalueindex(1)));
    lua_pushboolean(L, fault.isForEver() ? fault.failed() != 0 : fault.isOver());
    return 1;
}

void doOneRound(std::string const &family, Fault &fault) {
    State const state;
    lua_pushboolean(state, fault.isForEver() ? 1 : 0);
    lua_setglobal(state, "is_for_ever");
    lua_pushlightuserdata(state, &fault);
    lua_pushcclosure(state, tellWhetherFailed, 1);
    lua_setglobal(state, "has_failed");
    lua_getfield(state, -1, family.c_str());
    bool const is_prepared = lua_pcall(state, 0, 3, 0) == 0;  // [work afterwards gives_lists]
    state.expect(is_prepared);
    if (!is_prepared) {
        return;
    }
    bool const gives_lists = lua_toboolean(state, -1) != 0;
    lua_pop(state, 1);
    (void)lua_gc(state, LUA_GCCOLLECT, 0);
    lua_pushvalue(state, -2);
    fault.start();
    bool const returned = lua_pcall(state, 0, 1, 0) == 0;  // [work afterwards status or message]
    fault.stop();
    if (!returned) {
        // Where it came from stands behind it, if there was memory to tell.
        std::string const message = lua_tostring(state, -1);
        EXPECT_EQ(message.substr(0, message.find('\n')), "not enough memory");
        EXPECT_NE(fault.failed(), 0U);
        lua_pop(state, 1);
        lua_pushnil(state);
    } else if (auto const status = static_cast<korvo_core_status>(lua_tointeger(state, -1)); status != 0) {
        EXPECT_TRUE(fault.failed() != 0 && isShortage(status, gives_lists)) << status;
    }
    state.expect(lua_pcall(state, 1, 0, 0) == 0);
}

TEST_P(LuaCalls, EndInAStatusOrAnErrorAndWorkAfterwards) {
    bool const is_slow = GetParam() == "layer, export" || (GetParam().rfind("setting of ", 0) == 0 &&
                                                           GetParam() != "setting of arrayofstring");
    if (is_slow && !isLong()) {
        GTEST_SKIP() << "many calls, or many files that are written; part of the long form";
    }
    // Where memory runs out for its status, too, a script cannot know whether the identifier of a request is spent.
    Leavings const leavings = GetParam() == "two steps" ? Leavings{37} : Leavings{};
    // Most allocations are the interpreter's, and much the same.
    bool const is_long_way = GetParam().rfind("layer, ", 0) == 0 || GetParam().rfind("setting of ", 0) == 0;
    failEveryAllocation(
        GetParam(),
        [](Fault &fault) {
            doOneRound(GetParam(), fault);
            // The layer's threads have used its second module.
            useAllStacks();
        },
        leavings, is_long_way ? 3 : 1);
}

}  // namespace

}  // namespace torture
