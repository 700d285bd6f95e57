/* SPDX-License-Identifier: Apache-2.0 */
#ifndef KORVO_TESTS_TYPED_CALLS_OPERATION_NAMES_H
#define KORVO_TESTS_TYPED_CALLS_OPERATION_NAMES_H

/*
 * The tests' own list of the 54 operations, in the order of the public header. It is written apart from the
 * library's tables, so that an operation lost there is noticed here.
 */
#define OPERATION_NAMES(X)         \
    X(get_actions)                 \
    X(get_action_counts)           \
    X(get_action_type)             \
    X(delete_action)               \
    X(get_action_filters)          \
    X(set_action_filters)          \
    X(get_email_action)            \
    X(create_email_action)         \
    X(modify_email_action)         \
    X(get_ftp_action)              \
    X(create_ftp_action)           \
    X(modify_ftp_action)           \
    X(get_snapshot_action)         \
    X(create_snapshot_action)      \
    X(modify_snapshot_action)      \
    X(get_ptz_pattern_action)      \
    X(create_ptz_pattern_action)   \
    X(modify_ptz_pattern_action)   \
    X(get_ptz_preset_action)       \
    X(create_ptz_preset_action)    \
    X(modify_ptz_preset_action)    \
    X(get_ptz_scan_action)         \
    X(create_ptz_scan_action)      \
    X(modify_ptz_scan_action)      \
    X(get_ptz_tour_action)         \
    X(create_ptz_tour_action)      \
    X(modify_ptz_tour_action)      \
    X(get_wiper_action)            \
    X(create_wiper_action)         \
    X(modify_wiper_action)         \
    X(get_washer_action)           \
    X(create_washer_action)        \
    X(modify_washer_action)        \
    X(get_relay_action)            \
    X(create_relay_action)         \
    X(modify_relay_action)         \
    X(get_triggers)                \
    X(get_trigger_counts)          \
    X(get_trigger_type)            \
    X(delete_trigger)              \
    X(create_timer_trigger)        \
    X(get_timer_trigger)           \
    X(modify_timer_trigger)        \
    X(create_onvif_trigger)        \
    X(get_onvif_trigger)           \
    X(modify_onvif_trigger)        \
    X(create_stable_onvif_trigger) \
    X(get_stable_onvif_trigger)    \
    X(modify_stable_onvif_trigger) \
    X(get_trigger_associations)    \
    X(get_action_associations)     \
    X(create_association)          \
    X(delete_association)          \
    X(onvif_event)

#endif
