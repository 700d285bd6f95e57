// SPDX-License-Identifier: Apache-2.0
// The end of an engine, in every state that it may be in.
#include <memory>
#include <optional>
#include <thread>

#include "cpp_layer/support/engine_test.h"

namespace cpp_layer {
namespace {

class EndingAnEngine : public EngineTest {};

TEST_F(EndingAnEngine, FulfilsFuturesWithAFailure) {
    std::future<Actions> future;
    {
        korvo::ActionEngine const engine = open();
        future = engine.get_actions_future(patience);
    }
    Actions const result = future.get();
    EXPECT_EQ(result.status(), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_NE(result.message().find("the engine has ended"), std::string::npos) << result.message();
}

TEST_F(EndingAnEngine, DestroysCallablesWithoutACall) {
    auto const held = std::make_shared<int>(1);
    bool has_run = false;
    korvo::PendingCall call;
    {
        korvo::ActionEngine const engine = open();
        call = engine.get_actions_async([held, &has_run](Actions const &) { has_run = true; });
        engine.get_actions_async([held, &has_run](Actions const &) { has_run = true; }).detach();
    }
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_FALSE(has_run);
    call.cancel();
}

TEST_F(EndingAnEngine, ForgetsWhatIsLinedUp) {
    Signal entered;
    bool has_run = false;
    korvo::Subscription subscription;
    {
        korvo::ActionEngine const engine = open();
        engine
            .get_actions_async([&](Actions const &) {
                // Runs until the engine ends.
                auto future = engine.get_actions_future(patience);
                entered.give();
                EXPECT_FALSE(future.get());
            })
            .detach();
        answer(lastRequest());
        ASSERT_TRUE(entered.wait());
        for (int n = 0; n < 100; ++n) {
            engine.get_actions_async([&](Actions const &) { has_run = true; }).detach();
            answer(lastRequest());
        }
        subscription = engine.on_action_completed([&](auto const &) { has_run = true; }).value();
    }
    EXPECT_FALSE(has_run);
    subscription.cancel();
}

TEST_F(EndingAnEngine, WaitsForTheCallableThatRuns) {
    bool is_over = false;
    {
        Signal entered;
        korvo::ActionEngine const engine = open();
        engine
            .get_actions_async([&](Actions const &) {
                entered.give();
                std::this_thread::sleep_for(soon);
                is_over = true;
            })
            .detach();
        answer(lastRequest());
        ASSERT_TRUE(entered.wait());
    }
    EXPECT_TRUE(is_over);
}

TEST_F(EndingAnEngine, ReleasesACallableThatWaitsForAFuture) {
    Signal entered;
    std::optional<korvo_core_status> status;
    {
        korvo::ActionEngine const engine = open();
        engine
            .get_actions_async([&](Actions const &) {
                auto future = engine.get_actions_future(patience);
                entered.give();
                status = future.get().status();
            })
            .detach();
        answer(lastRequest());
        ASSERT_TRUE(entered.wait());
    }
    EXPECT_EQ(status, KORVO_CORE_STATUS_IPC_FAILED);
}

TEST_F(EndingAnEngine, WorksInsideItsOwnCallable) {
    Signal done;
    auto engine = std::make_unique<korvo::ActionEngine>(open());
    engine
        ->get_actions_async([&](Actions const &) {
            engine.reset();
            done.give();
        })
        .detach();
    answer(lastRequest());
    ASSERT_TRUE(done.wait());
    EXPECT_EQ(fake_platform::openMessagingHandles(), 0U);
}

TEST_F(EndingAnEngine, WorksInsideACallableOfAnExecutor) {
    Signal done;
    std::thread pool;
    korvo::Options options;
    options.executor = [&](std::function<void()> task) { pool = std::thread(std::move(task)); };
    auto engine = std::make_unique<korvo::ActionEngine>(open(options));
    engine
        ->get_actions_async([&](Actions const &) {
            engine.reset();
            done.give();
        })
        .detach();
    answer(lastRequest());
    ASSERT_TRUE(done.wait());
    pool.join();
}

TEST_F(EndingAnEngine, TakesNoLongerThanAMoment) {
    korvo::ActionEngine engine = open();
    std::vector<std::future<Actions>> futures;
    for (int n = 0; n < 2000; ++n) {
        futures.push_back(engine.get_actions_future(patience));
    }
    auto const subscription = engine.on_action_completed([](auto const &) {});
    auto const begin = std::chrono::steady_clock::now();
    { korvo::ActionEngine const ended = std::move(engine); }
    // Far more than the 0.1 s that it may take, for the busiest of machines; a call waits for a minute.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, seconds(10));
    for (auto &future : futures) {
        EXPECT_EQ(future.get().status(), KORVO_CORE_STATUS_IPC_FAILED);
    }
}

TEST_F(EndingAnEngine, ByMovingLeavesOneThatRefusesCalls) {
    korvo::ActionEngine engine = open();
    korvo::ActionEngine const moved = std::move(engine);
    // NOLINTBEGIN(bugprone-use-after-move): that is what is tested.
    EXPECT_EQ(engine.get_actions().status(), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_THROW((void)engine.get_actions_future(), korvo::Error);
    EXPECT_THROW((void)engine.get_actions_async([](Actions const &) {}), korvo::Error);
    EXPECT_FALSE(engine.on_action_completed([](auto const &) {}));
    // NOLINTEND(bugprone-use-after-move)
    auto future = moved.get_actions_future();
    answer(lastRequest());
    EXPECT_TRUE(future.get());
}

TEST_F(EndingAnEngine, HappensWhenAnotherTakesItsPlace) {
    korvo::ActionEngine engine = open();
    auto future = engine.get_actions_future(patience);
    engine = open();
    EXPECT_FALSE(future.get());
    EXPECT_EQ(fake_platform::openMessagingHandles(), 1U);
}

TEST_F(EndingAnEngine, ClosesTheLogThatItHasOpened) {
    int own = 0;
    korvo::Options options;
    options.logging = &own;
    { korvo::ActionEngine const engine = open(options); }
    EXPECT_EQ(fake_platform::calls(Function::initiator_init).back().logging, &own);
}

TEST_F(EndingAnEngine, IsNotNeededWhenItCouldNotBeOpened) {
    fake_platform::arrange(Function::initiator_init, KORVO_CORE_STATUS_IPC_FAILED);
    auto const opened = korvo::ActionEngine::open();
    EXPECT_EQ(opened.status(), KORVO_CORE_STATUS_ALLOC_FAILED);
    EXPECT_EQ(opened.message().find("open: status 2"), 0U) << opened.message();
    EXPECT_THROW((void)korvo::ActionEngine::open().value(), korvo::Error);
}

}  // namespace
}  // namespace cpp_layer
