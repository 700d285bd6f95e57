// SPDX-License-Identifier: Apache-2.0
// Calls that coroutines wait for.
#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <utility>

#include "cpp_layer/support/engine_test.h"

namespace cpp_layer {
namespace {

/// A coroutine that starts at once; its frame is destroyed with this object.
class Task {
  public:
    // The language's names.
    // NOLINTBEGIN(readability-identifier-naming)
    struct promise_type {
        Task get_return_object() { return Task(std::coroutine_handle<promise_type>::from_promise(*this)); }
        std::suspend_never initial_suspend() noexcept { return {}; }
        std::suspend_always final_suspend() noexcept { return {}; }
        void return_void() {}
        void unhandled_exception() { std::terminate(); }
    };
    // NOLINTEND(readability-identifier-naming)

    Task(Task &&other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Task &operator=(Task &&) = delete;
    ~Task() {
        if (handle_) {
            handle_.destroy();
        }
    }

  private:
    explicit Task(std::coroutine_handle<promise_type> handle) : handle_(handle) {}

    std::coroutine_handle<promise_type> handle_;
};

class Coroutines : public EngineTest {};

Task listTwice(korvo::ActionEngine const &engine, std::optional<std::size_t> &count, Signal &waits,
               Signal &done) {
    Actions const first = co_await engine.get_actions_awaitable();
    waits.give();
    Actions const second = co_await engine.get_actions_awaitable();
    count = first.value().size() + second.value().size();
    done.give();
}

TEST_F(Coroutines, GoOnWithTheResult) {
    korvo::ActionEngine const engine = open();
    std::optional<std::size_t> count;
    Signal waits;
    Signal done;
    Task const task = listTwice(engine, count, waits, done);
    answer(lastRequest());
    ASSERT_TRUE(waits.wait());
    while (fake_platform::calls(Function::send_command).size() < 2) {
        std::this_thread::yield();
    }
    answer(lastRequest());
    ASSERT_TRUE(done.wait());
    settle(engine);
    EXPECT_EQ(count, 6U);
}

Task create(korvo::ActionEngine const &engine, std::optional<korvo_core_status> &status, Signal &done,
            std::shared_ptr<int> held, milliseconds timeout) {
    korvo::SnapshotAction picture;
    picture.action_name = "door";
    status = (co_await engine.create_snapshot_action_awaitable(picture, timeout)).status();
    (void)held;
    done.give();
}

TEST_F(Coroutines, GoOnAtTheTimeout) {
    korvo::ActionEngine const engine = open();
    std::optional<korvo_core_status> status;
    Signal done;
    Task const task = create(engine, status, done, nullptr, soon);
    ASSERT_TRUE(done.wait());
    settle(engine);
    EXPECT_EQ(status, KORVO_CORE_STATUS_IPC_FAILED);
}

TEST_F(Coroutines, CancelTheirCallWhenTheyAreDestroyed) {
    korvo::ActionEngine const engine = open();
    std::optional<korvo_core_status> status;
    Signal done;
    auto const held = std::make_shared<int>(1);
    { Task const task = create(engine, status, done, held, patience); }
    EXPECT_EQ(held.use_count(), 1);
    answer(lastRequest(), "create_snapshot_action");
    settle(engine);
    EXPECT_FALSE(status);
}

TEST_F(Coroutines, GoOnWhenTheEngineEnds) {
    std::optional<korvo_core_status> status;
    Signal done;
    std::optional<korvo::ActionEngine> engine = open();
    Task const task = create(*engine, status, done, nullptr, patience);
    EXPECT_EQ(done.given(), 0);
    engine.reset();
    EXPECT_EQ(done.given(), 1);
    EXPECT_EQ(status, KORVO_CORE_STATUS_IPC_FAILED);
}

Task endAnother(korvo::ActionEngine const &engine, std::optional<Task> &other, Signal &done) {
    (void)(co_await engine.get_actions_awaitable(patience));
    other.reset();
    done.give();
}

TEST_F(Coroutines, MayDestroyOthersWhenTheEngineEnds) {
    std::optional<korvo_core_status> status;
    Signal done;
    Signal other_done;
    std::optional<korvo::ActionEngine> engine = open();
    std::optional<Task> other;
    Task const first = endAnother(*engine, other, done);
    // Its call has begun later, and is ended later.
    other.emplace(create(*engine, status, other_done, nullptr, patience));
    engine.reset();
    EXPECT_EQ(done.given(), 1);
    EXPECT_EQ(other_done.given(), 0);
    EXPECT_FALSE(status);
}

TEST_F(Coroutines, GoOnWhenTheirExecutorNeverRuns) {
    std::vector<std::function<void()>> tasks;
    Signal posted;
    korvo::Options options;
    options.executor = [&](std::function<void()> task) {
        tasks.push_back(std::move(task));
        posted.give();
    };
    std::optional<korvo_core_status> status;
    Signal done;
    std::optional<korvo::ActionEngine> engine = open(options);
    Task const task = create(*engine, status, done, nullptr, patience);
    answer(lastRequest(), "create_snapshot_action");
    ASSERT_TRUE(posted.wait());
    engine.reset();
    EXPECT_EQ(done.given(), 1);
    tasks.at(0)();
    EXPECT_EQ(done.given(), 1);
}

Task askAgainAndAgain(korvo::ActionEngine const &engine, int &asked, Signal &done) {
    while (asked < 5) {
        ++asked;
        (void)(co_await engine.get_actions_awaitable(patience));
    }
    done.give();
}

TEST_F(Coroutines, AreNotHeldUpByAnEngineThatIsEnding) {
    int asked = 0;
    Signal done;
    std::optional<korvo::ActionEngine> engine = open();
    Task const task = askAgainAndAgain(*engine, asked, done);
    engine.reset();
    EXPECT_EQ(asked, 5);
    EXPECT_EQ(done.given(), 1);
}

}  // namespace
}  // namespace cpp_layer
