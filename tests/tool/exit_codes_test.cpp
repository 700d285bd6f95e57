// SPDX-License-Identifier: Apache-2.0
// What scripts rely on: exit codes, errors as JSON, silence on standard output, ends by a signal and by a closed pipe.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "emulator/emulator.h"
#include "support/service.h"
#include "support/workspace.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

using end_to_end::Service;
using end_to_end::Workspace;
using processes::exited;

/// The code, one error with what to do about it, and no results.
void expectFailure(int code, std::vector<std::string> words, std::string const &what) {
    Finished finished = tool(words);
    EXPECT_TRUE(finished.exit == exited(code)) << finished.errors;
    EXPECT_EQ(finished.out, "");
    EXPECT_NE(finished.errors.find(what), std::string::npos) << finished.errors;
    EXPECT_EQ(finished.errors.find("korvo-action-engine: "), 0U) << finished.errors;
    EXPECT_NE(finished.errors.find("\n  "), std::string::npos) << "no advice: " << finished.errors;

    words.emplace_back("--json");
    finished = tool(words);
    EXPECT_TRUE(finished.exit == exited(code)) << finished.errors;
    EXPECT_EQ(finished.out, "");
    EXPECT_EQ(finished.errors.find("{\"error\":{\"exit_code\":" + std::to_string(code) + ","), 0U)
        << finished.errors;
}

TEST(ExitCode, IsOneWhereNothingElseIsSaid) {
    Service service({"--fail", "Get_actions=2"});
    expectFailure(1, {"get-actions"}, "Get_actions failed: ");
}

TEST(ExitCode, IsTwoForAWrongCommandLine) {
    struct Case {
        std::vector<std::string> words;
        char const *what;
    };
    for (Case const &wrong : std::vector<Case>{
             {{"get-actoins"}, "there is no command \"get-actoins\"\n  did you mean get-actions?"},
             {{"get-action-type", "--action-di", "1"},
              "there is no option --action-di of get-action-type\n  did you mean --action-id?"},
             {{"get-action-type"}, "--action-id is required"},
             {{"get-action-type", "--action-id", "gate"}, "--action-id is a whole number"},
             {{"get-action-type", "--action-id", "-1"}, "--action-id is a whole number"},
             {{"get-actions", "--timeout", "5"}, "--timeout is a time with its unit, and not \"5\""},
             {{"get-actions", "--require-version", "1"}, "--require-version is a version"},
             {{"call", "Get_nothing"}, "OPERATION: there is no operation \"Get_nothing\""},
             {{"call", "Get_actions", "@/nowhere"}, "INPUTS: cannot read \"/nowhere\": No such file"},
             {{"call", "Get_actions", "@/"}, "INPUTS: cannot read \"/\": Is a directory"},
             {{"get-actions", "more"}, "one word too many"}}) {
        Finished const finished = tool(wrong.words);
        EXPECT_TRUE(finished.exit == exited(2)) << finished.errors;
        EXPECT_EQ(finished.out, "");
        EXPECT_NE(finished.errors.find(wrong.what), std::string::npos) << finished.errors;
    }
    EXPECT_TRUE(tool({}).exit == exited(2));
    EXPECT_EQ(shell("korvo-action-engine call Get_actions - 2>&1 < /").out,
              "korvo-action-engine: INPUTS: cannot read \"-\": Is a directory\n"
              "  name a file that can be read, or - for standard input\n");
}

TEST(ExitCode, IsThreeForATimeOut) {
    Service service({"--drop", "Get_actions"});
    expectFailure(3, {"get-actions", "--timeout", "300ms"}, "Get_actions was not answered within 300 ms");
    (void)results({"sim", "fault", "__get_target_version__", "--drop"});
    expectFailure(3, {"get-triggers", "--timeout", "300ms", "--require-version", "1.19"},
                  "the query of the version was not answered within 300 ms");
}

TEST(ExitCode, IsFourWithoutAService) {
    expectFailure(4, {"get-actions"}, "no service \"action_engine\" is running");
    Service service;
    expectFailure(4, {"--target", "garden", "get-actions"}, "with the target \"garden\"");
}

TEST(ExitCode, IsFourForAServiceThatGoesAway) {
    Service service({"--delay", "Get_actions=600000"});
    processes::Child child(toolCommand({"get-actions", "--timeout", "forever"}));
    // A second client is answered behind the first one, or before it, which then finds no service at all.
    (void)results({"get-triggers"});
    service.kill();
    EXPECT_TRUE(child.wait() == exited(4)) << child.errors().text();
}

TEST(ExitCode, IsFiveForARefusal) {
    Service service;
    (void)results({"create-wiper-action", "--action-name", "wipe"});
    expectFailure(5, {"get-relay-action", "--action-id", "1"}, "the service refused Get_relay_action");
    expectFailure(5, {"create-wiper-action", "--action-name", "\xff"}, "an input of Create_wiper_action");
}

TEST(ExitCode, IsSixForAnIdentifierThatIsNone) {
    Service service;
    (void)results({"create-wiper-action", "--action-name", "wipe"});
    expectFailure(6, {"get-wiper-action", "--action-id", "2"}, "there is no action 2");
    expectFailure(6, {"delete-trigger", "--trigger-id", "3"}, "there is no trigger 3");
    expectFailure(6, {"create-association", "--trigger-id", "1", "--action-id", "1"},
                  "there is no trigger 1");
}

TEST(ExitCode, IsSevenForAnotherVersion) {
    Service service({"--fail", "Get_actions=8", "--target-version", "1.18"});
    expectFailure(7, {"get-actions"}, "the service does not know Get_actions");
    expectFailure(7, {"get-triggers", "--require-version", "1.19"},
                  "the service speaks version 1.18, and --require-version wants 1.19");
    EXPECT_EQ(results({"get-triggers", "--require-version", "1.18"}), "trigger_id  trigger_type\n");
}

TEST(ExitCode, IsEightForARuntimeFolderThatOthersCanWriteTo) {
    auto const folder = Workspace::ofThisProgram().newFolder("shared");
    std::filesystem::permissions(folder, std::filesystem::perms::all);
    processes::Command command = toolCommand({"get-actions"});
    command.environment.emplace_back("KORVO_RUNTIME_DIR", folder.string());
    Finished const finished = run(command);
    EXPECT_TRUE(finished.exit == exited(8)) << finished.errors;
    EXPECT_NE(finished.errors.find("others can write to the runtime folder " + folder.string()),
              std::string::npos)
        << finished.errors;
}

TEST(Log, IsShownWhenAskedForOnly) {
    EXPECT_EQ(tool({"get-actions"}).errors.find("[tool]"), std::string::npos);
    auto const folder = Workspace::ofThisProgram().newFolder("shared");
    std::filesystem::permissions(folder, std::filesystem::perms::all);
    processes::Command command = toolCommand({"get-actions", "-v"});
    command.environment.emplace_back("KORVO_RUNTIME_DIR", folder.string());
    EXPECT_NE(run(command).errors.find("[tool]: refused the runtime folder"), std::string::npos);
}

/// Whether the process has a handler for SIGINT.
bool catchesSigint(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(file, line);) {
        if (line.compare(0, 7, "SigCgt:") == 0) {
            return (std::stoull(line.substr(7), nullptr, 16) & (1ULL << (SIGINT - 1))) != 0;
        }
    }
    return false;
}

/// Of a command whose call is never answered.
void expectItEndsWhenInterrupted(std::vector<std::string> words) {
    processes::Child child(toolCommand(std::move(words)));
    auto const limit = processes::Clock::now() + processes::patience;
    while (!catchesSigint(child.pid()) && processes::Clock::now() < limit) {
        std::this_thread::yield();
    }
    child.signal(SIGINT);
    EXPECT_TRUE(child.wait() == exited(130)) << child.errors().text();
    EXPECT_EQ(child.errors().text(), "korvo-action-engine: interrupted\n");
}

TEST(Interruption, EndsAWaitingCall) {
    if (emulator::present) {
        GTEST_SKIP() << "an emulator catches signals itself";
    }
    Service service({"--drop", "Get_actions"});
    expectItEndsWhenInterrupted({"get-actions", "--timeout", "forever"});
    (void)results({"sim", "fault", "__get_target_version__", "--drop"});
    expectItEndsWhenInterrupted({"get-triggers", "--timeout", "forever", "--require-version", "1.19"});
}

TEST(ClosedPipe, IsNoError) {
    // Until the reader is gone, writing succeeds.
    ShellOutcome const outcome = shell(
        "exec 3>&1\n"
        "{\n"
        "    (trap '' PIPE; while echo x 2>/dev/null; do :; done)\n"
        "    korvo-action-engine describe 2>&3\n"
        "    echo \"code $?\" >&3\n"
        "} | true\n");
    EXPECT_EQ(outcome.out, "code 0\n");
}

TEST(FullDisk, IsAnError) {
    ShellOutcome const outcome = shell("korvo-action-engine describe 2>&1 >/dev/full");
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.out.find("korvo-action-engine: cannot write to standard output: No space left"), 0U)
        << outcome.out;
}

}  // namespace

}  // namespace tool_tests
