// SPDX-License-Identifier: Apache-2.0
// The scripts in examples/shell, as a user runs them.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "support/service.h"
#include "support/workspace.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

using end_to_end::Service;

/// What the script says on both streams, and its exit code.
ShellOutcome example(std::string const &words) {
    return shell("exec sh " KORVO_SHELL_EXAMPLES "/" + words + " 2>&1");
}

bool contains(std::string const &text, std::string const &part) {
    return text.find(part) != std::string::npos;
}

/// Waits until the last trace has this outcome: actions run beside what asks about them.
void expectTrace(std::string const &outcome) {
    auto const limit = processes::Clock::now() + processes::patience;
    std::string last;
    do {
        last = results({"why", "--last"});
    } while (!contains(last, ": " + outcome + "\n") && processes::Clock::now() < limit);
    EXPECT_TRUE(contains(last, ": " + outcome + "\n")) << last;
}

/// At a minute before office hours, on a Monday.
class ShellExample : public ::testing::Test {
  protected:
    Service service{{"--clock", "virtual=2026-11-23T07:59:00"}};
};

TEST_F(ShellExample, RelayOfficeHoursSwitchesTheRelayThen) {
    ShellOutcome const made = example("relay_office_hours.sh relay_2");
    EXPECT_EQ(made.code, 0);
    EXPECT_TRUE(contains(made.out, "Mon  ................########..########..............\n")) << made.out;
    EXPECT_TRUE(contains(made.out, "Sat  ................................................\n")) << made.out;

    (void)results({"inject", "tns1:Device/Trigger/DigitalInput", "LogicalState=true"});
    expectTrace("held back");
    EXPECT_TRUE(contains(results({"sim", "device", "--json"}), "\"relays\":[]"));
    (void)results({"sim", "clock", "--advance", "60"});
    (void)results({"inject", "tns1:Device/Trigger/DigitalInput", "LogicalState=true"});
    expectTrace("ran");
    EXPECT_TRUE(contains(results({"sim", "device", "--json"}),
                         "\"relays\":[{\"relay_target\":\"relay_2\",\"on\":true"));
}

TEST_F(ShellExample, EmailAlarmSendsAMailWhenMotionLasts) {
    EXPECT_EQ(example("email_alarm.sh mail.example.org door@example.org").code, 2);
    ShellOutcome const made =
        example("email_alarm.sh mail.example.org door@example.org guard@example.org boss@example.org");
    EXPECT_EQ(made.out, "trigger  1\nactions  1\n");
    (void)results({"inject", "tns1:RuleEngine/MotionRegionDetector/Motion", "source:Region=1", "State=true"});
    (void)results({"sim", "clock", "--advance", "4"});
    expectTrace("waiting");
    (void)results({"sim", "clock", "--advance", "1"});
    expectTrace("ran");
    std::string mail;
    for (auto const &entry : std::filesystem::directory_iterator(service.outbox())) {
        std::stringstream text;
        text << std::ifstream(entry.path()).rdbuf();
        mail += text.str();
    }
    EXPECT_TRUE(contains(mail, "To: guard@example.org, boss@example.org")) << mail;
    EXPECT_TRUE(contains(mail, "Subject: Motion\r\n")) << mail;
}

TEST_F(ShellExample, BackupBringsBackWhatWasThere) {
    auto const folder = end_to_end::Workspace::ofThisProgram().newFolder("backup");
    auto const file = (folder / "catalogue.json").string();
    (void)results({"create-ftp-action", "--action-name", "upload", "--server-name", "ftp.example.org",
                   "--username", "u", "--password-file", fileWith("pear tree\n").string(), "--path", "",
                   "--filename", "p.jpg"});
    ShellOutcome const saved = example("backup.sh save " + file);
    EXPECT_EQ(saved.out, "");
    EXPECT_EQ(saved.code, 0);
    EXPECT_EQ(std::filesystem::status(file).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);

    (void)results({"delete-action", "--action-id", "1"});
    (void)results({"create-wiper-action", "--action-name", "wipe"});
    EXPECT_EQ(example("backup.sh restore " + file).out,
              "create ftp_action \"upload\"\n"
              "remove wiper_action \"wipe\"\n");
    EXPECT_TRUE(contains(results({"export", "--show-secrets"}), "pear tree"));

    EXPECT_EQ(example("backup.sh restore").code, 2);
    EXPECT_EQ(example("backup.sh restore " + (folder / "none.json").string()).code, 2);
    service.stop();
    EXPECT_EQ(example("backup.sh save " + file).code, 4);
    service.start();
    EXPECT_TRUE(contains(shell("cat " + file).out, "pear tree"))
        << "a backup that failed has taken the one before";
    EXPECT_FALSE(std::filesystem::exists(file + ".new"));
}

TEST_F(ShellExample, WaitForActionTellsHowItEnded) {
    (void)results({"rule", "add", "--timer", "1", "--name", "second", "--action",
                   "snapshot action_name=door filename=door.jpg"});
    EXPECT_EQ(example("wait_for_action.sh gate").code, 6);
    ShellOutcome const late = example("wait_for_action.sh door 10ms");
    EXPECT_EQ(late.code, 3) << late.out;
    EXPECT_TRUE(contains(late.out, "Nothing has happened to it")) << late.out;
    // The clock goes on by itself, so that the action runs whenever the script has begun to listen.
    (void)results({"sim", "clock", "--rate", "10"});
    EXPECT_EQ(example("wait_for_action.sh door forever").code, 0);
    (void)results({"create-snapshot-action", "--action-name", "nowhere", "--filename", "no/such/folder.jpg"});
    (void)results({"create-association", "--trigger-id", "1", "--action-id", "2"});
    ShellOutcome const failed = example("wait_for_action.sh nowhere forever");
    EXPECT_EQ(failed.out, "wait_for_action.sh: nowhere has failed\n");
    EXPECT_EQ(failed.code, 1);
}

TEST_F(ShellExample, WhyNotFindsTheReason) {
    EXPECT_EQ(example("why_not.sh bell").code, 6);
    (void)results({"create-timer-trigger", "--trigger-name", "bell", "--timer-seconds", "60"});
    EXPECT_EQ(example("why_not.sh bell").out,
              "Nothing is bound to trigger 1: see korvo-action-engine create-association --help\n"
              "No event and no timer has met trigger 1: is the service told of events?\n");
    (void)example("relay_office_hours.sh");
    (void)results({"inject", "tns1:Device/Trigger/DigitalInput", "LogicalState=false"});
    EXPECT_EQ(example("why_not.sh 'door bell'").out,
              "It ended with: no match\n"
              "trigger 2: message fails, \"LogicalState\" was \"false\", the filter wants \"true\"\n");
    (void)results({"inject", "tns1:Device/Trigger/DigitalInput", "LogicalState=true"});
    std::string const held = example("why_not.sh 'door bell'").out;
    EXPECT_EQ(held.find("It ended with: held back\naction 1: held back, Monday 07:59:00 is not in filter 1 "),
              0U)
        << held;
    EXPECT_TRUE(contains(held, "Mon  ................########..########..............\n")) << held;
}

}  // namespace

}  // namespace tool_tests
