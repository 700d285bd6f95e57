// SPDX-License-Identifier: Apache-2.0
// What the comments of the public header tell, where a caller would go wrong without it.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <regex>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "header/declarations.h"

namespace {

using header_text::Declaration;
using header_text::Parameter;
using public_header::operationNames;

bool contains(std::string const &text, std::string const &part) {
    return text.find(part) != std::string::npos;
}

bool hasType(std::vector<Parameter> const &parameters, std::string const &type) {
    return std::any_of(parameters.begin(), parameters.end(),
                       [&type](Parameter const &parameter) { return parameter.type == type; });
}

std::string block(std::string const &operation) {
    return public_header::callbackType(operation).comment;
}

// The lines of one paragraph of a block: those under its heading, up to the next heading.
std::string paragraph(std::string const &block_text, std::string const &heading) {
    std::istringstream lines(block_text);
    std::string result;
    bool inside = false;
    for (std::string line; std::getline(lines, line);) {
        if (line == heading) {
            inside = true;
        } else if (inside && (line.empty() || line.front() != ' ')) {
            break;
        } else if (inside) {
            result += line + "\n";
        }
    }
    return result;
}

std::string methodName(std::string operation) {
    operation.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(operation.front())));
    return operation;
}

std::vector<std::string> linesWithoutIndentation(std::string const &text) {
    std::istringstream lines(text);
    std::vector<std::string> result;
    for (std::string line; std::getline(lines, line);) {
        result.push_back(line.substr(std::min(line.find_first_not_of(' '), line.size())));
    }
    return result;
}

TEST(PublicHeaderText, GivesEveryOperationABlockThatStartsWithItsName) {
    for (std::string const &operation : operationNames()) {
        EXPECT_EQ(block(operation).rfind("\n" + operation + ": ", 0), 0U) << operation;
    }
}

TEST(PublicHeaderText, DescribesEveryInputAndResult) {
    for (std::string const &operation : operationNames()) {
        std::string const in = paragraph(block(operation), "Inputs");
        std::string const out = paragraph(block(operation), "Results");
        for (Parameter const &parameter : public_header::inputs(operation)) {
            EXPECT_TRUE(contains("\n" + in, "\n  " + parameter.name + "  "))
                << operation << ": " << parameter.name;
        }
        for (Parameter const &parameter : public_header::results(operation)) {
            EXPECT_TRUE(contains("\n" + out, "\n  " + parameter.name + "  "))
                << operation << ": " << parameter.name;
        }
    }
}

TEST(PublicHeaderText, NamesTheUnitOfEveryTime) {
    for (std::string const &operation : operationNames()) {
        std::vector<Parameter> members = public_header::inputs(operation);
        for (Parameter const &result : public_header::results(operation)) {
            members.push_back(result);
        }
        for (Parameter const &member : members) {
            std::regex const milliseconds("  " + member.name + " +[^\n]*in milliseconds");
            std::regex const seconds("  " + member.name + " +[^\n]*in seconds");
            if (std::regex_search(member.name, std::regex("_ms$"))) {
                EXPECT_TRUE(std::regex_search(block(operation), milliseconds))
                    << operation << ": " << member.name;
            } else if (std::regex_search(member.name, std::regex("_seconds$"))) {
                EXPECT_TRUE(std::regex_search(block(operation), seconds)) << operation << ": " << member.name;
            }
        }
    }
}

TEST(PublicHeaderText, SaysThatPointersGivenAreBorrowed) {
    for (std::string const &operation : operationNames()) {
        std::vector<Parameter> const inputs = public_header::inputs(operation);
        bool const texts = hasType(inputs, "char const *");
        bool const lists = hasType(inputs, "char **") || hasType(inputs, "unsigned int **");
        if (texts || lists) {
            std::string const what = texts && lists ? "texts and lists" : texts ? "texts" : "lists";
            EXPECT_TRUE(contains(paragraph(block(operation), "Ownership"),
                                 "Inputs: " + what + " are borrowed for the call."))
                << operation;
        }
    }
}

TEST(PublicHeaderText, SaysWhoFreesTheTextsThatComeBack) {
    for (std::string const &operation : operationNames()) {
        if (hasType(public_header::results(operation), "char *")) {
            std::string const ownership = paragraph(block(operation), "Ownership");
            EXPECT_TRUE(contains(ownership, "caller frees with free()")) << operation;
            EXPECT_TRUE(contains(ownership, "callback owns, frees with free()")) << operation;
        }
    }
}

TEST(PublicHeaderText, SaysWhoFreesTheListsThatComeBackAndThatTheirVariablesAreNull) {
    for (std::string const &operation : operationNames()) {
        std::vector<Parameter> const results = public_header::results(operation);
        for (auto const &[type, kind] :
             {std::pair{"char **", "string"}, std::pair{"unsigned int **", "uint"}}) {
            if (hasType(results, type)) {
                EXPECT_TRUE(contains(paragraph(block(operation), "Ownership"),
                                     std::string("Lists: caller frees with korvo_core_free_") + kind +
                                         "_array(). In a callback: borrowed for the call."))
                    << operation;
                EXPECT_TRUE(contains(paragraph(block(operation), "Statuses"),
                                     "1 for a list variable that was not NULL"))
                    << operation;
            }
        }
    }
}

TEST(PublicHeaderText, SaysWhatANullInputDoes) {
    for (std::string const &operation : operationNames()) {
        std::vector<Parameter> const inputs = public_header::inputs(operation);
        std::string const statuses = paragraph(block(operation), "Statuses");
        std::string const lines = paragraph(block(operation), "Log lines");
        std::string const builder = "action_engine_" + operation + "_utility_send";
        bool const texts = hasType(inputs, "char const *");
        bool const lists = hasType(inputs, "char **") || hasType(inputs, "unsigned int **");
        EXPECT_EQ(contains(statuses, "1 for a NULL"), texts || lists) << operation;
        EXPECT_EQ(contains(lines, "\"Initiator: " + builder + " called with null input pointer <name>\""),
                  texts)
            << operation;
        EXPECT_EQ(contains(lines, "\"Initiator:" + builder + " called with null input pointer <name>\""),
                  lists)
            << operation;
    }
}

TEST(PublicHeaderText, QuotesTheLogLinesOfEveryReader) {
    for (std::string const &operation : operationNames()) {
        std::string const lines = paragraph(block(operation), "Log lines");
        std::string const callback = "action_engine" + methodName(operation) + "Callback";
        std::vector<Parameter> const results = public_header::results(operation);
        EXPECT_TRUE(contains(lines, "\"received a callback for " + methodName(operation) +
                                        " but no initiator callback was registered\" (warning)"))
            << operation;
        EXPECT_TRUE(contains(lines, "\"Threw an exception in function " + callback + "\" (error)"))
            << operation;
        for (auto const &[type, sync, async] :
             {std::tuple{"char **", "STR", "char"}, std::tuple{"unsigned int **", "UINT", "unsigned int"}}) {
            EXPECT_EQ(contains(lines, "\"action_engine_" + operation + "_receive:failed converting " + sync +
                                          " array (<status>)\""),
                      hasType(results, type))
                << operation;
            EXPECT_EQ(
                contains(lines, "\"" + callback + " failed converting " + async + " array (<status>)\""),
                hasType(results, type))
                << operation;
        }
    }
}

TEST(PublicHeaderText, DocumentsEveryFunctionThatIsNoFormOfAnOperation) {
    for (Declaration const &found : public_header::header().declarations) {
        bool const is_form = std::any_of(
            operationNames().begin(), operationNames().end(),
            [&found](std::string const &operation) { return contains(found.name, "_" + operation + "_"); });
        bool const is_version_form = contains(found.name, "__get_target_version__");
        if (found.what == Declaration::What::function && !is_form && !is_version_form) {
            EXPECT_FALSE(found.comment.empty()) << found.name;
        }
    }
    EXPECT_FALSE(block("__get_target_version__").empty());
}

TEST(PublicHeaderText, OpensWithTheRulesForCallers) {
    std::string const &opening = public_header::header().opening;
    for (char const *heading :
         {"The life of a handle", "The target text", "The seven forms", "Request identifiers", "Ownership",
          "Values", "Time-outs", "Threads and locks", "Deliberate behaviours", "Statuses", "Log lines"}) {
        EXPECT_TRUE(contains(opening, std::string("\n") + heading + "\n" +
                                          std::string(std::string(heading).size(), '-') + "\n"))
            << heading;
    }
    for (char const *phrase :
         {"\"borrowed for the call\"", "\"caller frees with X\"", "\"callback owns, frees with X\""}) {
        EXPECT_TRUE(contains(opening, phrase)) << phrase;
    }
}

TEST(PublicHeaderText, ShowsAnExampleWhoseLinesAreTheCompiledProgram) {
    std::istringstream opening(public_header::header().opening);
    std::vector<std::string> example;
    for (std::string line; std::getline(opening, line) && line.rfind("The life of a handle", 0) != 0;) {
        if (line.rfind("    ", 0) == 0) {
            example.push_back(line.substr(4));
        }
    }
    ASSERT_GE(example.size(), 8U) << "the example is no longer where this test looks for it";

    std::vector<std::string> const program =
        linesWithoutIndentation(header_text::readFile(KORVO_EXAMPLE_PROGRAM));
    auto at = program.begin();
    for (std::string const &line : example) {
        at = std::find(at, program.end(), line);
        ASSERT_NE(at, program.end()) << "not in the program, or not in this order: " << line;
        ++at;
    }
}

}  // namespace
