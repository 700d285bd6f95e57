// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_CONTROL_CHECK_H
#define KORVO_SIMULATOR_CONTROL_CHECK_H

#include <boost/json/object.hpp>

#include "simulator/control/members.h"
#include "simulator/time/moment.h"

namespace simulator::control {

// Whether a filter can be understood, and where and why not: "accepted", and "column" and "words" where it is not.

boost::json::object checkTopicFilter(Members const &members);
boost::json::object checkContentFilter(Members const &members);
/// Windows; where they can be understood, also whether they let an action run at "time", or else `now`.
boost::json::object checkFilters(Members const &members, Wall now);

/// The member "time" as a moment. Throws Refused.
Wall momentIn(Members const &members, char const *name);

}  // namespace simulator::control

#endif
