// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_EVENT_DOCUMENT_H
#define KORVO_TOOL_EVENT_DOCUMENT_H

#include <boost/json/object.hpp>
#include <string>

namespace tool {

/// The inputs of onvif_event for a file with an event: topic, message, and the prefixes that the file declares. The
/// message may stand in a notification that names the topic; a given topic goes before that. Throws a Failure that names
/// the parameter when there is no message, or no topic.
boost::json::object eventInDocument(std::string const &parameter, std::string const &text,
                                    std::string const &topic);

}  // namespace tool

#endif
