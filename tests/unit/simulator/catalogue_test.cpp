// SPDX-License-Identifier: Apache-2.0
#include "simulator/catalogue.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "simulator/refused.h"
#include "support.h"

namespace simulator::tests {

namespace {

constexpr char const *create_wiper = R"({"command":"Create_wiper_action","action_name":"w"})";
constexpr char const *create_washer = R"({"command":"Create_washer_action","action_name":"w"})";
constexpr char const *create_timer =
    R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":1})";

std::string pairCommand(char const *method, int trigger_id, int action_id) {
    return std::string(R"({"command":")") + method + R"(","trigger_id":)" + std::to_string(trigger_id) +
           R"(,"action_id":)" + std::to_string(action_id) + "}";
}

}  // namespace

TEST(Catalogue, BeginsEmpty) {
    Bench bench;
    EXPECT_EQ(bench.respond(R"({"command":"Get_actions"})"),
              R"({"command":"Get_actions","status":0,"action_id":[],"action_type":[]})");
    EXPECT_EQ(bench.respond(R"({"command":"Get_action_counts"})"),
              R"({"command":"Get_action_counts","status":0,"total":0,"action_types":[],"counts":[]})");
    EXPECT_EQ(bench.respond(R"({"command":"Get_triggers"})"),
              R"({"command":"Get_triggers","status":0,"trigger_id":[],"trigger_type":[]})");
    EXPECT_EQ(bench.respond(R"({"command":"Get_trigger_counts"})"),
              R"({"command":"Get_trigger_counts","status":0,"total":0,"trigger_types":[],"counts":[]})");
}

TEST(Catalogue, CountsTheTypesThatOccurInAscendingOrder) {
    Bench bench;
    bench.respond(create_washer);
    bench.respond(create_wiper);
    bench.respond(create_washer);
    EXPECT_EQ(bench.respond(R"({"command":"Get_action_counts"})"),
              R"({"command":"Get_action_counts","status":0,"total":3,"action_types":[7,8],"counts":[1,2]})");
}

TEST(Catalogue, NumbersActionsAndTriggersEachFrom1AndNeverAgain) {
    Bench bench;
    EXPECT_EQ(bench.number(create_wiper, "action_id"), 1);
    EXPECT_EQ(bench.number(create_timer, "trigger_id"), 1);
    EXPECT_EQ(bench.number(create_wiper, "action_id"), 2);
    EXPECT_EQ(bench.status(R"({"command":"Delete_action","action_id":2})"), 0);
    EXPECT_EQ(bench.number(create_wiper, "action_id"), 3);
    EXPECT_EQ(bench.status(R"({"command":"Delete_trigger","trigger_id":1})"), 0);
    EXPECT_EQ(bench.number(create_timer, "trigger_id"), 2);
}

TEST(Catalogue, IsTheSameAfterARestart) {
    TemporaryFolder const folder;
    char const *const commands[] = {
        R"({"command":"Create_relay_action","action_name":"r\"\n\u00fc","relay_target":"","config_mode":4294967295,"config_normally_closed":true,"config_repeat_cycles":0,"config_on_time_ms":1,"config_off_time_ms":2})",
        R"({"command":"Create_ptz_scan_action","action_name":"s","scan_id":"nul \u0000 inside"})",
        R"({"command":"Create_ptz_tour_action","action_name":"t","tour_id":"1"})",
        R"({"command":"Modify_ptz_tour_action","action_id":3,"action_name":"u","tour_id":"2"})",
        R"({"command":"Set_action_filters","action_id":2,"weekday_filters":[62,127],"time_filters_start":[0],"time_filters_end":[4294967295]})",
        R"({"command":"Create_stable_onvif_trigger","trigger_name":"n","topic_filter":"t","content_filter":"c","namespace_keys":["a","b"],"namespace_uris":["u"],"stability_seconds":3})",
        R"({"command":"Create_timer_trigger","trigger_name":"n","timer_seconds":0})",
        R"({"command":"Create_association","trigger_id":2,"action_id":1})",
        R"({"command":"Create_association","trigger_id":2,"action_id":3})",
        R"({"command":"Create_association","trigger_id":1,"action_id":3})",
        R"({"command":"Delete_association","trigger_id":2,"action_id":1})",
        R"({"command":"Create_wiper_action","action_name":"gone"})",
        R"({"command":"Delete_action","action_id":4})",
    };
    char const *const reads[] = {
        R"({"command":"Get_actions"})",
        R"({"command":"Get_triggers"})",
        R"({"command":"Get_relay_action","action_id":1})",
        R"({"command":"Get_ptz_scan_action","action_id":2})",
        R"({"command":"Get_ptz_tour_action","action_id":3})",
        R"({"command":"Get_action_filters","action_id":1})",
        R"({"command":"Get_action_filters","action_id":2})",
        R"({"command":"Get_stable_onvif_trigger","trigger_id":1})",
        R"({"command":"Get_timer_trigger","trigger_id":2})",
        R"({"command":"Get_trigger_associations","trigger_id":1})",
        R"({"command":"Get_trigger_associations","trigger_id":2})",
        R"({"command":"Get_action_associations","action_id":3})",
    };
    std::vector<std::string> before;
    {
        Bench bench(folder / "store");
        for (char const *const command : commands) {
            ASSERT_EQ(bench.status(command), 0) << command;
        }
        for (char const *const read : reads) {
            before.push_back(bench.respond(read));
        }
        EXPECT_EQ(before[0],
                  R"({"command":"Get_actions","status":0,"action_id":[1,2,3],"action_type":[9,6,5]})");
    }
    Bench bench(folder / "store");
    for (std::size_t n = 0; n < before.size(); ++n) {
        EXPECT_EQ(bench.respond(reads[n]), before[n]);
    }
    EXPECT_EQ(bench.number(create_wiper, "action_id"), 5);
}

TEST(Catalogue, ModifyReplacesAllSettings) {
    Bench bench;
    bench.respond(R"({"command":"Create_snapshot_action","action_name":"old","filename":"old.jpg"})");
    EXPECT_EQ(bench.respond(
                  R"({"command":"Modify_snapshot_action","action_id":1,"action_name":"new","filename":""})"),
              R"({"command":"Modify_snapshot_action","status":0})");
    EXPECT_EQ(bench.respond(R"({"command":"Get_snapshot_action","action_id":1})"),
              R"({"command":"Get_snapshot_action","status":0,"action_name":"new","filename":""})");
}

TEST(Catalogue, BindingAPairTwiceIsBindingItOnce) {
    Bench bench;
    bench.respond(create_wiper);
    bench.respond(create_timer);
    EXPECT_EQ(bench.status(pairCommand("Create_association", 1, 1)), 0);
    EXPECT_EQ(bench.status(pairCommand("Create_association", 1, 1)), 0);
    EXPECT_EQ(bench.respond(R"({"command":"Get_trigger_associations","trigger_id":1})"),
              R"({"command":"Get_trigger_associations","status":0,"action_id":[1],"action_type":[7]})");
    EXPECT_EQ(bench.status(pairCommand("Delete_association", 1, 1)), 0);
    EXPECT_EQ(bench.status(pairCommand("Delete_association", 1, 1)), 9);
}

TEST(Catalogue, ADeletedActionIsBoundNoMore) {
    TemporaryFolder const folder;
    std::string const expected =
        R"({"command":"Get_trigger_associations","status":0,"action_id":[2],"action_type":[8]})";
    {
        Bench bench(folder / "store");
        bench.respond(create_wiper);
        bench.respond(create_washer);
        for (int n = 0; n < 5; ++n) {
            bench.respond(create_timer);
        }
        bench.respond(pairCommand("Create_association", 5, 1));
        bench.respond(pairCommand("Create_association", 5, 2));
        EXPECT_EQ(bench.status(R"({"command":"Delete_action","action_id":1})"), 0);
        EXPECT_EQ(bench.respond(R"({"command":"Get_trigger_associations","trigger_id":5})"), expected);
        EXPECT_EQ(bench.status(pairCommand("Delete_association", 5, 1)), 9);
        EXPECT_EQ(bench.status(R"({"command":"Get_action_filters","action_id":1})"), 9);
    }
    Bench bench(folder / "store");
    EXPECT_EQ(bench.respond(R"({"command":"Get_trigger_associations","trigger_id":5})"), expected);
}

TEST(Catalogue, ADeletedTriggerIsBoundNoMore) {
    TemporaryFolder const folder;
    std::string const expected =
        R"({"command":"Get_action_associations","status":0,"trigger_id":[2],"trigger_type":[1]})";
    {
        Bench bench(folder / "store");
        for (int n = 0; n < 5; ++n) {
            bench.respond(create_wiper);
        }
        bench.respond(create_timer);
        bench.respond(create_timer);
        bench.respond(pairCommand("Create_association", 1, 5));
        bench.respond(pairCommand("Create_association", 2, 5));
        EXPECT_EQ(bench.status(R"({"command":"Delete_trigger","trigger_id":1})"), 0);
        EXPECT_EQ(bench.respond(R"({"command":"Get_action_associations","action_id":5})"), expected);
        EXPECT_EQ(bench.status(pairCommand("Delete_association", 1, 5)), 9);
    }
    Bench bench(folder / "store");
    EXPECT_EQ(bench.respond(R"({"command":"Get_action_associations","action_id":5})"), expected);
}

TEST(Catalogue, IsBounded) {
    Store store("");
    Catalogue catalogue(store);
    for (std::size_t n = 0; n < 50'000; ++n) {
        catalogue.create(Catalogue::Table::triggers, trigger_kinds[protocol::reoccurring_timer],
                         {std::string("t"), 0U});
    }
    EXPECT_THROW(catalogue.create(Catalogue::Table::triggers, trigger_kinds[protocol::reoccurring_timer],
                                  {std::string("t"), 0U}),
                 Refused);
    EXPECT_EQ(catalogue.entries(Catalogue::Table::triggers).size(), 50'000U);
}

}  // namespace simulator::tests
