// SPDX-License-Identifier: Apache-2.0
#include "simulator/engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>
#include <boost/json/string.hpp>
#include <boost/json/value.hpp>
#include <string>

#include "support.h"

namespace simulator::tests {

namespace {

/// The filter that takes messages of this state, and a message of it.
std::string filterFor(std::string const &state) {
    return "boolean(//tt:SimpleItem[@Name=\"State\" and @Value=\"" + state + "\"])";
}
std::string message(std::string const &state, std::string const &source = "1",
                    std::string const &operation = "Changed") {
    return R"(<tt:Message PropertyOperation=")" + operation +
           R"("><tt:Source><tt:SimpleItem Name="Id" Value=")" + source +
           R"("/></tt:Source><tt:Data><tt:SimpleItem Name="State" Value=")" + state +
           R"("/></tt:Data></tt:Message>)";
}

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
                                topic + R"(","topic_filter_dialect":"","content_filter":)" +
                                boost::json::serialize(boost::json::string(content)) + namespaces + "}",
                            "trigger_id");
    }

    std::int64_t stable(std::string const &topic, std::string const &content, unsigned int time) {
        return bench.number(stableCommand("Create_stable_onvif_trigger", topic, content, time), "trigger_id");
    }

    static std::string stableCommand(std::string const &command, std::string const &topic,
                                     std::string const &content, unsigned int time) {
        return R"({"command":")" + command + R"(","trigger_id":1,"trigger_name":"s","topic_filter":")" +
               topic + R"(","content_filter":)" + boost::json::serialize(boost::json::string(content)) +
               namespaces + R"(,"stability_seconds":)" + std::to_string(time) + "}";
    }

    void bind(std::int64_t trigger_id, std::int64_t action_id) {
        EXPECT_EQ(
            bench.status(R"({"command":"Create_association","trigger_id":)" + std::to_string(trigger_id) +
                         R"(,"action_id":)" + std::to_string(action_id) + "}"),
            0);
    }

    std::int64_t inject(std::string const &topic, std::string const &message) {
        return bench.status(R"({"command":"Onvif_event","topic":")" + topic + R"(","message":)" +
                            boost::json::serialize(boost::json::string(message)) + namespaces + "}");
    }

    static constexpr char const *namespaces =
        R"(,"namespace_keys":["tns1","tt"],"namespace_uris":["urn:topics","http://www.onvif.org/ver10/schema"])";

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
        inject("door", message("open"));
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
    bench.engine.change([&](EngineState &state) { EXPECT_NE(state.nextFiring(bench.now, Wall()), nullptr); });
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
            R"({"command":"Set_action_filters","action_id":1,"weekday_filters":[1],"time_filters_start":[0],"time_filters_end":[86400]})"),
        0);
    bench.advance(seconds(10));
    EXPECT_THAT(bench.run(), ElementsAre(2));
    EXPECT_EQ(bench.events.size(), 1U);
    EXPECT_TRUE(bench.log.holds("action 1 \"door\" does not run: its filters do not allow it"));
    bench.local_time.weekday = 0;
    bench.advance(seconds(10));
    EXPECT_THAT(bench.run(), ElementsAre(1, 2));
}

TEST_F(EngineTest, AnOnvifTriggerFiresOnEventsThatItsFiltersTake) {
    bind(onvif("tns1:Door//.", filterFor("open")), 1);
    EXPECT_EQ(inject("tns1:Door/Main", message("open")), 0);
    EXPECT_EQ(inject("tns1:Door/Main", message("closed")), 0);
    EXPECT_EQ(inject("tns1:Window", message("open")), 0);
    EXPECT_THAT(bench.run(), ElementsAre(1));
    EXPECT_THAT(bench.jobs[0].cause, HasSubstr("Topic: tns1:Door/Main\nMessage: <tt:Message "));
}

TEST_F(EngineTest, TheLogSaysWhatBecameOfAnEvent) {
    onvif("tns1:Door//.", filterFor("open"));
    bench.log.lines.clear();
    inject("tns1:Door", message("open"));
    inject("tns1:Door/Main", message("closed"));
    inject("tns1:Window", message("open"));
    EXPECT_THAT(
        bench.log.lines,
        ElementsAre("6 event \"tns1:Door\": 1 triggers fire", "6 event \"tns1:Door/Main\": 0 triggers fire",
                    "6 trigger 1 \"o\" does not take the message: \"State\" was \"closed\", the filter "
                    "wants \"open\"",
                    "6 event \"tns1:Window\": 0 triggers fire"));
}

TEST_F(EngineTest, AStableTriggerFiresWhenItsTimeIsOver) {
    bind(stable("door", filterFor("open"), 5), 1);
    EXPECT_EQ(inject("door", message("open")), 0);
    EXPECT_EQ(bench.engine.nextDeadline(), bench.now + seconds(5));
    bench.advance(milliseconds(4999));
    EXPECT_THAT(bench.run(), IsEmpty());
    bench.advance(milliseconds(1));
    EXPECT_THAT(bench.run(), ElementsAre(1));
    EXPECT_THAT(bench.jobs[0].cause, HasSubstr("Value=\"open\""));
    bench.advance(seconds(60));
    EXPECT_THAT(bench.run(), IsEmpty());
}

TEST_F(EngineTest, AContraryEventStopsTheWaitOfAStableTrigger) {
    bind(stable("door", filterFor("open"), 5), 1);
    inject("door", message("open"));
    bench.advance(seconds(3));
    inject("door", message("closed"));
    bench.advance(seconds(60));
    EXPECT_THAT(bench.run(), IsEmpty());
    inject("door", message("open"));
    bench.advance(seconds(5));
    EXPECT_THAT(bench.run(), ElementsAre(1));
}

TEST_F(EngineTest, FurtherAndForeignEventsLeaveTheWaitOfAStableTriggerAlone) {
    bind(stable("door", filterFor("open"), 5), 1);
    inject("door", message("open"));
    bench.advance(seconds(3));
    inject("door", message("open"));
    inject("window", message("closed"));
    bench.advance(seconds(2));
    EXPECT_THAT(bench.run(), ElementsAre(1));
}

TEST_F(EngineTest, AStableTriggerFiresOnceUntilAFailingStateArmsItAgain) {
    bind(stable("door", filterFor("open"), 5), 1);
    inject("door", message("open"));
    bench.advance(seconds(5));
    EXPECT_THAT(bench.run(), ElementsAre(1));
    inject("door", message("open"));
    bench.advance(seconds(60));
    EXPECT_THAT(bench.run(), IsEmpty());
    inject("door", message("closed"));
    inject("door", message("open"));
    bench.advance(seconds(5));
    EXPECT_THAT(bench.run(), ElementsAre(1));
}

TEST_F(EngineTest, AStableTriggerFollowsEachPropertyByItself) {
    bind(stable("door//.", filterFor("open"), 5), 1);
    inject("door", message("open", "1"));
    bench.advance(seconds(2));
    inject("door", message("open", "2"));
    inject("door/back", message("open", "1"));
    // Only the first property's wait ends.
    inject("door", message("closed", "1"));
    bench.advance(milliseconds(4999));
    EXPECT_THAT(bench.run(), IsEmpty());
    bench.advance(milliseconds(1));
    EXPECT_THAT(bench.run(), ElementsAre(1, 1));
}

TEST_F(EngineTest, APropertyThatIsNoMoreEndsTheWaitOfAStableTrigger) {
    bind(stable("door", filterFor("open"), 5), 1);
    inject("door", message("open", "1", "Initialized"));
    bench.advance(seconds(3));
    inject("door", message("open", "1", "Deleted"));
    bench.advance(seconds(60));
    EXPECT_THAT(bench.run(), IsEmpty());
    inject("door", message("open", "1", "Initialized"));
    bench.advance(seconds(5));
    EXPECT_THAT(bench.run(), ElementsAre(1));
}

TEST_F(EngineTest, AStableTriggerOfNoTimeFiresAtOnceAndOnce) {
    bind(stable("door", "", 0), 1);
    inject("door", message("open"));
    EXPECT_THAT(bench.run(), ElementsAre(1));
    inject("door", message("open"));
    EXPECT_THAT(bench.run(), IsEmpty());
}

TEST_F(EngineTest, FollowsABoundedNumberOfPropertiesAndRefusesFurtherOnes) {
    bind(stable("door", filterFor("open"), 5), 1);
    for (int n = 0; n < 10'000; ++n) {
        ASSERT_EQ(inject("door", message("open", std::to_string(n))), 0);
    }
    EXPECT_EQ(inject("door", message("open", "more")), 9);
    EXPECT_TRUE(bench.log.holds("stable triggers follow 10000 properties already"));
    // Those that are followed may go on, and one that ends makes room.
    EXPECT_EQ(inject("door", message("open", "7")), 0);
    EXPECT_EQ(inject("door", message("closed", "7")), 0);
    EXPECT_EQ(inject("door", message("open", "more")), 0);
    bench.respond(R"({"command":"Delete_trigger","trigger_id":1})");
    EXPECT_FALSE(bench.engine.nextDeadline());
    bind(stable("door", filterFor("open"), 5), 1);
    EXPECT_EQ(inject("door", message("open", "again")), 0);
}

TEST_F(EngineTest, RefusesToFollowAPropertyWithALongName) {
    stable("door", filterFor("open"), 5);
    EXPECT_EQ(inject("door", message("open", std::string(900, 'x'))), 0);
    EXPECT_EQ(inject("door", message("open", std::string(1024, 'x'))), 9);
    EXPECT_EQ(inject("door", message("closed", std::string(1024, 'x'))), 0);
    EXPECT_EQ(inject("other", message("open", std::string(1024, 'x'))), 0);
}

TEST_F(EngineTest, AModifiedStableTriggerForgetsWhatItWaitedFor) {
    bind(stable("door", filterFor("open"), 5), 1);
    inject("door", message("open"));
    EXPECT_EQ(bench.status(stableCommand("Modify_stable_onvif_trigger", "door", filterFor("open"), 5)), 0);
    bench.advance(seconds(60));
    EXPECT_THAT(bench.run(), IsEmpty());
}

TEST_F(EngineTest, RefusesEventsWhileTooManyTriggersWait) {
    bind(onvif("door", ""), 1);
    for (int n = 0; n < 10'000; ++n) {
        ASSERT_EQ(inject("door", message("open")), 0);
    }
    EXPECT_EQ(inject("door", message("open")), 9);
    EXPECT_EQ(bench.run().size(), 10'000U);
    EXPECT_EQ(inject("door", message("open")), 0);
}

TEST_F(EngineTest, KeepsOnlyTheBeginningOfALongMessage) {
    bind(onvif("door", ""), 1);
    // The 4096th byte is the first of a character of two.
    std::string const kept = "<m>" + std::string(4092, 'x');
    EXPECT_EQ(inject("door", kept + "\u00fc and the end</m>"), 0);
    bench.run();
    ASSERT_EQ(bench.jobs.size(), 1U);
    EXPECT_THAT(bench.jobs[0].cause, testing::EndsWith("Message: " + kept + "\n"));
}

}  // namespace simulator::tests
