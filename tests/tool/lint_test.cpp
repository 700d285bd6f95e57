// SPDX-License-Identifier: Apache-2.0
// Mistakes in what the service has and in documents.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/service.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

using end_to_end::Service;
using processes::exited;

constexpr char names[] =
    R"("namespace_keys":["tns1","tt"],"namespace_uris":["http://www.onvif.org/ver10/topics","http://www.onvif.org/ver10/schema"])";

std::string document(std::string const &actions, std::string const &triggers,
                     std::string const &associations) {
    return R"({"format":"korvo-action-engine-catalogue","version":1,"actions":[)" + actions +
           R"(],"triggers":[)" + triggers + R"(],"associations":[)" + associations + "]}";
}

std::string wiper(unsigned int id, std::string const &name, std::string const &weekdays = "",
                  std::string const &starts = "", std::string const &ends = "") {
    return R"({"id":)" + std::to_string(id) + R"(,"kind":"wiper_action","settings":{"action_name":")" + name +
           R"("},"filters":{"weekday_filters":[)" + weekdays + R"(],"time_filters_start":[)" + starts +
           R"(],"time_filters_end":[)" + ends + "]}}";
}

std::string onvif(unsigned int id, std::string const &name, std::string const &topic,
                  std::string const &content, std::string const &namespaces = names) {
    return R"({"id":)" + std::to_string(id) + R"(,"kind":"onvif_trigger","settings":{"trigger_name":")" +
           name + R"(","topic_filter":")" + topic + R"(","topic_filter_dialect":"","content_filter":")" +
           content + R"(",)" + namespaces + "}}";
}

std::string binding(unsigned int trigger, unsigned int action) {
    return R"({"trigger_id":)" + std::to_string(trigger) + R"(,"action_id":)" + std::to_string(action) + "}";
}

/// What is found, one mistake on a line.
std::string found(std::vector<std::string> words) {
    words.insert(words.begin(), "lint");
    Finished const finished = tool(words);
    EXPECT_TRUE(finished.exit == exited(1)) << finished.errors;
    return finished.out;
}

std::string const good = document(wiper(1, "wipe", "62", "28800", "64800"),
                                  onvif(1, "inside", "tns1:Device/Trigger", ""), binding(1, 1));
std::string const several_mistakes = document(
    wiper(1, "bare") + "," + wiper(2, "short", "62,1", "0", "3600") + "," +
        wiper(3, "closed", "0,62", "0,86400", "3600,0") + "," + wiper(4, "beyond", "62", "0", "86401"),
    onvif(1, "idle", "tns1:Device/Trigger", "") + "," + onvif(2, "stranger", "tns2:Device/Trigger", "") +
        "," + onvif(3, "uneven", "", "", R"("namespace_keys":["tt"],"namespace_uris":[])") + "," +
        onvif(4, "wrong", "tns1:Device/*", "true") + "," +
        R"({"id":5,"kind":"timer_trigger","settings":{"trigger_name":"still","timer_seconds":0}})",
    binding(2, 2) + "," + binding(3, 3) + "," + binding(4, 4) + "," + binding(5, 4));

TEST(Lint, FindsNothingWhereAllIsWell) {
    Service service;
    EXPECT_EQ(results({"lint"}), "");
    EXPECT_EQ(results({"lint", fileWith(good).string()}), "");
    EXPECT_EQ(results({"lint", fileWith(good).string(), "--json"}), "{\"findings\":[],\"unchecked\":[]}\n");
}

TEST(Lint, TellsEachMistake) {
    Service service;
    EXPECT_EQ(
        found({fileWith(several_mistakes).string()}),
        "action 1 (bare): no trigger: no trigger runs it\n"
        "action 2 (short): unequal lists: weekday_filters: these lists belong together, and weekday_filters "
        "has 2, time_filters_start has 1, time_filters_end has 1\n"
        "action 3 (closed): never opens: filters: filter 1 of 2 (never 00:00-01:00) never lets it run: it "
        "has no weekday\n"
        "action 3 (closed): never opens: filters: filter 2 of 2 (Mon-Fri 24:00-00:00) never lets it run: it "
        "starts behind the end of the day\n"
        "action 4 (beyond): bad filter: filters: entry 1 of time_filters_end is 86401, and 86400 is the "
        "most: windows are in seconds since local midnight\n"
        "trigger 1 (idle): no action: it runs no action\n"
        "trigger 2 (stranger): unknown prefix: topic_filter: the prefix \"tns2\" is not among "
        "namespace_keys\n"
        "trigger 3 (uneven): unequal lists: namespace_keys: these lists belong together, and namespace_keys "
        "has 1, namespace_uris has 0\n"
        "trigger 4 (wrong): bad filter: topic_filter: the topic filter, column 13: \"*\" stands for no name "
        "here; name the topic, or write \"//.\" behind the topic above for it and all below it\n"
        "trigger 4 (wrong): bad filter: content_filter: the content filter, column 1: boolean(...), not(...) "
        "or \"(\" is expected here, not \"t\"\n"
        "trigger 5 (still): never fires: timer_seconds: a timer of 0 seconds never fires\n");
}

TEST(Lint, ReadsWhatALenientServiceKeeps) {
    Service service({"--lenient"});
    (void)results(
        {"rule", "add", "--topic", "tns1:Device/*", "--name", "any", "--action", "wiper action_name=wipe"});
    EXPECT_EQ(found({}).find("trigger 1 (any): bad filter: topic_filter: the topic filter, column 13: "), 0U);
}

TEST(Lint, SaysWhatItCannotCheckWithoutTheServiceForDevelopmentMachines) {
    Finished const clean = tool({"lint", fileWith(good).string()});
    EXPECT_TRUE(clean.exit == exited(0)) << clean.errors;
    EXPECT_EQ(clean.out, "");
    EXPECT_EQ(clean.errors,
              "korvo-action-engine: not checked: what filters mean, and loops: only "
              "korvo-action-engine-simulator tells, and none is running here\n");
    std::string const told = found({fileWith(several_mistakes).string()});
    EXPECT_NE(told.find("unknown prefix"), std::string::npos) << told;
    EXPECT_NE(told.find("unequal lists"), std::string::npos) << told;
    EXPECT_EQ(told.find("bad filter"), std::string::npos) << told;
    std::string const as_json = results({"lint", "--json", fileWith(good).string()});
    EXPECT_EQ(as_json.find(R"({"findings":[],"unchecked":["what filters mean, and loops: )"), 0U) << as_json;
}

TEST(Lint, GivesItsFindingsAsData) {
    Service service;
    (void)results({"create-wiper-action", "--action-name", "wi\"pe"});
    Finished const finished = tool({"lint", "--json"});
    EXPECT_EQ(finished.out, R"({"findings":[{"kind":"no trigger","action_id":1,"name":"wi\"pe","member":"",)"
                            R"("text":"no trigger runs it"}],"unchecked":[]})"
                            "\n");
    EXPECT_EQ(finished.errors.find(R"({"error":{"exit_code":1,"kind":"other","text":"1 mistake was found")"),
              0U)
        << finished.errors;
}

std::string item(std::string const &name, std::string const &value) {
    return R"(boolean(//tt:SimpleItem[@Name=\")" + name + R"(\" and @Value=\")" + value + R"(\"]))";
}

TEST(Lint, FindsLoopsThroughCompletions) {
    Service service;
    std::string const actions = wiper(1, "a & <b>") + "," + wiper(2, "second") + "," + wiper(3, "third");
    std::string const timer =
        R"(,{"id":9,"kind":"timer_trigger","settings":{"trigger_name":"start","timer_seconds":60}})";
    std::string const first =
        onvif(1, "after a", "tns1:ActionEngine/Completed", item("ActionName", "a & <b>"));
    std::string const starts = binding(9, 1) + "," + binding(9, 3);
    // A chain that ends is none.
    auto const chain = fileWith(document(actions, first + timer, starts + "," + binding(1, 2)));
    EXPECT_EQ(results({"lint", chain.string()}), "");
    // Back by the identifier, and where the action fails.
    std::string const second = onvif(2, "after 2", "tns1:ActionEngine/Failed", item("ActionId", "2"));
    auto const loop = fileWith(
        document(actions, first + "," + second + timer, starts + "," + binding(1, 2) + "," + binding(2, 1)));
    EXPECT_EQ(found({loop.string()}),
              "action 1 (a & <b>): loop: it runs itself by completion events: action 1 (a & <b>) -> trigger "
              "1 (after a) -> action 2 (second) -> trigger 2 (after 2) -> action 1 (a & <b>)\n");
    // Another name for the topics' namespace, and all below the topic.
    auto const itself = fileWith(
        document(actions,
                 onvif(1, "any", "x:ActionEngine//.", "",
                       R"("namespace_keys":["x"],"namespace_uris":["http://www.onvif.org/ver10/topics"])") +
                     timer,
                 starts + "," + binding(1, 2)));
    EXPECT_EQ(found({itself.string()}),
              "action 2 (second): loop: it runs itself by completion events: action 2 (second) -> trigger 1 "
              "(any) -> action 2 (second)\n");
    // A trigger of all topics takes no completions, and a stable one fires once for each action.
    auto const none =
        fileWith(document(actions,
                          onvif(1, "all", "", "") +
                              R"(,{"id":2,"kind":"stable_onvif_trigger","settings":{"trigger_name":"stable",)"
                              R"("topic_filter":"tns1:ActionEngine/Completed","content_filter":"",)" +
                              std::string(names) + R"(,"stability_seconds":1}})" + timer,
                          starts + "," + binding(1, 2) + "," + binding(2, 2)));
    EXPECT_EQ(results({"lint", none.string()}), "");
}

}  // namespace

}  // namespace tool_tests
