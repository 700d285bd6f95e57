// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_FILTERS_H
#define KORVO_SIMULATOR_FILTERS_H

#include <string>

#include "simulator/time/moment.h"
#include "simulator/values.h"

namespace simulator {

/// Whether an action with these filters (the three lists of Get_action_filters, equally long) may run at this moment.
///
/// The n-th entries of the three lists are one filter: a set of weekdays and a time window from its start up to, but not
/// with, its end, in seconds since local midnight. One filter that fits is enough; an action without filters may always
/// run.
///
/// A window whose end comes before its start goes on past midnight and belongs to the weekday on which it started. Equal
/// start and end are the whole day. A weekday set of 0 fits no day.
bool mayRun(Values const &filters, LocalTime now);

/// The same in words: the filter that lets the action run, or of each why it does not.
std::string whyMayRun(Values const &filters, LocalTime now);

}  // namespace simulator

#endif
