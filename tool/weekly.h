// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_WEEKLY_H
#define KORVO_TOOL_WEEKLY_H

// The filters of an action in words: "Mon-Fri 08:00-18:00".

#include <boost/json/object.hpp>
#include <string>
#include <utility>
#include <vector>

namespace tool {

/// Weekdays as flags, from Sunday 1 to Saturday 64, and seconds since local midnight.
struct Window {
    unsigned int weekdays = 0;
    unsigned int start = 0;
    unsigned int end = 0;
};

/// As many as the shortest list has.
std::vector<Window> windowsIn(boost::json::object const &filters);
boost::json::object filtersOf(std::vector<Window> const &windows);

std::string inWords(Window const &window);
/// All of an action, "always" for none.
std::string filtersInWords(boost::json::object const &filters);
/// Throws a Failure that names the option and says what is wrong.
Window windowOf(std::string const &option, std::string const &words);

/// Whether some window is open at this second of a day, Sunday being 0.
bool isOpen(std::vector<Window> const &windows, unsigned int weekday, unsigned int second);

/// When some window is open on a weekday, each from a second of the day to the one behind its last.
std::vector<std::pair<unsigned int, unsigned int>> openTimes(std::vector<Window> const &windows,
                                                             unsigned int weekday);

/// "08:00", or "08:00:01".
std::string clockTime(unsigned int seconds);
char const *weekdayName(unsigned int weekday);

}  // namespace tool

#endif
