// SPDX-License-Identifier: Apache-2.0
#include "simulator/engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support.h"

namespace simulator::tests {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A service with a snapshot action 1, a wiper action 2, and what a test adds.
class EngineTest : public testing::Test {
  protected:
    EngineTest() {
        EXPECT_EQ(bench.status(
                      R"({"command":"Create_snapshot_action","action_name":"door","filename":"door.jpg"})"),
                  0);
        EXPECT_EQ(bench.status(R"({"command":"Create_wiper_action","action_name":"wiper"})"), 0);
    }

    std::int64_t timer(unsigned int period) {
        return bench.number(R"({"command":"Create_timer_trigger","trigger_name":"every","timer_seconds":)" +
                                std::to_string(period) + "}",
                            "trigger_id");
    }

    std::int64_t onvif(std::string const &topic, std::string const &content) {
        return bench.number(R"({"command":"Create_onvif_trigger","trigger_name":"o","topic_filter":")" +
                                topic + R"(","topic_filter_dialect":"","content_filter":")" + content +
                                R"(","namespace_keys":[],"namespace_uris":[]})",
                            "trigger_id");
    }

    std::int64_t stable(std::string const &topic, std::string const &content, unsigned int time) {
        return bench.number(
            R"({"command":"Create_stable_onvif_trigger","trigger_name":"s","topic_filter":")" + topic +
                R"(","content_filter":")" + content +
                R"(","namespace_keys":[],"namespace_uris":[],"stability_seconds":)" + std::to_string(time) +
                "}",
            "trigger_id");
    }

    void bind(std::int64_t trigger_id, std::int64_t action_id) {
        EXPECT_EQ(
            bench.status(R"({"command":"Create_association","trigger_id":)" + std::to_string(trigger_id) +
                         R"(,"action_id":)" + std::to_string(action_id) + "}"),
            0);
    }

    std::int64_t inject(std::string const &topic, std::string const &message) {
        return bench.status(R"({"command":"Onvif_event","topic":")" + topic + R"(","message":")" + message +
                            R"(","namespace_keys":[],"namespace_uris":[]})");
    }

    Bench bench;
};

}  // namespace

TEST_F(EngineTest, ATimerRunsItsActionsInTheOrderOfTheirIdentifiersEachPeriod) {
    auto const trigger = timer(10);
    bind(trigger, 2);
    bind(trigger, 1);
    EXPECT_THAT(bench.run(), IsEmpty());
    bench.advance(milliseconds(9999));
    EXPECT_THAT(bench.run(), IsEmpty());
    bench.advance(milliseconds(1));
    EXPECT_THAT(bench.run(), ElementsAre(1, 2));
    EXPECT_THAT(bench.run(), IsEmpty());
    bench.advance(seconds(10));
    EXPECT_THAT(bench.run(), ElementsAre(1, 2));
}

TEST_F(EngineTest, TellsWhenTheNextTimerIsDue) {
    EXPECT_FALSE(bench.engine.nextDeadline());
    timer(60);
    timer(5);
    EXPECT_EQ(bench.engine.nextDeadline(), bench.now + seconds(5));
}

TEST_F(EngineTest, IsWokenWhenTimersChangeAndNotByReads) {
    unsigned int const before = bench.wakes;
    timer(5);
    EXPECT_EQ(bench.wakes, before + 1);
    bench.respond(
        R"({"command":"Modify_timer_trigger","trigger_id":1,"trigger_name":"n","timer_seconds":7})");
    EXPECT_EQ(bench.wakes, before + 2);
    bench.respond(R"({"command":"Get_triggers"})");
    bench.respond(R"({"command":"Get_timer_trigger","trigger_id":1})");
    EXPECT_EQ(bench.wakes, before + 2);
    bench.respond(R"({"command":"Delete_trigger","trigger_id":1})");
    EXPECT_EQ(bench.wakes, before + 3);
}

TEST_F(EngineTest, ATimerOf0SecondsNeverFires) {
    bind(timer(0), 1);
    EXPECT_FALSE(bench.engine.nextDeadline());
    bench.advance(std::chrono::hours(100));
    EXPECT_THAT(bench.run(), IsEmpty());
}

TEST_F(EngineTest, AModifiedTimerStartsAnew) {
    bind(timer(10), 1);
    bench.advance(seconds(9));
    EXPECT_EQ(
        bench.status(
            R"({"command":"Modify_timer_trigger","trigger_id":1,"trigger_name":"n","timer_seconds":10})"),
        0);
    bench.advance(seconds(9));
    EXPECT_THAT(bench.run(), IsEmpty());
    bench.advance(seconds(1));
    EXPECT_THAT(bench.run(), ElementsAre(1));
}

TEST_F(EngineTest, TimersDoNotPileUpBehindSlowActions) {
    bind(timer(1), 2);
    bind(onvif("door", ""), 1);
    for (int n = 0; n < 5; ++n) {
        inject("door", "open");
    }
    // Each turn, be it the firing of a trigger or the run of its action, takes a second.
    for (int n = 0; n < 10; ++n) {
        ASSERT_TRUE(bench.engine.step());
        bench.advance(seconds(1));
    }
    EXPECT_EQ(bench.jobs.size(), 5U);
    EXPECT_THAT(bench.run(), ElementsAre(2));
}

TEST_F(EngineTest, ADeletedTimerFiresNoMore) {
    bind(timer(10), 1);
    EXPECT_EQ(bench.status(R"({"command":"Delete_trigger","trigger_id":1})"), 0);
    bench.advance(seconds(100));
    EXPECT_THAT(bench.run(), IsEmpty());
}

TEST_F(EngineTest, ATriggerThatIsDeletedAfterItFiredRunsNothing) {
    bind(timer(10), 1);
    bench.advance(seconds(10));
    bench.engine.change([&](EngineState &state) {
        auto const firing = state.takeFiring(bench.now);
        ASSERT_TRUE(firing);
    });
    EXPECT_EQ(bench.status(R"({"command":"Delete_trigger","trigger_id":1})"), 0);
    EXPECT_THAT(bench.run(), IsEmpty());
}

TEST_F(EngineTest, AnActionThatIsDeletedBeforeItsTurnDoesNotRun) {
    auto const trigger = timer(10);
    bind(trigger, 1);
    bind(trigger, 2);
    bench.advance(seconds(10));
    // The trigger fires, then its first action runs.
    ASSERT_TRUE(bench.engine.step());
    ASSERT_TRUE(bench.engine.step());
    ASSERT_EQ(bench.jobs.size(), 1U);
    EXPECT_EQ(bench.status(R"({"command":"Delete_action","action_id":2})"), 0);
    EXPECT_THAT(bench.run(), IsEmpty());
    EXPECT_EQ(bench.events.size(), 1U);
}

TEST_F(EngineTest, TimersOfTheStoreRunAfterARestart) {
    TemporaryFolder const folder;
    {
        Bench first(folder / "store");
        first.respond(R"({"command":"Create_wiper_action","action_name":"w"})");
        first.respond(R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":3})");
        first.respond(R"({"command":"Create_association","trigger_id":1,"action_id":1})");
    }
    Bench second(folder / "store");
    EXPECT_EQ(second.engine.nextDeadline(), second.now + seconds(3));
    second.advance(seconds(3));
    EXPECT_THAT(second.run(), ElementsAre(1));
}

TEST_F(EngineTest, PublishesEachActionThatRan) {
    bind(timer(10), 1);
    bench.advance(seconds(10));
    bench.run();
    EXPECT_THAT(
        bench.events,
        ElementsAre(R"({"event":"Action_completed","action_id":1,"action_name":"door","success":true})"));
    bench.actions_succeed = false;
    bench.advance(seconds(10));
    bench.run();
    ASSERT_EQ(bench.events.size(), 2U);
    EXPECT_EQ(bench.events[1],
              R"({"event":"Action_completed","action_id":1,"action_name":"door","success":false})");
}

TEST_F(EngineTest, FiltersHoldAnActionBackAndSayNothingToSubscribers) {
    auto const trigger = timer(10);
    bind(trigger, 1);
    bind(trigger, 2);
    // Only on Sundays; it is Wednesday.
    EXPECT_EQ(
        bench.status(
            R"({"command":"Set_action_filters","action_id":1,"weekday_filters":[1],"time_filters_start":[],"time_filters_end":[]})"),
        0);
    bench.advance(seconds(10));
    EXPECT_THAT(bench.run(), ElementsAre(2));
    EXPECT_EQ(bench.events.size(), 1U);
    EXPECT_TRUE(bench.log.holds("action 1 \"door\" does not run: its filters do not allow it"));
    bench.local_time.weekday = 0;
    bench.advance(seconds(10));
    EXPECT_THAT(bench.run(), ElementsAre(1, 2));
}

TEST_F(EngineTest, AnOnvifTriggerFiresOnEventsThatItsFiltersLetThrough) {
    bind(onvif("tns1:Door//.", "State=open"), 1);
    EXPECT_EQ(inject("tns1:Door/Main", "State=open"), 0);
    EXPECT_EQ(inject("tns1:Door/Main", "State=closed"), 0);
    EXPECT_EQ(inject("tns1:Window", "State=open"), 0);
    EXPECT_THAT(bench.run(), ElementsAre(1));
    EXPECT_THAT(bench.jobs[0].cause, HasSubstr("Topic: tns1:Door/Main\nMessage: State=open\n"));
}

TEST_F(EngineTest, AStableTriggerFiresWhenItsTimeIsOver) {
    bind(stable("door", "open", 5), 1);
    EXPECT_EQ(inject("door", "open"), 0);
    EXPECT_EQ(bench.engine.nextDeadline(), bench.now + seconds(5));
    bench.advance(milliseconds(4999));
    EXPECT_THAT(bench.run(), IsEmpty());
    bench.advance(milliseconds(1));
    EXPECT_THAT(bench.run(), ElementsAre(1));
    EXPECT_THAT(bench.jobs[0].cause, HasSubstr("Message: open"));
    bench.advance(seconds(60));
    EXPECT_THAT(bench.run(), IsEmpty());
}

TEST_F(EngineTest, AContraryEventStopsTheWaitOfAStableTrigger) {
    bind(stable("door", "open", 5), 1);
    inject("door", "open");
    bench.advance(seconds(3));
    inject("door", "closed");
    bench.advance(seconds(60));
    EXPECT_THAT(bench.run(), IsEmpty());
    inject("door", "open");
    bench.advance(seconds(5));
    EXPECT_THAT(bench.run(), ElementsAre(1));
}

TEST_F(EngineTest, FurtherAndForeignEventsLeaveTheWaitOfAStableTriggerAlone) {
    bind(stable("door", "open", 5), 1);
    inject("door", "open");
    bench.advance(seconds(3));
    inject("door", "open");
    inject("window", "closed");
    bench.advance(seconds(2));
    EXPECT_THAT(bench.run(), ElementsAre(1));
}

TEST_F(EngineTest, AModifiedStableTriggerForgetsWhatItWaitedFor) {
    bind(stable("door", "open", 5), 1);
    inject("door", "open");
    EXPECT_EQ(
        bench.status(
            R"({"command":"Modify_stable_onvif_trigger","trigger_id":1,"trigger_name":"s","topic_filter":"door","content_filter":"open","namespace_keys":[],"namespace_uris":[],"stability_seconds":5})"),
        0);
    bench.advance(seconds(60));
    EXPECT_THAT(bench.run(), IsEmpty());
}

TEST_F(EngineTest, RefusesEventsWhileTooManyTriggersWait) {
    bind(onvif("door", ""), 1);
    for (int n = 0; n < 10'000; ++n) {
        ASSERT_EQ(inject("door", "open"), 0);
    }
    EXPECT_EQ(inject("door", "open"), 9);
    EXPECT_EQ(bench.run().size(), 10'000U);
    EXPECT_EQ(inject("door", "open"), 0);
}

TEST_F(EngineTest, KeepsOnlyTheBeginningOfALongMessage) {
    bind(onvif("door", "end"), 1);
    // The 4096th byte is the first of a character of two.
    std::string message(4095, 'x');
    message += "\u00fc and the end";
    EXPECT_EQ(inject("door", message), 0);
    bench.run();
    ASSERT_EQ(bench.jobs.size(), 1U);
    EXPECT_THAT(bench.jobs[0].cause, testing::EndsWith("Message: " + std::string(4095, 'x') + "\n"));
}

}  // namespace simulator::tests
