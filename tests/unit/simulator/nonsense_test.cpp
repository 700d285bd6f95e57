// SPDX-License-Identifier: Apache-2.0
// What means nothing is refused with a reason; and what a store holds of it is kept, named, and does nothing.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support.h"

namespace simulator::tests {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char const *create_wiper = R"({"command":"Create_wiper_action","action_name":"w"})";

std::string setFilters(std::string const &weekdays, std::string const &starts, std::string const &ends) {
    return R"({"command":"Set_action_filters","action_id":1,"weekday_filters":[)" + weekdays +
           R"(],"time_filters_start":[)" + starts + R"(],"time_filters_end":[)" + ends + "]}";
}

std::string onvifTrigger(std::string const &topic, std::string const &dialect = "",
                         std::string const &content = "", std::string const &keys = R"("tns1")",
                         std::string const &uris = R"("urn:topics")") {
    return R"({"command":"Create_onvif_trigger","trigger_name":"o","topic_filter":")" + topic +
           R"(","topic_filter_dialect":")" + dialect + R"(","content_filter":")" + content +
           R"(","namespace_keys":[)" + keys + R"(],"namespace_uris":[)" + uris + "]}";
}

std::string stableTrigger(std::string const &topic, std::string const &content) {
    return R"({"command":"Create_stable_onvif_trigger","trigger_name":"s","topic_filter":")" + topic +
           R"(","content_filter":")" + content +
           R"(","namespace_keys":[],"namespace_uris":[],"stability_seconds":1})";
}

std::string event(std::string const &topic, std::string const &message, std::string const &keys = "",
                  std::string const &uris = "") {
    return R"({"command":"Onvif_event","topic":")" + topic + R"(","message":")" + message +
           R"(","namespace_keys":[)" + keys + R"(],"namespace_uris":[)" + uris + "]}";
}

constexpr char const *bind = R"({"command":"Create_association","trigger_id":1,"action_id":1})";
constexpr char const *modify_onvif =
    R"({"command":"Modify_onvif_trigger","trigger_id":1,"trigger_name":"o","topic_filter":"*","topic_filter_dialect":"","content_filter":"","namespace_keys":[],"namespace_uris":[]})";

}  // namespace

TEST(Nonsense, InFiltersIsRefusedAtEachBound) {
    struct Case {
        char const *weekdays;
        char const *starts;
        char const *ends;
        char const *why;
    };
    Case const cases[] = {
        {"128", "0", "0", "entry 1 of weekday_filters is 128, and 127 is the most"},
        {"1,4294967295", "0,0", "0,0", "entry 2 of weekday_filters is 4294967295, and 127 is the most"},
        {"1", "86400", "0", "entry 1 of time_filters_start is 86400, and 86399 is the most"},
        {"1", "0", "86401", "entry 1 of time_filters_end is 86401, and 86400 is the most"},
        {"1", "", "", "weekday_filters and time_filters_start have 1 and 0 entries"},
        {"", "0", "0", "weekday_filters and time_filters_start have 0 and 1 entries"},
        {"1,2", "0,1", "1", "time_filters_start and time_filters_end have 2 and 1 entries"},
    };
    Bench bench;
    bench.respond(create_wiper);
    EXPECT_EQ(bench.status(setFilters("0,127", "0,86399", "0,86400")), 0);
    std::string const before = bench.respond(R"({"command":"Get_action_filters","action_id":1})");
    for (Case const &one : cases) {
        bench.log.lines.clear();
        EXPECT_EQ(bench.status(setFilters(one.weekdays, one.starts, one.ends)), 9) << one.why;
        ASSERT_EQ(bench.log.lines.size(), 1U);
        EXPECT_THAT(bench.log.lines[0],
                    testing::StartsWith(std::string("4 \"Set_action_filters\" refused: ") + one.why));
    }
    EXPECT_EQ(bench.respond(R"({"command":"Get_action_filters","action_id":1})"), before);
}

TEST(Nonsense, InTriggersIsRefusedWhenTheyAreMadeAndWhenTheyAreChanged) {
    Bench bench;
    EXPECT_EQ(bench.status(onvifTrigger("tns1:A")), 0);
    std::string const before = bench.respond(R"({"command":"Get_onvif_trigger","trigger_id":1})");
    for (std::string const &command :
         {onvifTrigger("*"), onvifTrigger("other:A"), onvifTrigger("a", "dialect"),
          onvifTrigger("a", "", "IsMotion"), onvifTrigger("a", "", "", R"("k","l")", R"("u")"),
          stableTrigger("a//b", ""), stableTrigger("a", "true"), std::string(modify_onvif)}) {
        EXPECT_EQ(bench.status(command), 9) << command;
    }
    EXPECT_EQ(bench.respond(R"({"command":"Get_onvif_trigger","trigger_id":1})"), before);
    EXPECT_EQ(bench.number(R"({"command":"Get_trigger_counts"})", "total"), 1);
    EXPECT_TRUE(bench.log.holds("\"Modify_onvif_trigger\" refused: the topic filter, column 1: \"*\""));
    EXPECT_TRUE(bench.log.holds("refused: namespace_keys and namespace_uris have 2 and 1 entries"));
    EXPECT_TRUE(bench.log.holds("refused: the content filter, column 1: "));
}

TEST(Nonsense, InEventsIsRefused) {
    Bench bench;
    for (std::string const &command :
         {event("a", "State=true"), event("a", ""), event("x:a", "<m/>"), event("a|b", "<m/>"),
          event("a", "<tt:Message/>"), event("a", "<m/>", R"("k")")}) {
        bench.log.lines.clear();
        EXPECT_EQ(bench.status(command), 9) << command;
        EXPECT_EQ(bench.log.lines.size(), 1U);
    }
    EXPECT_EQ(bench.status(event("a", "<m/>")), 0);
    EXPECT_EQ(bench.status(event("", "<m/>")), 0);
}

TEST(Nonsense, OfAStoreIsReadableNamedAtTheStartAndDoesNothing) {
    TemporaryFolder const folder;
    {
        // As services kept it that looked less closely.
        Store store(folder / "store");
        store.addAction(protocol::run_wiper, R"({"action_name":"wipe"})",
                        R"({"weekday_filters":[127],"time_filters_start":[],"time_filters_end":[]})");
        store.addAction(protocol::run_wiper, R"({"action_name":"free"})",
                        R"({"weekday_filters":[],"time_filters_start":[],"time_filters_end":[]})");
        store.addTrigger(
            protocol::onvif_event,
            R"({"trigger_name":"motion","topic_filter":"","topic_filter_dialect":"","content_filter":"IsMotion","namespace_keys":[],"namespace_uris":[]})");
        store.addTrigger(protocol::reoccurring_timer, R"({"trigger_name":"t","timer_seconds":1})");
        store.addAssociation(1, 2);
        store.addAssociation(2, 1);
    }
    Bench bench(folder / "store");
    EXPECT_THAT(
        bench.log.lines,
        ElementsAre(
            HasSubstr("4 trigger 1 \"motion\" never fires: the content filter, column 1: "),
            HasSubstr("4 action 1 \"wipe\" never runs: weekday_filters and time_filters_start have ")));
    EXPECT_EQ(
        bench.answer(R"({"command":"Get_onvif_trigger","trigger_id":1})").at("content_filter").as_string(),
        "IsMotion");
    EXPECT_EQ(bench.status(event("a", "<IsMotion/>")), 0);
    bench.advance(std::chrono::seconds(1));
    EXPECT_THAT(bench.run(), IsEmpty());
    EXPECT_TRUE(
        bench.log.holds("action 1 \"wipe\" does not run: weekday_filters and time_filters_start have "));
    // Other settings may change meanwhile, and what is mended works.
    EXPECT_EQ(bench.status(R"({"command":"Modify_wiper_action","action_id":1,"action_name":"still"})"), 0);
    bench.advance(std::chrono::seconds(1));
    EXPECT_THAT(bench.run(), IsEmpty());
    EXPECT_EQ(bench.status(setFilters("127", "0", "0")), 0);
    bench.advance(std::chrono::seconds(1));
    EXPECT_THAT(bench.run(), ElementsAre(1));
}

TEST(Nonsense, IsKeptWithAWarningAndDoesNothingWhereThatIsAllowed) {
    Bench bench("", {}, {Catalogue::Nonsense::kept});
    bench.respond(create_wiper);
    EXPECT_EQ(bench.number(onvifTrigger("", "", "IsMotion"), "trigger_id"), 1);
    EXPECT_EQ(bench.status(bind), 0);
    EXPECT_TRUE(bench.log.holds("4 trigger 1 never fires: the content filter, column 1: "));
    EXPECT_EQ(
        bench.answer(R"({"command":"Get_onvif_trigger","trigger_id":1})").at("content_filter").as_string(),
        "IsMotion");
    EXPECT_EQ(bench.status(event("a", "<IsMotion/>")), 0);
    EXPECT_EQ(bench.status(event("a", "IsMotion")), 0);
    EXPECT_TRUE(bench.log.holds("4 an event is passed over: the message is no XML: "));
    EXPECT_EQ(bench.status(modify_onvif), 0);
    EXPECT_TRUE(bench.log.holds("4 trigger 1 never fires: the topic filter, column 1: "));
    EXPECT_EQ(bench.status(setFilters("999", "1", "")), 0);
    EXPECT_TRUE(bench.log.holds("4 action 1 never runs: time_filters_start and time_filters_end have "));
    EXPECT_THAT(bench.run(), IsEmpty());
}

}  // namespace simulator::tests
