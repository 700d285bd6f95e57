// SPDX-License-Identifier: Apache-2.0
#include "messaging/callback_fence.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

#include "base/logging.h"
#include "base/mutex.h"

using platform::CallbackFence;
using platform::Hold;

namespace {

/// A thread with a callback that runs until it is let go.
class Running {
  public:
    Running(CallbackFence &fence, platform::Mutex &mutex, void const *context)
        : thread_([this, &fence, &mutex, context] {
              Hold hold(mutex, log_);
              fence.run(hold, mutex, context, [this] {
                  entered_.set_value();
                  let_go_.get_future().wait();
                  is_over_ = true;
              });
          }) {
        entered_.get_future().wait();
    }
    ~Running() {
        if (thread_.joinable()) {
            letGo();
            thread_.join();
        }
    }
    Running(Running const &) = delete;
    Running &operator=(Running const &) = delete;

    void letGo() { let_go_.set_value(); }
    void join() { thread_.join(); }
    bool isOver() const { return is_over_; }

  private:
    platform::Log const log_{nullptr};
    std::promise<void> entered_;
    std::promise<void> let_go_;
    std::atomic<bool> is_over_{false};
    std::thread thread_;
};

}  // namespace

TEST(CallbackFenceTest, WaitsForNothingWhileNothingRuns) {
    platform::Log const log(nullptr);
    platform::Mutex mutex;
    CallbackFence fence;
    Hold hold(mutex, log);
    EXPECT_FALSE(fence.isRunning());
    fence.wait(hold, nullptr);
    fence.wait(hold, &fence);
}

TEST(CallbackFenceTest, LeavesTheMutexToOthersDuringTheCallback) {
    platform::Log const log(nullptr);
    platform::Mutex mutex;
    CallbackFence fence;
    int context = 0;
    Running const callback(fence, mutex, &context);
    Hold hold(mutex, log);
    EXPECT_TRUE(fence.isRunning());
    EXPECT_FALSE(callback.isOver());
}

TEST(CallbackFenceTest, WaitsForTheCallbackOfTheContextAndForAnyWithoutOne) {
    platform::Log const log(nullptr);
    int context = 0;
    for (void const *const awaited :
         {static_cast<void const *>(&context), static_cast<void const *>(nullptr)}) {
        platform::Mutex mutex;
        CallbackFence fence;
        Running callback(fence, mutex, &context);
        std::promise<void> is_waiting;
        std::thread waiting([&] {
            Hold hold(mutex, log);
            is_waiting.set_value();
            fence.wait(hold, awaited);
            EXPECT_TRUE(callback.isOver());
            EXPECT_FALSE(fence.isRunning());
        });
        is_waiting.get_future().wait();
        callback.letGo();
        waiting.join();
        callback.join();
    }
}

TEST(CallbackFenceTest, DoesNotWaitForTheCallbackOfAnotherContext) {
    platform::Log const log(nullptr);
    platform::Mutex mutex;
    CallbackFence fence;
    int context = 0;
    int other = 0;
    Running const callback(fence, mutex, &context);
    Hold hold(mutex, log);
    fence.wait(hold, &other);
    EXPECT_TRUE(fence.isRunning());
    EXPECT_FALSE(callback.isOver());
}
