// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TOOL_PROGRAM_H
#define KORVO_TESTS_TOOL_PROGRAM_H

#include <filesystem>
#include <string>
#include <vector>

#include "processes/child.h"

namespace tool_tests {

using processes::Finished;

/// How to start the tool with these words.
processes::Command toolCommand(std::vector<std::string> words);

/// Runs the tool to its end.
Finished tool(std::vector<std::string> words);

/// Standard output of a run that must end with 0 and write nothing to standard error.
std::string results(std::vector<std::string> words);

/// What a shell script has written to standard output, and its exit code. The script finds the tool by its name.
struct ShellOutcome {
    int code = -1;
    std::string out;
};
ShellOutcome shell(std::string const &script);

/// A new file in a folder of this test program.
std::filesystem::path fileWith(std::string const &text);

}  // namespace tool_tests

#endif
