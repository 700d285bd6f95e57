// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_TIME_LINE_H
#define KORVO_TOOL_TIME_LINE_H

#include <boost/json/array.hpp>
#include <string>

namespace tool {

/// Traces as an element svg: time from left to right, a row for each outcome, and each trace a link to "#trace-" and its
/// identifier.
std::string timeLineOf(boost::json::array const &traces);

}  // namespace tool

#endif
