// SPDX-License-Identifier: Apache-2.0
// Writes the table of operations of korvo-action-engine: write-tool-operations SOURCE C_HEADER
// The operations come from the rows, their explanations from the comments of the C header.

#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

#include "operations/operations.h"
#include "writers/header_texts.h"

namespace korvo::writers {
namespace {

using operations::Kind;
using operations::Member;
using operations::Operation;

char const *nameOf(Kind kind) {
    switch (kind) {
        case Kind::number:
            return "number";
        case Kind::flag:
            return "flag";
        case Kind::text:
            return "text";
        case Kind::texts:
            return "texts";
        case Kind::numbers:
            return "numbers";
        case Kind::none:
            break;
    }
    throw std::logic_error("a member has no kind");
}

std::string quoted(std::string const &text) {
    std::string result = "\"";
    for (char const character : text) {
        switch (character) {
            case '\n':
                result += "\\n";
                break;
            case '"':
            case '\\':
                result += '\\';
                [[fallthrough]];
            default:
                result += character;
        }
    }
    return result + "\"";
}

/// The comment's paragraphs, a line each, without the operation's name in front.
std::string textOf(Operation const &operation, Explanation const &explanation) {
    std::string text;
    for (std::string const &line : explanation.lines) {
        if (line.empty()) {
            text += '\n';
        } else {
            text +=
                (text.empty() || text.back() == '\n' ? "" : " ") + line.substr(line.find_first_not_of(' '));
        }
    }
    std::string const name = std::string(operation.name) + ": ";
    if (text.compare(0, name.size(), name) == 0) {
        text.erase(0, name.size());
    }
    if (text.empty()) {
        throw std::runtime_error(std::string("the header does not explain ") + operation.name);
    }
    return text;
}

std::size_t count(Member const *members) {
    std::size_t counted = 0;
    while (members[counted].kind != Kind::none) {
        ++counted;
    }
    return counted;
}

void writeMembers(std::ostream &out, std::string const &name, Member const *members,
                  Explanation const &explanation) {
    if (count(members) == 0) {
        return;
    }
    out << "constexpr Member " << name << "[] = {\n";
    for (; members->kind != Kind::none; ++members) {
        auto const found = explanation.names.find(members->name);
        if (found == explanation.names.end()) {
            throw std::runtime_error(std::string("the header does not explain ") + members->name + " in " +
                                     name);
        }
        out << "    {Kind::" << nameOf(members->kind) << ", \"" << members->name << "\",\n     "
            << quoted(found->second) << "},\n";
    }
    out << "};\n";
}

void writeCalls(std::ostream &out, Operation const &operation) {
    std::string const name = operation.name;
    out << "korvo_core_status send_" << name
        << "(void *handle, char const *target, char **request_id, [[maybe_unused]] Slot const *in) {\n"
        << "    return korvo_api_action_engine_" << name << "_non_blocking_send(handle, target, request_id";
    for (std::size_t place = 0; place < count(operation.inputs); ++place) {
        out << ", in[" << place << "]." << nameOf(operation.inputs[place].kind);
    }
    out << ");\n}\n";
    out << "korvo_core_status receive_" << name
        << "(void *handle, char const *target, int timeout, char *request_id, [[maybe_unused]] Slot *out) {\n"
        << "    return korvo_api_action_engine_" << name
        << "_receive_with_timeout(handle, target, timeout, request_id";
    for (std::size_t place = 0; place < count(operation.results); ++place) {
        out << ", &out[" << place << "]." << nameOf(operation.results[place].kind);
    }
    out << ");\n}\n";
}

std::string tableOf(std::string const &name, Member const *members) {
    std::size_t const members_count = count(members);
    return members_count == 0 ? "{nullptr, 0}" : "{" + name + ", " + std::to_string(members_count) + "}";
}

void write(std::ostream &out, HeaderTexts const &texts) {
    out << "// SPDX-License-Identifier: Apache-2.0\n"
           "// Written by the build from the operations and the comments of korvo_api_action_engine.h; "
           "change those.\n"
           "#include \"tool/operations.h\"\n\n"
           "#include \"korvo_api_action_engine.h\"\n\n"
           "namespace tool {\nnamespace {\n\n";
    for (Operation const &operation : operations::all) {
        std::string const name = operation.name;
        Explanation const &explanation = texts.function("korvo_api_action_engine_" + name + "_send");
        writeMembers(out, name + "_inputs", operation.inputs, explanation);
        writeMembers(out, name + "_results", operation.results, explanation);
        writeCalls(out, operation);
        out << "\n";
    }
    out << "constexpr Operation all[] = {\n";
    for (Operation const &operation : operations::all) {
        std::string const name = operation.name;
        Explanation const &explanation = texts.function("korvo_api_action_engine_" + name + "_send");
        out << "    {\"" << name << "\", \"" << operation.method << "\",\n     "
            << quoted(textOf(operation, explanation)) << ",\n     "
            << tableOf(name + "_inputs", operation.inputs) << ", "
            << tableOf(name + "_results", operation.results) << ", send_" << name << ", receive_" << name
            << "},\n";
    }
    out << "};\n\n}  // namespace\n\n"
           "Rows<Operation> operations() {\n    return {all, sizeof all / sizeof *all};\n}\n\n"
           "}  // namespace tool\n";
}

}  // namespace
}  // namespace korvo::writers

int main(int count, char **words) {
    try {
        if (count != 3) {
            throw std::runtime_error("usage: write-tool-operations SOURCE C_HEADER");
        }
        korvo::writers::HeaderTexts texts;
        texts.read(words[2]);
        std::ofstream out(words[1]);
        korvo::writers::write(out, texts);
        out.close();
        if (!out) {
            throw std::runtime_error(std::string("cannot write ") + words[1]);
        }
        return 0;
    } catch (std::exception const &problem) {
        std::cerr << "write-tool-operations: " << problem.what() << "\n";
        return 1;
    }
}
