// SPDX-License-Identifier: Apache-2.0
// Asynchronous calls: where callables run, that each call ends once, and what cancelling and time-outs do.
#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>

#include "cpp_layer/support/engine_test.h"

namespace cpp_layer {
namespace {

class AsynchronousCall : public EngineTest {
  protected:
    /// Of many rounds: each recording is copied when it is looked at.
    static void forgetSome(int round) {
        if (round % 50 == 0) {
            fake_platform::script();
        }
    }
};

TEST_F(AsynchronousCall, RunsItsCallableOnAThreadOfTheEngines) {
    korvo::ActionEngine const engine = open();
    Signal done;
    std::thread::id first;
    std::thread::id second;
    korvo::PendingCall const one = engine.get_actions_async([&](Actions const &) {
        first = std::this_thread::get_id();
        done.give();
    });
    answer(lastRequest());
    korvo::PendingCall const other = engine.get_actions_async([&](Actions const &) {
        second = std::this_thread::get_id();
        done.give();
    });
    answer(lastRequest());
    ASSERT_TRUE(done.wait(2));
    EXPECT_EQ(first, second);
    EXPECT_NE(first, std::this_thread::get_id());
}

TEST_F(AsynchronousCall, EndsOnceWithAResponseThatComesTwice) {
    korvo::ActionEngine const engine = open();
    Signal done;
    korvo::PendingCall const call = engine.get_actions_async([&](Actions const &) { done.give(); });
    std::string const request = lastRequest();
    answer(request);
    answer(request);
    ASSERT_TRUE(done.wait());
    answer(request);
    settle(engine);
    EXPECT_EQ(done.given(), 1);
}

TEST_F(AsynchronousCall, EndsWithItsTimeoutAndNotAgainWithALateResponse) {
    korvo::ActionEngine const engine = open();
    Signal done;
    std::string message;
    korvo::PendingCall const call = engine.get_actions_async(
        [&](Actions const &result) {
            message = result.message();
            done.give();
        },
        soon);
    std::string const request = lastRequest();
    ASSERT_TRUE(done.wait());
    EXPECT_NE(message.find("no response within the time-out"), std::string::npos) << message;
    answer(request);
    settle(engine);
    EXPECT_EQ(done.given(), 1);
}

TEST_F(AsynchronousCall, EndsWithItsTimeoutWhenTheResponseCannotBeRead) {
    korvo::ActionEngine const engine = open();
    auto future = engine.get_actions_future(soon);
    json::Object broken;
    broken["command"] = json::String("Get_actions");
    broken["status"] = json::Number(0);
    fake_platform::deliverResponse("camera-1", lastRequest(), broken);
    Actions const result = future.get();
    EXPECT_EQ(result.status(), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_NE(result.message().find("no response"), std::string::npos) << result.message();
}

TEST_F(AsynchronousCall, TakesTheEnginesTimeoutUnlessItHasItsOwn) {
    korvo::Options options;
    options.timeout = soon;
    korvo::ActionEngine const engine = open(options);
    auto patient = engine.get_actions_future(patience);
    std::string const request = lastRequest();
    EXPECT_EQ(engine.get_triggers_future().get().status(), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(patient.wait_for(seconds(0)), std::future_status::timeout);
    answer(request);
    EXPECT_EQ(patient.get().value().size(), 3U);
}

TEST_F(AsynchronousCall, RefusesATimeoutThatIsNone) {
    korvo::ActionEngine const engine = open();
    for (milliseconds const timeout : {milliseconds(0), milliseconds(-1)}) {
        EXPECT_EQ(engine.get_actions(timeout).status(), KORVO_CORE_STATUS_INVALID_PARAMS);
        EXPECT_EQ(engine.get_actions_future(timeout).get().status(), KORVO_CORE_STATUS_INVALID_PARAMS);
        Signal done;
        korvo::PendingCall const call = engine.get_actions_async(
            [&](Actions const &result) {
                EXPECT_EQ(result.status(), KORVO_CORE_STATUS_INVALID_PARAMS);
                done.give();
            },
            timeout);
        EXPECT_TRUE(done.wait());
        korvo::Options options;
        options.timeout = timeout;
        EXPECT_EQ(korvo::ActionEngine::open(options).status(), KORVO_CORE_STATUS_INVALID_PARAMS);
    }
    EXPECT_TRUE(fake_platform::calls(Function::send_command).empty());
    // The longest that there is, is as good as any.
    auto future = engine.get_actions_future(milliseconds::max());
    answer(lastRequest());
    EXPECT_TRUE(future.get());
}

TEST_F(AsynchronousCall, ReachesNobodyOnceItIsCancelled) {
    korvo::ActionEngine const engine = open();
    auto const held = std::make_shared<int>(1);
    bool has_run = false;
    korvo::PendingCall call = engine.get_actions_async([&has_run, held](Actions const &) { has_run = true; });
    EXPECT_EQ(held.use_count(), 2);
    call.cancel();
    EXPECT_EQ(held.use_count(), 1);
    answer(lastRequest());
    call.cancel();
    settle(engine);
    EXPECT_FALSE(has_run);
}

TEST_F(AsynchronousCall, EndsWithItsToken) {
    korvo::ActionEngine const engine = open();
    bool has_run = false;
    {
        korvo::PendingCall const call = engine.get_actions_async([&](Actions const &) { has_run = true; });
    }
    answer(lastRequest());
    settle(engine);
    EXPECT_FALSE(has_run);
}

TEST_F(AsynchronousCall, GoesItsWayWhenItsTokenIsDetached) {
    korvo::ActionEngine const engine = open();
    Signal done;
    engine.get_actions_async([&](Actions const &) { done.give(); }).detach();
    answer(lastRequest());
    EXPECT_TRUE(done.wait());
}

TEST_F(AsynchronousCall, IsCancelledWhenItsTokenTakesAnother) {
    korvo::ActionEngine const engine = open();
    bool has_run = false;
    Signal done;
    korvo::PendingCall call = engine.get_actions_async([&](Actions const &) { has_run = true; });
    std::string const first = lastRequest();
    call = engine.get_actions_async([&](Actions const &) { done.give(); });
    answer(first);
    answer(lastRequest());
    EXPECT_TRUE(done.wait());
    EXPECT_FALSE(has_run);
}

TEST_F(AsynchronousCall, IsWaitedForByCancelling) {
    korvo::ActionEngine const engine = open();
    Signal entered;
    Signal leave;
    std::atomic<bool> is_over{false};
    korvo::PendingCall call = engine.get_actions_async([&](Actions const &) {
        entered.give();
        EXPECT_TRUE(leave.wait());
        is_over = true;
    });
    answer(lastRequest());
    ASSERT_TRUE(entered.wait());
    std::thread leaver([&] {
        std::this_thread::sleep_for(soon);
        leave.give();
    });
    call.cancel();
    EXPECT_TRUE(is_over);
    leaver.join();
}

TEST_F(AsynchronousCall, CancelsItselfWithoutWaiting) {
    korvo::ActionEngine const engine = open();
    Signal done;
    std::optional<korvo::PendingCall> call;
    std::mutex mutex;
    std::unique_lock<std::mutex> lock(mutex);
    call = engine.get_actions_async([&](Actions const &) {
        std::lock_guard<std::mutex> const until_it_is_there(mutex);
        call->cancel();
        done.give();
    });
    lock.unlock();
    answer(lastRequest());
    EXPECT_TRUE(done.wait());
}

TEST_F(AsynchronousCall, CancelsAnotherThatIsLinedUpBehindIt) {
    korvo::ActionEngine const engine = open();
    Signal entered;
    Signal leave;
    bool has_run = false;
    korvo::PendingCall second;
    korvo::PendingCall const first = engine.get_actions_async([&](Actions const &) {
        entered.give();
        EXPECT_TRUE(leave.wait());
        second.cancel();
    });
    answer(lastRequest());
    ASSERT_TRUE(entered.wait());
    second = engine.get_actions_async([&](Actions const &) { has_run = true; });
    answer(lastRequest());
    leave.give();
    settle(engine);
    EXPECT_FALSE(has_run);
}

TEST_F(AsynchronousCall, MayCallEverythingFromItsCallable) {
    korvo::ActionEngine const engine = open();
    Signal done;
    korvo::PendingCall const call = engine.get_actions_async([&](Actions const &) {
        fake_platform::respond(responseOf(expectation("get_actions")));
        EXPECT_TRUE(engine.get_actions());
        // Of the same operation, and waited for.
        auto future = engine.get_actions_future();
        answer(lastRequest());
        EXPECT_TRUE(future.get());
        // One that nobody answers, whose time-out comes although the callable waits for it.
        EXPECT_EQ(engine.get_actions_future(soon).get().status(), KORVO_CORE_STATUS_IPC_FAILED);
        engine.get_actions_async([&](Actions const &) { done.give(); }, soon).detach();
    });
    answer(lastRequest());
    EXPECT_TRUE(done.wait());
}

TEST_F(AsynchronousCall, LogsWhatItsCallableThrows) {
    korvo::ActionEngine const engine = open();
    korvo::PendingCall const one =
        engine.get_actions_async([](Actions const &) { throw std::runtime_error("out of paper"); });
    answer(lastRequest());
    korvo::PendingCall const other = engine.get_actions_async([](Actions const &) { throw 1; });
    answer(lastRequest());
    settle(engine);
    std::vector<std::string> lines;
    for (fake_platform::LogLine const &line : fake_platform::logLines()) {
        lines.push_back(line.text);
    }
    EXPECT_THAT(lines, ::testing::ElementsAre("get_actions: a callable threw: out of paper",
                                              "get_actions: a callable threw: what is no std::exception"));
}

// ---- Executors ----

TEST_F(AsynchronousCall, RunsWhereTheExecutorRunsIt) {
    std::vector<std::function<void()>> tasks;
    Signal posted;
    korvo::Options options;
    options.executor = [&](std::function<void()> task) {
        tasks.push_back(std::move(task));
        posted.give();
    };
    {
        korvo::ActionEngine const engine = open(options);
        std::optional<std::thread::id> thread;
        bool has_cancelled_run = false;
        korvo::PendingCall const one =
            engine.get_actions_async([&](Actions const &) { thread = std::this_thread::get_id(); });
        answer(lastRequest());
        ASSERT_TRUE(posted.wait(1));
        korvo::PendingCall cancelled =
            engine.get_actions_async([&](Actions const &) { has_cancelled_run = true; });
        answer(lastRequest());
        ASSERT_TRUE(posted.wait(2));
        cancelled.cancel();
        korvo::PendingCall late =
            engine.get_actions_async([&](Actions const &) { has_cancelled_run = true; });
        answer(lastRequest());
        ASSERT_TRUE(posted.wait(3));
        late.detach();
        tasks.at(0)();
        tasks.at(1)();
        EXPECT_EQ(thread, std::this_thread::get_id());
        EXPECT_FALSE(has_cancelled_run);
    }
    // The engine has ended; what its executor still runs does nothing.
    tasks.at(2)();
}

TEST_F(AsynchronousCall, RunsOnTheEnginesThreadWhenTheExecutorThrows) {
    korvo::Options options;
    options.executor = [](std::function<void()> const &) { throw std::runtime_error("the pool is closed"); };
    korvo::ActionEngine const engine = open(options);
    Signal done;
    korvo::PendingCall const call = engine.get_actions_async([&](Actions const &) { done.give(); });
    answer(lastRequest());
    EXPECT_TRUE(done.wait());
}

// ---- Registrations of the plain library ----

TEST_F(AsynchronousCall, LeavesNoRegistrationsBehind) {
    korvo::ActionEngine const engine = open();
    std::size_t most = 0;
    for (int n = 0; n < 3000; ++n) {
        auto future = engine.get_actions_future();
        answer(lastRequest());
        ASSERT_TRUE(future.get());
        most = std::max(most, fake_platform::openMessagingHandles());
        forgetSome(n);
    }
    // The engine's own, that of the calls, and one that is just being ended.
    EXPECT_LE(most, 4U);
    EXPECT_GE(most, 2U);
}

TEST_F(AsynchronousCall, KeepsItsSessionWhileOthersAreEnded) {
    korvo::ActionEngine const engine = open();
    auto oldest = engine.get_actions_future();
    std::string const request = lastRequest();
    void *const entry = fake_platform::calls(Function::response_receive_callback).back().object;
    for (int n = 0; n < 1200; ++n) {
        auto future = engine.get_actions_future();
        answer(lastRequest());
        ASSERT_TRUE(future.get());
        forgetSome(n);
    }
    fake_platform::deliverResponse("camera-1", request, responseOf(expectation("get_actions")), entry);
    EXPECT_EQ(oldest.get().value().size(), 3U);
}

}  // namespace
}  // namespace cpp_layer
