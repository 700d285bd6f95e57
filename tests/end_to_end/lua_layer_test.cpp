// SPDX-License-Identifier: Apache-2.0
// korvo.action_engine in scripts, over the real messaging, with each interpreter.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "emulator/emulator.h"
#include "lua_interpreters/lua_interpreters.h"
#include "processes/child.h"
#include "support/service.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

class LuaLayer : public ::testing::TestWithParam<std::string> {
  protected:
    static Finished runScript(std::string const &name, std::vector<std::string> const &words = {}) {
        Command command = {
            GetParam(), {std::string(KORVO_SCRIPTS_FOLDER "/") + name}, lua_interpreters::environment()};
        command.arguments.insert(command.arguments.end(), words.begin(), words.end());
        command.environment.emplace_back("KORVO_STATE_DIR",
                                         Workspace::ofThisProgram().newFolder("state").string());
        return run(command);
    }
    static void expectOutput(Finished const &finished, std::string const &out) {
        EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
        EXPECT_EQ(finished.out, out) << finished.errors;
    }
};

INSTANTIATE_TEST_SUITE_P(, LuaLayer, ::testing::ValuesIn(lua_interpreters::paths),
                         [](auto const &tested) { return lua_interpreters::nameOf(tested.param); });

// 54 operations and the query of the version.
TEST_P(LuaLayer, EveryOperationGivesWhatTheServiceHas) {
    Service const service;
    expectOutput(runScript("layer_operations.lua"), "55 operations\n");
}

TEST_P(LuaLayer, EveryOperationGivesTheSameWhenItsAnswerIsWaitedFor) {
    Service const service;
    expectOutput(runScript("layer_operations.lua", {"async"}), "55 operations\n");
}

TEST_P(LuaLayer, EventsAndAnswersAreWaitedFor) {
    Service const service;
    expectOutput(runScript("layer_events.lua"), "done\n");
}

TEST_P(LuaLayer, RulesAndDocumentsAreMadeAsAWhole) {
    Service const service;
    expectOutput(runScript("layer_document.lua"), "done\n");
}

TEST_P(LuaLayer, RulesAndDocumentsThatFailLeaveNothingBehind) {
    Service const service({"--fail", "Create_association=9"});
    expectOutput(runScript("layer_document.lua", {"failing"}), "done\n");
}

TEST_P(LuaLayer, WithoutAServiceEverythingFailsAndEnds) {
    expectOutput(runScript("layer_without_service.lua"), "done\n");
}

TEST_P(LuaLayer, ManyAnswersLeaveNothingBehind) {
    if (sanitized || emulator::present) {
        GTEST_SKIP() << "what the process takes is the sanitizer's, or the emulator's";
    }
    Service const service;
    Finished const finished = runScript("layer_registrations.lua", {"20000"});
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    // Registrations of the plain library that stay take 80 bytes each: that would be 1,600 kB.
    EXPECT_LT(std::stoi(finished.out), 500) << finished.out;
}

TEST_P(LuaLayer, TheStubForEditorsDeclaresWhatThereIs) {
    expectOutput(runScript("layer_stub.lua", {KORVO_LAYER_STUB}), "55 operations, 132 functions\n");
}

TEST_P(LuaLayer, AScriptThatFailsIsNoticed) {
    Finished const finished = runScript("layer_registrations.lua", {"ten"});
    EXPECT_TRUE(finished.exit == exited(1)) << finished.out;
}

}  // namespace

}  // namespace end_to_end
