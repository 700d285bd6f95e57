// SPDX-License-Identifier: Apache-2.0
#include "simulator/dispatcher.h"

#include <gtest/gtest.h>

#include <boost/json/value.hpp>
#include <string>

#include "simulator/log.h"
#include "simulator/methods.h"
#include "support.h"

namespace simulator::tests {

namespace {

Dispatcher::Settings faulty(char const *method, Fault const &fault) {
    Dispatcher::Settings settings;
    settings.faults[findMethod(method).value()] = fault;
    return settings;
}

}  // namespace

TEST(Faults, AFailingMethodAnswersItsStatusAndDoesNothing) {
    Bench bench("", faulty("Create_wiper_action", {7, std::chrono::milliseconds(0), false}));
    EXPECT_EQ(bench.respond(R"({"command":"Create_wiper_action","action_name":"n"})"),
              R"({"command":"Create_wiper_action","status":7})");
    EXPECT_EQ(bench.number(R"({"command":"Get_action_counts"})", "total"), 0);
    EXPECT_EQ(bench.status(R"({"command":"Create_washer_action","action_name":"n"})"), 0);
}

TEST(Faults, ADroppedMethodHasNoAnswerAndDoesNothing) {
    Bench bench("", faulty("Create_wiper_action", {std::nullopt, std::chrono::milliseconds(0), true}));
    EXPECT_EQ(bench.respond(R"({"command":"Create_wiper_action","action_name":"n"})"), "");
    EXPECT_EQ(bench.number(R"({"command":"Get_action_counts"})", "total"), 0);
}

TEST(Faults, ADelayedMethodIsCarriedOutAtOnceAndItsAnswerHeldBack) {
    Bench bench("", faulty("Create_wiper_action", {std::nullopt, std::chrono::milliseconds(250), false}));
    Dispatcher::Answer const late =
        bench.dispatcher.answer(R"({"command":"Create_wiper_action","action_name":"n"})");
    EXPECT_EQ(late.delay, std::chrono::milliseconds(250));
    EXPECT_EQ(late.text, R"({"command":"Create_wiper_action","status":0,"action_id":1})");
    EXPECT_EQ(bench.dispatcher.answer(R"({"command":"Get_actions"})").delay, std::chrono::milliseconds(0));
    EXPECT_EQ(bench.number(R"({"command":"Get_action_counts"})", "total"), 1);
}

TEST(Dispatcher, AnswersVersionQueriesWithTheVersionThatItIsGiven) {
    Dispatcher::Settings settings;
    settings.version = {2, 4294967295};
    Bench bench("", settings);
    EXPECT_EQ(
        bench.respond(R"({"command":"__get_target_version__","initiator_major":1,"initiator_minor":19})"),
        R"({"command":"__get_target_version__","status":0,"target_major":2,"target_minor":4294967295})");
}

TEST(Dispatcher, SaysInTheLogWhatIsWrongWithACommand) {
    Bench bench;
    bench.respond(R"({"command":"Get_action_type","action_id":"7"})");
    bench.respond(R"({"command":"Get_action_type","action_id":7})");
    bench.respond(R"({"command":"Get_action_tipe"})");
    ASSERT_EQ(bench.log.lines.size(), 3U);
    EXPECT_EQ(bench.log.lines[0],
              "4 \"Get_action_type\" refused: the member \"action_id\" must be a whole number from 0 "
              "to 4294967295");
    EXPECT_EQ(bench.log.lines[1], "4 \"Get_action_type\" refused: there is no action 7");
    EXPECT_EQ(bench.log.lines[2], "4 \"Get_action_tipe\" refused: there is no method \"Get_action_tipe\"");
}

TEST(Dispatcher, SaysInTheLogThatACommandHasNoName) {
    Bench bench;
    bench.respond("[]");
    ASSERT_EQ(bench.log.lines.size(), 1U);
    EXPECT_EQ(bench.log.lines[0], "4 a command refused: the command is no JSON object");
}

TEST(Dispatcher, KeepsAFloodOfBadCommandsOutOfTheLog) {
    Bench bench;
    for (int n = 0; n < 1000; ++n) {
        bench.respond("nonsense");
    }
    EXPECT_EQ(bench.log.lines.size(), 20U);
    bench.advance(std::chrono::seconds(1));
    bench.respond("nonsense");
    ASSERT_EQ(bench.log.lines.size(), 22U);
    EXPECT_EQ(bench.log.lines[20], "4 980 more commands were refused");
}

TEST(Dispatcher, GivesBackTextsExactly) {
    Bench bench;
    std::string const name =
        R"(quote \" backslash \\ slash / line\nfeed tab\t bell\u0007 \u00fc\u20ac\ud83d\ude00 end)";
    bench.respond(R"({"command":"Create_wiper_action","action_name":")" + name + "\"}");
    EXPECT_EQ(bench.answer(R"({"command":"Get_wiper_action","action_id":1})").at("action_name").as_string(),
              "quote \" backslash \\ slash / line\nfeed tab\t bell\x07 \u00fc\u20ac\U0001F600 end");
}

TEST(Dispatcher, EscapesEachCharacterThatNeedsIt) {
    Bench bench;
    struct Case {
        char const *sent;
        char const *returned;
    };
    Case const cases[] = {
        {R"(a\"b)", R"(a\"b)"},         {R"(a\\b)", R"(a\\b)"},         {R"(a\u000ab)", R"(a\nb)"},
        {R"(a\u0001b)", R"(a\u0001b)"}, {R"(a\u001fb)", R"(a\u001fb)"}, {R"(a/b)", R"(a/b)"},
    };
    int id = 0;
    for (Case const &one : cases) {
        bench.respond(std::string(R"({"command":"Create_wiper_action","action_name":")") + one.sent + "\"}");
        EXPECT_EQ(bench.respond(R"({"command":"Get_wiper_action","action_id":)" + std::to_string(++id) + "}"),
                  std::string(R"({"command":"Get_wiper_action","status":0,"action_name":")") + one.returned +
                      "\"}");
    }
}

TEST(Dispatcher, GivesBackLongTextsThatNeedEscapes) {
    Bench bench;
    std::string sent;
    std::string expected;
    for (int n = 0; n < 10'000; ++n) {
        sent += "line " + std::to_string(n) + "\\n";
        expected += "line " + std::to_string(n) + "\n";
    }
    bench.respond(R"({"command":"Create_wiper_action","action_name":")" + sent + "\"}");
    EXPECT_EQ(bench.answer(R"({"command":"Get_wiper_action","action_id":1})").at("action_name").as_string(),
              expected);
}

TEST(Dispatcher, GivesBackLongTextsAndLists) {
    Bench bench;
    std::string const text(64 * 1024, 'x');
    std::string list = "\"first\"";
    for (int n = 1; n < 10'000; ++n) {
        list += ",\"someone@example.com\"";
    }
    ASSERT_EQ(bench.status(
                  R"({"command":"Create_email_action","action_name":"n","smtp_server":"s","to_addresses":[)" +
                  list + R"(],"cc_addresses":[""],"from_address":"f","subject":"","body":")" + text +
                  R"(","attach_jpeg":true,"include_event":true})"),
              0);
    boost::json::object const mail = bench.answer(R"({"command":"Get_email_action","action_id":1})");
    EXPECT_EQ(mail.at("body").as_string(), text);
    EXPECT_EQ(mail.at("subject").as_string(), "");
    ASSERT_EQ(mail.at("to_addresses").as_array().size(), 10'000U);
    EXPECT_EQ(mail.at("to_addresses").as_array()[0].as_string(), "first");
    EXPECT_EQ(mail.at("to_addresses").as_array()[9999].as_string(), "someone@example.com");
    EXPECT_EQ(mail.at("cc_addresses").as_array().size(), 1U);
}

TEST(Dispatcher, NeedsNoMoreMemoryForTheHundredthLargeCommand) {
    Bench bench;
    std::string numbers = "1";
    for (int n = 1; n < 50'000; ++n) {
        numbers += ",1";
    }
    ASSERT_EQ(bench.status(R"({"command":"Create_wiper_action","action_name":"n"})"), 0);
    // Memory that doubles with each of them is used up long before the last.
    for (int n = 0; n < 100; ++n) {
        ASSERT_EQ(bench.status(R"({"command":"Set_action_filters","action_id":1,"weekday_filters":[)" +
                               numbers + R"(],"time_filters_start":[)" + numbers +
                               R"(],"time_filters_end":[)" + numbers + "]}"),
                  0);
    }
}

TEST(Dispatcher, RefusesToAnswerWhatIsLongerThanAMessage) {
    TemporaryFolder const folder;
    // The service keeps no such name, but a store may hold one.
    {
        Store store(folder / "store");
        store.addAction(protocol::run_wiper, R"({"action_name":")" + std::string(1'000'000, 'n') + "\"}",
                        R"({"weekday_filters":[],"time_filters_start":[],"time_filters_end":[]})");
    }
    Bench bench(folder / "store");
    EXPECT_EQ(bench.respond(R"({"command":"Get_wiper_action","action_id":1})"),
              R"({"command":"Get_wiper_action","status":9})");
    EXPECT_EQ(bench.number(R"({"command":"Get_action_type","action_id":1})", "action_type"), 7);
}

TEST(OtherVersions, AreAnsweredWithOursServedAlikeAndToldOfOnce) {
    Bench bench;
    auto const query = [](int major, int minor) {
        return R"({"command":"__get_target_version__","initiator_major":)" + std::to_string(major) +
               R"(,"initiator_minor":)" + std::to_string(minor) + "}";
    };
    for (int round = 0; round < 3; ++round) {
        for (auto const &[major, minor] :
             {std::pair(1, 18), std::pair(1, 19), std::pair(1, 20), std::pair(2, 0)}) {
            EXPECT_EQ(
                bench.respond(query(major, minor)),
                R"({"command":"__get_target_version__","status":0,"target_major":1,"target_minor":19})");
            EXPECT_EQ(bench.status(R"({"command":"Create_wiper_action","action_name":"n"})"), 0);
        }
    }
    ASSERT_EQ(bench.log.lines.size(), 3U);
    EXPECT_NE(bench.log.lines[0].find("interface version 1.18"), std::string::npos);
    EXPECT_NE(bench.log.lines[1].find("interface version 1.20"), std::string::npos);
    EXPECT_NE(bench.log.lines[2].find("interface version 2.0"), std::string::npos);
    for (int minor = 100; minor < 200; ++minor) {
        bench.respond(query(3, minor));
    }
    EXPECT_EQ(bench.log.lines.size(), 16U);
}

TEST(Quoted, ShowsWhatATextHoldsAndCutsIt) {
    EXPECT_EQ(simulator::quoted("gate \xc3\xa4"), "\"gate \xc3\xa4\"");
    EXPECT_EQ(simulator::quoted("a\nb\x1b[2J\xc2\x9b\xe2\x80\xae\x9b"),
              "\"a\\nb\\x1b[2J\\u009b\\u202e\\x9b\"");
    EXPECT_EQ(simulator::quoted(std::string(159, 'x') + "\xe2\x82\xac"),
              "\"" + std::string(159, 'x') + "\" (cut; 162 bytes)");
}

}  // namespace simulator::tests
