// SPDX-License-Identifier: Apache-2.0
// Completion for shells. The scripts ask the tool itself, which knows its rows and the running service.

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <set>

#include "tool/command.h"
#include "tool/failure.h"
#include "tool/operations.h"
#include "tool/output.h"

namespace tool {
namespace {

constexpr char const *for_bash = R"(# bash completion for korvo-action-engine
_korvo_action_engine() {
    local IFS=$'\n'
    COMPREPLY=($(korvo-action-engine complete -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null))
    if [ "${COMPREPLY[0]-}" = "<file>" ]; then
        COMPREPLY=($(compgen -f -- "${COMP_WORDS[COMP_CWORD]}"))
    fi
}
complete -F _korvo_action_engine korvo-action-engine
)";

constexpr char const *for_zsh = R"(#compdef korvo-action-engine
local -a found
found=("${(@f)$(korvo-action-engine complete -- "${(@)words[2,CURRENT]}" 2>/dev/null)}")
if [ "${found[1]-}" = "<file>" ]; then
    _files
else
    compadd -a found
fi
)";

void completion(Context &context) {
    std::string const shell = context.arguments.text("SHELL");
    if (shell != "bash" && shell != "zsh") {
        throw Failure(Exit::usage, "SHELL is not \"" + shell + "\"", "it is bash or zsh");
    }
    output::write(shell == "bash" ? for_bash : for_zsh);
}

using Words = std::vector<std::string>;

/// The parameter that is given by an option of this name.
Parameter const *findOption(Command const *command, std::string const &name) {
    for (auto const *parameters :
         {command == nullptr ? nullptr : &command->parameters, &commonParameters()}) {
        if (parameters == nullptr) {
            continue;
        }
        for (Parameter const &parameter : *parameters) {
            if (parameter.name == name) {
                return &parameter;
            }
        }
    }
    return nullptr;
}

/// What a value may be. Identifiers come from the service; where it is not there, there are none.
Words valuesOf(Context &context, Parameter const &parameter) {
    Words found = parameter.words;
    switch (parameter.completion) {
        case Completion::file:
            return {"<file>"};
        case Completion::operation:
            for (Operation const &operation : operations()) {
                found.emplace_back(operation.method);
            }
            break;
        case Completion::action:
        case Completion::trigger: {
            bool const is_action = parameter.completion == Completion::action;
            auto const listing = context.client().call(operation(is_action ? "get_actions" : "get_triggers"));
            for (auto const &id : listing.at(is_action ? "action_id" : "trigger_id").as_array()) {
                found.push_back(inWords(id));
            }
            break;
        }
        case Completion::none:
        case Completion::word:
            break;
    }
    return found;
}

struct Situation {
    Command const *command = nullptr;
    std::string begun;
    Parameter const *value_of = nullptr;
    std::size_t places = 0;
};

/// Where the last of these words stands.
Situation situationOf(Words const &words) {
    Situation situation;
    for (std::size_t place = 0; place + 1 < words.size(); ++place) {
        std::string const &word = words[place];
        if (situation.value_of != nullptr) {
            situation.value_of = nullptr;
        } else if (!word.empty() && word.front() == '-') {
            Parameter const *const option = findOption(situation.command, word);
            situation.value_of =
                option != nullptr && option->takes != Parameter::Takes::flag ? option : nullptr;
        } else if (situation.command != nullptr) {
            ++situation.places;
        } else {
            situation.begun += (situation.begun.empty() ? "" : " ") + word;
            for (Command const &command : commands()) {
                situation.command = command.name == situation.begun ? &command : situation.command;
            }
        }
    }
    return situation;
}

Words candidatesFor(Context &context, Situation const &situation, std::string const &word) {
    if (situation.value_of != nullptr) {
        return valuesOf(context, *situation.value_of);
    }
    Words found;
    if (!word.empty() && word.front() == '-') {
        for (auto const *parameters :
             {situation.command == nullptr ? nullptr : &situation.command->parameters, &commonParameters()}) {
            for (std::size_t place = 0; parameters != nullptr && place < parameters->size(); ++place) {
                if ((*parameters)[place].isOption()) {
                    found.push_back((*parameters)[place].name);
                }
            }
        }
        found.emplace_back("--help");
        return found;
    }
    if (situation.command == nullptr) {
        std::string const before = situation.begun.empty() ? "" : situation.begun + " ";
        std::set<std::string> next;
        for (Command const &command : commands()) {
            if (command.name.compare(0, before.size(), before) == 0) {
                next.insert(command.name.substr(before.size(),
                                                command.name.find(' ', before.size()) - before.size()));
            }
        }
        return {next.begin(), next.end()};
    }
    std::size_t place = 0;
    for (Parameter const &parameter : situation.command->parameters) {
        if (parameter.isOption()) {
            continue;
        }
        if (place == situation.places || parameter.takes == Parameter::Takes::many) {
            return valuesOf(context, parameter);
        }
        ++place;
    }
    return {};
}

void complete(Context &context) {
    Words words = context.arguments.texts("WORD");
    if (words.empty()) {
        words.emplace_back();
    }
    std::string const &word = words.back();
    for (std::string const &candidate : candidatesFor(context, situationOf(words), word)) {
        if (candidate == "<file>" || candidate.compare(0, word.size(), word) == 0) {
            output::line(candidate);
        }
    }
}

}  // namespace

void addCompletionCommands(std::vector<Command> &commands) {
    using Takes = Parameter::Takes;
    constexpr char const *group = "Shells";
    commands.push_back(
        {"completion",
         group,
         "write the completion script for a shell",
         "For bash: source <(korvo-action-engine completion bash)",
         {{"SHELL", "bash or zsh", true, Takes::one, "SHELL", Completion::word, {"bash", "zsh"}}},
         completion});
    commands.push_back({"complete",
                        group,
                        "show what the last of these words may become; completion scripts ask this",
                        "",
                        {{"WORD", "the words behind -- on a command line", false, Takes::many, "WORD"}},
                        complete});
}

}  // namespace tool
