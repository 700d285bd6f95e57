// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_COMMAND_H
#define KORVO_TOOL_COMMAND_H

// A command of the tool as data. Parsing, help, completion and manual are made of these rows.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tool/client.h"
#include "tool/settings.h"

namespace tool {

/// What a command is run with.
class Context {
  public:
    Context(Settings const &chosen, Arguments const &given) : settings(chosen), arguments(given) {}

    Settings const &settings;
    Arguments const &arguments;

    /// The service, from the first use on.
    Client &client();

  private:
    std::unique_ptr<Client> client_;
};

/// What a shell may complete a word to.
enum class Completion : unsigned char { none, action, trigger, file, operation, word };

struct Parameter {
    enum class Takes : unsigned char { flag, one, many };

    /// "--action-id", or "ID" for one that is told by its place.
    std::string name;
    std::string help;
    bool required = false;
    Takes takes = Takes::one;
    /// What stands for its value in help.
    std::string value = "TEXT";
    Completion completion = Completion::none;
    /// For Completion::word.
    std::vector<std::string> words = {};

    bool isOption() const { return name.front() == '-'; }
};

struct Command {
    /// "list", or two words as in "rule add".
    std::string name;
    std::string group;
    std::string help;
    /// Further paragraphs.
    std::string details;
    std::vector<Parameter> parameters;
    std::function<void(Context &)> run;
};

/// All of them, made once.
std::vector<Command> const &commands();
/// The options that all commands take.
std::vector<Parameter> const &commonParameters();

/// A file's text, or standard input's for "-". Throws a Failure that names the parameter.
std::string textOfFile(std::string const &parameter, std::string const &file);
/// The first line of a file that holds a password.
std::string passwordIn(std::string const &parameter, std::string const &file);

// What the files of commands add.
void addCatalogueCommands(std::vector<Command> &commands);
void addRuleCommands(std::vector<Command> &commands);
void addEventCommands(std::vector<Command> &commands);
void addTransferCommands(std::vector<Command> &commands);
void addGraphCommands(std::vector<Command> &commands);
void addLintCommands(std::vector<Command> &commands);
void addReportCommands(std::vector<Command> &commands);
void addTraceCommands(std::vector<Command> &commands);
void addSimulatorCommands(std::vector<Command> &commands);
void addCompletionCommands(std::vector<Command> &commands);
void addManualCommands(std::vector<Command> &commands);
void addOperationCommands(std::vector<Command> &commands);

}  // namespace tool

#endif
