// SPDX-License-Identifier: Apache-2.0
#include "expectations.h"

#include <stdexcept>

using typed_calls::Value;
using typed_calls::Values;

namespace {

Member number(char const *name, unsigned int sample) {
    return {Kind::number, name, sample};
}

Member flag(char const *name, bool sample) {
    return {Kind::flag, name, static_cast<unsigned char>(sample ? 1 : 0)};
}

Member text(char const *name, char const *sample) {
    return {Kind::text, name, std::string(sample)};
}

Member texts(char const *name, Texts const &sample) {
    return {Kind::texts, name, sample};
}

Member numbers(char const *name, Numbers const &sample) {
    return {Kind::numbers, name, sample};
}

}  // namespace

std::vector<Expectation> const &expectations() {
    static std::vector<Expectation> const all = {
        {"get_actions",
         "Get_actions",
         {},
         {numbers("action_id", {3U, 5U, 9U}), numbers("action_type", {0U, 2U, 9U})},
         "action_engine_get_actions_utility_send",
         "action_engine_get_actions_receive",
         "action_engineGet_actionsCallback"},
        {"get_action_counts",
         "Get_action_counts",
         {},
         {number("total", 6U), numbers("action_types", {1U, 4U}), numbers("counts", {2U, 4U})},
         "action_engine_get_action_counts_utility_send",
         "action_engine_get_action_counts_receive",
         "action_engineGet_action_countsCallback"},
        {"get_action_type",
         "Get_action_type",
         {number("action_id", 41U)},
         {number("action_type", 7U)},
         "action_engine_get_action_type_utility_send",
         "action_engine_get_action_type_receive",
         "action_engineGet_action_typeCallback"},
        {"delete_action",
         "Delete_action",
         {number("action_id", 41U)},
         {},
         "action_engine_delete_action_utility_send",
         "action_engine_delete_action_receive",
         "action_engineDelete_actionCallback"},
        {"get_action_filters",
         "Get_action_filters",
         {number("action_id", 41U)},
         {numbers("weekday_filters", {62U, 65U}), numbers("time_filters_start", {28800U, 0U}),
          numbers("time_filters_end", {64800U, 3600U})},
         "action_engine_get_action_filters_utility_send",
         "action_engine_get_action_filters_receive",
         "action_engineGet_action_filtersCallback"},
        {"set_action_filters",
         "Set_action_filters",
         {number("action_id", 41U), numbers("weekday_filters", {62U, 65U}),
          numbers("time_filters_start", {28800U, 0U}), numbers("time_filters_end", {64800U, 3600U})},
         {},
         "action_engine_set_action_filters_utility_send",
         "action_engine_set_action_filters_receive",
         "action_engineSet_action_filtersCallback"},
        {"get_email_action",
         "Get_email_action",
         {number("action_id", 41U)},
         {text("action_name", "Alarm mail"), text("smtp_server", "mail.example"),
          texts("to_addresses", {"a@example", "bb@example"}), texts("cc_addresses", {"ccc@example"}),
          text("from_address", "camera@example"), text("subject", "Door"),
          text("body", "The door was opened.\nSee the picture."), flag("attach_jpeg", true),
          flag("include_event", false)},
         "action_engine_get_email_action_utility_send",
         "action_engine_get_email_action_receive",
         "action_engineGet_email_actionCallback"},
        {"create_email_action",
         "Create_email_action",
         {text("action_name", "Alarm mail"), text("smtp_server", "mail.example"),
          texts("to_addresses", {"a@example", "bb@example"}), texts("cc_addresses", {"ccc@example"}),
          text("from_address", "camera@example"), text("subject", "Door"),
          text("body", "The door was opened.\nSee the picture."), flag("attach_jpeg", true),
          flag("include_event", false)},
         {number("action_id", 143U)},
         "action_engine_create_email_action_utility_send",
         "action_engine_create_email_action_receive",
         "action_engineCreate_email_actionCallback"},
        {"modify_email_action",
         "Modify_email_action",
         {number("action_id", 41U), text("action_name", "Alarm mail"), text("smtp_server", "mail.example"),
          texts("to_addresses", {"a@example", "bb@example"}), texts("cc_addresses", {"ccc@example"}),
          text("from_address", "camera@example"), text("subject", "Door"),
          text("body", "The door was opened.\nSee the picture."), flag("attach_jpeg", true),
          flag("include_event", false)},
         {},
         "action_engine_modify_email_action_utility_send",
         "action_engine_modify_email_action_receive",
         "action_engineModify_email_actionCallback"},
        {"get_ftp_action",
         "Get_ftp_action",
         {number("action_id", 41U)},
         {text("action_name", "Upload"), text("server_name", "ftp.example"), text("username", "camera"),
          text("password", "s3cret"), text("path", "/pictures/door"), text("filename", "door.jpg")},
         "action_engine_get_ftp_action_utility_send",
         "action_engine_get_ftp_action_receive",
         "action_engineGet_ftp_actionCallback"},
        {"create_ftp_action",
         "Create_ftp_action",
         {text("action_name", "Upload"), text("server_name", "ftp.example"), text("username", "camera"),
          text("password", "s3cret"), text("path", "/pictures/door"), text("filename", "door.jpg")},
         {number("action_id", 143U)},
         "action_engine_create_ftp_action_utility_send",
         "action_engine_create_ftp_action_receive",
         "action_engineCreate_ftp_actionCallback"},
        {"modify_ftp_action",
         "Modify_ftp_action",
         {number("action_id", 41U), text("action_name", "Upload"), text("server_name", "ftp.example"),
          text("username", "camera"), text("password", "s3cret"), text("path", "/pictures/door"),
          text("filename", "door.jpg")},
         {},
         "action_engine_modify_ftp_action_utility_send",
         "action_engine_modify_ftp_action_receive",
         "action_engineModify_ftp_actionCallback"},
        {"get_snapshot_action",
         "Get_snapshot_action",
         {number("action_id", 41U)},
         {text("action_name", "Save it"), text("filename", "picture.jpg")},
         "action_engine_get_snapshot_action_utility_send",
         "action_engine_get_snapshot_action_receive",
         "action_engineGet_snapshot_actionCallback"},
        {"create_snapshot_action",
         "Create_snapshot_action",
         {text("action_name", "Save it"), text("filename", "picture.jpg")},
         {number("action_id", 143U)},
         "action_engine_create_snapshot_action_utility_send",
         "action_engine_create_snapshot_action_receive",
         "action_engineCreate_snapshot_actionCallback"},
        {"modify_snapshot_action",
         "Modify_snapshot_action",
         {number("action_id", 41U), text("action_name", "Save it"), text("filename", "picture.jpg")},
         {},
         "action_engine_modify_snapshot_action_utility_send",
         "action_engine_modify_snapshot_action_receive",
         "action_engineModify_snapshot_actionCallback"},
        {"get_ptz_pattern_action",
         "Get_ptz_pattern_action",
         {number("action_id", 41U)},
         {text("action_name", "Patrol"), text("pattern_id", "pattern-7")},
         "action_engine_get_ptz_pattern_action_utility_send",
         "action_engine_get_ptz_pattern_action_receive",
         "action_engineGet_ptz_pattern_actionCallback"},
        {"create_ptz_pattern_action",
         "Create_ptz_pattern_action",
         {text("action_name", "Patrol"), text("pattern_id", "pattern-7")},
         {number("action_id", 143U)},
         "action_engine_create_ptz_pattern_action_utility_send",
         "action_engine_create_ptz_pattern_action_receive",
         "action_engineCreate_ptz_pattern_actionCallback"},
        {"modify_ptz_pattern_action",
         "Modify_ptz_pattern_action",
         {number("action_id", 41U), text("action_name", "Patrol"), text("pattern_id", "pattern-7")},
         {},
         "action_engine_modify_ptz_pattern_action_utility_send",
         "action_engine_modify_ptz_pattern_action_receive",
         "action_engineModify_ptz_pattern_actionCallback"},
        {"get_ptz_preset_action",
         "Get_ptz_preset_action",
         {number("action_id", 41U)},
         {text("action_name", "Gate"), text("preset_id", "preset-12")},
         "action_engine_get_ptz_preset_action_utility_send",
         "action_engine_get_ptz_preset_action_receive",
         "action_engineGet_ptz_preset_actionCallback"},
        {"create_ptz_preset_action",
         "Create_ptz_preset_action",
         {text("action_name", "Gate"), text("preset_id", "preset-12")},
         {number("action_id", 143U)},
         "action_engine_create_ptz_preset_action_utility_send",
         "action_engine_create_ptz_preset_action_receive",
         "action_engineCreate_ptz_preset_actionCallback"},
        {"modify_ptz_preset_action",
         "Modify_ptz_preset_action",
         {number("action_id", 41U), text("action_name", "Gate"), text("preset_id", "preset-12")},
         {},
         "action_engine_modify_ptz_preset_action_utility_send",
         "action_engine_modify_ptz_preset_action_receive",
         "action_engineModify_ptz_preset_actionCallback"},
        {"get_ptz_scan_action",
         "Get_ptz_scan_action",
         {number("action_id", 41U)},
         {text("action_name", "Scan yard"), text("scan_id", "scan-3")},
         "action_engine_get_ptz_scan_action_utility_send",
         "action_engine_get_ptz_scan_action_receive",
         "action_engineGet_ptz_scan_actionCallback"},
        {"create_ptz_scan_action",
         "Create_ptz_scan_action",
         {text("action_name", "Scan yard"), text("scan_id", "scan-3")},
         {number("action_id", 143U)},
         "action_engine_create_ptz_scan_action_utility_send",
         "action_engine_create_ptz_scan_action_receive",
         "action_engineCreate_ptz_scan_actionCallback"},
        {"modify_ptz_scan_action",
         "Modify_ptz_scan_action",
         {number("action_id", 41U), text("action_name", "Scan yard"), text("scan_id", "scan-3")},
         {},
         "action_engine_modify_ptz_scan_action_utility_send",
         "action_engine_modify_ptz_scan_action_receive",
         "action_engineModify_ptz_scan_actionCallback"},
        {"get_ptz_tour_action",
         "Get_ptz_tour_action",
         {number("action_id", 41U)},
         {text("action_name", "Night tour"), text("tour_id", "tour-1")},
         "action_engine_get_ptz_tour_action_utility_send",
         "action_engine_get_ptz_tour_action_receive",
         "action_engineGet_ptz_tour_actionCallback"},
        {"create_ptz_tour_action",
         "Create_ptz_tour_action",
         {text("action_name", "Night tour"), text("tour_id", "tour-1")},
         {number("action_id", 143U)},
         "action_engine_create_ptz_tour_action_utility_send",
         "action_engine_create_ptz_tour_action_receive",
         "action_engineCreate_ptz_tour_actionCallback"},
        {"modify_ptz_tour_action",
         "Modify_ptz_tour_action",
         {number("action_id", 41U), text("action_name", "Night tour"), text("tour_id", "tour-1")},
         {},
         "action_engine_modify_ptz_tour_action_utility_send",
         "action_engine_modify_ptz_tour_action_receive",
         "action_engineModify_ptz_tour_actionCallback"},
        {"get_wiper_action",
         "Get_wiper_action",
         {number("action_id", 41U)},
         {text("action_name", "Wipe")},
         "action_engine_get_wiper_action_utility_send",
         "action_engine_get_wiper_action_receive",
         "action_engineGet_wiper_actionCallback"},
        {"create_wiper_action",
         "Create_wiper_action",
         {text("action_name", "Wipe")},
         {number("action_id", 143U)},
         "action_engine_create_wiper_action_utility_send",
         "action_engine_create_wiper_action_receive",
         "action_engineCreate_wiper_actionCallback"},
        {"modify_wiper_action",
         "Modify_wiper_action",
         {number("action_id", 41U), text("action_name", "Wipe")},
         {},
         "action_engine_modify_wiper_action_utility_send",
         "action_engine_modify_wiper_action_receive",
         "action_engineModify_wiper_actionCallback"},
        {"get_washer_action",
         "Get_washer_action",
         {number("action_id", 41U)},
         {text("action_name", "Wash it")},
         "action_engine_get_washer_action_utility_send",
         "action_engine_get_washer_action_receive",
         "action_engineGet_washer_actionCallback"},
        {"create_washer_action",
         "Create_washer_action",
         {text("action_name", "Wash it")},
         {number("action_id", 143U)},
         "action_engine_create_washer_action_utility_send",
         "action_engine_create_washer_action_receive",
         "action_engineCreate_washer_actionCallback"},
        {"modify_washer_action",
         "Modify_washer_action",
         {number("action_id", 41U), text("action_name", "Wash it")},
         {},
         "action_engine_modify_washer_action_utility_send",
         "action_engine_modify_washer_action_receive",
         "action_engineModify_washer_actionCallback"},
        {"get_relay_action",
         "Get_relay_action",
         {number("action_id", 41U)},
         {text("action_name", "Open gate"), text("relay_target", "relay-2"), number("config_mode", 3U),
          flag("config_normally_closed", true), number("config_repeat_cycles", 4U),
          number("config_on_time_ms", 250U), number("config_off_time_ms", 1500U)},
         "action_engine_get_relay_action_utility_send",
         "action_engine_get_relay_action_receive",
         "action_engineGet_relay_actionCallback"},
        {"create_relay_action",
         "Create_relay_action",
         {text("action_name", "Open gate"), text("relay_target", "relay-2"), number("config_mode", 3U),
          flag("config_normally_closed", true), number("config_repeat_cycles", 4U),
          number("config_on_time_ms", 250U), number("config_off_time_ms", 1500U)},
         {number("action_id", 143U)},
         "action_engine_create_relay_action_utility_send",
         "action_engine_create_relay_action_receive",
         "action_engineCreate_relay_actionCallback"},
        {"modify_relay_action",
         "Modify_relay_action",
         {number("action_id", 41U), text("action_name", "Open gate"), text("relay_target", "relay-2"),
          number("config_mode", 3U), flag("config_normally_closed", true), number("config_repeat_cycles", 4U),
          number("config_on_time_ms", 250U), number("config_off_time_ms", 1500U)},
         {},
         "action_engine_modify_relay_action_utility_send",
         "action_engine_modify_relay_action_receive",
         "action_engineModify_relay_actionCallback"},
        {"get_triggers",
         "Get_triggers",
         {},
         {numbers("trigger_id", {8U, 11U}), numbers("trigger_type", {1U, 0U})},
         "action_engine_get_triggers_utility_send",
         "action_engine_get_triggers_receive",
         "action_engineGet_triggersCallback"},
        {"get_trigger_counts",
         "Get_trigger_counts",
         {},
         {number("total", 5U), numbers("trigger_types", {0U, 1U, 2U}), numbers("counts", {1U, 3U, 1U})},
         "action_engine_get_trigger_counts_utility_send",
         "action_engine_get_trigger_counts_receive",
         "action_engineGet_trigger_countsCallback"},
        {"get_trigger_type",
         "Get_trigger_type",
         {number("trigger_id", 52U)},
         {number("trigger_type", 2U)},
         "action_engine_get_trigger_type_utility_send",
         "action_engine_get_trigger_type_receive",
         "action_engineGet_trigger_typeCallback"},
        {"delete_trigger",
         "Delete_trigger",
         {number("trigger_id", 52U)},
         {},
         "action_engine_delete_trigger_utility_send",
         "action_engine_delete_trigger_receive",
         "action_engineDelete_triggerCallback"},
        {"create_timer_trigger",
         "Create_timer_trigger",
         {text("trigger_name", "Every minute"), number("timer_seconds", 60U)},
         {number("trigger_id", 154U)},
         "action_engine_create_timer_trigger_utility_send",
         "action_engine_create_timer_trigger_receive",
         "action_engineCreate_timer_triggerCallback"},
        {"get_timer_trigger",
         "Get_timer_trigger",
         {number("trigger_id", 52U)},
         {text("trigger_name", "Every minute"), number("timer_seconds", 60U)},
         "action_engine_get_timer_trigger_utility_send",
         "action_engine_get_timer_trigger_receive",
         "action_engineGet_timer_triggerCallback"},
        {"modify_timer_trigger",
         "Modify_timer_trigger",
         {number("trigger_id", 52U), text("trigger_name", "Every minute"), number("timer_seconds", 60U)},
         {},
         "action_engine_modify_timer_trigger_utility_send",
         "action_engine_modify_timer_trigger_receive",
         "action_engineModify_timer_triggerCallback"},
        {"create_onvif_trigger",
         "Create_onvif_trigger",
         {text("trigger_name", "Motion"), text("topic_filter", "tns1:VideoSource/MotionAlarm"),
          text("topic_filter_dialect", "concrete-set"), text("content_filter", "boolean(//State)"),
          texts("namespace_keys", {"tns1", "tt"}), texts("namespace_uris", {"urn:topics", "urn:schema"})},
         {number("trigger_id", 154U)},
         "action_engine_create_onvif_trigger_utility_send",
         "action_engine_create_onvif_trigger_receive",
         "action_engineCreate_onvif_triggerCallback"},
        {"get_onvif_trigger",
         "Get_onvif_trigger",
         {number("trigger_id", 52U)},
         {text("trigger_name", "Motion"), text("topic_filter", "tns1:VideoSource/MotionAlarm"),
          text("topic_filter_dialect", "concrete-set"), text("content_filter", "boolean(//State)"),
          texts("namespace_keys", {"tns1", "tt"}), texts("namespace_uris", {"urn:topics", "urn:schema"})},
         "action_engine_get_onvif_trigger_utility_send",
         "action_engine_get_onvif_trigger_receive",
         "action_engineGet_onvif_triggerCallback"},
        {"modify_onvif_trigger",
         "Modify_onvif_trigger",
         {number("trigger_id", 52U), text("trigger_name", "Motion"),
          text("topic_filter", "tns1:VideoSource/MotionAlarm"), text("topic_filter_dialect", "concrete-set"),
          text("content_filter", "boolean(//State)"), texts("namespace_keys", {"tns1", "tt"}),
          texts("namespace_uris", {"urn:topics", "urn:schema"})},
         {},
         "action_engine_modify_onvif_trigger_utility_send",
         "action_engine_modify_onvif_trigger_receive",
         "action_engineModify_onvif_triggerCallback"},
        {"create_stable_onvif_trigger",
         "Create_stable_onvif_trigger",
         {text("trigger_name", "Steady motion"), text("topic_filter", "tns1:RuleEngine/Cell"),
          text("content_filter", "boolean(//IsMotion)"), texts("namespace_keys", {"tns1"}),
          texts("namespace_uris", {"urn:topics", "urn:other"}), number("stability_seconds", 30U)},
         {number("trigger_id", 154U)},
         "action_engine_create_stable_onvif_trigger_utility_send",
         "action_engine_create_stable_onvif_trigger_receive",
         "action_engineCreate_stable_onvif_triggerCallback"},
        {"get_stable_onvif_trigger",
         "Get_stable_onvif_trigger",
         {number("trigger_id", 52U)},
         {text("trigger_name", "Steady motion"), text("topic_filter", "tns1:RuleEngine/Cell"),
          text("content_filter", "boolean(//IsMotion)"), texts("namespace_keys", {"tns1"}),
          texts("namespace_uris", {"urn:topics", "urn:other"}), number("stability_seconds", 30U)},
         "action_engine_get_stable_onvif_trigger_utility_send",
         "action_engine_get_stable_onvif_trigger_receive",
         "action_engineGet_stable_onvif_triggerCallback"},
        {"modify_stable_onvif_trigger",
         "Modify_stable_onvif_trigger",
         {number("trigger_id", 52U), text("trigger_name", "Steady motion"),
          text("topic_filter", "tns1:RuleEngine/Cell"), text("content_filter", "boolean(//IsMotion)"),
          texts("namespace_keys", {"tns1"}), texts("namespace_uris", {"urn:topics", "urn:other"}),
          number("stability_seconds", 30U)},
         {},
         "action_engine_modify_stable_onvif_trigger_utility_send",
         "action_engine_modify_stable_onvif_trigger_receive",
         "action_engineModify_stable_onvif_triggerCallback"},
        {"get_trigger_associations",
         "Get_trigger_associations",
         {number("trigger_id", 52U)},
         {numbers("action_id", {21U, 22U}), numbers("action_type", {6U, 5U})},
         "action_engine_get_trigger_associations_utility_send",
         "action_engine_get_trigger_associations_receive",
         "action_engineGet_trigger_associationsCallback"},
        {"get_action_associations",
         "Get_action_associations",
         {number("action_id", 41U)},
         {numbers("trigger_id", {31U}), numbers("trigger_type", {2U})},
         "action_engine_get_action_associations_utility_send",
         "action_engine_get_action_associations_receive",
         "action_engineGet_action_associationsCallback"},
        {"create_association",
         "Create_association",
         {number("trigger_id", 52U), number("action_id", 41U)},
         {},
         "action_engine_create_association_utility_send",
         "action_engine_create_association_receive",
         "action_engineCreate_associationCallback"},
        {"delete_association",
         "Delete_association",
         {number("trigger_id", 52U), number("action_id", 41U)},
         {},
         "action_engine_delete_association_utility_send",
         "action_engine_delete_association_receive",
         "action_engineDelete_associationCallback"},
        {"onvif_event",
         "Onvif_event",
         {text("topic", "tns1:Device/Trigger"), text("message", "<Message value=\"on\"/>"),
          texts("namespace_keys", {"tns1"}), texts("namespace_uris", {"urn:topics"})},
         {},
         "action_engine_onvif_event_utility_send",
         "action_engine_onvif_event_receive",
         "action_engineOnvif_eventCallback"},
    };
    return all;
}

Expectation const &expectation(std::string const &operation) {
    for (Expectation const &candidate : expectations()) {
        if (candidate.operation == operation) {
            return candidate;
        }
    }
    throw std::out_of_range("no such operation: " + operation);
}

json::UnknownElement toJson(Value const &any) {
    struct ToJson {
        json::UnknownElement operator()(std::monostate) const { return json::Null(); }
        json::UnknownElement operator()(unsigned int value) const { return json::Number(value); }
        json::UnknownElement operator()(unsigned char value) const { return json::Boolean(value != 0); }
        json::UnknownElement operator()(std::string const &value) const { return json::String(value); }
        json::UnknownElement operator()(Texts const &values) const {
            json::Array array;
            for (std::string const &value : values) {
                array.Insert(json::String(value));
            }
            return array;
        }
        json::UnknownElement operator()(Numbers const &values) const {
            json::Array array;
            for (unsigned int const value : values) {
                array.Insert(json::Number(value));
            }
            return array;
        }
    };
    return std::visit(ToJson(), any);
}

Value emptyOf(Kind kind) {
    switch (kind) {
        case Kind::text:
            return std::string();
        case Kind::texts:
            return Texts();
        case Kind::numbers:
            return Numbers();
        case Kind::number:
        case Kind::flag:
            break;
    }
    return nullOf(kind);
}

Value nullOf(Kind kind) {
    switch (kind) {
        case Kind::number:
            return 0U;
        case Kind::flag:
            return static_cast<unsigned char>(0);
        case Kind::text:
        case Kind::texts:
        case Kind::numbers:
            break;
    }
    return std::monostate();
}

json::Object commandOf(Expectation const &expected) {
    json::Object command;
    command.Insert({"command", json::String(expected.method)});
    for (Member const &input : expected.inputs) {
        command.Insert({input.name, toJson(input.sample)});
    }
    return command;
}

json::Object responseOf(Expectation const &expected) {
    json::Object response;
    response.Insert({"command", json::String(expected.method)});
    response.Insert({"status", json::Number(0)});
    for (Member const &result : expected.results) {
        response.Insert({result.name, toJson(result.sample)});
    }
    return response;
}

Values samples(std::vector<Member> const &members) {
    Values values;
    for (Member const &member : members) {
        values.push_back(member.sample);
    }
    return values;
}

std::vector<Kind> kinds(std::vector<Member> const &members) {
    std::vector<Kind> kinds;
    for (Member const &member : members) {
        kinds.push_back(member.kind);
    }
    return kinds;
}

bool isList(Kind kind) {
    return kind == Kind::texts || kind == Kind::numbers;
}
