// SPDX-License-Identifier: Apache-2.0
#include "tool_program.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <utility>

#include "emulator/emulator.h"
#include "support/workspace.h"

namespace tool_tests {

namespace {

/// A folder with the tool in it, by its name, for the search path of scripts.
std::filesystem::path const &binaries() {
    static std::filesystem::path const folder = [] {
        auto made = end_to_end::Workspace::ofThisProgram().newFolder("bin");
        auto const script = made / "korvo-action-engine";
        std::ofstream file(script);
        file << "#!/bin/sh\nexec";
        for (std::string const &word : emulator::wordsToStart(KORVO_TOOL_PROGRAM)) {
            file << " '" << word << "'";
        }
        file << " \"$@\"\n";
        file.close();
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
        return made;
    }();
    return folder;
}

}  // namespace

processes::Command toolCommand(std::vector<std::string> words) {
    processes::Command command;
    command.program = KORVO_TOOL_PROGRAM;
    command.arguments = std::move(words);
    command.environment = {{"NO_COLOR", ""}};
    return command;
}

Finished tool(std::vector<std::string> words) {
    return run(toolCommand(std::move(words)));
}

std::string results(std::vector<std::string> words) {
    Finished finished = tool(std::move(words));
    EXPECT_TRUE(finished.exit == processes::exited(0)) << finished.errors;
    EXPECT_EQ(finished.errors, "");
    return finished.out;
}

std::filesystem::path fileWith(std::string const &text) {
    auto file = end_to_end::Workspace::ofThisProgram().newFolder("file") / "text";
    std::ofstream(file) << text;
    return file;
}

ShellOutcome shell(std::string const &script) {
    auto const file = fileWith("PATH=" + binaries().string() + ":$PATH\n" + script);
    ShellOutcome outcome;
    std::FILE *const pipe = ::popen(("exec sh " + file.string()).c_str(), "r");
    std::array<char, 4096> part;
    while (std::size_t const size = std::fread(part.data(), 1, part.size(), pipe)) {
        outcome.out.append(part.data(), size);
    }
    int const status = ::pclose(pipe);
    outcome.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return outcome;
}

}  // namespace tool_tests
