// SPDX-License-Identifier: Apache-2.0
// Two modules of this project in one state: the library, and a copy of it under another path.

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "fake_platform/core_calls.h"
#include "host/libraries.h"
#include "host/state.h"
#include "lua/typed_pointer.h"

namespace {

class TwoModules : public testing::Test {
  protected:
    void SetUp() override {
        fake_platform::recordCore();
        openHostLibrary(state_);
        ASSERT_EQ(state_.run("first = require 'korvo_api_action_engine'\n"
                             "open = assert(package.loadlib('" KORVO_LUA_SECOND_MODULE
                             "', 'luaopen_korvo_api_action_engine'))\n"
                             "second = open()"),
                  "");
    }
    void TearDown() override { fake_platform::reset(); }

    /// Modules in the ring, and the records that they have.
    std::multiset<std::size_t> modules() {
        lua_getfield(state_, LUA_REGISTRYINDEX, korvo::lua::pointer_types_key);
        auto *const ring = static_cast<korvo::lua::PointerTypes *>(lua_touserdata(state_, -1));
        lua_pop(state_, 1);
        std::multiset<std::size_t> counts;
        korvo::lua::PointerTypes *module = ring;
        do {
            counts.insert(module->count);
            module = module->next;
        } while (module != ring && counts.size() < 10);
        return counts;
    }

    State state_;
};

}  // namespace

TEST_F(TwoModules, AreTwo) {
    EXPECT_EQ(state_.run("assert(first ~= second and first.korvo_core_init ~= second.korvo_core_init)"), "");
    EXPECT_EQ(modules(), (std::multiset<std::size_t>{36, 36}));
}

TEST_F(TwoModules, JoinOnceHoweverOftenTheyAreOpened) {
    EXPECT_EQ(state_.run("for _ = 1, 5 do\n"
                         "    open()\n"
                         "    package.loaded.korvo_api_action_engine = nil\n"
                         "    require 'korvo_api_action_engine'\n"
                         "end"),
              "");
    EXPECT_EQ(modules(), (std::multiset<std::size_t>{36, 36}));
    State other;
    EXPECT_EQ(other.run("assert(package.loadlib('" KORVO_LUA_SECOND_MODULE
                        "', 'luaopen_korvo_api_action_engine'))()\n"
                        "require 'korvo_api_action_engine'"),
              "");
    EXPECT_EQ(modules(), (std::multiset<std::size_t>{36, 36}));
}

TEST_F(TwoModules, TakeEachOthersPointers) {
    EXPECT_EQ(
        state_.run("for _, modules in ipairs {{first, second}, {second, first}} do\n"
                   "    local list = modules[1].korvo_core_alloc_int_array(2)\n"
                   "    assert(swig_type(list) == 'int **')\n"
                   "    assert(modules[2].korvo_core_ipc_deinit(list) == 0)\n"
                   "    local succeeded, message = pcall(modules[2].korvo_core_free_string_array, list)\n"
                   "    assert(not succeeded and message:find(\"got 'int **'\", 1, true), message)\n"
                   "    modules[2].korvo_core_free_string_array(host.typed('_p_p_char', host.new(8)))\n"
                   "end"),
        "");
    // Closed with the C pointer, not with the userdata.
    for (auto const &call : fake_platform::coreCalls()) {
        if (call.function == "korvo_core_ipc_deinit") {
            auto *const list = const_cast<void *>(call.arguments.at(0).pointer);
            korvo_core_free_int_array(static_cast<int **>(list));
        }
    }
}

TEST_F(TwoModules, OutliveAStateThatIsClosed) {
    {
        State closed;
        EXPECT_EQ(closed.run("assert(package.loadlib('" KORVO_LUA_SECOND_MODULE
                             "', 'luaopen_korvo_api_action_engine'))()"),
                  "");
    }
    EXPECT_EQ(state_.run("assert(swig_type(host.typed('_p_p_int', host.pointer(1))) == 'int **')\n"
                         "assert(second.kSaturday == 64)"),
              "");
}
