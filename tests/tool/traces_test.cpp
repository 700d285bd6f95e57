// SPDX-License-Identifier: Apache-2.0
// Why something happened or did not, and the control of the service.
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include "processes/temporary_folder.h"
#include "support/service.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

using end_to_end::Service;
using processes::exited;

constexpr char topic[] = "tns1:Device/Trigger";

/// At a minute before the window of its action.
class Traces : public ::testing::Test {
  protected:
    void SetUp() override {
        (void)results({"rule", "add", "--topic", topic, "--content",
                       "boolean(//tt:SimpleItem[@Name=\"IsInside\" and @Value=\"true\"])", "--name", "inside",
                       "--action", "wiper action_name=wipe", "--filter", "Mon 08:00-18:00"});
    }

    Service service{{"--clock", "virtual=2026-11-23T07:59:00"}};
};

bool contains(std::string const &text, std::string const &wanted) {
    return text.find(wanted) != std::string::npos;
}

TEST_F(Traces, AreToldInWords) {
    EXPECT_TRUE(contains(results({"why"}), "Nothing has happened"));
    (void)results({"inject", topic, "IsInside=false"});
    std::string const missed = results({"why"});
    EXPECT_TRUE(contains(missed,
                         "  event tns1:Device/Trigger: no match\n"
                         "  trigger 1 (inside): message fails: \"IsInside\" was \"false\", the filter wants "
                         "\"true\"\n"))
        << missed;
    (void)results({"inject", topic, "IsInside=true"});
    std::string const held = results({"why", "--last"});
    EXPECT_TRUE(
        contains(held,
                 ": held back\n  trigger 1 (inside): fires\n  action 1 (wipe): held back; Monday 07:59:00 "
                 "is not in filter 1"))
        << held;
    EXPECT_EQ(results({"why", "--action", "action:1", "--json"}),
              results({"why", "--action", "wipe", "--json"}));
    EXPECT_EQ(results({"why", "--trigger", "1", "--last"}),
              results({"why", "--trigger", "inside", "--last"}));
    EXPECT_TRUE(tool({"why", "--trigger", "outside"}).exit == exited(6));
    (void)results({"sim", "clock", "--advance", "60"});
    (void)results({"inject", topic, "IsInside=true"});
    std::string all = results({"why", "--action", "1"});
    while (!contains(all, "action 1 (wipe): succeeded; ")) {
        all = results({"why", "--action", "1"});
    }
    EXPECT_FALSE(contains(all, "message fails")) << all;
    EXPECT_TRUE(contains(results({"trace", "--outcome", "held back", "--json"}),
                         "{\"id\":2,\"time\":\"2026-11-23T07:59:00"));
    EXPECT_FALSE(contains(results({"trace"}), "\x1b"));
}

TEST_F(Traces, AreFollowed) {
    processes::Child child(toolCommand({"trace", "--follow"}));
    while (!child.out().waitFor("no match", 0, processes::milliseconds(50)) && child.running()) {
        (void)results({"inject", topic, "IsInside=false"});
    }
    child.signal(SIGINT);
    EXPECT_TRUE(child.wait() == exited(0)) << child.errors().text();
}

TEST_F(Traces, AreFollowedWithoutThoseBefore) {
    (void)results({"inject", topic, "IsInside=true"});
    processes::Child child(toolCommand({"trace", "--follow", "--count", "0"}));
    auto const limit = processes::Clock::now() + processes::patience;
    while (!child.out().waitFor("no match", 0, processes::milliseconds(50)) && child.running() &&
           processes::Clock::now() < limit) {
        (void)results({"inject", topic, "IsInside=false"});
    }
    child.signal(SIGINT);
    EXPECT_TRUE(child.wait() == exited(0)) << child.errors().text();
    EXPECT_TRUE(contains(child.out().text(), "no match")) << child.out().text();
    EXPECT_FALSE(contains(child.out().text(), "held back")) << child.out().text();
    EXPECT_EQ(results({"trace", "--count", "0"}), "");
}

TEST_F(Traces, AreColouredOnATerminalOnly) {
    (void)results({"inject", topic, "IsInside=false"});
    std::string const yellow = "\x1b[33mno match\x1b[0m";
    EXPECT_TRUE(
        contains(shell("env -u NO_COLOR script -qec 'korvo-action-engine why' /dev/null").out, yellow));
    EXPECT_FALSE(contains(shell("NO_COLOR=1 script -qec 'korvo-action-engine why' /dev/null").out, "\x1b["));
    EXPECT_FALSE(contains(shell("env -u NO_COLOR korvo-action-engine why").out, "\x1b["));
}

TEST_F(Traces, TellWhatAnEventWouldDo) {
    auto const message = results({"inject", topic, "IsInside=true", "--dry-run"});
    auto const file = fileWith(message).string();
    std::string const told = results({"explain", file, "--topic", topic});
    EXPECT_TRUE(contains(told, "  trigger 1 (inside): fires\n  action 1 (wipe): held back; ")) << told;
    std::string const notification =
        "<wsnt:NotificationMessage xmlns:wsnt=\"urn:n\" xmlns:tns1=\"http://www.onvif.org/ver10/topics\">"
        "<wsnt:Topic Dialect=\"d\"> tns1:Device/Trigger </wsnt:Topic><wsnt:Message>" +
        message + "</wsnt:Message></wsnt:NotificationMessage>";
    EXPECT_EQ(results({"explain", fileWith(notification).string()}), told);
    EXPECT_TRUE(contains(results({"why"}), "Nothing has happened")) << "nothing was done";

    Finished const nameless = tool({"explain", file});
    EXPECT_TRUE(nameless.exit == exited(2));
    EXPECT_TRUE(contains(nameless.errors, "EVENT does not name the event's topic\n  give it with --topic"));
    EXPECT_TRUE(tool({"explain", fileWith("text").string(), "--topic", "a"}).exit == exited(2));
}

TEST(Simulator, TakesFaultsAndTime) {
    Service service;
    Finished const real = tool({"sim", "clock", "--advance", "60"});
    EXPECT_TRUE(real.exit == exited(5));
    EXPECT_TRUE(contains(real.errors, "start the service with --clock virtual to move it")) << real.errors;
    EXPECT_TRUE(contains(results({"sim", "clock"}), "mode            real\n"));
    EXPECT_TRUE(tool({"sim", "clock", "--advance", "1", "--rate", "2"}).exit == exited(2));

    EXPECT_EQ(results({"sim", "fault", "Get_actions", "--fail", "2", "--count", "1"}), "fault_id  1\n");
    EXPECT_TRUE(contains(results({"sim", "fault", "--json"}), "\"method\":\"Get_actions\",\"fail\":2,"));
    EXPECT_EQ(results({"sim", "fault"}),
              "faults  fault_id 1, method Get_actions, fail 2, delay_ms 0, drop no, garble no, duplicate no, "
              "close no, missing none, count 1\n");
    EXPECT_TRUE(tool({"get-actions"}).exit == exited(1));
    EXPECT_TRUE(tool({"get-actions"}).exit == exited(0));
    (void)results({"sim", "fault", "Get_actions", "--garble"});
    EXPECT_TRUE(tool({"get-actions"}).exit == exited(1));
    (void)results({"sim", "fault", "--clear-all"});
    EXPECT_TRUE(tool({"get-actions"}).exit == exited(0));
    EXPECT_EQ(results({"sim", "device"}),
              "relays       none\n"
              "wiper_runs   no\n"
              "washer_runs  no\n"
              "head         position (pan 0, tilt 0, zoom 1), target (pan 0, tilt 0, zoom 1), moves no\n"
              "pictures     none\n");
}

TEST(Simulator, CapturesAndReplays) {
    Service service;
    processes::TemporaryFolder const folder;
    std::string const file = folder / "c";
    EXPECT_TRUE(tool({"sim", "capture", "stop"}).exit == exited(5));
    (void)results({"sim", "capture", "start", file});
    (void)results({"create-wiper-action", "--action-name", "captured"});
    std::string const listed = results({"get-actions"});
    EXPECT_TRUE(contains(results({"sim", "capture", "stop"}), "messages  "));
    EXPECT_TRUE(tool({"sim", "capture", "start", file}).exit == exited(5)) << "the file is there";
    (void)results({"create-wiper-action", "--action-name", "not captured"});

    (void)results({"sim", "replay", "start", file});
    EXPECT_EQ(results({"get-actions"}), listed);
    EXPECT_TRUE(tool({"get-actions"}).exit == exited(5)) << "it was captured once";
    EXPECT_TRUE(contains(results({"sim", "replay", "stop"}), "refused   1\n"));
    EXPECT_NE(results({"get-actions"}), listed);

    EXPECT_TRUE(tool({"sim", "replay", "start"}).exit == exited(2));
    EXPECT_TRUE(tool({"sim", "replay", "stop", file}).exit == exited(2));
    EXPECT_TRUE(tool({"sim", "capture", "stop", "--show-secrets"}).exit == exited(2));
    EXPECT_TRUE(tool({"sim", "replay", "begin", file}).exit == exited(2));
}

TEST(Simulator, IsMissed) {
    Finished const missed = tool({"why"});
    EXPECT_TRUE(missed.exit == exited(4)) << missed.errors;
    EXPECT_TRUE(contains(missed.errors, "no service \"action_engine_simulator\""));
}

}  // namespace

}  // namespace tool_tests
