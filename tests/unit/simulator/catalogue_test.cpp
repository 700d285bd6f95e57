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
        R"({"command":"Create_ptz_scan_action","action_name":"s","scan_id":"one \u0001 inside"})",
        R"({"command":"Create_ptz_tour_action","action_name":"t","tour_id":"1"})",
        R"({"command":"Modify_ptz_tour_action","action_id":3,"action_name":"u","tour_id":"2"})",
        R"({"command":"Set_action_filters","action_id":2,"weekday_filters":[62,127],"time_filters_start":[0,86399],"time_filters_end":[86400,0]})",
        R"({"command":"Create_stable_onvif_trigger","trigger_name":"n","topic_filter":"a:t/b:t//.","content_filter":"not(boolean(//b:ElementItem[@Value=\"1\"])) ","namespace_keys":["a","b"],"namespace_uris":["u","http://www.onvif.org/ver10/schema"],"stability_seconds":3})",
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

TEST(Catalogue, KeepsItsCountsThroughDeletionsChangesAndARestart) {
    TemporaryFolder const folder;
    std::string const actions = R"({"command":"Get_action_counts"})";
    std::string const triggers = R"({"command":"Get_trigger_counts"})";
    std::string const actions_left =
        R"({"command":"Get_action_counts","status":0,"total":2,"action_types":[7,8],"counts":[1,1]})";
    std::string const triggers_left =
        R"({"command":"Get_trigger_counts","status":0,"total":1,"trigger_types":[1],"counts":[1]})";
    {
        Bench bench(folder / "store");
        for (char const *const command :
             {create_wiper, create_washer, create_wiper, create_timer, create_timer}) {
            bench.respond(command);
        }
        EXPECT_EQ(bench.status(R"({"command":"Delete_action","action_id":1})"), 0);
        EXPECT_EQ(bench.status(R"({"command":"Delete_action","action_id":1})"), 9);
        EXPECT_EQ(bench.status(R"({"command":"Delete_trigger","trigger_id":2})"), 0);
        EXPECT_EQ(bench.status(R"({"command":"Modify_wiper_action","action_id":3,"action_name":"m"})"), 0);
        EXPECT_EQ(bench.respond(actions), actions_left);
        EXPECT_EQ(bench.respond(triggers), triggers_left);
    }
    Bench bench(folder / "store");
    EXPECT_EQ(bench.respond(actions), actions_left);
    EXPECT_EQ(bench.respond(triggers), triggers_left);
}

TEST(Catalogue, TakesWhatCanJustBeReadBackAndRefusesOneByteMore) {
    Bench bench;
    // What stands around the name in the answer: {"command":"Get_wiper_action","status":0,"action_name":""}
    std::size_t const longest_name = 1'000'000 - 58;
    auto const create = [](std::size_t size) {
        return R"({"command":"Create_wiper_action","action_name":")" + std::string(size, 'n') + "\"}";
    };
    auto const modify = [](std::size_t size) {
        return R"({"command":"Modify_wiper_action","action_id":1,"action_name":")" + std::string(size, 'm') +
               "\"}";
    };
    std::string const get = R"({"command":"Get_wiper_action","action_id":1})";
    EXPECT_EQ(bench.status(create(longest_name + 1)), 9);
    EXPECT_TRUE(bench.log.holds("too long to be read back with Get_wiper_action: 1000001 bytes"));
    EXPECT_EQ(bench.number(R"({"command":"Get_action_counts"})", "total"), 0);
    EXPECT_EQ(bench.number(create(longest_name), "action_id"), 1);
    EXPECT_EQ(bench.respond(get).size(), 1'000'000U);

    EXPECT_EQ(bench.status(modify(longest_name + 1)), 9);
    EXPECT_EQ(bench.answer(get).at("action_name").as_string(), std::string(longest_name, 'n'));
    EXPECT_EQ(bench.status(modify(longest_name)), 0);
    EXPECT_EQ(bench.answer(get).at("action_name").as_string(), std::string(longest_name, 'm'));

    // A quote takes two bytes.
    EXPECT_EQ(bench.status(R"({"command":"Modify_wiper_action","action_id":1,"action_name":"\")" +
                           std::string(longest_name - 1, 'q') + "\"}"),
              9);
    EXPECT_EQ(bench.status(R"({"command":"Modify_wiper_action","action_id":1,"action_name":"\")" +
                           std::string(longest_name - 2, 'q') + "\"}"),
              0);
    EXPECT_EQ(bench.respond(get).size(), 1'000'000U);
}

TEST(Catalogue, TakesFiltersThatCanJustBeReadBackAndRefusesOneMore) {
    Bench bench;
    bench.respond(create_wiper);
    // In the answer, without the lists' elements:
    // {"command":"Get_action_filters","status":0,"weekday_filters":[],"time_filters_start":[],"time_filters_end":[]}
    std::size_t const most = (1'000'000 - 110 + 3) / 6;
    auto const set = [](std::size_t count) {
        std::string ones;
        for (std::size_t n = 0; n < count; ++n) {
            ones += n == 0 ? "1" : ",1";
        }
        return R"({"command":"Set_action_filters","action_id":1,"weekday_filters":[)" + ones +
               R"(],"time_filters_start":[)" + ones + R"(],"time_filters_end":[)" + ones + "]}";
    };
    EXPECT_EQ(bench.status(set(most + 1)), 9);
    std::string const get = R"({"command":"Get_action_filters","action_id":1})";
    EXPECT_TRUE(bench.answer(get).at("weekday_filters").as_array().empty());
    EXPECT_EQ(bench.status(set(most)), 0);
    EXPECT_EQ(bench.answer(get).at("time_filters_end").as_array().size(), most);
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
