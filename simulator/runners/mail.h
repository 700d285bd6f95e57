// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_RUNNERS_MAIL_H
#define KORVO_SIMULATOR_RUNNERS_MAIL_H

#include <ctime>
#include <string>
#include <string_view>

#include "simulator/engine.h"

namespace simulator::runners {

/// The message (RFC 5322) that an e-mail action stands for. `picture` is attached when the action says so. Nothing in the
/// settings can add a header of its own. Throws std::runtime_error when the action has no recipient.
std::string composeMail(Job const &job, std::string_view picture, std::time_t date);

}  // namespace simulator::runners

#endif
