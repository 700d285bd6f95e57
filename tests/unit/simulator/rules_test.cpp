// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "simulator/catalogue_document.h"
#include "simulator/refused.h"
#include "support.h"

namespace simulator::tests {

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr char const *wiper = R"({"command":"Create_wiper_action","action_name":"w"})";
constexpr char const *washer = R"({"command":"Create_washer_action","action_name":"w"})";
constexpr char const *timer =
    R"({"command":"Create_timer_trigger","trigger_name":"every second","timer_seconds":1})";
constexpr char const *bound = R"({"command":"Create_association","trigger_id":1,"action_id":1})";

Catalogue::Rules withBounds() {
    Catalogue::Rules rules;
    rules.actions.most = 3;
    rules.actions.most_of_type[protocol::run_wiper] = 1;
    rules.triggers.most = 0;
    return rules;
}

/// The orders of three actions that a trigger runs six times.
std::vector<std::vector<std::uint32_t>> ordersOf(std::uint32_t seed) {
    Bench bench("", {}, {}, {TraceKeeper::default_most, seed});
    bench.number(timer, "trigger_id");
    for (int id = 1; id <= 3; ++id) {
        bench.number(wiper, "action_id");
        EXPECT_EQ(bench.status(R"({"command":"Create_association","trigger_id":1,"action_id":)" +
                               std::to_string(id) + "}"),
                  0);
    }
    std::vector<std::vector<std::uint32_t>> orders;
    for (int n = 0; n < 6; ++n) {
        bench.advance(std::chrono::seconds(1));
        orders.push_back(bench.run());
    }
    return orders;
}

}  // namespace

TEST(Rules, BoundHowMuchThereIsOfAllAndOfOneKind) {
    Bench bench("", {}, withBounds());
    EXPECT_EQ(bench.status(wiper), 0);
    EXPECT_EQ(bench.status(wiper), 9);
    EXPECT_TRUE(
        bench.log.holds("there are 1 of kind \"wiper_action\" already, and 1 is the most; delete some"));
    EXPECT_EQ(bench.status(washer), 0);
    EXPECT_EQ(bench.status(washer), 0);
    EXPECT_EQ(bench.status(washer), 9);
    EXPECT_TRUE(bench.log.holds("there are 3 actions already, and 3 is the most; delete some first"));
    EXPECT_EQ(bench.status(timer), 9);
    EXPECT_EQ(bench.status(R"({"command":"Delete_action","action_id":1})"), 0);
    EXPECT_EQ(bench.status(wiper), 0);
}

TEST(Rules, LeaveWhatAStoreAlreadyHolds) {
    TemporaryFolder const folder;
    {
        Bench before(folder.path() + "/s.db");
        before.number(wiper, "action_id");
        before.number(wiper, "action_id");
        before.number(timer, "trigger_id");
    }
    Bench bench(folder.path() + "/s.db", {}, withBounds());
    EXPECT_EQ(bench.number(R"({"command":"Get_action_counts"})", "total"), 2);
    EXPECT_EQ(bench.number(R"({"command":"Get_trigger_counts"})", "total"), 1);
    EXPECT_EQ(bench.status(wiper), 9);
}

TEST(Rules, BoundAWholeCatalogueToo) {
    Bench bench("", {}, withBounds());
    EXPECT_EQ(bench.status(washer), 0);
    Bench source;
    source.number(wiper, "action_id");
    source.number(wiper, "action_id");
    boost::json::object document;
    source.engine.change([&](EngineState &state) { document = documentOf(state.catalogue, Telling::all); });
    bench.engine.change([&](EngineState &state) {
        try {
            state.catalogue.replace(readDocument(document, state.catalogue));
            FAIL() << "two wipers are too many";
        } catch (Refused const &refused) {
            EXPECT_EQ(refused.status(), 9U);
            EXPECT_STREQ(refused.what(),
                         "there are more than 1 of kind \"wiper_action\", and that is the most");
        }
    });
    EXPECT_EQ(bench.number(R"({"command":"Get_action_type","action_id":1})", "action_type"), 8);
}

TEST(Rules, RefuseToDeleteWhatIsBound) {
    Bench bench("", {}, {Catalogue::Nonsense::refused, Catalogue::Deletion::refused});
    bench.number(wiper, "action_id");
    bench.number(timer, "trigger_id");
    EXPECT_EQ(bench.status(bound), 0);
    EXPECT_EQ(bench.status(R"({"command":"Delete_action","action_id":1})"), 9);
    EXPECT_TRUE(bench.log.holds(
        "action 1 is bound to 1 triggers, the first of them 1; delete its associations first"));
    EXPECT_EQ(bench.status(R"({"command":"Delete_trigger","trigger_id":1})"), 9);
    EXPECT_TRUE(bench.log.holds("trigger 1 is bound to 1 actions, the first of them 1"));
    bench.advance(std::chrono::seconds(1));
    EXPECT_THAT(bench.run(), ElementsAre(1)) << "what was refused changed nothing";
    EXPECT_EQ(bench.status(R"({"command":"Delete_association","trigger_id":1,"action_id":1})"), 0);
    EXPECT_EQ(bench.status(R"({"command":"Delete_action","action_id":1})"), 0);
    EXPECT_EQ(bench.status(R"({"command":"Delete_trigger","trigger_id":1})"), 0);
}

TEST(Shuffling, RunsAllActionsInOrdersThatASeedGivesAgain) {
    auto const orders = ordersOf(7);
    EXPECT_THAT(orders, Each(UnorderedElementsAre(1, 2, 3)));
    EXPECT_THAT(orders, testing::Contains(testing::Ne(orders.front()))) << "not the same each time";
    EXPECT_EQ(ordersOf(7), orders);
    EXPECT_NE(ordersOf(8), orders);
}

}  // namespace simulator::tests
