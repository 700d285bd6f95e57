// SPDX-License-Identifier: Apache-2.0
#include "cpp_layer/support/operations.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "live_blocks/live_blocks.h"

namespace cpp_layer {

namespace {

using namespace typed_calls;

// ---- Inputs ----

unsigned int num(Values const &in, std::size_t place) {
    return std::get<Number>(in.at(place));
}
std::string const &str(Values const &in, std::size_t place) {
    return std::get<Text>(in.at(place));
}

korvo::ActionId action(Values const &in, std::size_t place) {
    return korvo::ActionId{num(in, place)};
}
korvo::TriggerId trigger(Values const &in, std::size_t place) {
    return korvo::TriggerId{num(in, place)};
}

std::vector<korvo::ActionFilter> filters(Values const &in, std::size_t place) {
    auto const &weekdays = std::get<Numbers>(in.at(place));
    auto const &starts = std::get<Numbers>(in.at(place + 1));
    auto const &ends = std::get<Numbers>(in.at(place + 2));
    std::vector<korvo::ActionFilter> list;
    for (std::size_t n = 0; n < weekdays.size(); ++n) {
        list.push_back({weekdays.at(n), starts.at(n), ends.at(n)});
    }
    return list;
}

std::vector<korvo::Namespace> namespaces(Values const &in, std::size_t place) {
    auto const &keys = std::get<Texts>(in.at(place));
    auto const &uris = std::get<Texts>(in.at(place + 1));
    std::vector<korvo::Namespace> list;
    for (std::size_t n = 0; n < keys.size(); ++n) {
        list.push_back({keys.at(n), uris.at(n)});
    }
    return list;
}

korvo::EmailAction email(Values const &in, std::size_t place) {
    korvo::EmailAction email;
    email.action_name = str(in, place);
    email.smtp_server = str(in, place + 1);
    email.to_addresses = std::get<Texts>(in.at(place + 2));
    email.cc_addresses = std::get<Texts>(in.at(place + 3));
    email.from_address = str(in, place + 4);
    email.subject = str(in, place + 5);
    email.body = str(in, place + 6);
    email.attach_jpeg = std::get<Flag>(in.at(place + 7)) != 0;
    email.include_event = std::get<Flag>(in.at(place + 8)) != 0;
    return email;
}

korvo::FtpAction ftp(Values const &in, std::size_t place) {
    korvo::FtpAction ftp;
    ftp.action_name = str(in, place);
    ftp.server_name = str(in, place + 1);
    ftp.username = str(in, place + 2);
    ftp.password = str(in, place + 3);
    ftp.path = str(in, place + 4);
    ftp.filename = str(in, place + 5);
    return ftp;
}

/// A name and one further text.
template <typename Settings>
Settings named(Values const &in, std::size_t place, std::string Settings::*further) {
    Settings settings;
    settings.action_name = str(in, place);
    settings.*further = str(in, place + 1);
    return settings;
}

template <typename Settings>
Settings onlyNamed(Values const &in, std::size_t place) {
    Settings settings;
    settings.action_name = str(in, place);
    return settings;
}

korvo::RelayAction relay(Values const &in, std::size_t place) {
    korvo::RelayAction relay;
    relay.action_name = str(in, place);
    relay.relay_target = str(in, place + 1);
    relay.config_mode = num(in, place + 2);
    relay.config_normally_closed = std::get<Flag>(in.at(place + 3)) != 0;
    relay.config_repeat_cycles = num(in, place + 4);
    relay.config_on_time_ms = num(in, place + 5);
    relay.config_off_time_ms = num(in, place + 6);
    return relay;
}

korvo::TimerTrigger timer(Values const &in, std::size_t place) {
    korvo::TimerTrigger timer;
    timer.trigger_name = str(in, place);
    timer.timer_seconds = num(in, place + 1);
    return timer;
}

korvo::OnvifTrigger onvif(Values const &in, std::size_t place) {
    korvo::OnvifTrigger onvif;
    onvif.trigger_name = str(in, place);
    onvif.topic_filter = str(in, place + 1);
    onvif.topic_filter_dialect = str(in, place + 2);
    onvif.content_filter = str(in, place + 3);
    onvif.namespaces = namespaces(in, place + 4);
    return onvif;
}

korvo::StableOnvifTrigger stableOnvif(Values const &in, std::size_t place) {
    korvo::StableOnvifTrigger onvif;
    onvif.trigger_name = str(in, place);
    onvif.topic_filter = str(in, place + 1);
    onvif.content_filter = str(in, place + 2);
    onvif.namespaces = namespaces(in, place + 3);
    onvif.stability_seconds = num(in, place + 5);
    return onvif;
}

korvo::OnvifEvent event(Values const &in, std::size_t place) {
    korvo::OnvifEvent event;
    event.topic = str(in, place);
    event.message = str(in, place + 1);
    event.namespaces = namespaces(in, place + 2);
    return event;
}

// ---- Results ----

Flag flag(bool value) {
    return value ? 1 : 0;
}

Values valuesOf(korvo::ActionId id) {
    return {korvo::number(id)};
}
Values valuesOf(korvo::TriggerId id) {
    return {korvo::number(id)};
}
Values valuesOf(ActionType type) {
    return {static_cast<Number>(type)};
}
Values valuesOf(TriggerType type) {
    return {static_cast<Number>(type)};
}

Values valuesOf(std::vector<korvo::ActionEntry> const &actions) {
    Numbers identifiers;
    Numbers types;
    for (korvo::ActionEntry const &entry : actions) {
        identifiers.push_back(korvo::number(entry.action_id));
        types.push_back(entry.action_type);
    }
    return {identifiers, types};
}
Values valuesOf(std::vector<korvo::TriggerEntry> const &triggers) {
    Numbers identifiers;
    Numbers types;
    for (korvo::TriggerEntry const &entry : triggers) {
        identifiers.push_back(korvo::number(entry.trigger_id));
        types.push_back(entry.trigger_type);
    }
    return {identifiers, types};
}
Values valuesOf(korvo::ActionCounts const &counts) {
    Numbers types;
    Numbers numbers;
    for (korvo::ActionCount const &entry : counts.counts) {
        types.push_back(entry.action_type);
        numbers.push_back(entry.count);
    }
    return {counts.total, types, numbers};
}
Values valuesOf(korvo::TriggerCounts const &counts) {
    Numbers types;
    Numbers numbers;
    for (korvo::TriggerCount const &entry : counts.counts) {
        types.push_back(entry.trigger_type);
        numbers.push_back(entry.count);
    }
    return {counts.total, types, numbers};
}
Values valuesOf(std::vector<korvo::ActionFilter> const &filters) {
    Numbers weekdays;
    Numbers starts;
    Numbers ends;
    for (korvo::ActionFilter const &filter : filters) {
        weekdays.push_back(filter.weekdays);
        starts.push_back(filter.start);
        ends.push_back(filter.end);
    }
    return {weekdays, starts, ends};
}
void append(Values &values, std::vector<korvo::Namespace> const &namespaces) {
    Texts keys;
    Texts uris;
    for (korvo::Namespace const &one : namespaces) {
        keys.push_back(one.key);
        uris.push_back(one.uri);
    }
    values.emplace_back(keys);
    values.emplace_back(uris);
}
Values valuesOf(korvo::EmailAction const &email) {
    return {email.action_name,  email.smtp_server,       email.to_addresses,
            email.cc_addresses, email.from_address,      email.subject,
            email.body,         flag(email.attach_jpeg), flag(email.include_event)};
}
Values valuesOf(korvo::FtpAction const &ftp) {
    return {ftp.action_name, ftp.server_name, ftp.username, ftp.password, ftp.path, ftp.filename};
}
Values valuesOf(korvo::SnapshotAction const &snapshot) {
    return {snapshot.action_name, snapshot.filename};
}
Values valuesOf(korvo::PtzPatternAction const &pattern) {
    return {pattern.action_name, pattern.pattern_id};
}
Values valuesOf(korvo::PtzPresetAction const &preset) {
    return {preset.action_name, preset.preset_id};
}
Values valuesOf(korvo::PtzScanAction const &scan) {
    return {scan.action_name, scan.scan_id};
}
Values valuesOf(korvo::PtzTourAction const &tour) {
    return {tour.action_name, tour.tour_id};
}
Values valuesOf(korvo::WiperAction const &wiper) {
    return {wiper.action_name};
}
Values valuesOf(korvo::WasherAction const &washer) {
    return {washer.action_name};
}
Values valuesOf(korvo::RelayAction const &relay) {
    return {relay.action_name,          relay.relay_target,
            relay.config_mode,          flag(relay.config_normally_closed),
            relay.config_repeat_cycles, relay.config_on_time_ms,
            relay.config_off_time_ms};
}
Values valuesOf(korvo::TimerTrigger const &timer) {
    return {timer.trigger_name, timer.timer_seconds};
}
Values valuesOf(korvo::OnvifTrigger const &onvif) {
    Values values = {onvif.trigger_name, onvif.topic_filter, onvif.topic_filter_dialect,
                     onvif.content_filter};
    append(values, onvif.namespaces);
    return values;
}
Values valuesOf(korvo::StableOnvifTrigger const &onvif) {
    Values values = {onvif.trigger_name, onvif.topic_filter, onvif.content_filter};
    append(values, onvif.namespaces);
    values.emplace_back(onvif.stability_seconds);
    return values;
}

template <typename T>
Outcome outcomeOf(korvo::Result<T> const &result) {
    // What the test makes of it is not what is tested.
    live_blocks::stopFailing();
    Outcome outcome{result.status(), result.message(), {}};
    if (result) {
        if constexpr (!std::is_void_v<T>) {
            outcome.values = valuesOf(result.value());
        }
    }
    return outcome;
}

template <typename T>
std::function<Outcome()> waitFor(std::future<korvo::Result<T>> future) {
    auto const shared = std::make_shared<std::future<korvo::Result<T>>>(std::move(future));
    return [shared] { return outcomeOf(shared->get()); };
}

}  // namespace

std::map<std::string, Operation> const &operations() {
    using korvo::ActionEngine;
    using Timeout = Operation::Timeout;
    using Told = std::function<void(Outcome const &)>;
    static std::map<std::string, Operation> const all = {
// The inputs end with a comma.
#define OPERATION(name, ...)                                                                          \
    {#name,                                                                                           \
     {[](ActionEngine const &engine, [[maybe_unused]] Values const &in, Timeout timeout) {            \
          return outcomeOf(engine.name(__VA_ARGS__ timeout));                                         \
      },                                                                                              \
      [](ActionEngine const &engine, [[maybe_unused]] Values const &in, Timeout timeout) {            \
          return waitFor(engine.name##_future(__VA_ARGS__ timeout));                                  \
      },                                                                                              \
      [](ActionEngine const &engine, [[maybe_unused]] Values const &in, Timeout timeout, Told told) { \
          return engine.name##_async(                                                                 \
              __VA_ARGS__[told = std::move(told)](auto const &result) { told(outcomeOf(result)); },   \
              timeout);                                                                               \
      }}},
        OPERATION(get_actions, ) OPERATION(get_action_counts, ) OPERATION(
            get_action_type,
            action(in, 0), ) OPERATION(delete_action,
                                       action(in, 0), ) OPERATION(get_action_filters,
                                                                  action(in,
                                                                         0), ) OPERATION(set_action_filters,
                                                                                         action(in, 0),
                                                                                         filters(in, 1), )
            OPERATION(get_email_action, action(in, 0), ) OPERATION(
                create_email_action,
                email(in, 0), ) OPERATION(modify_email_action, action(in, 0), email(in, 1), )
                OPERATION(get_ftp_action, action(in, 0), ) OPERATION(create_ftp_action, ftp(in, 0), ) OPERATION(
                    modify_ftp_action, action(in, 0),
                    ftp(in, 1), ) OPERATION(get_snapshot_action, action(in, 0), )
                    OPERATION(create_snapshot_action, named(in, 0, &korvo::SnapshotAction::filename), ) OPERATION(
                        modify_snapshot_action,
                        action(in, 0),
                        named(
                            in,
                            1, &korvo::SnapshotAction::filename), ) OPERATION(get_ptz_pattern_action,
                                                                              action(in, 0), )
                        OPERATION(create_ptz_pattern_action, named(in, 0, &korvo::PtzPatternAction::pattern_id), ) OPERATION(
                            modify_ptz_pattern_action, action(in, 0),
                            named(in,
                                  1, &korvo::PtzPatternAction::pattern_id), ) OPERATION(get_ptz_preset_action,
                                                                                        action(in, 0), )
                            OPERATION(create_ptz_preset_action, named(in, 0, &korvo::PtzPresetAction::preset_id), ) OPERATION(
                                modify_ptz_preset_action,
                                action(in, 0),
                                named(in, 1,
                                      &korvo::
                                          PtzPresetAction::preset_id), ) OPERATION(get_ptz_scan_action,
                                                                                   action(in, 0), )
                                OPERATION(create_ptz_scan_action, named(in, 0, &korvo::PtzScanAction::scan_id), ) OPERATION(
                                    modify_ptz_scan_action,
                                    action(in, 0),
                                    named(in, 1,
                                          &korvo::
                                              PtzScanAction::scan_id), ) OPERATION(get_ptz_tour_action,
                                                                                   action(in, 0), )
                                    OPERATION(create_ptz_tour_action, named(in, 0, &korvo::PtzTourAction::tour_id), ) OPERATION(
                                        modify_ptz_tour_action,
                                        action(in, 0),
                                        named(in, 1,
                                              &korvo::
                                                  PtzTourAction::tour_id), ) OPERATION(get_wiper_action,
                                                                                       action(in, 0), )
                                        OPERATION(create_wiper_action, onlyNamed<korvo::WiperAction>(in, 0), ) OPERATION(
                                            modify_wiper_action, action(in, 0),
                                            onlyNamed<korvo::WiperAction>(
                                                in,
                                                1), ) OPERATION(get_washer_action, action(in, 0), )
                                            OPERATION(create_washer_action, onlyNamed<korvo::WasherAction>(in, 0), ) OPERATION(
                                                modify_washer_action,
                                                action(in, 0),
                                                onlyNamed<korvo::WasherAction>(
                                                    in,
                                                    1), ) OPERATION(get_relay_action, action(in, 0), )
                                                OPERATION(create_relay_action, relay(in, 0), ) OPERATION(
                                                    modify_relay_action, action(in, 0),
                                                    relay(
                                                        in,
                                                        1), ) OPERATION(get_triggers, ) OPERATION(get_trigger_counts, )
                                                    OPERATION(get_trigger_type, trigger(in, 0), ) OPERATION(
                                                        delete_trigger,
                                                        trigger(
                                                            in,
                                                            0), ) OPERATION(create_timer_trigger, timer(in, 0), )
                                                        OPERATION(get_timer_trigger, trigger(in, 0), ) OPERATION(
                                                            modify_timer_trigger,
                                                            trigger(in, 0),
                                                            timer(in, 1), )
                                                            OPERATION(create_onvif_trigger, onvif(in, 0), ) OPERATION(
                                                                get_onvif_trigger, trigger(in, 0), )
                                                                OPERATION(modify_onvif_trigger,
                                                                          trigger(in, 0),
                                                                          onvif(in, 1), )
                                                                    OPERATION(create_stable_onvif_trigger,
                                                                              stableOnvif(in, 0), )
                                                                        OPERATION(get_stable_onvif_trigger,
                                                                                  trigger(in, 0), )
                                                                            OPERATION(
                                                                                modify_stable_onvif_trigger,
                                                                                trigger(in, 0),
                                                                                stableOnvif(in, 1), )
                                                                                OPERATION(
                                                                                    get_trigger_associations,
                                                                                    trigger(in, 0), )
                                                                                    OPERATION(
                                                                                        get_action_associations,
                                                                                        action(in, 0), )
                                                                                        OPERATION(
                                                                                            create_association,
                                                                                            trigger(in, 0),
                                                                                            action(in, 1), )
                                                                                            OPERATION(
                                                                                                delete_association,
                                                                                                trigger(in,
                                                                                                        0),
                                                                                                action(in,
                                                                                                       1), )
                                                                                                OPERATION(
                                                                                                    onvif_event,
                                                                                                    event(
                                                                                                        in,
                                                                                                        0), )
#undef OPERATION
    };
    return all;
}

}  // namespace cpp_layer
