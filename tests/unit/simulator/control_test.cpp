// SPDX-License-Identifier: Apache-2.0
#include "simulator/control/control.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <set>
#include <string>

#include "support.h"
#include "time_zone.h"

namespace simulator::tests {

namespace {

using testing::HasSubstr;
using testing::StartsWith;

constexpr char const *event =
    R"("topic":"tns1:Device","message":"<tt:Message><tt:Data><tt:SimpleItem Name=\"State\" Value=\"on\"/></tt:Data></tt:Message>",)"
    R"("namespace_keys":["tns1","tt"],"namespace_uris":["urn:topics","http://www.onvif.org/ver10/schema"])";

/// A service on Monday, one minute before eight, with a wiper action 1.
class ControlTest : public testing::Test {
  protected:
    ControlTest() { bench.number(R"({"command":"Create_wiper_action","action_name":"wiper"})", "action_id"); }

    boost::json::object ask(std::string const &command) {
        std::string text;
        control.answer(command, [&](std::string const &answer) { text = answer; });
        do {
            bench.run();
        } while (control.advance());
        EXPECT_NE(text, "") << command;
        return text.empty() ? boost::json::object() : boost::json::parse(text).as_object();
    }
    /// "STATUS: REASON"
    std::string refusal(std::string const &command) {
        auto const answer = ask(command);
        return boost::json::serialize(answer.at("status")) + ": " +
               (answer.contains("reason") ? std::string(answer.at("reason").as_string()) : "");
    }
    static std::string text(boost::json::value const &value) { return boost::json::serialize(value); }
    void bind(std::int64_t trigger_id, int action_id = 1) {
        bench.number(R"({"command":"Create_association","trigger_id":)" + std::to_string(trigger_id) +
                         R"(,"action_id":)" + std::to_string(action_id) + "}",
                     "status");
    }
    std::int64_t timer(int seconds) {
        auto const id =
            bench.number(R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":)" +
                             std::to_string(seconds) + "}",
                         "trigger_id");
        bind(id);
        return id;
    }
    std::int64_t onvif() {
        auto const id = bench.number(
            R"({"command":"Create_onvif_trigger","trigger_name":"o","topic_filter":"tns1:Device",)"
            R"("topic_filter_dialect":"","content_filter":"","namespace_keys":["tns1"],)"
            R"("namespace_uris":["urn:topics"]})",
            "trigger_id");
        bind(id);
        return id;
    }

    TimeZone zone{berlin};
    Clock clock{{true, readMoment("2026-11-23T07:59:00"), 0}};
    Bench bench{clock};
    TemporaryFolder folder;
    runners::Runner runner{{folder.path(), folder.path()},
                           [this] { return clock.wall(); },
                           [this] { return clock.now(); },
                           bench.log.log()};
    Tape tape{bench.log.log()};
    control::Control control{{bench.engine, clock, bench.dispatcher.faults(), runner, tape, [] {}},
                             bench.log.log()};
};

}  // namespace

TEST_F(ControlTest, TellsAndSetsTheClock) {
    EXPECT_EQ(
        text(ask(R"({"command":"Get_clock"})")),
        R"({"command":"Get_clock","status":0,"mode":"virtual","rate":0,"time":"2026-11-23T07:59:00+01:00","unix_seconds":1795417140,"weekday":1,"seconds_of_day":28740})");
    auto const set = ask(R"({"command":"Set_clock","time":"2028-02-29T12:00:00","rate":5})");
    EXPECT_THAT(std::string(set.at("time").as_string()), StartsWith("2028-02-29T12:00:0"));
    EXPECT_EQ(text(set.at("rate")), "5");
    EXPECT_THAT(refusal(R"({"command":"Set_clock","time":"2027-02-29T12:00:00"})"),
                StartsWith("1: \"2027-02-29T12:00:00\" is no time that the clock shows"));
    EXPECT_THAT(refusal(R"({"command":"Set_clock","rate":86401})"), StartsWith("1: "));
}

TEST_F(ControlTest, AdvancesTheClockFromOneTimerToTheNext) {
    timer(20);
    bench.events.clear();
    auto const told = ask(R"({"command":"Advance_clock","seconds":60})");
    EXPECT_EQ(told.at("time").as_string(), "2026-11-23T08:00:00+01:00");
    EXPECT_EQ(bench.jobs.size(), 3U) << "each at its own time";
    auto const traces = ask(R"({"command":"Get_traces"})");
    EXPECT_EQ(traces.at("traces").at(0).at("time").as_string(), "2026-11-23T07:59:20+01:00");
    EXPECT_EQ(traces.at("traces").at(2).at("time").as_string(), "2026-11-23T08:00:00+01:00");
    ask(R"({"command":"Run_clock_until","time":"2026-11-23T09:00:00"})");
    EXPECT_EQ(bench.jobs.size(), 183U);
    EXPECT_THAT(refusal(R"({"command":"Run_clock_until","time":"2026-11-23T08:00:00"})"),
                StartsWith("9: that time has passed"));
    EXPECT_THAT(refusal(R"({"command":"Advance_clock"})"),
                StartsWith("1: the member \"seconds\" is missing"));
}

TEST_F(ControlTest, MovesNoRealClock) {
    Clock real({});
    control::Control other({bench.engine, real, bench.dispatcher.faults(), runner, tape, [] {}},
                           bench.log.log());
    std::string answer;
    other.answer(R"({"command":"Advance_clock","seconds":1})",
                 [&](std::string const &given) { answer = given; });
    EXPECT_THAT(answer, HasSubstr("start the service with --clock virtual"));
}

TEST_F(ControlTest, AddsListsAndClearsFaults) {
    EXPECT_EQ(
        text(ask(R"({"command":"Add_fault","method":"Get_actions","fail":7,"count":2})").at("fault_id")),
        "1");
    EXPECT_EQ(
        text(ask(R"({"command":"Get_faults"})").at("faults")),
        R"([{"fault_id":1,"method":"Get_actions","fail":7,"delay_ms":0,"drop":false,"garble":false,"duplicate":false,"close":false,"missing":"","count":2}])");
    EXPECT_EQ(bench.status(R"({"command":"Get_actions"})"), 7);
    EXPECT_EQ(bench.status(R"({"command":"Get_actions"})"), 7);
    EXPECT_EQ(bench.status(R"({"command":"Get_actions"})"), 0);
    EXPECT_EQ(text(ask(R"({"command":"Get_faults"})").at("faults")), "[]");

    ask(R"({"command":"Add_fault","method":"Get_actions","missing":"action_id"})");
    EXPECT_FALSE(bench.answer(R"({"command":"Get_actions"})").contains("action_id"));
    ask(R"({"command":"Clear_faults","fault_id":2})");
    EXPECT_TRUE(bench.answer(R"({"command":"Get_actions"})").contains("action_id"));
    ask(R"({"command":"Add_fault","method":"Get_actions","garble":true,"duplicate":true,"close":true,"delay_ms":5})");
    auto const spoilt = bench.dispatcher.answer(R"({"command":"Get_actions"})");
    EXPECT_TRUE(spoilt.duplicate);
    EXPECT_TRUE(spoilt.close);
    EXPECT_EQ(spoilt.delay.count(), 5);
    boost::json::error_code error;
    boost::json::parse(spoilt.text, error);
    EXPECT_TRUE(error) << spoilt.text;
    ask(R"({"command":"Add_fault","method":"Get_actions","drop":true})");
    EXPECT_EQ(bench.respond(R"({"command":"Get_actions"})"), "");
    ask(R"({"command":"Clear_faults"})");
    EXPECT_EQ(bench.status(R"({"command":"Get_actions"})"), 0);

    EXPECT_EQ(refusal(R"({"command":"Add_fault","method":"Get_action","fail":7})"),
              "1: there is no method \"Get_action\"");
    EXPECT_THAT(refusal(R"({"command":"Add_fault","method":"Get_actions"})"),
                StartsWith("1: it says not what"));
    EXPECT_THAT(refusal(R"({"command":"Add_fault","method":"Get_actions","drop":1})"),
                StartsWith("1: the member \"drop\" must be true or false"));
    EXPECT_EQ(refusal(R"({"command":"Clear_faults","fault_id":77})"), "9: there is no fault 77");
}

TEST_F(ControlTest, ChoosesTraces) {
    onvif();
    timer(30);
    ask(std::string(R"({"command":"Inject",)") + event + "}");
    ask(R"({"command":"Advance_clock","seconds":60})");
    auto const ids = [&](std::string const &choice) {
        std::string all;
        auto const answer = ask(R"({"command":"Get_traces")" + choice + "}");
        for (auto const &trace : answer.at("traces").as_array()) {
            all += text(trace.at("id"));
        }
        return all;
    };
    EXPECT_EQ(ids(""), "123");
    EXPECT_EQ(ids(R"(,"trigger_id":2)"), "23");
    EXPECT_EQ(ids(R"(,"action_id":1)"), "123");
    EXPECT_EQ(ids(R"(,"outcome":"failed")"), "");
    EXPECT_EQ(ids(R"(,"limit":1)"), "3") << "the last";
    EXPECT_EQ(ids(R"(,"after":0,"limit":1)"), "1") << "the next";
    EXPECT_EQ(ids(R"(,"after":1)"), "23");
    EXPECT_EQ(text(ask(R"({"command":"Get_traces","limit":1})").at("more")), "true");
}

TEST_F(ControlTest, ExplainsWhatAnEventWouldDoAndDoesNothing) {
    onvif();
    bench.number(R"({"command":"Set_action_filters","action_id":1,"weekday_filters":[2],)"
                 R"("time_filters_start":[28800],"time_filters_end":[64800]})",
                 "status");
    std::string const explain = std::string(R"({"command":"Explain",)") + event + "}";
    auto const early = ask(explain);
    EXPECT_EQ(text(early.at("trace").at("triggers").at(0).at("verdict")), R"("fires")");
    EXPECT_EQ(text(early.at("trace").at("actions").at(0).at("verdict")), R"("held back")");
    EXPECT_EQ(early.at("trace").at("actions").at(0).at("window").as_string(),
              "Monday 07:59:00 is not in filter 1 (on Monday, 08:00:00 to 18:00:00)");
    ask(R"({"command":"Advance_clock","seconds":60})");
    EXPECT_EQ(text(ask(explain).at("trace").at("actions").at(0).at("verdict")), R"("would run")");
    EXPECT_TRUE(bench.jobs.empty());
    EXPECT_EQ(text(ask(R"({"command":"Get_traces"})").at("traces")), "[]");
    EXPECT_EQ(text(ask(std::string(R"({"command":"Inject",)") + event + "}").at("fired")), "1");
    EXPECT_EQ(bench.jobs.size(), 1U);
    EXPECT_THAT(refusal(R"({"command":"Explain","topic":"a:B","message":"<a/>","namespace_keys":[],)"
                        R"("namespace_uris":[]})"),
                HasSubstr("the prefix \"a\" stands for no namespace"));
}

TEST_F(ControlTest, ChecksFilters) {
    std::string const names =
        R"(,"namespace_keys":["a"],"namespace_uris":["http://www.onvif.org/ver10/schema"]})";
    EXPECT_EQ(text(ask(R"({"command":"Check_topic_filter","topic_filter":"a:B//.")" + names).at("accepted")),
              "true");
    auto const topic = ask(R"({"command":"Check_topic_filter","topic_filter":"a:B/*")" + names);
    EXPECT_EQ(text(topic.at("accepted")), "false");
    EXPECT_EQ(text(topic.at("column")), "5");
    EXPECT_THAT(std::string(topic.at("words").as_string()), HasSubstr("the topic filter, column 5: "));
    auto const dialect =
        ask(R"({"command":"Check_topic_filter","topic_filter":"a:B","topic_filter_dialect":"x")" + names);
    EXPECT_EQ(text(dialect.at("accepted")), "false");
    EXPECT_FALSE(dialect.contains("column"));
    EXPECT_EQ(
        text(
            ask(R"json({"command":"Check_content_filter","content_filter":"boolean(//a:SimpleItem[@Name=\"x\"])")json" +
                names)
                .at("accepted")),
        "true");
    EXPECT_EQ(
        text(ask(R"({"command":"Check_content_filter","content_filter":"true")" + names).at("accepted")),
        "false");
    std::string const filters =
        R"({"command":"Check_filters","weekday_filters":[2],"time_filters_start":[28800],"time_filters_end":[64800])";
    EXPECT_EQ(text(ask(filters + "}").at("runs")), "false");
    EXPECT_EQ(text(ask(filters + R"(,"time":"2026-11-23T08:00:00"})").at("runs")), "true");
    EXPECT_EQ(
        text(
            ask(R"({"command":"Check_filters","weekday_filters":[128],"time_filters_start":[0],"time_filters_end":[0]})")
                .at("accepted")),
        "false");
}

TEST_F(ControlTest, TellsWhatAFilterTakes) {
    std::string const names =
        R"(,"namespace_keys":["a"],"namespace_uris":["http://www.onvif.org/ver10/schema"]})";
    std::string const topics = R"({"command":"Check_topic_filter","topic_filter":"a:B//.","topic":)";
    EXPECT_EQ(text(ask(topics + R"("a:B/C")" + names).at("takes")), "true");
    EXPECT_EQ(text(ask(topics + R"("a:C")" + names).at("takes")), "false");
    EXPECT_FALSE(ask(R"({"command":"Check_topic_filter","topic_filter":"a:B")" + names).contains("takes"));
    EXPECT_THAT(refusal(topics + R"("b:C")" + names), HasSubstr("the prefix \"b\" stands for no namespace"));

    std::string const contents =
        R"json({"command":"Check_content_filter","content_filter":"boolean(//a:SimpleItem[@Name=\"x\"])","message":)json";
    EXPECT_EQ(text(ask(contents + R"("<a:M><a:SimpleItem Name='x'/></a:M>")" + names).at("takes")), "true");
    EXPECT_EQ(text(ask(contents + R"("<a:M><a:SimpleItem Name='y'/></a:M>")" + names).at("takes")), "false");
    EXPECT_THAT(refusal(contents + R"("text")" + names), HasSubstr("message"));
    auto const unreadable =
        ask(R"({"command":"Check_content_filter","content_filter":"true","message":"<a:M/>")" + names);
    EXPECT_EQ(text(unreadable.at("accepted")), "false");
    EXPECT_FALSE(unreadable.contains("takes"));
}

TEST_F(ControlTest, TellsOfDevicesAsTimeGoesBy) {
    auto const job = [](std::size_t type, Values settings) {
        return Job{1, &action_kinds[type], std::move(settings), ""};
    };
    runner.run(job(9, {std::string("relay"), std::string("gate"), 0U, true, 2U, 1000U, 2000U}),
               [](RunResult const &) {});
    runner.run(job(7, {std::string("wiper")}), [](RunResult const &) {});
    runner.run(job(4, {std::string("preset"), std::string("door")}), [](RunResult const &) {});
    runner.run(job(2, {std::string("picture"), std::string("door.jpg")}), [](RunResult const &) {});
    auto const devices = [&] { return ask(R"({"command":"Get_devices"})").at("devices").as_object(); };
    auto const relay = [&] { return text(devices().at("relays").at(0)); };
    EXPECT_EQ(relay(),
              R"({"relay_target":"gate","on":true,"contact_closed":false,"busy":true,"config_mode":0})");
    EXPECT_EQ(text(devices().at("wiper_runs")), "true");
    EXPECT_EQ(text(devices().at("washer_runs")), "false");
    EXPECT_EQ(text(devices().at("head").at("moves")), "true");
    EXPECT_EQ(text(devices().at("head").at("position")), R"({"pan":0E0,"tilt":0E0,"zoom":1E0})");
    EXPECT_EQ(text(devices().at("pictures")), R"(["door.jpg"])");
    ask(R"({"command":"Advance_clock","seconds":1})");
    EXPECT_THAT(relay(), HasSubstr(R"("on":false,"contact_closed":true,"busy":true)"));
    ask(R"({"command":"Advance_clock","seconds":2})");
    EXPECT_THAT(relay(), HasSubstr(R"("on":true,"contact_closed":false,"busy":true)"));
    EXPECT_EQ(text(devices().at("wiper_runs")), "false");
    ask(R"({"command":"Advance_clock","seconds":3})");
    EXPECT_THAT(relay(), HasSubstr(R"("on":false,"contact_closed":true,"busy":false)"));
    EXPECT_EQ(text(devices().at("head").at("moves")), "false");
    EXPECT_EQ(text(devices().at("head").at("position")), text(devices().at("head").at("target")));
}

TEST_F(ControlTest, GivesAndTakesTheCatalogue) {
    timer(20);
    bench.number(
        R"({"command":"Create_ftp_action","action_name":"f","server_name":"s","username":"u","password":"secret","path":"p","filename":"f"})",
        "action_id");
    auto const taken = ask(R"({"command":"Get_catalogue"})").at("catalogue").as_object();
    EXPECT_EQ(
        text(taken),
        R"({"format":"korvo-action-engine-catalogue","version":1,"actions":[)"
        R"({"id":1,"kind":"wiper_action","settings":{"action_name":"wiper"},"filters":{"weekday_filters":[],"time_filters_start":[],"time_filters_end":[]}},)"
        R"({"id":2,"kind":"ftp_action","settings":{"action_name":"f","server_name":"s","username":"u","password":null,"path":"p","filename":"f"},"filters":{"weekday_filters":[],"time_filters_start":[],"time_filters_end":[]}}],)"
        R"("triggers":[{"id":1,"kind":"timer_trigger","settings":{"trigger_name":"t","timer_seconds":20}}],)"
        R"("associations":[{"trigger_id":1,"action_id":1}]})");
    auto changed = taken;
    changed["associations"].as_array().push_back({{"trigger_id", 1}, {"action_id", 2}});
    changed["actions"].as_array()[0].as_object()["id"] = 7;
    std::string const command = R"({"command":"Replace_catalogue","catalogue":)";
    EXPECT_EQ(refusal(command + text(changed) + "}"), "9: there is no action 1") << "it is 7 now";
    EXPECT_EQ(text(ask(R"({"command":"Get_catalogue"})").at("catalogue")), text(taken))
        << "nothing has changed";
    changed["associations"].as_array()[0].as_object()["action_id"] = 7;
    EXPECT_EQ(refusal(command + text(changed) + "}"), "0: ");
    EXPECT_EQ(text(ask(R"({"command":"Get_catalogue","secrets":true})")
                       .at("catalogue")
                       .at("actions")
                       .at(0)
                       .at("settings")
                       .at("password")),
              R"("secret")");
    ask(R"({"command":"Advance_clock","seconds":20})");
    ASSERT_EQ(bench.jobs.size(), 2U);
    EXPECT_EQ(bench.jobs.back().action_id, 7U);
    EXPECT_EQ(bench.number(R"({"command":"Create_wiper_action","action_name":"w"})", "action_id"), 8);
}

TEST_F(ControlTest, TakesNoCatalogueThatMeansNothing) {
    auto const replace = [&](std::string const &actions, std::string const &triggers = "") {
        return refusal(
            R"({"command":"Replace_catalogue","catalogue":{"format":"korvo-action-engine-catalogue","version":1,"actions":[)" +
            actions + R"(],"triggers":[)" + triggers + R"(],"associations":[]}})");
    };
    std::string const filters =
        R"("filters":{"weekday_filters":[],"time_filters_start":[],"time_filters_end":[]}})";
    std::string const wiper = R"({"id":3,"kind":"wiper_action","settings":{"action_name":"w"},)" + filters;
    EXPECT_EQ(replace(wiper + "," + wiper), R"(1: entry 2 of "actions": the identifier 3 is there already)");
    EXPECT_EQ(replace(R"({"id":0,"kind":"wiper_action","settings":{},)" + filters),
              R"(1: entry 1 of "actions": an identifier must be a whole number from 1 to 4294967295)");
    EXPECT_EQ(replace(R"({"id":1,"kind":"wiper","settings":{},)" + filters),
              R"(1: entry 1 of "actions": there is no kind "wiper")");
    EXPECT_EQ(replace(R"({"id":1,"kind":"wiper_action","settings":{},)" + filters),
              R"(1: entry 1 of "actions": the member "action_name" is missing)");
    EXPECT_THAT(replace(R"({"id":1,"kind":"ftp_action","settings":{"password":null},)" + filters),
                HasSubstr(R"("password" is null)"));
    EXPECT_THAT(
        replace(
            "",
            R"({"id":1,"kind":"onvif_trigger","settings":{"trigger_name":"o","topic_filter":"x:y","topic_filter_dialect":"","content_filter":"","namespace_keys":[],"namespace_uris":[]}})"),
        StartsWith(R"(9: trigger 1: the topic filter, column 1: the prefix "x")"));
    EXPECT_THAT(refusal(R"({"command":"Replace_catalogue","catalogue":{"format":"x"}})"),
                HasSubstr("no catalogue"));
    struct Case {
        /// What follows the format.
        char const *rest;
        char const *why;
    };
    Case const cases[] = {
        {R"("actions":[])", R"(1: the member "version" is missing)"},
        {R"("version":2)", R"(1: its "version" is not 1, the only one that this service knows)"},
        {R"("version":"1")", R"(1: its "version" is not 1, the only one that this service knows)"},
        {R"("version":1,"actions":{})", R"(1: the member "actions" must be an array)"},
        {R"("version":1,"actions":[7])", R"(1: entry 1 of "actions": it is no JSON object)"},
        {R"("version":1,"actions":[{"id":1,"kind":2}])",
         R"(1: entry 1 of "actions": the member "kind" must be a string)"},
        {R"("version":1,"actions":[{"id":1,"kind":"wiper_action","settings":[]}])",
         R"(1: entry 1 of "actions": "settings" is no JSON object)"},
        {R"("version":1,"actions":[],"triggers":[],"associations":[{"trigger_id":1}])",
         R"(1: entry 1 of "associations": the member "action_id" is missing)"},
        {R"("version":1,"actions":[],"triggers":[],"associations":[{"trigger_id":0,"action_id":1}])",
         R"(1: entry 1 of "associations": an identifier must be a whole number from 1 to 4294967295)"},
    };
    for (Case const &one : cases) {
        EXPECT_EQ(
            refusal(
                std::string(
                    R"({"command":"Replace_catalogue","catalogue":{"format":"korvo-action-engine-catalogue",)") +
                one.rest + "}}"),
            one.why)
            << one.rest;
    }
    EXPECT_EQ(bench.number(R"({"command":"Get_actions"})", "status"), 0);
    EXPECT_EQ(text(ask(R"({"command":"Get_catalogue"})").at("catalogue").at("actions").at(0).at("settings")),
              R"({"action_name":"wiper"})");
}

TEST_F(ControlTest, RefusesWhatItDoesNotKnow) {
    EXPECT_THAT(refusal("nonsense"), StartsWith("1: the command is no JSON object"));
    EXPECT_THAT(refusal("[]"), StartsWith("1: "));
    EXPECT_THAT(refusal(R"({"command":7})"), StartsWith("1: the member \"command\" must be a string"));
    EXPECT_THAT(refusal(R"({"command":"Get_actions"})"),
                StartsWith("8: there is no control command \"Get_actions\"; there are Get_clock, "));
}

TEST_F(ControlTest, SaysWhichMemberIsOfAnotherType) {
    struct Case {
        char const *command;
        char const *why;
    };
    Case const cases[] = {
        {R"({"command":"Inject","topic":"t","message":"<a/>","namespace_keys":["a",7],"namespace_uris":[]})",
         "1: the member \"namespace_keys\" must be an array of strings"},
        {R"({"command":"Inject","topic":"t","message":"<a/>","namespace_keys":"a","namespace_uris":[]})",
         "1: the member \"namespace_keys\" must be an array"},
        {R"({"command":"Replace_catalogue","catalogue":[]})",
         "1: the member \"catalogue\" must be an object"},
        {R"({"command":"Clear_faults","fault_id":"1"})",
         "1: the member \"fault_id\" must be a whole number from 0 to 4294967295"},
        {R"({"command":"Clear_faults","fault_id":-1})",
         "1: the member \"fault_id\" must be a whole number from 0 to 4294967295"},
        {R"({"command":"Clear_faults","fault_id":1.5})",
         "1: the member \"fault_id\" must be a whole number from 0 to 4294967295"},
    };
    for (Case const &one : cases) {
        EXPECT_EQ(refusal(one.command), one.why) << one.command;
    }
}

TEST_F(ControlTest, TellsOfTheRelaysThatWereSwitchedLast) {
    constexpr int told = 256;
    for (int n = 0; n <= told; ++n) {
        ask(R"({"command":"Advance_clock","seconds":1})");
        runner.run(Job{1, &action_kinds[9],
                       Values{std::string("relay"), std::to_string(n), 0U, true, 2U, 1000U, 2000U}, ""},
                   [](RunResult const &result) { EXPECT_TRUE(result.success); });
    }
    auto const devices = ask(R"({"command":"Get_devices"})");
    std::set<std::string> names;
    for (auto const &relay : devices.at("devices").at("relays").as_array()) {
        names.emplace(relay.at("relay_target").as_string());
    }
    EXPECT_EQ(names.size(), static_cast<std::size_t>(told));
    EXPECT_EQ(names.count("0"), 0U) << "the oldest goes";
    EXPECT_EQ(names.count("1"), 1U);
    EXPECT_EQ(names.count("256"), 1U);
}

TEST_F(ControlTest, StartsAndStopsCapturesAndReplays) {
    std::string const file = folder / "c";
    std::string const named = R"(,"file":")" + file + "\"}";
    EXPECT_EQ(refusal(R"({"command":"Stop_capture"})"), "9: no messages are captured");
    EXPECT_EQ(refusal(R"({"command":"Stop_replay"})"), "9: no capture is replayed");
    EXPECT_EQ(refusal(R"({"command":"Start_capture","file":"c"})"),
              "1: the member \"file\" must be an absolute path");
    EXPECT_EQ(refusal(R"({"command":"Start_replay"})"), "1: the member \"file\" is missing");
    EXPECT_EQ(refusal(R"({"command":"Start_replay")" + named),
              "9: cannot read the capture \"" + file + "\": No such file or directory");
    EXPECT_EQ(refusal(R"({"command":"Start_capture","secrets":true)" + named), "0: ");
    EXPECT_EQ(refusal(R"({"command":"Start_capture")" + named),
              "9: messages are captured already; stop that first");
    tape.note(Wall(), {"a", "1", Capture::Direction::to_service, R"({"command":"c","password":"p"})"});
    EXPECT_EQ(text(ask(R"({"command":"Stop_capture"})")),
              R"({"command":"Stop_capture","status":0,"messages":1})");
    EXPECT_THAT(readFile(file), HasSubstr(R"(\"password\":\"p\")"));
    EXPECT_EQ(refusal(R"({"command":"Start_capture")" + named),
              "9: cannot write the capture \"" + file + "\": File exists");
    EXPECT_EQ(refusal(R"({"command":"Start_replay")" + named), "0: ");
    EXPECT_EQ(refusal(R"({"command":"Start_replay")" + named),
              "9: a capture is replayed already; stop that first");
    EXPECT_EQ(text(ask(R"({"command":"Stop_replay"})")),
              R"({"command":"Stop_replay","status":0,"answered":0,"refused":0,"left":1})");
}

}  // namespace simulator::tests
