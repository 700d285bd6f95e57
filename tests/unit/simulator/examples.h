// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_UNIT_SIMULATOR_EXAMPLES_H
#define KORVO_TESTS_UNIT_SIMULATOR_EXAMPLES_H

// A command for every method, and the catalogue that they are for.

#include <string>

namespace simulator::tests {

/// A command that succeeds on the prepared catalogue, and the response to it.
struct Example {
    char const *method;
    char const *inputs;
    char const *results;
};

// The prepared catalogue has actions 1 to 10, of types 0 to 9 in this order, and triggers 1 to 3, of types 0 to 2.
// Trigger 2 is bound to actions 3 and 9; action 3 has filters.
inline constexpr Example examples[] = {
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

inline constexpr char const *preparation[] = {
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
};

inline std::string commandText(Example const &example) {
    std::string const inputs = example.inputs;
    return std::string(R"({"command":")") + example.method + "\"" + (inputs.empty() ? "" : ",") + inputs +
           "}";
}

inline std::string responseText(Example const &example) {
    std::string const results = example.results;
    return std::string(R"({"command":")") + example.method + R"(","status":0)" +
           (results.empty() ? "" : ",") + results + "}";
}

}  // namespace simulator::tests

#endif
