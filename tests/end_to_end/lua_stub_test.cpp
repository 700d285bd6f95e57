// SPDX-License-Identifier: Apache-2.0
// The stub for the Lua language server, beside the module that it declares.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "lua_interpreters/lua_interpreters.h"
#include "processes/child.h"
#include "support/operation.h"
#include "support/service.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

class LuaStub : public ::testing::TestWithParam<std::string> {};

INSTANTIATE_TEST_SUITE_P(, LuaStub, ::testing::ValuesIn(lua_interpreters::paths),
                         [](auto const &tested) { return lua_interpreters::nameOf(tested.param); });

/// A state folder with a configuration that has a value of each type, under the name of the type.
std::string stateWithConfiguration() {
    auto const folder = Workspace::ofThisProgram().newFolder("configured");
    std::ofstream(folder / "configuration.json") << R"({"format": 1, "values": {
        "string": {"type": "string", "value": "text"},
        "json": {"type": "json", "value": {}},
        "int": {"type": "int", "value": -5},
        "bool": {"type": "bool", "value": true},
        "double": {"type": "double", "value": 0.5},
        "arrayofstring": {"type": "arrayofstring", "value": ["a", "b"]},
        "arrayofint": {"type": "arrayofint", "value": [1, -2]},
        "arrayofbool": {"type": "arrayofbool", "value": [true, false]},
        "arrayofdouble": {"type": "arrayofdouble", "value": [0.5, 1]}}})";
    return folder.string();
}

TEST_P(LuaStub, AgreesWithTheModuleAndWouldNotWithAMistake) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the thread sanitizer does not follow the long jumps of thousands of Lua errors";
#endif
    // The calls try every type of argument, with values that mean nothing to the service.
    Service const service({"--lenient"});
    Command agreement = {GetParam(), {KORVO_STUB_AGREEMENT, KORVO_LUA_STUB}, lua_interpreters::environment()};
    if (sanitized) {
        agreement.arguments.emplace_back("without-leaks");
    }
    agreement.environment.emplace_back("KORVO_STATE_DIR", stateWithConfiguration());
    Finished const finished = run(agreement);
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out,
              "493 functions, 51 constants, 0 differences\n"
              "a function less: found\n"
              "a function more: found\n"
              "a constant less: found\n"
              "a constant more: found\n"
              "another value: found\n"
              "a parameter that is not explained: found\n"
              "a parameter less: found\n"
              "another type of argument: found\n"
              "another type of result: found\n"
              "a result less: found\n"
              "a result more: found\n");
}

TEST_P(LuaStub, SaysSoWhenItIsLoadedInsteadOfTheModule) {
    Command loading = {
        GetParam(), {"-e", "require 'korvo_api_action_engine'"}, lua_interpreters::environment()};
    std::string const folder = std::filesystem::path(KORVO_LUA_STUB).parent_path().string();
    loading.environment.emplace_back("LUA_PATH", folder + "/?.lua");
    Finished const finished = run(loading);
    EXPECT_TRUE(finished.exit == exited(1)) << finished.out;
    EXPECT_NE(finished.errors.find(
                  ": the stub of korvo_api_action_engine is for editors; take its folder out of LUA_PATH\n"),
              std::string::npos)
        << finished.errors;
}

TEST(LuaStubTexts, ExplainEveryFunctionInWords) {
    std::ifstream stub(KORVO_LUA_STUB);
    std::string before;
    std::string first_of_comment;
    int functions = 0;
    for (std::string line; std::getline(stub, line); before = line) {
        if (before.empty()) {
            first_of_comment = line;
        }
        if (line.compare(0, 9, "function ") == 0) {
            ++functions;
            EXPECT_EQ(first_of_comment.compare(0, 3, "---"), 0) << line;
            EXPECT_GT(count(first_of_comment, " "), 2U) << line << "\n" << first_of_comment;
        }
    }
    EXPECT_GT(functions, 7 * static_cast<int>(operations().size()));
}

TEST(LuaStubTexts, SayHowCSpellsAPointersType) {
    std::ifstream stub(KORVO_LUA_STUB);
    std::string before;
    for (std::string line; std::getline(stub, line) && line != "---@class _p_int: userdata"; before = line) {
    }
    EXPECT_EQ(before, "---int *");
}

/// The comment in front of a function, and its declaration; empty when there is none.
std::string entryOf(std::string const &function) {
    std::ifstream stub(KORVO_LUA_STUB);
    std::string const declaration = "function korvo_api_action_engine." + function + "(";
    std::string entry;
    for (std::string line; std::getline(stub, line);) {
        entry = line.empty() ? "" : entry + line + "\n";
        if (line.compare(0, declaration.size(), declaration) == 0) {
            return entry;
        }
    }
    return "";
}

TEST(LuaStubTexts, AreThoseOfTheHeaderAndOfTheForm) {
    EXPECT_EQ(entryOf("korvo_api_action_engine_get_action_type_send"),
              R"(---Tells what kind of action an identifier stands for.
---
---This form sends the command and waits for the response, up to 5000 ms.
---
---Statuses: 9 when the service knows no such action.
---@param handle userdata # the client handle.
---@param target string? # which instance of the service is meant; nil is the default one.
---@param action_id integer # the action asked about.
---@return korvo_core_status status # 0 for success.
---@return integer action_type # its type: a value of ActionType.
function korvo_api_action_engine.korvo_api_action_engine_get_action_type_send(handle, target, action_id) end
)");
    EXPECT_EQ(
        entryOf("korvo_core_logging_init"),
        R"(---Opens a logger. Only for scripts of a host program that supplies the place for the handle; without one, nil as a
---logging handle is the default logger. Status 2: memory ran out.
---@param name string? # of the part of the process that logs; nil is an empty one.
---@param logging _p_p_void? # a typed pointer of a host program to the place for the handle; nil is refused with status 1.
---@return korvo_core_status status
function korvo_api_action_engine.korvo_core_logging_init(name, logging) end
)");
}

// An editor shows one entry at a time, to somebody who writes Lua.
TEST(LuaStubTexts, StandEachByItselfAndSpeakOfLua) {
    char const *const elsewhere[] = {
        "above",       "below",    "this file",    "head of",  "form see",     "Otherwise as", "as with",
        "counterpart", "matching", "Deliberate",   "(see",     "same for the", "printf",       "NULL",
        "malloc",      "free()",   "caller frees", "non-zero", "list variable"};
    std::ifstream stub(KORVO_LUA_STUB);
    int lines = 0;
    for (std::string line; std::getline(stub, line);) {
        if (line.compare(0, 3, "---") != 0) {
            continue;
        }
        ++lines;
        for (char const *const word : elsewhere) {
            EXPECT_EQ(line.find(word), std::string::npos) << '"' << word << "\" in: " << line;
        }
    }
    EXPECT_GT(lines, 1000);
}

}  // namespace

}  // namespace end_to_end
