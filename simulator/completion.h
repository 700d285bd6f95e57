// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_COMPLETION_H
#define KORVO_SIMULATOR_COMPLETION_H

#include <cstdint>
#include <string>

#include "simulator/onvif/event.h"
#include "simulator/time/moment.h"

namespace simulator {

// The events that tell triggers of actions that have run, so that actions can follow one another.

/// tns1:ActionEngine/Completed, or tns1:ActionEngine/Failed.
onvif::Topic const &completionTopic(bool success);

/// The event that an action of this identifier and name has run: both stand in its Source. Characters of the name that XML
/// does not have are replaced.
onvif::Event completionEvent(std::uint32_t action_id, std::string const &name, bool success, Wall wall);

}  // namespace simulator

#endif
