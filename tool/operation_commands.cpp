// SPDX-License-Identifier: Apache-2.0
// Every operation as a sub-command, `call` and `describe`.

#include <algorithm>
#include <boost/json/parse.hpp>

#include "tool/command.h"
#include "tool/failure.h"
#include "tool/marshalling.h"
#include "tool/operations.h"
#include "tool/output.h"
#include "tool/secrets.h"

namespace tool {
namespace {

namespace json = boost::json;
using Takes = Parameter::Takes;

std::string optionOf(Member const &member) {
    return "--" + withHyphens(member.name) + (isSecret(member.name) ? "-file" : "");
}

Parameter parameterOf(Member const &member) {
    Parameter parameter;
    parameter.name = optionOf(member);
    parameter.help = member.explanation;
    parameter.required = true;
    switch (member.kind) {
        case Kind::number:
            parameter.value = "NUMBER";
            break;
        case Kind::flag:
            parameter.takes = Takes::flag;
            parameter.required = false;
            break;
        case Kind::text:
            break;
        case Kind::texts:
            parameter.takes = Takes::many;
            parameter.required = false;
            parameter.help += " Once for each entry.";
            break;
        case Kind::numbers:
            parameter.value = "NUMBER";
            parameter.takes = Takes::many;
            parameter.required = false;
            parameter.help += " Once for each entry.";
            break;
    }
    std::string const name = member.name;
    if (isSecret(name)) {
        parameter.value = "FILE";
        parameter.completion = Completion::file;
        parameter.help = "file whose first line is this: " + parameter.help + " - is standard input.";
    } else if (name == "action_id") {
        parameter.completion = Completion::action;
    } else if (name == "trigger_id") {
        parameter.completion = Completion::trigger;
    }
    return parameter;
}

json::value valueOf(Member const &member, Arguments const &arguments) {
    std::string const option = optionOf(member);
    switch (member.kind) {
        case Kind::number:
            return arguments.number(option);
        case Kind::flag:
            return arguments.flag(option);
        case Kind::text:
            return json::string(isSecret(member.name) ? passwordIn(option, arguments.text(option))
                                                      : arguments.text(option));
        case Kind::texts: {
            json::array list;
            for (std::string const &text : arguments.texts(option)) {
                list.emplace_back(text);
            }
            return list;
        }
        case Kind::numbers:
            break;
    }
    json::array list;
    for (unsigned int const number : arguments.numbers(option)) {
        list.emplace_back(number);
    }
    return list;
}

/// Lists that belong together are a table, all else names with values.
void show(Context &context, json::object results) {
    hideSecrets(context.settings, results);
    if (context.settings.json) {
        output::json(results);
        return;
    }
    bool const only_lists =
        !results.empty() && std::all_of(results.begin(), results.end(), [&](auto const &member) {
            return member.value().is_array() &&
                   member.value().get_array().size() == results.begin()->value().as_array().size();
        });
    if (only_lists) {
        std::vector<std::string> heading;
        std::vector<std::vector<std::string>> rows(results.begin()->value().as_array().size());
        for (auto const &member : results) {
            heading.emplace_back(member.key());
            for (std::size_t place = 0; place < rows.size(); ++place) {
                rows[place].push_back(inWords(member.value().as_array()[place]));
            }
        }
        output::table(heading, rows);
        return;
    }
    std::vector<std::pair<std::string, std::string>> rows;
    for (auto const &member : results) {
        rows.emplace_back(member.key(), inWords(member.value()));
    }
    output::pairs(rows);
}

Command commandOf(Operation const &operation) {
    Command command;
    command.name = withHyphens(operation.name);
    command.group = "Operations";
    std::string const explanation = operation.explanation;
    // Its first sentence, which ends with a full stop or a colon.
    auto const end = std::min(explanation.find_first_of(".:;\n"), explanation.size());
    command.help = explanation.substr(0, end);
    command.details = explanation;
    for (Member const &input : operation.inputs) {
        command.parameters.push_back(parameterOf(input));
    }
    command.run = [&operation](Context &context) {
        json::object inputs;
        for (Member const &input : operation.inputs) {
            inputs.emplace(input.name, valueOf(input, context.arguments));
        }
        show(context, context.client().call(operation, inputs));
    };
    return command;
}

Operation const &operationIn(Arguments const &arguments) {
    std::string const name = arguments.text("OPERATION");
    Operation const *const found = findOperation(name);
    if (found == nullptr) {
        throw Failure(Exit::usage, "OPERATION: there is no operation \"" + name + "\"",
                      "\"korvo-action-engine describe\" lists them");
    }
    return *found;
}

void call(Context &context) {
    Operation const &operation = operationIn(context.arguments);
    std::string const given = context.arguments.has("INPUTS") ? context.arguments.text("INPUTS") : "{}";
    bool const from_file = given == "-" || (!given.empty() && given.front() == '@');
    std::string const text = from_file ? textOfFile("INPUTS", given == "-" ? given : given.substr(1)) : given;
    json::error_code error;
    json::value const parsed = json::parse(text, error);
    if (error || !parsed.is_object()) {
        throw Failure(Exit::usage,
                      std::string("INPUTS is no JSON object") + (error ? ": " + error.message() : ""),
                      "write something like '{\"action_id\": 7}', @FILE, or - for standard input");
    }
    if (!from_file && std::any_of(parsed.get_object().begin(), parsed.get_object().end(),
                                  [](auto const &member) { return isSecret(std::string(member.key())); })) {
        throw Failure(Exit::usage, "INPUTS holds a password, which every process could read there",
                      "write it to a file and give @FILE, or - for standard input");
    }
    show(context, context.client().call(operation, parsed.get_object()));
}

json::array describedMembers(Rows<Member> const &members) {
    json::array described;
    for (Member const &member : members) {
        described.emplace_back(json::object(
            {{"name", member.name}, {"type", typeOf(member.kind)}, {"text", member.explanation}}));
    }
    return described;
}

json::object described(Operation const &operation) {
    return {{"operation", operation.name},
            {"method", operation.method},
            {"command", withHyphens(operation.name)},
            {"text", operation.explanation},
            {"inputs", describedMembers(operation.inputs)},
            {"results", describedMembers(operation.results)}};
}

void describeMembers(char const *heading, Rows<Member> const &members) {
    if (members.size() == 0) {
        return;
    }
    output::line(std::string("\n") + heading);
    std::vector<std::pair<std::string, std::string>> rows;
    for (Member const &member : members) {
        rows.emplace_back(std::string("  ") + member.name,
                          std::string(typeOf(member.kind)) + ": " + member.explanation);
    }
    output::pairs(rows);
}

void describe(Context &context) {
    if (!context.arguments.has("OPERATION")) {
        json::array all;
        std::vector<std::vector<std::string>> rows;
        for (Operation const &operation : operations()) {
            all.push_back(described(operation));
            std::string const text = operation.explanation;
            rows.push_back({operation.method, text.substr(0, text.find_first_of(".\n"))});
        }
        if (context.settings.json) {
            output::json(all);
        } else {
            output::table({"OPERATION", "WHAT IT DOES"}, rows);
        }
        return;
    }
    Operation const &operation = operationIn(context.arguments);
    if (context.settings.json) {
        output::json(described(operation));
        return;
    }
    output::line(std::string(operation.method) + ", as a command " + withHyphens(operation.name) + "\n\n" +
                 operation.explanation);
    describeMembers("Inputs", operation.inputs);
    describeMembers("Results", operation.results);
}

}  // namespace

void addOperationCommands(std::vector<Command> &commands) {
    Parameter const name{"OPERATION", "as Get_actions, get_actions or get-actions",
                         true,        Takes::one,
                         "OPERATION", Completion::operation};
    Parameter optional_name = name;
    optional_name.required = false;
    commands.push_back(
        {"call",
         "Any operation",
         "carry out an operation with inputs as JSON",
         "",
         {name, {"INPUTS", "a JSON object; @FILE reads it from a file, - from standard input"}},
         call});
    commands.push_back({"describe",
                        "Any operation",
                        "tell what an operation does, takes and gives; without a name, which there are",
                        "",
                        {optional_name},
                        describe});
    for (Operation const &operation : operations()) {
        commands.push_back(commandOf(operation));
    }
}

}  // namespace tool
