// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_KINDS_H
#define KORVO_SIMULATOR_KINDS_H

// The kinds of action and of trigger. A kind's settings are the inputs of its create operation, so that no kind needs
// code of its own to be kept, changed and read.

#include <cstdint>
#include <iterator>
#include <string_view>

#include "operations/operations.h"
#include "operations/protocol.h"

namespace simulator {

struct EntryKind {
    /// The type on the wire. It is also the kind's place in its table.
    std::uint32_t type;
    char const *noun;
    operations::Index create;
    operations::Index get;
    operations::Index modify;
};

#define KIND(noun, operation) \
    noun, operations::create_##operation, operations::get_##operation, operations::modify_##operation

inline constexpr EntryKind action_kinds[] = {
    {protocol::send_email, KIND("e-mail action", email_action)},
    {protocol::ftp_upload, KIND("FTP action", ftp_action)},
    {protocol::save_snapshot, KIND("snapshot action", snapshot_action)},
    {protocol::ptz_pattern, KIND("PTZ pattern action", ptz_pattern_action)},
    {protocol::ptz_preset, KIND("PTZ preset action", ptz_preset_action)},
    {protocol::ptz_tour, KIND("PTZ tour action", ptz_tour_action)},
    {protocol::ptz_scan, KIND("PTZ scan action", ptz_scan_action)},
    {protocol::run_wiper, KIND("wiper action", wiper_action)},
    {protocol::run_washer, KIND("washer action", washer_action)},
    {protocol::switch_relay, KIND("relay action", relay_action)},
};

inline constexpr EntryKind trigger_kinds[] = {
    {protocol::onvif_event, KIND("ONVIF trigger", onvif_trigger)},
    {protocol::reoccurring_timer, KIND("timer trigger", timer_trigger)},
    {protocol::stable_onvif_event, KIND("stable ONVIF trigger", stable_onvif_trigger)},
};

#undef KIND

/// "snapshot_action": the kind's create operation without its verb, as documents and options name it.
constexpr std::string_view kindName(EntryKind const &kind) {
    constexpr std::string_view verb = "create_";
    return std::string_view(operations::all[kind.create].name).substr(verb.size());
}

/// The kind of this name; NULL when there is none.
template <std::size_t size>
constexpr EntryKind const *findKind(EntryKind const (&kinds)[size], std::string_view name) {
    for (EntryKind const &kind : kinds) {
        if (kindName(kind) == name) {
            return &kind;
        }
    }
    return nullptr;
}

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
