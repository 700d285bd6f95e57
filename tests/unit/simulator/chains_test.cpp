// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <string>

#include "simulator/completion.h"
#include "support.h"

namespace simulator::tests {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// Actions that follow one another, and what begins them: event 1.
class Chains : public testing::Test {
  protected:
    std::int64_t action(std::string const &name) {
        return bench.number(R"({"command":"Create_wiper_action","action_name":")" + name + "\"}",
                            "action_id");
    }
    std::int64_t trigger(std::string const &topic, std::string const &content = "") {
        return bench.number(R"({"command":"Create_onvif_trigger","trigger_name":"t","topic_filter":")" +
                                topic + R"(","topic_filter_dialect":"","content_filter":)" +
                                boost::json::serialize(boost::json::string(content)) + namespaces,
                            "trigger_id");
    }
    /// A trigger that fires when the action has run, or has failed.
    std::int64_t after(std::int64_t action_id, char const *how = "Completed") {
        return trigger(
            std::string("tns1:ActionEngine/") + how,
            R"(boolean(//tt:SimpleItem[@Name="ActionId" and @Value=")" + std::to_string(action_id) + "\"])");
    }
    void bind(std::int64_t trigger_id, std::int64_t action_id) {
        EXPECT_EQ(
            bench.status(R"({"command":"Create_association","trigger_id":)" + std::to_string(trigger_id) +
                         R"(,"action_id":)" + std::to_string(action_id) + "}"),
            0);
    }
    void begin() {
        EXPECT_EQ(bench.status(std::string(R"({"command":"Onvif_event","topic":"tns1:Start","message":)") +
                               R"("<tt:Message/>")" + namespaces),
                  0);
    }
    boost::json::array traces() {
        boost::json::array told;
        bench.engine.change([&](EngineState &state) {
            for (KeptTrace const &trace : state.traces.after(0)) {
                told.push_back(trace.object());
            }
        });
        return told;
    }

    static constexpr char const *namespaces =
        R"(,"namespace_keys":["tns1","tt"],)"
        R"("namespace_uris":["http://www.onvif.org/ver10/topics","http://www.onvif.org/ver10/schema"]})";
    Bench bench;
};

}  // namespace

TEST_F(Chains, RunOneActionAfterTheOther) {
    auto const first = action("first");
    auto const second = action("second");
    bind(trigger("tns1:Start"), first);
    bind(after(first), second);
    begin();
    EXPECT_THAT(bench.run(), ElementsAre(first, second));
    EXPECT_THAT(bench.jobs[1].cause, HasSubstr("Topic: tns1:ActionEngine/Completed\n"));
    EXPECT_THAT(bench.jobs[1].cause, HasSubstr(R"(Name="ActionName" Value="first")"));
    auto const told = traces();
    ASSERT_EQ(told.size(), 3U);
    EXPECT_EQ(told[1].at("cause").as_string(), "completion");
    EXPECT_EQ(boost::json::serialize(told[1].at("chain")), R"(["action 1 \"first\""])");
    EXPECT_EQ(told[1].at("outcome").as_string(), "ran");
    EXPECT_FALSE(told[0].as_object().contains("chain"));
    EXPECT_EQ(told[2].at("outcome").as_string(), "no match") << "the trigger waits for another action";
    EXPECT_EQ(boost::json::serialize(told[2].at("chain")), R"(["action 1 \"first\"","action 2 \"second\""])");
}

TEST_F(Chains, TellFailuresFromSuccesses) {
    auto const first = action("first");
    auto const sorry = action("sorry");
    auto const well = action("well");
    bind(trigger("tns1:Start"), first);
    bind(after(first, "Completed"), well);
    bind(after(first, "Failed"), sorry);
    bench.actions_succeed = false;
    begin();
    EXPECT_THAT(bench.run(), ElementsAre(first, sorry));
}

TEST_F(Chains, EndAfterEightActionsAndSayHowTheyCameThere) {
    auto const only = action("again");
    bind(trigger("tns1:Start"), only);
    bind(after(only), only);
    begin();
    EXPECT_EQ(bench.run().size(), 8U);
    constexpr char const *path = "a chain ends after 8 actions: action 1 \"again\" > action 1 \"again\" > ";
    EXPECT_TRUE(bench.log.holds(std::string("4 no trigger is told of action 1: ") + path));
    auto const told = traces();
    ASSERT_EQ(told.size(), 9U);
    EXPECT_EQ(told.back().at("outcome").as_string(), "refused");
    EXPECT_THAT(std::string(told.back().at("refusal").as_string()), testing::StartsWith(path));
    EXPECT_EQ(told.back().at("chain").as_array().size(), 8U);
    begin();
    EXPECT_EQ(bench.run().size(), 8U) << "the next chain begins anew";
}

TEST_F(Chains, EndTooWhereAStableTriggerIsPartOfThem) {
    auto const only = action("again");
    bind(trigger("tns1:Start"), only);
    auto const stable = bench.number(
        std::string(R"({"command":"Create_stable_onvif_trigger","trigger_name":"s","stability_seconds":1,)") +
            R"("topic_filter":"tns1:ActionEngine/Completed","content_filter":"")" + namespaces,
        "trigger_id");
    auto const other = action("other");
    bind(stable, other);
    begin();
    EXPECT_EQ(bench.run().size(), 1U);
    bench.advance(std::chrono::seconds(1));
    EXPECT_THAT(bench.run(), ElementsAre(other));
    boost::json::array const told = traces();
    boost::json::value const &fired = told.at(told.size() - 2);
    EXPECT_EQ(fired.at("cause").as_string(), "stability");
    EXPECT_EQ(boost::json::serialize(fired.at("chain")), R"(["action 1 \"again\""])")
        << "the chain goes through the wait";
    // The trigger follows its own action, too, until the chain ends.
    std::size_t runs = 0;
    for (int n = 0; n < 20; ++n) {
        bench.advance(std::chrono::seconds(1));
        runs += bench.run().size();
    }
    EXPECT_LE(runs, 8U);
    EXPECT_FALSE(bench.engine.nextDeadline().has_value()) << "nothing waits any more";
}

TEST_F(Chains, AreNotBegunByTriggersThatTakeEveryTopic) {
    auto const only = action("every");
    bind(trigger(""), only);
    begin();
    EXPECT_THAT(bench.run(), ElementsAre(only));
    EXPECT_EQ(traces().size(), 1U);
}

TEST_F(Chains, TakeAnyName) {
    auto const odd = action(R"(a<&\"\u0001\n\u00e4>)");
    auto const next = action("next");
    bind(trigger("tns1:Start"), odd);
    bind(trigger("tns1:ActionEngine//."), next);
    begin();
    EXPECT_EQ(bench.run().size(), 8U) << "the last one follows itself until the chain ends";
    EXPECT_THAT(bench.jobs[1].cause, HasSubstr("Value=\"a&lt;&amp;&quot;\xef\xbf\xbd&#10;\xc3\xa4>\""));
}

TEST(CompletionEvents, NameTheActionInTheirSource) {
    onvif::Event const event = completionEvent(7, "door", /*success*/ false, Wall());
    EXPECT_EQ(event.topic_text, "tns1:ActionEngine/Failed");
    EXPECT_EQ(event.topic, completionTopic(false));
    EXPECT_NE(event.topic, completionTopic(true));
    EXPECT_THAT(event.message.property(), testing::AllOf(HasSubstr("ActionId"), HasSubstr("door")));
}

}  // namespace simulator::tests
