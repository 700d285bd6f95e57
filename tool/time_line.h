// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_TIME_LINE_H
#define KORVO_TOOL_TIME_LINE_H

#include <boost/json/array.hpp>
#include <cstdint>
#include <optional>
#include <string>

namespace tool {

/// Traces as an element svg: time from left to right, a row for each outcome, and each trace a link to "#trace-" and its
/// identifier.
std::string timeLineOf(boost::json::array const &traces);

/// The seconds since 1970 of a text like "2026-11-23T08:00:00+01:00"; nothing for any other.
std::optional<std::int64_t> secondsOf(std::string const &moment);

}  // namespace tool

#endif
