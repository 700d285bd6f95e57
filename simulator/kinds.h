// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_KINDS_H
#define KORVO_SIMULATOR_KINDS_H

// The kinds of action and of trigger. A kind's settings are the inputs of its create operation, so that no kind needs
// code of its own to be kept, changed and read.

#include <cstdint>
#include <iterator>

#include "operations/operations.h"

namespace simulator {

struct EntryKind {
    /// The type on the wire. It is also the kind's place in its table.
    std::uint32_t type;
    char const *noun;
    operations::Index create;
    operations::Index get;
    operations::Index modify;
};

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

#define KIND(noun, operation) \
    noun, operations::create_##operation, operations::get_##operation, operations::modify_##operation

inline constexpr EntryKind action_kinds[] = {
    {send_email, KIND("e-mail action", email_action)},
    {ftp_upload, KIND("FTP action", ftp_action)},
    {save_snapshot, KIND("snapshot action", snapshot_action)},
    {ptz_pattern, KIND("PTZ pattern action", ptz_pattern_action)},
    {ptz_preset, KIND("PTZ preset action", ptz_preset_action)},
    {ptz_tour, KIND("PTZ tour action", ptz_tour_action)},
    {ptz_scan, KIND("PTZ scan action", ptz_scan_action)},
    {run_wiper, KIND("wiper action", wiper_action)},
    {run_washer, KIND("washer action", washer_action)},
    {switch_relay, KIND("relay action", relay_action)},
};

inline constexpr EntryKind trigger_kinds[] = {
    {onvif_event, KIND("ONVIF trigger", onvif_trigger)},
    {reoccurring_timer, KIND("timer trigger", timer_trigger)},
    {stable_onvif_event, KIND("stable ONVIF trigger", stable_onvif_trigger)},
};

#undef KIND

/// The members of a kind's settings.
constexpr operations::Member const *settingsRow(EntryKind const &kind) {
    return operations::all[kind.create].inputs;
}

/// The members of an action's filters.
inline constexpr operations::Member const *filters_row =
    operations::all[operations::get_action_filters].results;

namespace detail {
template <std::size_t size>
constexpr bool inOrderOfTypes(EntryKind const (&kinds)[size]) {
    for (std::size_t n = 0; n < size; ++n) {
        if (kinds[n].type != n) {
            return false;
        }
    }
    return true;
}
static_assert(inOrderOfTypes(action_kinds) && inOrderOfTypes(trigger_kinds), "a kind is found by its type");
}  // namespace detail

}  // namespace simulator

#endif
