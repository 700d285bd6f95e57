// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_ONVIF_EVENT_H
#define KORVO_SIMULATOR_ONVIF_EVENT_H

#include <string>

#include "simulator/onvif/message.h"
#include "simulator/onvif/names.h"
#include "simulator/onvif/topic.h"

namespace simulator::onvif {

/// An event as it came, and what it means.
struct Event {
    /// Throws SyntaxError for the topic and MessageError for the message.
    Event(std::string topic_as_sent, std::string message_as_sent, Namespaces const &namespaces)
        : topic_text(std::move(topic_as_sent)),
          message_text(std::move(message_as_sent)),
          topic(parseTopic(topic_text, namespaces)),
          message(message_text, namespaces) {}

    std::string topic_text;
    std::string message_text;
    Topic topic;
    Message message;
};

}  // namespace simulator::onvif

#endif
