// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_OPERATIONS_PROTOCOL_H
#define KORVO_OPERATIONS_PROTOCOL_H

#include <cstdint>

/// What client and service agree on beside the operations. The public header says the same for people; the client's
/// compiler compares.
namespace protocol {

constexpr char service[] = "action_engine";

/// The interface version of this tree.
constexpr unsigned int major_version = 1;
constexpr unsigned int minor_version = 19;

/// The event and its members.
namespace action_completed {
constexpr char event[] = "Action_completed";
constexpr char action_id[] = "action_id";
constexpr char action_name[] = "action_name";
constexpr char success[] = "success";
}  // namespace action_completed

enum ActionType : std::uint32_t {
    send_email = 0,
    ftp_upload = 1,
    save_snapshot = 2,
    ptz_pattern = 3,
    ptz_preset = 4,
    // On purpose: the tour's type comes before the scan's, unlike in every other list. Callers rely on the values.
    ptz_tour = 5,
    ptz_scan = 6,
    run_wiper = 7,
    run_washer = 8,
    switch_relay = 9,
};

enum TriggerType : std::uint32_t {
    onvif_event = 0,
    reoccurring_timer = 1,
    stable_onvif_event = 2,
};

/// The flags of Sunday to Saturday, from 1 to 64.
constexpr std::uint32_t every_weekday = 127;

}  // namespace protocol

#endif
