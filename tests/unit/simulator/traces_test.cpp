// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/string.hpp>
#include <boost/json/value.hpp>
#include <string>

#include "simulator/traces/keeper.h"
#include "support.h"
#include "time_zone.h"

namespace simulator::tests {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string json(std::string const &text) {
    return boost::json::serialize(boost::json::string(text));
}

std::string message(std::string const &value, std::string const &operation = "Changed") {
    return R"(<tt:Message PropertyOperation=")" + operation +
           R"("><tt:Data><tt:SimpleItem Name="IsInside" Value=")" + value + R"("/></tt:Data></tt:Message>)";
}

constexpr char const *names =
    R"(,"namespace_keys":["tns1","tt"],"namespace_uris":["urn:topics","http://www.onvif.org/ver10/schema"])";

/// A service with an FTP action 1, and what a test adds.
class TracesTest : public testing::Test {
  protected:
    TracesTest() {
        bench.number(
            R"({"command":"Create_ftp_action","action_name":"upload","server_name":"s","username":"u",)"
            R"("password":"secret","path":"p","filename":"f.jpg"})",
            "action_id");
    }

    void trigger(std::string const &topic, std::string const &content) {
        auto const id = bench.number(R"({"command":"Create_onvif_trigger","trigger_name":"inside",)"
                                     R"("topic_filter_dialect":"","topic_filter":)" +
                                         json(topic) + R"(,"content_filter":)" + json(content) + names + "}",
                                     "trigger_id");
        bind(id);
    }
    void bind(std::int64_t trigger_id) {
        bench.number(R"({"command":"Create_association","trigger_id":)" + std::to_string(trigger_id) +
                         R"(,"action_id":1})",
                     "status");
    }
    std::int64_t inject(std::string const &topic, std::string const &text) {
        return bench.status(R"({"command":"Onvif_event","topic":)" + json(topic) + R"(,"message":)" +
                            json(text) + names + "}");
    }
    /// The only trace since the last call.
    boost::json::object trace() {
        bench.run();
        auto const taken = bench.engine.takeTraces();
        EXPECT_EQ(taken.size(), 1U);
        return taken.empty() ? boost::json::object() : taken.back().object();
    }
    static std::string text(boost::json::value const &value) { return boost::json::serialize(value); }

    static constexpr char const *inside = R"(boolean(//tt:SimpleItem[@Name="IsInside" and @Value="true"]))";
    TimeZone zone{berlin};
    Bench bench;
};

}  // namespace

TEST_F(TracesTest, TellWhatRanWithWhichParametersAndHowItEnded) {
    trigger("tns1:Device/Trigger", inside);
    EXPECT_EQ(inject("tns1:Device/Trigger", message("true")), 0);
    auto const ran = trace();
    EXPECT_EQ(text(ran.at("id")), "1");
    EXPECT_EQ(text(ran.at("time")), R"("2026-11-23T07:59:00+01:00")");
    EXPECT_EQ(text(ran.at("outcome")), R"("ran")");
    EXPECT_EQ(text(ran.at("cause")), R"("event")");
    EXPECT_EQ(text(ran.at("topic")), R"("tns1:Device/Trigger")");
    EXPECT_EQ(ran.at("message").as_string(), message("true"));
    EXPECT_EQ(text(ran.at("triggers")), R"([{"trigger_id":1,"trigger_name":"inside","verdict":"fires"}])");
    auto const &action = ran.at("actions").as_array().at(0).as_object();
    EXPECT_EQ(text(action.at("verdict")), R"("succeeded")");
    EXPECT_EQ(text(action.at("kind")), R"("FTP action")");
    EXPECT_EQ(text(action.at("window")), R"("it has no filters")");
    EXPECT_EQ(text(action.at("words")), R"("done")");
    EXPECT_EQ(text(action.at("parameters").at("server_name")), R"("s")");
    EXPECT_TRUE(action.at("parameters").at("password").is_null());
    EXPECT_GE(action.at("milliseconds").to_number<double>(), 0);

    bench.actions_succeed = false;
    inject("tns1:Device/Trigger", message("true"));
    auto const failed = trace();
    EXPECT_EQ(text(failed.at("id")), "2");
    EXPECT_EQ(text(failed.at("outcome")), R"("failed")");
    EXPECT_EQ(text(failed.at("actions").at(0).at("words")), R"("it is broken")");
}

TEST_F(TracesTest, TellWhichPieceFailedAndTheValueThatItMet) {
    trigger("tns1:Device/Trigger", inside);
    inject("tns1:Device/Trigger", message("false"));
    auto const content = trace();
    EXPECT_EQ(text(content.at("outcome")), R"("no match")");
    EXPECT_EQ(text(content.at("triggers").at(0).at("verdict")), R"("message fails")");
    EXPECT_EQ(content.at("triggers").at(0).at("why").as_string(),
              R"("IsInside" was "false", the filter wants "true")");
    inject("tns1:Device/Other", message("true"));
    auto const topic = trace();
    EXPECT_EQ(text(topic.at("outcome")), R"("no match")");
    EXPECT_EQ(topic.at("triggers").at(0).at("why").as_string(),
              R"(topic differs at the second name: "Other", the filter wants "Trigger")");
    EXPECT_EQ(text(topic.at("actions")), "[]");
}

TEST_F(TracesTest, TellWhichWindowHeldAnActionBack) {
    trigger("", "");
    bench.number(R"({"command":"Set_action_filters","action_id":1,"weekday_filters":[2,127],)"
                 R"("time_filters_start":[28800,79200],"time_filters_end":[64800,21600]})",
                 "status");
    inject("tns1:Device", message("true"));
    auto const held_back = trace();
    EXPECT_EQ(text(held_back.at("outcome")), R"("held back")");
    auto const &action = held_back.at("actions").at(0).as_object();
    EXPECT_EQ(text(action.at("verdict")), R"("held back")");
    EXPECT_EQ(action.at("window").as_string(),
              "Wednesday 12:00:00 is not in filter 1 (on Monday, 08:00:00 to 18:00:00), filter 2 (on each "
              "day, 22:00:00 to 06:00:00 of the next)");
    EXPECT_FALSE(action.contains("parameters"));
    bench.local_time = {4, 5 * 3600};
    inject("tns1:Device", message("true"));
    EXPECT_EQ(trace().at("actions").at(0).at("window").as_string(),
              "Thursday 05:00:00 is in filter 2 (on each day, 22:00:00 to 06:00:00 of the next)");
}

TEST_F(TracesTest, TellOfWhatNeverFiresAndNeverRuns) {
    Bench lenient("", {}, {Catalogue::Nonsense::kept});
    auto const status = [&](std::string const &command) { EXPECT_EQ(lenient.status(command), 0) << command; };
    status(R"({"command":"Create_wiper_action","action_name":"w"})");
    status(
        R"({"command":"Set_action_filters","action_id":1,"weekday_filters":[128],"time_filters_start":[0],"time_filters_end":[0]})");
    for (char const *const topic : {"", "*"}) {
        status(
            std::string(
                R"({"command":"Create_onvif_trigger","trigger_name":"o","topic_filter_dialect":"","content_filter":"","topic_filter":")") +
            topic + "\"" + names + "}");
    }
    status(R"({"command":"Create_association","trigger_id":1,"action_id":1})");
    status(std::string(R"({"command":"Onvif_event","topic":"tns1:Device","message":)") +
           json(message("true")) + names + "}");
    lenient.run();
    auto const taken = lenient.engine.takeTraces();
    ASSERT_EQ(taken.size(), 1U);
    auto const told = taken.back().object();
    EXPECT_EQ(text(told.at("outcome")), R"("held back")");
    EXPECT_EQ(text(told.at("triggers").at(1).at("verdict")), R"("never fires")");
    EXPECT_THAT(std::string(told.at("triggers").at(1).at("why").as_string()),
                HasSubstr("the topic filter, column 1: "));
    EXPECT_EQ(text(told.at("actions").at(0).at("verdict")), R"("never runs")");
    EXPECT_THAT(std::string(told.at("actions").at(0).at("window").as_string()),
                HasSubstr("entry 1 of weekday_filters is 128"));
}

TEST_F(TracesTest, TellOfAsMuchAsIsBounded) {
    trigger("", "");
    std::string const names_of_many = [] {
        std::string list;
        for (int n = 0; n < 30; ++n) {
            list += (n == 0 ? "\"" : ",\"") + std::string("a@x.org\"");
        }
        return list;
    }();
    for (int n = 0; n < 60; ++n) {
        auto const id = bench.number(
            R"({"command":"Create_email_action","action_name":"m","smtp_server":"s","to_addresses":[)" +
                names_of_many +
                R"(],"cc_addresses":[],"from_address":"f@x.org","subject":"s","body":"b","attach_jpeg":false,"include_event":false})",
            "action_id");
        bench.number(
            R"({"command":"Create_association","trigger_id":1,"action_id":)" + std::to_string(id) + "}",
            "status");
    }
    inject("tns1:Device", message("true"));
    auto const told = trace();
    EXPECT_EQ(told.at("actions").as_array().size(), 50U);
    EXPECT_EQ(text(told.at("actions_left_out")), "11");
    EXPECT_EQ(told.at("actions").at(1).at("parameters").at("to_addresses").as_array().size(), 20U);
}

TEST_F(TracesTest, TellOfTimersOfUnboundTriggersAndOfRefusedEvents) {
    bench.number(R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":5})", "trigger_id");
    bench.advance(std::chrono::seconds(5));
    auto const timer = trace();
    EXPECT_EQ(text(timer.at("outcome")), R"("unbound")");
    EXPECT_EQ(text(timer.at("cause")), R"("timer")");
    EXPECT_FALSE(timer.contains("topic"));
    EXPECT_EQ(inject("tns1:Device", "no XML"), 9);
    auto const refused = trace();
    EXPECT_EQ(text(refused.at("outcome")), R"("refused")");
    EXPECT_THAT(std::string(refused.at("refusal").as_string()), HasSubstr("no XML"));
    EXPECT_EQ(text(refused.at("message")), R"("no XML")");
}

TEST_F(TracesTest, FollowAStableTrigger) {
    auto const id =
        bench.number(R"({"command":"Create_stable_onvif_trigger","trigger_name":"s","topic_filter":"",)"
                     R"("content_filter":)" +
                         json(inside) + names + R"(,"stability_seconds":10})",
                     "trigger_id");
    bind(id);
    auto const step = [&](std::string const &text_of_message) {
        inject("tns1:Device", text_of_message);
        auto const told = trace();
        return text(told.at("outcome")) + " " + text(told.at("triggers").at(0).at("verdict"));
    };
    EXPECT_EQ(step(message("false")), R"("no match" "message fails")");
    EXPECT_EQ(step(message("true")), R"("waiting" "begins to wait")");
    EXPECT_EQ(step(message("true")), R"("waiting" "goes on as before")");
    EXPECT_EQ(step(message("false")), R"("waiting" "ends its wait")");
    EXPECT_EQ(step(message("true")), R"("waiting" "begins to wait")");
    bench.advance(std::chrono::seconds(10));
    auto const fired = trace();
    EXPECT_EQ(text(fired.at("cause")), R"("stability")");
    EXPECT_EQ(text(fired.at("outcome")), R"("ran")");
    EXPECT_EQ(fired.at("message").as_string(), message("true"));
    EXPECT_EQ(step(message("true", "Deleted")), R"("waiting" "ends its wait")");
    EXPECT_EQ(step(message("true", "Deleted")), R"("no match" "property deleted")");
}

TEST_F(TracesTest, TellOfATriggerAndAnActionThatWereDeletedMeanwhile) {
    trigger("", "");
    trigger("", "");
    inject("tns1:Device", message("true"));
    bench.status(R"({"command":"Delete_trigger","trigger_id":1})");
    auto const one_gone = trace();
    EXPECT_EQ(text(one_gone.at("triggers").at(0).at("verdict")), R"("gone")");
    EXPECT_EQ(text(one_gone.at("triggers").at(1).at("verdict")), R"("fires")");
    EXPECT_EQ(one_gone.at("actions").as_array().size(), 1U);
    inject("tns1:Device", message("true"));
    ASSERT_TRUE(bench.engine.step()) << "the trigger gets its turn";
    bench.status(R"({"command":"Delete_action","action_id":1})");
    EXPECT_EQ(text(trace().at("actions")), R"([{"trigger_id":2,"action_id":1,"verdict":"gone"}])");
}

TEST_F(TracesTest, PutTriggersThatDecideBeforeThoseOfOtherTopics) {
    for (int n = 0; n < 60; ++n) {
        trigger("tns1:Other", "");
    }
    trigger("tns1:Device", inside);
    inject("tns1:Device", message("false"));
    auto const told = trace();
    auto const &triggers = told.at("triggers").as_array();
    EXPECT_EQ(triggers.size(), 50U);
    EXPECT_EQ(text(triggers.back().at("trigger_id")), "61");
    EXPECT_EQ(text(told.at("triggers_left_out")), "11");
}

TEST(TopicFilter, TellsWhereATopicDiffers) {
    onvif::Namespaces const namespaces{{"a", "b"}, {"urn:a", "urn:b"}};
    auto const why = [&](char const *filter, char const *topic) {
        return onvif::TopicFilter(filter, "", namespaces).whyNot(onvif::parseTopic(topic, namespaces));
    };
    EXPECT_EQ(why("a:X/a:Y", "a:X/a:Z"), R"(topic differs at the second name: "Z", the filter wants "Y")");
    EXPECT_EQ(why("a:Q | a:X/a:Y | a:R", "a:X/a:Z"),
              R"(topic differs at the second name: "Z", the filter wants "Y")");
    EXPECT_EQ(
        why("a:X", "b:X"),
        R"(topic differs at the first name: the namespace of "X" was "urn:b", the filter wants "urn:a")");
    EXPECT_EQ(why("a:X/Y/Z", "a:X/Y"), R"(the topic ends before the third name, the filter wants "Z")");
    EXPECT_EQ(
        why("a:X/Y", "a:X/Y/Z"),
        R"(the topic goes on with "Z", where the filter ends; with "//." behind it the filter would take it)");
    EXPECT_EQ(why("a:X//.", ""), R"(the topic ends before the first name, the filter wants "X")");
}

TEST(TraceKeeper, KeepsTheLastOfEachOutcome) {
    TraceKeeper keeper(3);
    Trace failure;
    failure.failed = 1;
    keeper.add(failure);
    for (int n = 0; n < 100; ++n) {
        keeper.add(Trace());
    }
    auto const ids = [&](std::uint64_t after) {
        std::vector<std::uint64_t> found;
        for (KeptTrace const &trace : keeper.after(after)) {
            found.push_back(trace.id());
        }
        return found;
    };
    EXPECT_THAT(ids(0), ElementsAre(1, 99, 100, 101)) << "the flood has not pushed out the failure";
    EXPECT_THAT(ids(99), ElementsAre(100, 101));
    auto const changes = keeper.takeChanges();
    EXPECT_EQ(changes.added.size(), 4U) << "what came and went is nobody's business";
    EXPECT_EQ(changes.removed.size(), 97U);
    EXPECT_FALSE(keeper.changed());
}

TEST(TraceKeeper, IsBoundedInBytesToo) {
    TraceKeeper keeper(100'000);
    Trace large;
    large.message.assign(100'000, 'x');
    for (int n = 0; n < 200; ++n) {
        keeper.add(large);
    }
    EXPECT_LE(keeper.after(0).size(), 84U);
    EXPECT_GE(keeper.after(0).size(), 80U);
    TraceKeeper none(0);
    none.add(large);
    EXPECT_TRUE(none.after(0).empty());
}

TEST(TraceStore, KeepsTracesOverARestart) {
    TemporaryFolder const folder;
    auto const inject = [](Bench &bench) {
        bench.status(R"({"command":"Onvif_event","topic":"","message":"<a/>","namespace_keys":[],)"
                     R"("namespace_uris":[]})");
    };
    std::string first;
    {
        Bench bench(folder / "store");
        inject(bench);
        auto const taken = bench.engine.takeTraces();
        ASSERT_EQ(taken.size(), 1U);
        first = boost::json::serialize(taken.front().object());
    }
    Bench bench(folder / "store");
    inject(bench);
    bench.engine.change([&](EngineState &state) {
        auto const kept = state.traces.after(0);
        ASSERT_EQ(kept.size(), 2U);
        EXPECT_EQ(boost::json::serialize(kept.front().object()), first);
        EXPECT_EQ(kept.back().id(), 2U);
        EXPECT_EQ(kept.back().outcome(), Outcome::no_match);
    });
}

}  // namespace simulator::tests
