// SPDX-License-Identifier: Apache-2.0
// The catalogue as a text: what the tool and scripts write is the same to the byte, and each reads the other's.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "lua_interpreters/lua_interpreters.h"
#include "support/client.h"
#include "support/operation.h"
#include "support/service.h"
#include "support/workspace.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

using end_to_end::Service;
using processes::exited;

class LuaDocument : public ::testing::TestWithParam<std::string> {
  protected:
    static std::string runScript(std::string const &task, std::string const &file) {
        Finished const finished =
            processes::run({GetParam(), {KORVO_SCRIPT, task, file}, lua_interpreters::environment()});
        EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
        return finished.out;
    }
    static std::string exported(std::string const &task) {
        auto const file = end_to_end::Workspace::ofThisProgram().newFolder("lua") / "exported";
        EXPECT_EQ(runScript(task, file.string()), "exported\n");
        std::stringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }
};

INSTANTIATE_TEST_SUITE_P(, LuaDocument, ::testing::ValuesIn(lua_interpreters::paths),
                         [](auto const &tested) { return lua_interpreters::nameOf(tested.param); });

using end_to_end::Flag;
using end_to_end::Numbers;
using end_to_end::Texts;
using end_to_end::Values;

void ask(end_to_end::Client const &client, std::string const &operation, Values const &inputs) {
    EXPECT_EQ(end_to_end::operation(operation).send(client.handle(), nullptr, inputs).status,
              KORVO_CORE_STATUS_NO_ERROR)
        << operation;
}

/// Not in the order of the document: names that differ in case, in bytes beyond ASCII and not at all; every character that is
/// written as an escape and some that are not; lines of 100 characters and of one more; the largest numbers.
void fill() {
    end_to_end::Client const client;
    ask(client, "create_wiper_action", {"same"});
    ask(client, "create_washer_action", {"same"});
    ask(client, "create_wiper_action", {"same"});
    for (char const *const name : {"Same", "ärger", "", "\x01\x1f\x7f\b\f\n\r\t\"\\/ \u20ac\U0001F600"}) {
        ask(client, "create_wiper_action", {name});
    }
    ask(client, "create_relay_action", {"r", "relay 1", 1U, Flag{1}, 4294967295U, 3000000000U, 0U});
    ask(client, "create_email_action",
        {"mail", "mail.example.org", Texts{"a@example.org", "b@example.org"}, Texts{}, "c@example.org", "s",
         "two\nlines", Flag{1}, Flag{0}});
    ask(client, "create_ftp_action", {"upload", "s", "u", "first", "/", "f"});
    ask(client, "create_ftp_action", {"upload", "s", "u", "second", "/", "f"});
    ask(client, "set_action_filters", {1U, Numbers{62, 65}, Numbers{28800, 86399}, Numbers{61200, 0}});
    for (std::size_t length = 10; length <= 40; ++length) {
        ask(client, "create_timer_trigger", {std::string(length, 'n'), 0U});
    }
    ask(client, "create_onvif_trigger",
        {"motion", "tns1:A//.", "http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet", "",
         Texts{"tns1", "tt"}, Texts{"urn:a", "http://www.onvif.org/ver10/schema"}});
    ask(client, "create_association", {2U, 11U});
    ask(client, "create_association", {2U, 1U});
    ask(client, "create_association", {1U, 10U});
    ask(client, "create_association", {32U, 7U});
}

TEST_P(LuaDocument, IsToTheByteWhatTheToolWrites) {
    Service const service;
    EXPECT_EQ(exported("export"), results({"export"}));
    fill();
    std::string const masked = results({"export"});
    EXPECT_NE(masked.find("\"password\": null"), std::string::npos);
    EXPECT_EQ(exported("export"), masked);
    EXPECT_EQ(exported("export-all"), results({"export", "--show-secrets"}));
}

TEST_P(LuaDocument, OfTheToolIsRead) {
    std::string wanted;
    {
        Service const service;
        fill();
        wanted = results({"export", "--show-secrets"});
    }
    Service const service;
    EXPECT_EQ(runScript("import", fileWith(wanted).string()), "11 actions\n");
    EXPECT_EQ(results({"export", "--show-secrets"}), wanted);
}

TEST_P(LuaDocument, IsReadByTheTool) {
    std::string wanted;
    {
        Service const service;
        fill();
        wanted = exported("export-all");
    }
    Service const service;
    (void)results({"import", fileWith(wanted).string(), "--replace"});
    EXPECT_EQ(exported("export-all"), wanted);
}

// The identifiers of a document are its own, so they do not tell whose password is meant.
TEST_P(LuaDocument, WithoutPasswordsMeansTheOnesOfTheSameName) {
    Service const service;
    {
        end_to_end::Client const client;
        ask(client, "create_ftp_action", {"b", "s", "u", "of b", "/", "f"});
        ask(client, "create_ftp_action", {"a", "s", "u", "of a", "/", "f"});
    }
    std::string const masked = results({"export"});
    EXPECT_EQ(runScript("import", fileWith(masked).string()), "2 actions\n");
    for (char const *const wanted : {"3 of a", "4 of b"}) {
        EXPECT_NE(
            results({"get-ftp-action", "--action-id", std::string(wanted, 1), "--json", "--show-secrets"})
                .find(std::string("\"password\":\"") + (wanted + 2) + "\""),
            std::string::npos)
            << wanted;
    }
    std::string other = masked;
    other.replace(other.find("\"b\""), 3, "\"c\"");
    std::string const before = results({"export", "--show-secrets"});
    EXPECT_EQ(runScript("import", fileWith(other).string()),
              "import: action 2 has no password, and there is no ftp_action of its name that has one\t1\n");
    EXPECT_EQ(results({"export", "--show-secrets"}), before);
}

}  // namespace

}  // namespace tool_tests
