// SPDX-License-Identifier: Apache-2.0
// The examples in the documents, so that none of them rots.
//
// Every ```lua block of docs/lua.md and docs/lua-layer.md is run on its own, between the first one of the page, which opens
// the module and a handle, and the last one, which closes that. It prints what the ```text block behind it says, and nothing where there is none.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "emulator/emulator.h"
#include "lua_interpreters/lua_interpreters.h"
#include "processes/child.h"
#include "support/service.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

struct Block {
    std::string language;
    std::string text;
    std::size_t line = 0;
    bool follows_directly = false;  // nothing but blank lines after the block before it
};

std::string textOf(std::filesystem::path const &file) {
    std::stringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

std::vector<Block> blocksOf(std::string const &document) {
    std::vector<Block> blocks;
    std::istringstream lines(textOf(std::filesystem::path(KORVO_SOURCE_FOLDER) / document));
    bool inside = false;
    bool only_blanks = false;
    std::size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (line.compare(0, 3, "```") == 0) {
            if (!inside) {
                blocks.push_back({line.substr(3), "", number, only_blanks});
            }
            inside = !inside;
            only_blanks = !inside;
        } else if (inside) {
            blocks.back().text += line + "\n";
        } else if (!line.empty()) {
            only_blanks = false;
        }
    }
    return blocks;
}

/// A folder to run something in, with the sample configuration as its state.
std::filesystem::path newPlace() {
    auto folder = Workspace::ofThisProgram().newFolder("document");
    std::filesystem::copy_file(std::filesystem::path(KORVO_SOURCE_FOLDER) / "docs/configuration-sample.json",
                               folder / "configuration.json");
    return folder;
}

class LuaDocuments : public ::testing::TestWithParam<std::string> {
  protected:
    static void expectExamplesToDoWhatTheySay(std::string const &document, std::size_t at_least);

    static Finished runScript(std::string const &text,
                              std::vector<std::pair<std::string, std::string>> const &environment = {}) {
        auto const folder = newPlace();
        std::ofstream(folder / "example.lua") << text;
        Command command = {GetParam(), {(folder / "example.lua").string()}, lua_interpreters::environment()};
        command.environment.emplace_back("KORVO_STATE_DIR", folder.string());
        command.environment.insert(command.environment.end(), environment.begin(), environment.end());
        return run(command);
    }
};

INSTANTIATE_TEST_SUITE_P(, LuaDocuments, ::testing::ValuesIn(lua_interpreters::paths),
                         [](auto const &tested) { return lua_interpreters::nameOf(tested.param); });

void LuaDocuments::expectExamplesToDoWhatTheySay(std::string const &document, std::size_t at_least) {
    std::vector<Block> const blocks = blocksOf(document);
    std::vector<std::size_t> examples;
    for (std::size_t place = 0; place < blocks.size(); ++place) {
        if (blocks[place].language == "lua") {
            examples.push_back(place);
        }
    }
    ASSERT_GE(examples.size(), at_least);
    std::string const &beginning = blocks[examples.front()].text;
    std::string const &end = blocks[examples.back()].text;
    {
        Service const service;
        EXPECT_TRUE(runScript(beginning + end).exit == exited(0));
    }

    for (std::size_t place : std::vector<std::size_t>(examples.begin() + 1, examples.end() - 1)) {
        bool const says_what_it_prints =
            blocks[place + 1].language == "text" && blocks[place + 1].follows_directly;
        Service const service({"--lenient"});
        Finished const finished = runScript(beginning + blocks[place].text + end);
        EXPECT_TRUE(finished.exit == exited(0)) << document << ":" << blocks[place].line << "\n"
                                                << finished.errors;
        EXPECT_EQ(finished.out, says_what_it_prints ? blocks[place + 1].text : "")
            << document << ":" << blocks[place].line << "\n"
            << finished.errors;
    }
}

TEST_P(LuaDocuments, EveryExampleOfThePlainFunctionsDoesWhatItSays) {
    expectExamplesToDoWhatTheySay("docs/lua.md", 16);
}

TEST_P(LuaDocuments, EveryExampleOfTheServiceInLuaDoesWhatItSays) {
    expectExamplesToDoWhatTheySay("docs/lua-layer.md", 10);
}

TEST_P(LuaDocuments, AnExampleThatFailsIsNoticed) {
    Finished const finished = runScript("require 'korvo_api_action_engine'\nprint(no_such_thing.x)\n");
    EXPECT_TRUE(finished.exit == exited(1)) << finished.errors;
}

/// Where the first Lua example of a document is among its blocks.
std::size_t placeOfExample(std::vector<Block> const &blocks) {
    std::size_t place = 0;
    while (blocks.at(place).language != "lua") {
        ++place;
    }
    return place;
}

TEST_P(LuaDocuments, TheExampleOfTheReadmeStopsWithoutAHandle) {
    std::vector<Block> const blocks = blocksOf("README.md");
    // Nobody makes folders there, root included, so no messaging can be opened.
    Finished const finished =
        runScript(blocks.at(placeOfExample(blocks)).text, {{"KORVO_RUNTIME_DIR", "/proc/korvo-test"}});
    EXPECT_TRUE(finished.exit == exited(1)) << finished.errors;
    EXPECT_EQ(finished.out, "");
}

// The command of the README is run as it stands, but for the folder of the build, the interpreter and what that needs.
TEST_P(LuaDocuments, TheExampleOfTheReadmeRunsWithItsCommand) {
    if (emulator::present) {
        GTEST_SKIP() << "the command is for a workstation's shell, which the emulator does not run";
    }
    std::vector<Block> const blocks = blocksOf("README.md");
    std::size_t const place = placeOfExample(blocks);
    ASSERT_EQ(blocks.at(place + 1).language, "sh");
    ASSERT_EQ(blocks.at(place + 2).language, "text");
    std::string command = blocks[place + 1].text;
    auto const replace = [&](std::string const &from, std::string const &to, std::size_t times) {
        std::size_t place_of_next = 0;
        for (std::size_t done = 0; done < times; ++done) {
            auto const found = command.find(from, place_of_next);
            ASSERT_NE(found, std::string::npos) << from << " is not " << times << " times in\n" << command;
            command.replace(found, from.size(), to);
            place_of_next = found + to.size();
        }
    };
    // The service, the modules and the Lua files.
    replace("build/release", KORVO_BUILD_FOLDER, 3);
    std::string interpreter;
    for (auto const &[name, value] : lua_interpreters::environment()) {
        if (name != "LUA_CPATH" && name != "LUA_PATH") {
            interpreter += name + "=" + value + " ";
        }
    }
    for (std::string const &word : emulator::wordsToStart(GetParam())) {
        interpreter += word + " ";
    }
    replace("lua5.1 ", interpreter, 1);
    auto const folder = newPlace();
    std::ofstream(folder / "example.lua") << blocks[place].text;
    Finished const finished = run({"/bin/sh",
                                   {"-c", "cd '" + folder.string() + "'; " + command},
                                   {{"KORVO_STATE_DIR", folder.string()}}});
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out, blocks[place + 2].text);
}

}  // namespace

}  // namespace end_to_end
