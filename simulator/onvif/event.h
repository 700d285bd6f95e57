// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_ONVIF_EVENT_H
#define KORVO_SIMULATOR_ONVIF_EVENT_H

#include <string>
#include <string_view>

#include "simulator/values.h"

namespace simulator::onvif {

/// Namespace prefixes and their URIs: the n-th key belongs to the n-th URI. A key without a URI means nothing.
struct Namespaces {
    Texts keys;
    Texts uris;
};

struct Event {
    std::string topic;
    std::string message;
    Namespaces namespaces;
};

/// Whether the topic is one that the filter lets through: one or more topics with "|" between them, of which one must be
/// the event's topic, or with "//." at its end a topic above it or that topic itself. An empty filter lets every topic
/// through. Prefixes that a side explains are compared by their URIs, others by their letters. "tns1:Device//." lets
/// "tns1:Device/Trigger/Relay" through. The filter's dialect is kept with a trigger and changes nothing here.
bool topicMatches(std::string_view filter, Namespaces const &filter_namespaces, Event const &event);

/// Whether the message is one that the filter lets through: one that contains the filter's text, letter by letter. An
/// empty filter lets every message through.
bool contentMatches(std::string_view filter, Event const &event);

}  // namespace simulator::onvif

#endif
