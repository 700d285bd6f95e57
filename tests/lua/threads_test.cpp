// SPDX-License-Identifier: Apache-2.0
// States on threads of their own.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include "fake_platform/core_calls.h"
#include "host/state.h"

namespace {

constexpr int thread_count = 4;

/// Runs code on several threads that begin together.
template <typename Code>
void together(Code const &code) {
    std::atomic<int> waiting{thread_count};
    std::vector<std::thread> threads;
    for (int number = 0; number < thread_count; ++number) {
        threads.emplace_back([&, number] {
            --waiting;
            while (waiting > 0) {
                std::this_thread::yield();
            }
            code(number);
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

}  // namespace

TEST(Threads, OpenTheModuleAtTheSameTime) {
    std::atomic<int> opened{0};
    together([&](int) {
        for (int round = 0; round < 5; ++round) {
            State state;
            state.requireModule();
            opened += state.run("assert(swig_type(1) == 'number')").empty() ? 1 : 0;
        }
    });
    EXPECT_EQ(opened, thread_count * 5);
}

// A host may print, or read, for as long as it likes.
TEST(Threads, OpenTheModuleWhileAnotherOneHoldsTheStandardStreams) {
    State state;
    state.requireModule();
    for (FILE *const stream : {stdin, stdout, stderr}) {
        flockfile(stream);
    }
    std::string error = "not run";
    std::thread([&] {
        error = state.run(
            "package.loaded.korvo_api_action_engine = nil\n"
            "assert(require 'korvo_api_action_engine')");
    }).join();
    for (FILE *const stream : {stdin, stdout, stderr}) {
        funlockfile(stream);
    }
    EXPECT_EQ(error, "");
}

TEST(Threads, CallFunctionsOnStatesOfTheirOwn) {
    fake_platform::recordCore();
    fake_platform::answer("korvo_core_settings_get_arrayofint_value",
                          {0.0, {fake_platform::Value::List{1.0, 2.0}, 2.0}});
    std::atomic<int> succeeded{0};
    together([&](int number) {
        State state;
        state.requireModule();
        std::string const error = state.run(
            "local module = korvo_api_action_engine\n"
            "for round = 1, 200 do\n"
            "    local status, list, count = module.korvo_core_settings_get_arrayofint_value('" +
            std::to_string(number) +
            "')\n"
            "    assert(status == 0 and #list == 2 and count == 2)\n"
            "    assert(module.korvo_core_settings_set_arrayofstring_value('key', {'a', 'b'}) == 0)\n"
            "    assert(not pcall(module.korvo_core_settings_set_arrayofstring_value, 'key', 5))\n"
            "end");
        EXPECT_EQ(error, "");
        succeeded += error.empty() ? 1 : 0;
    });
    EXPECT_EQ(succeeded, thread_count);
    fake_platform::reset();
}
