// SPDX-License-Identifier: Apache-2.0
#include "left_behind.h"

#include <algorithm>

std::vector<LeftBehind> const &allLeftBehind() {
    // clang-format off
    static std::vector<LeftBehind> const all = {
        {"get_actions", "action_id", Fault::element_of_numbers, {}, 3},
        {"get_actions", "action_type", Fault::element_of_numbers, {}, 3},
        {"get_action_counts", "action_types", Fault::element_of_numbers, {}, 2},
        {"get_action_counts", "counts", Fault::element_of_numbers, {}, 2},
        {"get_action_filters", "weekday_filters", Fault::element_of_numbers, {}, 2},
        {"get_action_filters", "time_filters_start", Fault::element_of_numbers, {}, 2},
        {"get_action_filters", "time_filters_end", Fault::element_of_numbers, {}, 2},
        {"get_email_action", "smtp_server", Fault::unreadable_result, {11}, 0},
        {"get_email_action", "to_addresses", Fault::unreadable_result, {11, 13}, 0},
        {"get_email_action", "cc_addresses", Fault::unreadable_result, {11, 13}, 0},
        {"get_email_action", "from_address", Fault::unreadable_result, {11, 13}, 0},
        {"get_email_action", "subject", Fault::unreadable_result, {11, 13, 15}, 0},
        {"get_email_action", "body", Fault::unreadable_result, {11, 13, 15, 5}, 0},
        {"get_email_action", "attach_jpeg", Fault::unreadable_result, {11, 13, 15, 5, 38}, 0},
        {"get_email_action", "include_event", Fault::unreadable_result, {11, 13, 15, 5, 38}, 0},
        {"get_ftp_action", "server_name", Fault::unreadable_result, {7}, 0},
        {"get_ftp_action", "username", Fault::unreadable_result, {7, 12}, 0},
        {"get_ftp_action", "password", Fault::unreadable_result, {7, 12, 7}, 0},
        {"get_ftp_action", "path", Fault::unreadable_result, {7, 12, 7, 7}, 0},
        {"get_ftp_action", "filename", Fault::unreadable_result, {7, 12, 7, 7, 15}, 0},
        {"get_snapshot_action", "filename", Fault::unreadable_result, {8}, 0},
        {"get_ptz_pattern_action", "pattern_id", Fault::unreadable_result, {7}, 0},
        {"get_ptz_preset_action", "preset_id", Fault::unreadable_result, {5}, 0},
        {"get_ptz_scan_action", "scan_id", Fault::unreadable_result, {10}, 0},
        {"get_ptz_tour_action", "tour_id", Fault::unreadable_result, {11}, 0},
        {"get_relay_action", "relay_target", Fault::unreadable_result, {10}, 0},
        {"get_relay_action", "config_mode", Fault::unreadable_result, {10, 8}, 0},
        {"get_relay_action", "config_normally_closed", Fault::unreadable_result, {10, 8}, 0},
        {"get_relay_action", "config_repeat_cycles", Fault::unreadable_result, {10, 8}, 0},
        {"get_relay_action", "config_on_time_ms", Fault::unreadable_result, {10, 8}, 0},
        {"get_relay_action", "config_off_time_ms", Fault::unreadable_result, {10, 8}, 0},
        {"get_triggers", "trigger_id", Fault::element_of_numbers, {}, 2},
        {"get_triggers", "trigger_type", Fault::element_of_numbers, {}, 2},
        {"get_trigger_counts", "trigger_types", Fault::element_of_numbers, {}, 3},
        {"get_trigger_counts", "counts", Fault::element_of_numbers, {}, 3},
        {"get_timer_trigger", "timer_seconds", Fault::unreadable_result, {13}, 0},
        {"get_onvif_trigger", "topic_filter", Fault::unreadable_result, {7}, 0},
        {"get_onvif_trigger", "topic_filter_dialect", Fault::unreadable_result, {7, 29}, 0},
        {"get_onvif_trigger", "content_filter", Fault::unreadable_result, {7, 29, 13}, 0},
        {"get_onvif_trigger", "namespace_keys", Fault::unreadable_result, {7, 29, 13, 17}, 0},
        {"get_onvif_trigger", "namespace_uris", Fault::unreadable_result, {7, 29, 13, 17}, 0},
        {"get_stable_onvif_trigger", "topic_filter", Fault::unreadable_result, {14}, 0},
        {"get_stable_onvif_trigger", "content_filter", Fault::unreadable_result, {14, 21}, 0},
        {"get_stable_onvif_trigger", "namespace_keys", Fault::unreadable_result, {14, 21, 20}, 0},
        {"get_stable_onvif_trigger", "namespace_uris", Fault::unreadable_result, {14, 21, 20}, 0},
        {"get_stable_onvif_trigger", "stability_seconds", Fault::unreadable_result, {14, 21, 20}, 0},
        {"get_trigger_associations", "action_id", Fault::element_of_numbers, {}, 2},
        {"get_trigger_associations", "action_type", Fault::element_of_numbers, {}, 2},
        {"get_action_associations", "trigger_id", Fault::element_of_numbers, {}, 1},
        {"get_action_associations", "trigger_type", Fault::element_of_numbers, {}, 1},
    };
    // clang-format on
    return all;
}

std::vector<std::size_t> leftBehindBy(Fault fault, std::string const &operation, std::string const &result) {
    for (LeftBehind const &row : allLeftBehind()) {
        if (row.fault != fault || row.operation != operation || row.result != result) {
            continue;
        }
        std::vector<std::size_t> sizes = row.texts;
        if (row.elements != 0) {
            sizes.push_back((row.elements + 1) * sizeof(void *));
            sizes.insert(sizes.end(), row.elements, sizeof(unsigned int));
        }
        std::sort(sizes.begin(), sizes.end());
        return sizes;
    }
    return {};
}
