// SPDX-License-Identifier: Apache-2.0
#include "simulator/captures/rebuilding.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "examples.h"
#include "recorded.h"
#include "simulator/catalogue_document.h"
#include "support.h"

namespace simulator::tests {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Rebuilt rebuiltFrom(std::string const &text) {
    std::istringstream stream(text);
    return catalogueIn(readRecording(stream));
}

/// The catalogue as a document, without secrets.
std::string told(Catalogue const &catalogue) {
    return boost::json::serialize(documentOf(catalogue, Telling::without_secrets));
}

std::string told(Rebuilt rebuilt) {
    Store store("");
    Catalogue catalogue(store);
    catalogue.replace(std::move(rebuilt.contents));
    return told(catalogue);
}

}  // namespace

TEST(RebuiltCatalogues, AreThoseThatWereCaptured) {
    Bench bench;
    Captured captured;
    auto const send = [&](std::string const &command) {
        captured.command(command).answer(bench.respond(command));
    };
    for (char const *const command : preparation) {
        send(command);
    }
    for (Example const &example : examples) {
        std::string const inputs = example.inputs;
        send(std::string(R"({"command":")") + example.method + "\"" + (inputs.empty() ? "" : ",") + inputs +
             "}");
    }
    std::string expected;
    bench.engine.change([&](EngineState &state) { expected = told(state.catalogue); });
    Rebuilt rebuilt = rebuiltFrom(captured.text());
    EXPECT_THAT(rebuilt.remarks, IsEmpty());
    EXPECT_FALSE(rebuilt.contents.associations.empty());
    EXPECT_EQ(told(std::move(rebuilt)), expected);
}

TEST(RebuiltCatalogues, FollowTheOrderOfTheAnswersAndLeaveOutWhatWasRefused) {
    Captured captured;
    captured.command(R"({"command":"Modify_wiper_action","action_id":1,"action_name":"second"})");
    captured.command(R"({"command":"Create_wiper_action","action_name":"first"})");
    captured.line("a", "2", "from service", R"({"command":"Create_wiper_action","status":0,"action_id":1})");
    captured.line("a", "1", "from service", R"({"command":"Modify_wiper_action","status":0})");
    captured.command(R"({"command":"Create_wiper_action","action_name":"refused"})")
        .answer(R"({"command":"Create_wiper_action","status":9})");
    captured.command(R"({"command":"Modify_wiper_action","action_id":1,"action_name":"unanswered"})");
    Rebuilt const rebuilt = rebuiltFrom(captured.text());
    EXPECT_THAT(rebuilt.remarks, IsEmpty());
    ASSERT_EQ(rebuilt.contents.actions.size(), 1U);
    EXPECT_EQ(std::get<std::string>(rebuilt.contents.actions.at(1).settings[0]), "second");
}

TEST(RebuiltCatalogues, TakeWhatIsReadAndLeaveOutWhatListsTellIsGone) {
    Captured captured;
    captured.command(R"({"command":"Create_wiper_action","action_name":"gone"})")
        .answer(R"({"command":"Create_wiper_action","status":0,"action_id":1})");
    captured.command(R"({"command":"Get_actions"})")
        .answer(R"({"command":"Get_actions","status":0,"action_id":[4,5],"action_type":[8,7]})");
    captured.command(R"({"command":"Get_washer_action","action_id":4})")
        .answer(R"({"command":"Get_washer_action","status":0,"action_name":"read"})");
    captured.command(R"({"command":"Get_action_filters","action_id":4})")
        .answer(
            R"({"command":"Get_action_filters","status":0,"weekday_filters":[2],"time_filters_start":[3],"time_filters_end":[4]})");
    captured.command(R"({"command":"Get_timer_trigger","trigger_id":2})")
        .answer(R"({"command":"Get_timer_trigger","status":0,"trigger_name":"t","timer_seconds":60})");
    captured.command(R"({"command":"Create_association","trigger_id":2,"action_id":1})")
        .answer(R"({"command":"Create_association","status":0})");
    captured.command(R"({"command":"Get_trigger_associations","trigger_id":2})")
        .answer(R"({"command":"Get_trigger_associations","status":0,"action_id":[4,5],"action_type":[8,7]})");
    Rebuilt rebuilt = rebuiltFrom(captured.text());
    EXPECT_THAT(
        rebuilt.remarks,
        ElementsAre(
            "wiper action 5 is left out: the capture lists it, and does not show its settings",
            "the association of trigger 2 and action 5 is left out: the capture does not show both of them"));
    EXPECT_EQ(
        told(std::move(rebuilt)),
        R"({"format":"korvo-action-engine-catalogue","version":1,)"
        R"("actions":[{"id":4,"kind":"washer_action","settings":{"action_name":"read"},)"
        R"("filters":{"weekday_filters":[2],"time_filters_start":[3],"time_filters_end":[4]}}],)"
        R"("triggers":[{"id":2,"kind":"timer_trigger","settings":{"trigger_name":"t","timer_seconds":60}}],)"
        R"("associations":[{"trigger_id":2,"action_id":4}]})");
}

TEST(RebuiltCatalogues, TellOfHiddenPasswordsAndPassOverWhatAFaultHasSpoilt) {
    Captured captured;
    captured
        .command(
            R"({"command":"Create_ftp_action","action_name":"f","server_name":"s","username":"u","password":null,"path":"","filename":"n"})")
        .answer(R"({"command":"Create_ftp_action","status":0,"action_id":1})");
    captured.command(R"({"command":"Create_wiper_action","action_name":"w"})")
        .answer(R"({"command":"Create_wiper_action","status":0})");
    captured.command(R"({"command":"Create_wiper_action","action_name":"w"})")
        .answer(R"({"command":"Create_wiper_action","status":0,"action_id":0})");
    captured.command(R"({"command":"Create_washer_action","action_name":"w"})")
        .answer(R"({"command":"Create_wa)");
    captured.command(R"({"command":"Get_actions"})")
        .answer(R"({"command":"Get_actions","status":0,"action_id":[1],"action_type":[77]})");
    Rebuilt const rebuilt = rebuiltFrom(captured.text());
    EXPECT_THAT(rebuilt.remarks,
                ElementsAre("the command in line 3 and its answer are passed over: the member \"action_id\" "
                            "is missing",
                            "the command in line 5 and its answer are passed over: 0 is no identifier",
                            "the command in line 9 and its answer are passed over: there is no type 77",
                            "the password of action 1 is hidden in the capture; it is empty now"));
    EXPECT_EQ(rebuilt.contents.actions.size(), 1U);
}

}  // namespace simulator::tests
