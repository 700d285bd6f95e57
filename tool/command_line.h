// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_COMMAND_LINE_H
#define KORVO_TOOL_COMMAND_LINE_H

#include <optional>
#include <string>
#include <vector>

#include "tool/command.h"

namespace tool {

constexpr char const *program = "korvo-action-engine";
/// What it is, in two sentences.
constexpr char const *about =
    "The service action_engine from a shell: its operations, what it does, and why.\n"
    "Results go to standard output, all else to standard error.";

struct Chosen {
    Command const *command = nullptr;
    Arguments arguments;
    Settings settings;
};

/// What the words after the program's name ask for. Nothing when they asked for help or the version, which is then
/// written. Throws a Failure of Exit::usage.
std::optional<Chosen> parse(std::vector<std::string> const &words);

}  // namespace tool

#endif
