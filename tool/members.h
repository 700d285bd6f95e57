// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_MEMBERS_H
#define KORVO_TOOL_MEMBERS_H

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <string>

namespace tool {

/// A member's list; an empty one where there is none.
boost::json::array const &listIn(boost::json::object const &members, char const *name);
/// A member's text; an empty one where there is none.
std::string textIn(boost::json::object const &members, char const *name);

}  // namespace tool

#endif
