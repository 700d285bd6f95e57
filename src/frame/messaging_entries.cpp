// SPDX-License-Identifier: Apache-2.0
#include "frame/messaging_entries.h"

#include "frame/initiator.h"

namespace messaging_entries {

void response(char **service, char **target, char **request_id, char **response, void *context) noexcept {
    auto &initiator = *static_cast<IAction_engineInitiator *>(context);
    IAction_engineInitiator::Delivery const delivery(initiator);
    try {
        initiator.initiatorResponseCallback(service, target, request_id, response);
    } catch (...) {
        // The messaging layer is not made for exceptions, and who reads messages has nobody to hand one to.
    }
}

void event(char **service, char **source, char **event, void *context) noexcept {
    auto &initiator = *static_cast<IAction_engineInitiator *>(context);
    IAction_engineInitiator::Delivery const delivery(initiator);
    try {
        initiator.initiatorCallback(service, source, event);
    } catch (...) {
        // As above.
    }
}

}  // namespace messaging_entries
