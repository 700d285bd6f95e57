// SPDX-License-Identifier: Apache-2.0
// What happens when a state's memory runs out, at every place where it can.

#include <gtest/gtest.h>

#include <string>

#include "fake_platform/core_calls.h"
#include "host/libraries.h"
#include "host/state.h"
#include "live_blocks/live_blocks.h"

namespace {

using fake_platform::Value;

void arrange() {
    fake_platform::recordCore();
    std::string const long_text(300, 'x');
    fake_platform::answer("korvo_core_settings_get_string_value", {0.0, {long_text}});
    fake_platform::answer("korvo_core_settings_get_arrayofint_value",
                          {0.0, {Value::List{1.0, 2.0, 3.0}, 3.0}});
    fake_platform::answer("korvo_core_settings_get_arrayofstring_value",
                          {0.0, {Value::List{long_text, "b"}, 2.0}});
    fake_platform::answer("korvo_core_settings_get_all_keys", {Value::List{long_text, "b", "c"}, {}});
    fake_platform::answer("korvo_core_debug_get_setting_path", {long_text, {}});
    fake_platform::answer("korvo_core_ipc_initiator_response_receive",
                          {0.0, {long_text, long_text + "2", long_text + "3", long_text + "4"}});
}

constexpr char const *arguments =
    "local texts, numbers = {}, {}\n"
    "for place = 1, 20 do texts[place], numbers[place] = 'text ' .. place, place end\n";

class OutOfMemory : public testing::TestWithParam<char const *> {
  protected:
    void SetUp() override {
        if (!State::canFail()) {
            GTEST_SKIP() << "this Lua has an allocator of its own";
        }
    }
    void TearDown() override { fake_platform::reset(); }
};

}  // namespace

// Fails the first allocation of the call, then the second, and so on until the call succeeds.
TEST_P(OutOfMemory, LeavesNothingBehind) {
    bool failed = true;
    int failures = 0;
    for (std::size_t nth = 1; failed; ++nth) {
        ASSERT_LT(nth, 500U);
        State state;
        state.requireModule();
        openHostLibrary(state);
        ASSERT_EQ(state.run(std::string("local m = korvo_api_action_engine\n") + arguments +
                            "return function() " + GetParam() + " end"),
                  "");
        // With a stack that need not grow and no garbage that a collection could free meanwhile.
        lua_checkstack(state, 100);
        lua_gc(state, LUA_GCCOLLECT, 0);
        lua_gc(state, LUA_GCSTOP, 0);

        fake_platform::reset();
        live_blocks::Recording recording;
        arrange();
        state.failFrom(nth);
        int const outcome = lua_pcall(state, 0, 0, 0);
        failed = state.hasFailed();
        state.failFrom(0);
        fake_platform::reset();
        std::size_t left = 0;
        {
            live_blocks::Unnoticed const unnoticed;
            left = recording.end().size();
        }
        EXPECT_EQ(left, 0U) << "with allocation " << nth << " failing";
        if (failed) {
            ++failures;
            EXPECT_NE(outcome, 0) << nth;
            EXPECT_STREQ(lua_tostring(state, -1), "not enough memory") << nth;
        } else {
            EXPECT_EQ(outcome, 0) << lua_tostring(state, -1);
        }
        EXPECT_EQ(state.run("return korvo_api_action_engine.korvo_core_status_to_string(0)"), "");
    }
    EXPECT_GT(failures, 0) << "the call takes no memory";
}

INSTANTIATE_TEST_SUITE_P(Calls, OutOfMemory,
                         testing::Values("return m.korvo_core_settings_get_string_value('key')",
                                         "return m.korvo_core_settings_get_arrayofint_value('key')",
                                         "return m.korvo_core_settings_get_arrayofstring_value('key')",
                                         "return m.korvo_core_settings_get_all_keys()",
                                         "return m.korvo_core_debug_get_setting_path()",
                                         "return m.korvo_core_ipc_initiator_response_receive(nil, 5)",
                                         "return m.korvo_core_settings_set_arrayofstring_value(12.5, texts)",
                                         "return m.korvo_core_settings_set_arrayofint_value(12.5, numbers)",
                                         "return m.korvo_core_alloc_string_array(3)",
                                         "return m.korvo_core_settings_set_arrayofint_value('key', "
                                         "setmetatable({}, {__index = function(_, key)"
                                         " return key .. '' end}))"),
                         [](auto const &call) { return "Call" + std::to_string(call.index); });

namespace {

// A typed pointer for a new list, or a handle: after the C call nobody else would know it.
int makeListWithoutMemory(lua_State *L) {
    lua_getglobal(L, "korvo_api_action_engine");
    lua_getfield(L, -1, "korvo_core_alloc_int_array");
    lua_pushnumber(L, 3);
    lua_call(L, 1, 1);
    return 1;
}

}  // namespace

TEST(OutOfMemoryForAPointer, HappensBeforeTheCall) {
    if (!State::canFail()) {
        GTEST_SKIP() << "this Lua has an allocator of its own";
    }
    State state;
    state.requireModule();
    lua_pushcfunction(state, makeListWithoutMemory);
    lua_gc(state, LUA_GCCOLLECT, 0);
    fake_platform::recordCore();
    state.failFrom(1);
    EXPECT_NE(lua_pcall(state, 0, 1, 0), 0);
    EXPECT_TRUE(state.hasFailed());
    state.failFrom(0);
    EXPECT_TRUE(fake_platform::coreCalls().empty());
    fake_platform::reset();
}

TEST(ManyErrors, TakeNoMemory) {
    State state;
    state.requireModule();
    std::string const errors =
        "local m = korvo_api_action_engine\n"
        "for _ = 1, 2000 do\n"
        "    assert(not pcall(m.korvo_core_settings_set_arrayofint_value, 'key'))\n"
        "    assert(not pcall(m.korvo_core_settings_set_arrayofint_value, 'key', 5))\n"
        "    assert(not pcall(m.korvo_core_settings_set_arrayofint_value, 'key',"
        " setmetatable({1, x = 1}, {__index = error})))\n"
        "    assert(not pcall(m.korvo_core_alloc_string_array, -1))\n"
        "    assert(not pcall(m.korvo_core_alloc_int_array, -1))\n"
        "end\n"
        "collectgarbage() collectgarbage()\n";
    ASSERT_EQ(state.run(errors), "");
    std::size_t const before = state.size();
    live_blocks::Recording recording;
    for (int round = 0; round < 3; ++round) {
        live_blocks::Unnoticed const unnoticed;
        ASSERT_EQ(state.run(errors), "");
    }
    ASSERT_EQ(state.run(errors), "");
    EXPECT_EQ(recording.end().size(), 0U);
    EXPECT_LT(state.size(), before + 4096);
}

TEST(Opening, CanBeTriedAgainWhenMemoryHasRunOut) {
    if (!State::canFail()) {
        GTEST_SKIP() << "this Lua has an allocator of its own";
    }
    {
        State first;
        first.requireModule();
    }
    bool failed = true;
    for (std::size_t nth = 1; failed; nth += 7) {
        ASSERT_LT(nth, 10000U);
        State state;
        ASSERT_EQ(state.run("open = assert(package.loadlib('" KORVO_LUA_MODULE_FOLDER
                            "/korvo_api_action_engine.so', 'luaopen_korvo_api_action_engine'))"),
                  "");
        lua_getglobal(state, "open");
        state.failFrom(nth);
        int const outcome = lua_pcall(state, 0, 1, 0);
        failed = state.hasFailed();
        state.failFrom(0);
        EXPECT_EQ(outcome != 0, failed);
        EXPECT_EQ(state.run("assert(package.loadlib('" KORVO_LUA_MODULE_FOLDER
                            "/korvo_api_action_engine.so', 'luaopen_korvo_api_action_engine'))()"),
                  "")
            << nth;
    }
}
