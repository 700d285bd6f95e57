// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_MEANING_H
#define KORVO_SIMULATOR_MEANING_H

#include <string>

#include "simulator/kinds.h"
#include "simulator/onvif/content_filter.h"
#include "simulator/onvif/event.h"
#include "simulator/onvif/topic.h"
#include "simulator/values.h"

namespace simulator {

/// What the settings of an ONVIF trigger mean.
struct TriggerMeaning {
    onvif::TopicFilter topics;
    onvif::ContentFilter contents;
};

/// Puts into `fault` why the trigger can never fire; what is given back means nothing then. Empty when it can.
TriggerMeaning meaningOfTrigger(EntryKind const &kind, Values const &settings, std::string &fault);

/// Reads an event. Throws Refused.
onvif::Event readEvent(std::string topic, std::string message, onvif::Namespaces const &namespaces);

/// Why these namespaces mean nothing; empty when all is well.
std::string faultOfNamespaces(onvif::Namespaces const &namespaces);

/// Why an action with these filters (the lists of Get_action_filters) can never run; empty when it can.
std::string faultOfFilters(Values const &filters);

}  // namespace simulator

#endif
