// SPDX-License-Identifier: Apache-2.0
// Every method with a command that it takes, and that command damaged in every way.

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <set>
#include <string>
#include <vector>

#include "support.h"

namespace simulator::tests {

namespace {

namespace json = boost::json;

/// A command that succeeds on the prepared catalogue, and the response to it.
struct Example {
    char const *method;
    char const *inputs;
    char const *results;
};

// The prepared catalogue has actions 1 to 10, of types 0 to 9 in this order, and triggers 1 to 3, of types 0 to 2.
// Trigger 2 is bound to actions 3 and 9; action 3 has filters.
constexpr Example examples[] = {
    {"__get_target_version__", R"("initiator_major":1,"initiator_minor":19)",
     R"("target_major":1,"target_minor":19)"},

    {"Get_actions", "", R"("action_id":[1,2,3,4,5,6,7,8,9,10],"action_type":[0,1,2,3,4,5,6,7,8,9])"},
    {"Get_action_counts", "",
     R"("total":10,"action_types":[0,1,2,3,4,5,6,7,8,9],"counts":[1,1,1,1,1,1,1,1,1,1])"},
    {"Get_action_type", R"("action_id":7)", R"("action_type":6)"},
    {"Delete_action", R"("action_id":4)", ""},

    {"Create_email_action",
     R"("action_name":"n","smtp_server":"s","to_addresses":["a","b"],"cc_addresses":[],"from_address":"f","subject":"t","body":"b","attach_jpeg":true,"include_event":false)",
     R"("action_id":11)"},
    {"Get_email_action", R"("action_id":1)",
     R"("action_name":"mail","smtp_server":"smtp","to_addresses":["to@x","you@x"],"cc_addresses":["cc@x"],"from_address":"from@x","subject":"subject","body":"body","attach_jpeg":false,"include_event":true)"},
    {"Modify_email_action",
     R"("action_id":1,"action_name":"n","smtp_server":"s","to_addresses":[],"cc_addresses":["c"],"from_address":"f","subject":"t","body":"b","attach_jpeg":true,"include_event":false)",
     ""},

    {"Create_ftp_action",
     R"("action_name":"n","server_name":"s","username":"u","password":"p","path":"","filename":"f")",
     R"("action_id":11)"},
    {"Get_ftp_action", R"("action_id":2)",
     R"("action_name":"ftp","server_name":"server","username":"user","password":"secret","path":"/in","filename":"a.jpg")"},
    {"Modify_ftp_action",
     R"("action_id":2,"action_name":"n","server_name":"s","username":"u","password":"p","path":"","filename":"f")",
     ""},

    {"Create_snapshot_action", R"("action_name":"n","filename":"f.jpg")", R"("action_id":11)"},
    {"Get_snapshot_action", R"("action_id":3)", R"("action_name":"door","filename":"door.jpg")"},
    {"Modify_snapshot_action", R"("action_id":3,"action_name":"n","filename":"f.jpg")", ""},

    {"Create_ptz_pattern_action", R"("action_name":"n","pattern_id":"1")", R"("action_id":11)"},
    {"Get_ptz_pattern_action", R"("action_id":4)", R"("action_name":"pattern","pattern_id":"p1")"},
    {"Modify_ptz_pattern_action", R"("action_id":4,"action_name":"n","pattern_id":"1")", ""},
    {"Create_ptz_preset_action", R"("action_name":"n","preset_id":"1")", R"("action_id":11)"},
    {"Get_ptz_preset_action", R"("action_id":5)", R"("action_name":"preset","preset_id":"p2")"},
    {"Modify_ptz_preset_action", R"("action_id":5,"action_name":"n","preset_id":"1")", ""},
    {"Create_ptz_scan_action", R"("action_name":"n","scan_id":"1")", R"("action_id":11)"},
    {"Get_ptz_scan_action", R"("action_id":7)", R"("action_name":"scan","scan_id":"p4")"},
    {"Modify_ptz_scan_action", R"("action_id":7,"action_name":"n","scan_id":"1")", ""},
    {"Create_ptz_tour_action", R"("action_name":"n","tour_id":"1")", R"("action_id":11)"},
    {"Get_ptz_tour_action", R"("action_id":6)", R"("action_name":"tour","tour_id":"p3")"},
    {"Modify_ptz_tour_action", R"("action_id":6,"action_name":"n","tour_id":"1")", ""},

    {"Create_wiper_action", R"("action_name":"n")", R"("action_id":11)"},
    {"Get_wiper_action", R"("action_id":8)", R"("action_name":"wiper")"},
    {"Modify_wiper_action", R"("action_id":8,"action_name":"n")", ""},
    {"Create_washer_action", R"("action_name":"n")", R"("action_id":11)"},
    {"Get_washer_action", R"("action_id":9)", R"("action_name":"washer")"},
    {"Modify_washer_action", R"("action_id":9,"action_name":"n")", ""},
    {"Create_relay_action",
     R"("action_name":"n","relay_target":"r","config_mode":0,"config_normally_closed":false,"config_repeat_cycles":1,"config_on_time_ms":2,"config_off_time_ms":4294967295)",
     R"("action_id":11)"},
    {"Get_relay_action", R"("action_id":10)",
     R"("action_name":"relay","relay_target":"gate","config_mode":2,"config_normally_closed":true,"config_repeat_cycles":0,"config_on_time_ms":500,"config_off_time_ms":4294967295)"},
    {"Modify_relay_action",
     R"("action_id":10,"action_name":"n","relay_target":"r","config_mode":0,"config_normally_closed":false,"config_repeat_cycles":1,"config_on_time_ms":2,"config_off_time_ms":3)",
     ""},

    {"Get_action_filters", R"("action_id":3)",
     R"("weekday_filters":[62,65],"time_filters_start":[28800,86399],"time_filters_end":[64800,86400])"},
    {"Set_action_filters",
     R"("action_id":3,"weekday_filters":[0,127],"time_filters_start":[0,1],"time_filters_end":[1,0])", ""},

    {"Get_triggers", "", R"("trigger_id":[1,2,3],"trigger_type":[0,1,2])"},
    {"Get_trigger_counts", "", R"("total":3,"trigger_types":[0,1,2],"counts":[1,1,1])"},
    {"Get_trigger_type", R"("trigger_id":3)", R"("trigger_type":2)"},
    {"Delete_trigger", R"("trigger_id":2)", ""},

    {"Create_timer_trigger", R"("trigger_name":"n","timer_seconds":4294967295)", R"("trigger_id":4)"},
    {"Get_timer_trigger", R"("trigger_id":2)", R"("trigger_name":"timer","timer_seconds":60)"},
    {"Modify_timer_trigger", R"("trigger_id":2,"trigger_name":"n","timer_seconds":0)", ""},

    {"Create_onvif_trigger",
     R"("trigger_name":"n","topic_filter":"k:A|B//.","topic_filter_dialect":"","content_filter":"","namespace_keys":["k"],"namespace_uris":["u"])",
     R"("trigger_id":4)"},
    {"Get_onvif_trigger", R"("trigger_id":1)",
     R"("trigger_name":"onvif","topic_filter":"tns1:A/B","topic_filter_dialect":"http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete","content_filter":"boolean(//tt:SimpleItem[@Name=\"State\" and @Value=\"on\"]) ","namespace_keys":["tns1","tt"],"namespace_uris":["urn:a","http://www.onvif.org/ver10/schema"])"},
    {"Modify_onvif_trigger",
     R"("trigger_id":1,"trigger_name":"n","topic_filter":"t","topic_filter_dialect":"http://www.onvif.org/ver10/tev/topicExpression/ConcreteSet","content_filter":" ","namespace_keys":[],"namespace_uris":[])",
     ""},

    {"Create_stable_onvif_trigger",
     R"("trigger_name":"n","topic_filter":"t","content_filter":"","namespace_keys":[],"namespace_uris":[],"stability_seconds":4294967295)",
     R"("trigger_id":4)"},
    {"Get_stable_onvif_trigger", R"("trigger_id":3)",
     R"("trigger_name":"stable","topic_filter":"tns1:A//.","content_filter":" ","namespace_keys":["tns1"],"namespace_uris":["urn:a"],"stability_seconds":5)"},
    {"Modify_stable_onvif_trigger",
     R"("trigger_id":3,"trigger_name":"n","topic_filter":"t","content_filter":"","namespace_keys":[],"namespace_uris":[],"stability_seconds":0)",
     ""},

    {"Onvif_event",
     R"("topic":"tns1:A/B","message":"<on/>","namespace_keys":["tns1"],"namespace_uris":["urn:a"])", ""},

    {"Get_trigger_associations", R"("trigger_id":2)", R"("action_id":[3,9],"action_type":[2,8])"},
    {"Get_action_associations", R"("action_id":3)", R"("trigger_id":[2],"trigger_type":[1])"},
    {"Create_association", R"("trigger_id":1,"action_id":10)", ""},
    {"Delete_association", R"("trigger_id":2,"action_id":9)", ""},
};

constexpr char const *preparation[] = {
    R"({"command":"Create_email_action","action_name":"mail","smtp_server":"smtp","to_addresses":["to@x","you@x"],"cc_addresses":["cc@x"],"from_address":"from@x","subject":"subject","body":"body","attach_jpeg":false,"include_event":true})",
    R"({"command":"Create_ftp_action","action_name":"ftp","server_name":"server","username":"user","password":"secret","path":"/in","filename":"a.jpg"})",
    R"({"command":"Create_snapshot_action","action_name":"door","filename":"door.jpg"})",
    R"({"command":"Create_ptz_pattern_action","action_name":"pattern","pattern_id":"p1"})",
    R"({"command":"Create_ptz_preset_action","action_name":"preset","preset_id":"p2"})",
    R"({"command":"Create_ptz_tour_action","action_name":"tour","tour_id":"p3"})",
    R"({"command":"Create_ptz_scan_action","action_name":"scan","scan_id":"p4"})",
    R"({"command":"Create_wiper_action","action_name":"wiper"})",
    R"({"command":"Create_washer_action","action_name":"washer"})",
    R"({"command":"Create_relay_action","action_name":"relay","relay_target":"gate","config_mode":2,"config_normally_closed":true,"config_repeat_cycles":0,"config_on_time_ms":500,"config_off_time_ms":4294967295})",
    R"({"command":"Create_onvif_trigger","trigger_name":"onvif","topic_filter":"tns1:A/B","topic_filter_dialect":"http://docs.oasis-open.org/wsn/t-1/TopicExpression/Concrete","content_filter":"boolean(//tt:SimpleItem[@Name=\"State\" and @Value=\"on\"]) ","namespace_keys":["tns1","tt"],"namespace_uris":["urn:a","http://www.onvif.org/ver10/schema"]})",
    R"({"command":"Create_timer_trigger","trigger_name":"timer","timer_seconds":60})",
    R"({"command":"Create_stable_onvif_trigger","trigger_name":"stable","topic_filter":"tns1:A//.","content_filter":" ","namespace_keys":["tns1"],"namespace_uris":["urn:a"],"stability_seconds":5})",
    R"({"command":"Create_association","trigger_id":2,"action_id":9})",
    R"({"command":"Create_association","trigger_id":2,"action_id":3})",
    R"({"command":"Set_action_filters","action_id":3,"weekday_filters":[62,65],"time_filters_start":[28800,86399],"time_filters_end":[64800,86400]})",
};  // namespace

std::string commandText(Example const &example) {
    std::string const inputs = example.inputs;
    return std::string(R"({"command":")") + example.method + "\"" + (inputs.empty() ? "" : ",") + inputs +
           "}";
}

std::string responseText(Example const &example) {
    std::string const results = example.results;
    return std::string(R"({"command":")") + example.method + R"(","status":0)" +
           (results.empty() ? "" : ",") + results + "}";
}

std::string statusText(Example const &example, int status) {
    return std::string(R"({"command":")") + example.method + R"(","status":)" + std::to_string(status) + "}";
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
    EXPECT_EQ(methods.size(), 55U);
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
