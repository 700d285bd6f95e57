// SPDX-License-Identifier: Apache-2.0
// The tool with a person who interrupts it, and with a program that reads its JSON.
#include <gtest/gtest.h>

#include <string>

#include "emulator/emulator.h"
#include "support/service.h"
#include "support/workspace.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

using end_to_end::Service;

TEST(Terminal, EndsAtControlC) {
    if (emulator::present) {
        GTEST_SKIP() << "an emulator catches signals itself";
    }
    Service service;
    (void)results({"rule", "add", "--topic", "tns1:Device/Trigger", "--action", "wiper action_name=wipe"});
    ShellOutcome const outcome =
        shell("cd " + end_to_end::Workspace::ofThisProgram().newFolder("terminal").string() + R"(
mkfifo keys
script -qfec 'exec korvo-action-engine watch' shown < keys > /dev/null &
exec 3> keys
until grep -q 'action 1 (wipe) succeeded' shown 2> /dev/null; do
    korvo-action-engine inject tns1:Device/Trigger
done
printf '\003' >&3
wait $!
echo "code $?")");
    EXPECT_EQ(outcome.out, "code 0\n");
}

TEST(Json, IsWhatEveryCommandWritesWhenAsked) {
    Service service({"--clock", "virtual=2026-11-23T07:59:00"});
    ShellOutcome const outcome =
        shell("cd " + end_to_end::Workspace::ofThisProgram().newFolder("json").string() + R"(
korvo-action-engine inject tns1:Device/Trigger --dry-run > event.xml
run() {
    korvo-action-engine "$@" --json > said 2> errors || { echo "fails: $*"; cat errors; }
    [ ! -s errors ] || echo "says more: $*"
    jq -es 'length > 0' said > /dev/null || echo "no JSON: $*"
}
run rule add --timer 60 --name minute --action "snapshot action_name=door filename=d.jpg" --filter "Mon 08:00-18:00"
run create-wiper-action --action-name wipe
run list
run show door
run filters preview door
run export
run graph
korvo-action-engine export > catalogue.json
run create-washer-action --action-name wash
run diff catalogue.json service
run import catalogue.json --replace
run inject tns1:Device/Trigger --dry-run
run sim clock --advance 120
run why
run trace
run explain event.xml --topic tns1:Device/Trigger
run sim fault Get_actions --delay-ms 1 --count 1
run sim fault
run sim device
run describe
run describe get_actions
run call Get_actions
run get-actions
run get-trigger-type --trigger-id 1
run rule remove minute
)");
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.code, 0);
}

TEST(Json, TellsErrorsOfEveryKind) {
    Service service({"--fail", "Get_trigger_counts=2"});
    ShellOutcome const outcome =
        shell("cd " + end_to_end::Workspace::ofThisProgram().newFolder("errors").string() + R"sh(
run() {
    korvo-action-engine "$@" > said 2> errors
    [ ! -s said ] || echo "results: $*"
    jq -r '.error | "\(.exit_code) \(.kind) \((.text | length > 0) and (.advice | type == "string"))"' errors
}
run --json
run get-actoins --json
run get-action-type --json
run --json sim
run call Get_actions "{" --json
run call Create_ftp_action '{"password": "x"}' --json
run show gate --json
run import no-file --merge --json
run get-trigger-counts --json
run get-relay-action --action-id 1 --json
run get-actions --target garden --json
)sh");
    EXPECT_EQ(outcome.out,
              "2 usage true\n"
              "2 usage true\n"
              "2 usage true\n"
              "2 usage true\n"
              "2 usage true\n"
              "2 usage true\n"
              "6 no such identifier true\n"
              "2 usage true\n"
              "1 other true\n"
              "6 no such identifier true\n"
              "4 no service true\n");
}

}  // namespace

}  // namespace tool_tests
