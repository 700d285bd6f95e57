// SPDX-License-Identifier: Apache-2.0
#include "simulator/meaning.h"

#include <utility>

#include "simulator/filters.h"
#include "simulator/refused.h"

namespace simulator {

namespace {

constexpr std::uint32_t last_start = day_seconds - 1;
constexpr std::uint32_t last_end = day_seconds;

std::string sizes(std::size_t first, std::size_t second) {
    return "have " + std::to_string(first) + " and " + std::to_string(second) +
           " entries; the n-th entries belong together, so their numbers must be equal";
}

/// Names the first entry beyond a bound, counted from 1; empty when there is none.
std::string beyond(Numbers const &list, char const *name, std::uint32_t most, char const *meaning) {
    for (std::size_t n = 0; n < list.size(); ++n) {
        if (list[n] > most) {
            return std::string("entry ") + std::to_string(n + 1) + " of " + name + " is " +
                   std::to_string(list[n]) + ", and " + std::to_string(most) + " is the most: " + meaning;
        }
    }
    return "";
}

}  // namespace

TriggerMeaning meaningOfTrigger(EntryKind const &kind, Values const &settings, std::string &fault) {
    TriggerMeaning meaning;
    fault.clear();
    if (kind.type == protocol::reoccurring_timer) {
        return meaning;
    }
    operations::Member const *const row = settingsRow(kind);
    onvif::Namespaces const namespaces{valueOf<Texts>(settings, row, "namespace_keys"),
                                       valueOf<Texts>(settings, row, "namespace_uris")};
    fault = faultOfNamespaces(namespaces);
    if (!fault.empty()) {
        return meaning;
    }
    std::string const dialect =
        kind.type == protocol::onvif_event ? valueOf<std::string>(settings, row, "topic_filter_dialect") : "";
    try {
        meaning.topics =
            onvif::TopicFilter(valueOf<std::string>(settings, row, "topic_filter"), dialect, namespaces);
        meaning.contents =
            onvif::ContentFilter(valueOf<std::string>(settings, row, "content_filter"), namespaces);
    } catch (onvif::SyntaxError const &error) {
        fault = error.what();
    }
    return meaning;
}

onvif::Event readEvent(std::string topic, std::string message, onvif::Namespaces const &namespaces) {
    std::string const fault = faultOfNamespaces(namespaces);
    if (!fault.empty()) {
        throw impossible(fault);
    }
    try {
        return {std::move(topic), std::move(message), namespaces};
    } catch (onvif::SyntaxError const &error) {
        throw impossible(error.what());
    } catch (onvif::MessageError const &error) {
        throw impossible(error.what());
    }
}

std::string faultOfNamespaces(onvif::Namespaces const &namespaces) {
    return namespaces.keys.size() == namespaces.uris.size()
               ? ""
               : "namespace_keys and namespace_uris " + sizes(namespaces.keys.size(), namespaces.uris.size());
}

std::string faultOfFilters(Values const &filters) {
    auto const &weekdays = valueOf<Numbers>(filters, filters_row, "weekday_filters");
    auto const &starts = valueOf<Numbers>(filters, filters_row, "time_filters_start");
    auto const &ends = valueOf<Numbers>(filters, filters_row, "time_filters_end");
    if (weekdays.size() != starts.size()) {
        return "weekday_filters and time_filters_start " + sizes(weekdays.size(), starts.size());
    }
    if (starts.size() != ends.size()) {
        return "time_filters_start and time_filters_end " + sizes(starts.size(), ends.size());
    }
    std::string fault = beyond(weekdays, "weekday_filters", protocol::every_weekday,
                               "Sunday is 1, Monday 2, and so on to Saturday, 64, added up");
    if (fault.empty()) {
        fault =
            beyond(starts, "time_filters_start", last_start, "windows are in seconds since local midnight");
    }
    if (fault.empty()) {
        fault = beyond(ends, "time_filters_end", last_end, "windows are in seconds since local midnight");
    }
    return fault;
}

}  // namespace simulator
