// SPDX-License-Identifier: Apache-2.0
// Operations as sub-commands, by `call`, and described.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/service.h"
#include "tool_program.h"
#include "typed_calls/operation_names.h"

namespace tool_tests {

namespace {

using end_to_end::Service;
using processes::exited;

std::vector<std::string> const gate = {"create-relay-action",
                                       "--action-name",
                                       "Gate",
                                       "--relay-target",
                                       "relay_1",
                                       "--config-mode",
                                       "1",
                                       "--config-normally-closed",
                                       "--config-repeat-cycles",
                                       "2",
                                       "--config-on-time-ms",
                                       "300",
                                       "--config-off-time-ms",
                                       "400"};

constexpr char gate_as_json[] =
    R"({"action_name":"Gate","relay_target":"relay_1","config_mode":1,"config_normally_closed":true,)"
    R"("config_repeat_cycles":2,"config_on_time_ms":300,"config_off_time_ms":400})"
    "\n";

TEST(Operations, AreSubCommandsWithTheirInputsAsOptions) {
    Service service;
    EXPECT_EQ(results(gate), "action_id  1\n");
    EXPECT_EQ(results({"get-relay-action", "--action-id", "1"}),
              "action_name             Gate\n"
              "relay_target            relay_1\n"
              "config_mode             1\n"
              "config_normally_closed  yes\n"
              "config_repeat_cycles    2\n"
              "config_on_time_ms       300\n"
              "config_off_time_ms      400\n");
    EXPECT_EQ(results({"--json", "get-relay-action", "--action-id", "1"}), gate_as_json);
    EXPECT_EQ(results({"get-actions"}),
              "action_id  action_type\n"
              "1          9\n");
    EXPECT_EQ(results({"delete-action", "--action-id", "1"}), "");
}

TEST(Operations, TakeListsByRepeatingTheOption) {
    Service service;
    EXPECT_EQ(
        results({"create-email-action", "--action-name", "mail", "--smtp-server", "mx", "--to-addresses",
                 "a@b", "--to-addresses", "[c@d]", "--from-address", "e@f", "--subject", "", "--body",
                 "--looks like an option", "--attach-jpeg", "--include-event=false"}),
        "action_id  1\n");
    EXPECT_EQ(results({"get-email-action", "--json", "--action-id", "1"}),
              R"({"action_name":"mail","smtp_server":"mx","to_addresses":["a@b","[c@d]"],"cc_addresses":[],)"
              R"("from_address":"e@f","subject":"","body":"--looks like an option","attach_jpeg":true,)"
              R"("include_event":false})"
              "\n");
    EXPECT_EQ(results({"set-action-filters", "--action-id", "1", "--weekday-filters", "62",
                       "--weekday-filters", "1", "--time-filters-start", "0", "--time-filters-start", "60",
                       "--time-filters-end", "3600", "--time-filters-end", "120"}),
              "");
    EXPECT_EQ(results({"get-action-filters", "--action-id", "1"}),
              "weekday_filters  time_filters_start  time_filters_end\n"
              "62               0                   3600\n"
              "1                60                  120\n");
}

TEST(Call, TakesInputsAsJsonFromAnArgumentAFileOrStandardInput) {
    Service service;
    (void)results(gate);
    for (char const *name : {"Get_relay_action", "get_relay_action", "get-relay-action"}) {
        EXPECT_EQ(results({"call", name, R"({"action_id": 1})", "--json"}), gate_as_json);
    }
    EXPECT_EQ(results({"call", "Get_relay_action", "@" + fileWith(R"({"action_id": 1})").string(), "--json"}),
              gate_as_json);
    ShellOutcome const piped =
        shell(R"(echo '{"action_id": 1}' | korvo-action-engine call Get_relay_action - --json)");
    EXPECT_EQ(piped.code, 0);
    EXPECT_EQ(piped.out, gate_as_json);
    EXPECT_EQ(results({"call", "Get_actions", "--json"}), "{\"action_id\":[1],\"action_type\":[9]}\n");
}

TEST(Call, NamesTheInputThatIsWrong) {
    struct Case {
        char const *inputs;
        char const *words;
    };
    for (Case const &wrong :
         {Case{"{}", "Get_relay_action lacks its input \"action_id\""},
          Case{R"({"action_id": -1})", "\"action_id\" is to be a whole number from 0 to 4294967295"},
          Case{R"({"action_id": 4294967296})", "\"action_id\" is to be a whole number"},
          Case{R"({"action_id": "1"})", "\"action_id\" is to be a whole number"},
          Case{R"({"action_id": 1, "extra": 2})", "Get_relay_action has no input \"extra\""},
          Case{"[1]", "INPUTS is no JSON object"}, Case{"{", "INPUTS is no JSON object"}}) {
        Finished const finished = tool({"call", "Get_relay_action", wrong.inputs});
        EXPECT_TRUE(finished.exit == exited(2)) << wrong.inputs;
        EXPECT_NE(finished.errors.find(wrong.words), std::string::npos) << finished.errors;
        EXPECT_EQ(finished.out, "");
    }
}

TEST(Passwords, AreNeverOnTheCommandLineAndHiddenUnlessAskedFor) {
    Service service;
    auto const file = fileWith("open sesame\nsecond line\n").string();
    EXPECT_EQ(results({"create-ftp-action", "--action-name", "up", "--server-name", "s", "--username", "u",
                       "--password-file", file, "--path", "/", "--filename", "f"}),
              "action_id  1\n");
    std::string const hidden = results({"get-ftp-action", "--action-id", "1"});
    EXPECT_NE(hidden.find("password     (hidden)\n"), std::string::npos) << hidden;
    EXPECT_EQ(hidden.find("sesame"), std::string::npos);
    EXPECT_NE(results({"get-ftp-action", "--action-id", "1", "--json"}).find(R"("password":null)"),
              std::string::npos);
    EXPECT_NE(results({"get-ftp-action", "--action-id", "1", "--json", "--show-secrets"})
                  .find(R"("password":"open sesame",)"),
              std::string::npos);

    Finished const refused = tool({"call", "Create_ftp_action", R"({"password": "open sesame"})"});
    EXPECT_TRUE(refused.exit == exited(2));
    EXPECT_NE(refused.errors.find("INPUTS holds a password"), std::string::npos) << refused.errors;
    EXPECT_EQ(refused.errors.find("sesame"), std::string::npos);
    Finished const unknown = tool({"create-ftp-action", "--password", "open sesame"});
    EXPECT_TRUE(unknown.exit == exited(2)) << unknown.errors;
}

TEST(Describe, TellsOfEveryOperation) {
    std::string const list = results({"describe"});
#define EXPECT_NAME(name)                                                                           \
    {                                                                                               \
        std::string const described = results({"describe", #name, "--json"});                       \
        EXPECT_NE(described.find("{\"operation\":\"" #name "\","), std::string::npos) << described; \
    }
    EXPECT_NAME(get_actions)
    EXPECT_NAME(onvif_event)
    EXPECT_NAME(create_stable_onvif_trigger)
#undef EXPECT_NAME
    std::string names;
#define LINE(name) names += #name "\n";
    OPERATION_NAMES(LINE)
#undef LINE
    std::string described;
    ShellOutcome const methods =
        shell("korvo-action-engine describe | sed 1d | cut -d' ' -f1 | tr '[:upper:]' '[:lower:]'");
    EXPECT_EQ(methods.out, names);

    EXPECT_EQ(results({"describe", "Get_action_type"}),
              "Get_action_type, as a command get-action-type\n"
              "\n"
              "tells what kind of action an identifier stands for.\n"
              "\n"
              "Inputs\n"
              "  action_id  a whole number from 0 to 4294967295: the action asked about.\n"
              "\n"
              "Results\n"
              "  action_type  a whole number from 0 to 4294967295: its type: a value of ActionType.\n");
}

}  // namespace

}  // namespace tool_tests
