// SPDX-License-Identifier: Apache-2.0
// Every method with a command that it takes, and that command damaged in every way.

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <cctype>
#include <set>
#include <string>
#include <vector>

#include "examples.h"
#include "support.h"
#include "typed_calls/operation_names.h"

namespace simulator::tests {

namespace {

namespace json = boost::json;

std::string statusText(Example const &example, int status) {
    return std::string(R"({"command":")") + example.method + R"(","status":)" + std::to_string(status) + "}";
}

/// Methods are called as operations, with a capital letter.
std::string methodOf(std::string operation) {
    operation.front() = static_cast<char>(std::toupper(operation.front()));
    return operation;
}

class EveryCommand : public testing::TestWithParam<Example> {
  protected:
    EveryCommand() {
        for (char const *const command : preparation) {
            EXPECT_EQ(bench.status(command), 0) << command;
        }
    }

    /// The command as it is taken.
    json::object good() { return json::parse(commandText(GetParam())).as_object(); }

    /// The command with a member replaced, or without it for NULL.
    std::string damaged(std::string const &member, json::value const *value) {
        json::object command = good();
        if (value == nullptr) {
            command.erase(member);
        } else {
            command[member] = *value;
        }
        return json::serialize(command);
    }

    std::vector<std::string> members() {
        std::vector<std::string> names;
        json::object const command = good();
        for (auto const &member : command) {
            if (member.key() != "command") {
                names.emplace_back(member.key().data(), member.key().size());
            }
        }
        return names;
    }

    std::vector<std::string> catalogue() {
        std::vector<std::string> responses;
        for (char const *const method : {"Get_actions", "Get_triggers"}) {
            responses.push_back(bench.respond(std::string(R"({"command":")") + method + "\"}"));
        }
        for (Example const &example : examples) {
            if (std::string_view(example.method).substr(0, 4) == "Get_") {
                responses.push_back(bench.respond(commandText(example)));
            }
        }
        return responses;
    }

    Bench bench;
};

}  // namespace

TEST_P(EveryCommand, IsAnsweredWithItsResultsInOrder) {
    EXPECT_EQ(bench.respond(commandText(GetParam())), responseText(GetParam()));
}

TEST_P(EveryCommand, IsRefusedAndChangesNothingWhenAMemberIsMissing) {
    auto const before = catalogue();
    for (std::string const &member : members()) {
        EXPECT_EQ(bench.respond(damaged(member, nullptr)), statusText(GetParam(), 1)) << member;
    }
    EXPECT_EQ(catalogue(), before);
}

TEST_P(EveryCommand, IsRefusedAndChangesNothingWhenAMemberIsOfAnotherType) {
    auto const before = catalogue();
    std::vector<json::value> const values = {
        nullptr, true, 1, "text", json::array{"text"}, json::array{1}, json::object{{"a", 1}}};
    for (std::string const &member : members()) {
        for (json::value const &value : values) {
            json::value const expected = good().at(member);
            bool const fits = expected.is_array()
                                  ? value.is_array() && !expected.as_array().empty() &&
                                        value.as_array()[0].kind() == expected.as_array()[0].kind()
                                  : value.kind() == expected.kind();
            // An empty list does not tell of what kind its elements are.
            bool const unclear = expected.is_array() && expected.as_array().empty() && value.is_array();
            if (!fits && !unclear) {
                EXPECT_EQ(bench.respond(damaged(member, &value)), statusText(GetParam(), 1))
                    << member << " " << value;
            }
        }
    }
    EXPECT_EQ(catalogue(), before);
}

TEST_P(EveryCommand, IsRefusedAndChangesNothingWhenANumberIsNotWholeOrOutOfRange) {
    auto const before = catalogue();
    std::vector<json::value> const numbers = {-1,    0.5,  4294967296,           4294967295.5,
                                              1e300, -0.5, 18446744073709551615U};
    for (std::string const &member : members()) {
        bool const list = good().at(member).is_array() && !good().at(member).as_array().empty() &&
                          good().at(member).as_array()[0].is_int64();
        if (!list && !good().at(member).is_int64()) {
            continue;
        }
        for (json::value const &number : numbers) {
            json::value const value = list ? json::value(json::array{1, number}) : number;
            EXPECT_EQ(bench.respond(damaged(member, &value)), statusText(GetParam(), 1))
                << member << " " << value;
        }
    }
    EXPECT_EQ(catalogue(), before);
}

TEST_P(EveryCommand, IsRefusedAndChangesNothingWhenATextHoldsAZeroCharacter) {
    auto const before = catalogue();
    json::string const cut("be\0hind", 7);
    for (std::string const &member : members()) {
        json::value const now = good().at(member);
        bool const texts = now.is_array() && (now.as_array().empty() || now.as_array()[0].is_string());
        if (now.is_string() || texts) {
            json::value const value = texts ? json::value(json::array{cut}) : json::value(cut);
            EXPECT_EQ(bench.respond(damaged(member, &value)), statusText(GetParam(), 1)) << member;
        }
    }
    EXPECT_EQ(catalogue(), before);
}

TEST_P(EveryCommand, IsCarriedOutWithFurtherMembersAndNumbersWrittenAsReals) {
    json::object command = good();
    for (auto &member : command) {
        if (member.value().is_int64()) {
            member.value() = static_cast<double>(member.value().as_int64());
        }
    }
    command["something_else"] = json::object{{"deep", json::array{1, 2}}};
    EXPECT_EQ(bench.respond(json::serialize(command)), responseText(GetParam()));
}

TEST_P(EveryCommand, IsRefusedForIdentifiersThatDoNotExist) {
    std::string const method = GetParam().method;
    json::object command = good();
    for (char const *const member : {"action_id", "trigger_id"}) {
        if (command.contains(member)) {
            for (std::uint32_t const id : {0U, 99U, 4294967295U}) {
                json::value const value = id;
                EXPECT_EQ(bench.respond(damaged(member, &value)), statusText(GetParam(), 9))
                    << member << " " << id;
            }
        }
    }
}

TEST_P(EveryCommand, OfOneKindIsRefusedForEntriesOfAnotherKind) {
    std::string const method = GetParam().method;
    bool const get = method.substr(0, 4) == "Get_";
    bool const modify = method.substr(0, 7) == "Modify_";
    bool const action = method.size() > 7 && method.substr(method.size() - 7) == "_action";
    bool const trigger = method.size() > 8 && method.substr(method.size() - 8) == "_trigger";
    if (!(get || modify) || !(action || trigger)) {
        return;
    }
    char const *const member = action ? "action_id" : "trigger_id";
    std::int64_t const own = good().at(member).as_int64();
    unsigned int refused = 0;
    for (std::int64_t id = 1; id <= (action ? 10 : 3); ++id) {
        if (id != own) {
            json::value const value = id;
            EXPECT_EQ(bench.respond(damaged(member, &value)), statusText(GetParam(), 9)) << id;
            ++refused;
        }
    }
    EXPECT_EQ(refused, action ? 9U : 2U);
}

INSTANTIATE_TEST_SUITE_P(Methods, EveryCommand, testing::ValuesIn(examples),
                         [](testing::TestParamInfo<Example> const &example) {
                             std::string const method = example.param.method;
                             return method == "__get_target_version__" ? std::string("VersionQuery") : method;
                         });

TEST(Commands, AreThereForAllOperationsAndTheVersionQuery) {
    std::set<std::string> methods;
    for (Example const &example : examples) {
        methods.insert(example.method);
    }
    std::set<std::string> expected = {"__get_target_version__"};
#define ADD(name) expected.insert(methodOf(#name));
    OPERATION_NAMES(ADD)
#undef ADD
    EXPECT_EQ(methods, expected);
}

TEST(Commands, OfUnknownMethodsAreAnsweredWithStatus8AndTheirName) {
    Bench bench;
    for (char const *const method :
         {"get_actions", "Get_action", "Get_actionsx", "", "Reboot", "Get_actions\\n"}) {
        std::string const command = std::string(R"({"command":")") + method + "\"}";
        boost::json::object const response = bench.answer(command);
        EXPECT_EQ(response.at("status").as_int64(), 8) << method;
        EXPECT_EQ(boost::json::serialize(response.at("command")), std::string("\"") + method + "\"");
    }
}

TEST(Commands, ThatAreNoJsonObjectWithACommandAreAnsweredWithStatus1) {
    Bench bench;
    std::string const deep(100'000, '[');
    for (std::string const &command :
         {std::string(), std::string("{"), std::string("nonsense"), std::string("[]"), std::string("1"),
          std::string("\"Get_actions\""), std::string("null"), std::string("{}"),
          std::string(R"({"command":1})"), std::string(R"({"command":null})"),
          std::string(R"({"command":["Get_actions"]})"), std::string(R"({"command":"Get_actions"} x)"),
          std::string("{\"command\":\"Get_actions\xff\"}"), deep, R"({"command":"Get_actions","x":)" + deep,
          std::string("\0", 1)}) {
        EXPECT_EQ(bench.respond(command), R"({"command":"","status":1})") << command.substr(0, 100);
    }
    EXPECT_EQ(bench.status(R"({"command":"Get_actions"})"), 0);
}

}  // namespace simulator::tests
