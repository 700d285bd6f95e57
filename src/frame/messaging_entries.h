// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_MESSAGING_ENTRIES_H
#define KORVO_FRAME_MESSAGING_ENTRIES_H

/// The functions that the messaging layer calls with what comes in; the context is the IAction_engineInitiator.
/// They run on threads of the messaging layer, and no exception leaves them.
namespace messaging_entries {

void response(char **service, char **target, char **request_id, char **response, void *context) noexcept;
void event(char **service, char **source, char **event, void *context) noexcept;

}  // namespace messaging_entries

#endif
