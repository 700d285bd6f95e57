// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_CPP_LAYER_ENGINE_TEST_H
#define KORVO_TESTS_CPP_LAYER_ENGINE_TEST_H

// What the tests of the C++ layer on the scripted fake platform share.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <korvo/action_engine.hpp>
#include <mutex>
#include <string>
#include <utility>

#include "contract/expectations.h"
#include "fake_platform/fake_platform.h"

namespace cpp_layer {

using fake_platform::Function;
using std::chrono::milliseconds;
using std::chrono::seconds;

using Actions = korvo::Result<std::vector<korvo::ActionEntry>>;

/// Far longer than anything takes here.
constexpr seconds patience{60};
/// For what is to be over at once, and for time-outs that nobody waits for.
constexpr milliseconds soon{20};

/// Something that happens, and that other threads wait for.
class Signal {
  public:
    void give() {
        std::lock_guard<std::mutex> const lock(mutex_);
        ++given_;
        changed_.notify_all();
    }
    bool wait(int times = 1) {
        std::unique_lock<std::mutex> lock(mutex_);
        return changed_.wait_for(lock, patience, [&] { return given_ >= times; });
    }
    int given() {
        std::lock_guard<std::mutex> const lock(mutex_);
        return given_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int given_ = 0;
};

/// The fake platform in scripted mode, and nothing of it left open at the end.
class EngineTest : public ::testing::Test {
  protected:
    void SetUp() override { fake_platform::script(); }
    void TearDown() override {
        EXPECT_EQ(fake_platform::openMessagingHandles(), 0U);
        fake_platform::reset();
    }

    static korvo::ActionEngine open(korvo::Options options = {}) {
        options.name = "test";
        options.target = "camera-1";
        return korvo::ActionEngine::open(std::move(options)).value();
    }

    /// The identifier of the command sent last.
    static std::string lastRequest() {
        return fake_platform::calls(Function::send_command).back().request_id.value();
    }

    static void answer(std::string const &request, std::string const &operation = "get_actions") {
        fake_platform::deliverResponse("camera-1", request, responseOf(expectation(operation)));
    }

    /// A command after which whatever was lined up before has run: callables run one after the other.
    static void settle(korvo::ActionEngine const &engine) {
        Signal done;
        korvo::PendingCall const last =
            engine.delete_action_async(korvo::ActionId{1}, [&](korvo::Result<void> const &) { done.give(); });
        answer(lastRequest(), "delete_action");
        ASSERT_TRUE(done.wait());
    }
};

}  // namespace cpp_layer

#endif
