// SPDX-License-Identifier: Apache-2.0
// Subscriptions to Action_completed.
#include <gmock/gmock.h>

#include <optional>
#include <thread>

#include "cpp_layer/support/engine_test.h"

namespace cpp_layer {
namespace {

class Subscriptions : public EngineTest {
  protected:
    static void publish(unsigned int action_id, char const *name = "door", bool success = true) {
        json::Object event;
        event["event"] = json::String("Action_completed");
        event["action_id"] = json::Number(action_id);
        event["action_name"] = json::String(name);
        event["success"] = json::Boolean(success);
        fake_platform::deliverEvent("camera-1/service", event);
    }
};

TEST_F(Subscriptions, GetEachEventOnAThreadOfTheEngines) {
    korvo::ActionEngine const engine = open();
    Signal done;
    std::optional<korvo::ActionCompleted> seen;
    std::thread::id thread;
    korvo::Subscription const subscription =
        engine
            .on_action_completed([&](korvo::ActionCompleted const &event) {
                seen = event;
                thread = std::this_thread::get_id();
                done.give();
            })
            .value();
    publish(7, "door", false);
    ASSERT_TRUE(done.wait());
    EXPECT_EQ(seen->action_id, korvo::ActionId{7});
    EXPECT_EQ(seen->action_name, "door");
    EXPECT_FALSE(seen->success);
    EXPECT_EQ(seen->source, "camera-1/service");
    EXPECT_NE(thread, std::this_thread::get_id());
    publish(8);
    ASSERT_TRUE(done.wait(2));
    EXPECT_TRUE(seen->success);
}

TEST_F(Subscriptions, ShareOneHandleAndEndAlone) {
    korvo::ActionEngine const engine = open();
    Signal first;
    Signal second;
    korvo::Subscription const kept = engine.on_action_completed([&](auto const &) { first.give(); }).value();
    {
        korvo::Subscription const ended =
            engine.on_action_completed([&](auto const &) { second.give(); }).value();
        EXPECT_EQ(fake_platform::openMessagingHandles(), 2U);
        publish(1);
        ASSERT_TRUE(first.wait(1));
        ASSERT_TRUE(second.wait(1));
    }
    publish(2);
    ASSERT_TRUE(first.wait(2));
    EXPECT_EQ(second.given(), 1);
}

TEST_F(Subscriptions, EndInsideTheirOwnCallable) {
    korvo::ActionEngine const engine = open();
    Signal done;
    std::optional<korvo::Subscription> subscription;
    auto const held = std::make_shared<int>(1);
    subscription = engine
                       .on_action_completed([&, held](auto const &) {
                           subscription.reset();
                           done.give();
                       })
                       .value();
    publish(1);
    ASSERT_TRUE(done.wait());
    publish(2);
    settle(engine);
    EXPECT_EQ(done.given(), 1);
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(Subscriptions, AreWaitedForAtTheirEnd) {
    korvo::ActionEngine const engine = open();
    Signal entered;
    bool is_over = false;
    korvo::Subscription subscription = engine
                                           .on_action_completed([&](auto const &) {
                                               entered.give();
                                               std::this_thread::sleep_for(soon);
                                               is_over = true;
                                           })
                                           .value();
    publish(1);
    ASSERT_TRUE(entered.wait());
    subscription.cancel();
    EXPECT_TRUE(is_over);
}

TEST_F(Subscriptions, MayCallTheEngine) {
    korvo::ActionEngine const engine = open();
    Signal done;
    korvo::Subscription const subscription =
        engine
            .on_action_completed([&](auto const &) {
                fake_platform::respond(responseOf(expectation("get_actions")));
                EXPECT_TRUE(engine.get_actions());
                EXPECT_TRUE(engine.on_action_completed([](auto const &) {}));
                done.give();
            })
            .value();
    publish(1);
    EXPECT_TRUE(done.wait());
}

TEST_F(Subscriptions, AreRefusedWithTheStatusOfThePlainFunction) {
    korvo::ActionEngine const engine = open();
    fake_platform::arrange(Function::event_subscribe, KORVO_CORE_STATUS_IPC_FAILED);
    auto const refused = engine.on_action_completed([](auto const &) {});
    EXPECT_EQ(refused.status(), KORVO_CORE_STATUS_ALLOC_FAILED);
    EXPECT_EQ(refused.message().find("on_action_completed: status 2"), 0U) << refused.message();
}

TEST_F(Subscriptions, DropWhatIsTooMuchForASlowCallableAndSaySo) {
    korvo::ActionEngine const engine = open();
    Signal entered;
    Signal leave;
    int seen = 0;
    korvo::Subscription const subscription = engine
                                                 .on_action_completed([&](auto const &) {
                                                     entered.give();
                                                     EXPECT_TRUE(leave.wait());
                                                     ++seen;
                                                 })
                                                 .value();
    publish(1);
    ASSERT_TRUE(entered.wait());
    for (unsigned int n = 0; n < 5000; ++n) {
        publish(n);
    }
    leave.give();
    settle(engine);
    EXPECT_EQ(seen, 1 + 4096);
    unsigned int lines = 0;
    for (fake_platform::LogLine const &line : fake_platform::logLines()) {
        lines += line.text.find("events are dropped") != std::string::npos ? 1U : 0U;
    }
    EXPECT_EQ(lines, 1U);
}

}  // namespace
}  // namespace cpp_layer
