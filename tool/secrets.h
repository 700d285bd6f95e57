// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_SECRETS_H
#define KORVO_TOOL_SECRETS_H

#include <boost/json/object.hpp>
#include <string>

#include "tool/settings.h"

namespace tool {

/// Whether an input or result is never shown unless asked for, and never given on a command line.
bool isSecret(std::string const &member);
/// Puts null in the place of each, also in objects inside.
void hideSecrets(Settings const &settings, boost::json::object &members);

}  // namespace tool

#endif
