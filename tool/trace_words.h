// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_TRACE_WORDS_H
#define KORVO_TOOL_TRACE_WORDS_H

#include <boost/json/object.hpp>
#include <string>

namespace tool {

/// A trace as docs/simulator-control.md has it, as lines for people.
std::string traceInWords(boost::json::object const &trace, bool coloured);

}  // namespace tool

#endif
