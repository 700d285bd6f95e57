// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_NAMESPACES_H
#define KORVO_TOOL_NAMESPACES_H

#include <boost/json/array.hpp>
#include <string>
#include <vector>

namespace tool {

/// What the usual prefixes tns1, of topics, and tt, of messages, stand for.
constexpr char const *topics_uri = "http://www.onvif.org/ver10/topics";
constexpr char const *schema_uri = "http://www.onvif.org/ver10/schema";

/// Prefixes and what they stand for, as parallel lists.
struct Namespaces {
    boost::json::array keys;
    boost::json::array uris;
};

/// tns1 and tt, and what words like "tns2=http://..." add to them or put in their place. Throws a Failure that names the
/// option.
Namespaces namespacesIn(std::string const &option, std::vector<std::string> const &words);

}  // namespace tool

#endif
