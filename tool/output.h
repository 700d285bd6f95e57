// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_OUTPUT_H
#define KORVO_TOOL_OUTPUT_H

#include <boost/json/value.hpp>
#include <string>
#include <vector>

namespace tool {

/// Standard output, where results go and nothing else. Writing throws ReaderGone when a pipe's reader is gone, and a
/// Failure when there is no room.
namespace output {

void write(std::string const &text);
void line(std::string const &text);
/// On one line.
void json(boost::json::value const &value);
/// True where colours and progress are for a person.
bool isTerminal();
bool isColoured();
/// Cells of each row under a heading, in columns that are as wide as need be.
void table(std::vector<std::string> const &heading, std::vector<std::vector<std::string>> const &rows);
/// Names and values below each other.
void pairs(std::vector<std::pair<std::string, std::string>> const &rows);

}  // namespace output

/// How many columns of a terminal a UTF-8 text takes, each character being one wide.
std::size_t widthOf(std::string const &text);
/// Control characters, which a terminal would obey, as escapes.
std::string printable(std::string const &text);

/// At most 40 characters, with an ellipsis where some are missing.
std::string cut(std::string const &text);

/// Laid out for people, with two blanks a level; short lists and objects stay on one line.
std::string pretty(boost::json::value const &value);
/// A value for people: lists and members by commas, flags as yes and no.
std::string inWords(boost::json::value const &value);

}  // namespace tool

#endif
