// SPDX-License-Identifier: Apache-2.0
// The version handshake: the members and the five call forms of the one method that fills in its own inputs and
// looks at its results.

#include <cstdlib>

#include "frame/deliver.h"
#include "frame/initiator.h"
#include "operations/operations.h"

korvo_core_status IAction_engineInitiator::action_engine___get_target_version___utility_send(
    char const *target, char *request_id) {
    return sendCommand(operations::version_query, target, request_id, {major_version_, minor_version_});
}

korvo_core_status IAction_engineInitiator::action_engine___get_target_version___receive(
    char const *target, int timeout, void *request_id, unsigned int *target_major,
    unsigned int *target_minor) {
    korvo_core_status const status =
        readResponse(operations::version_query, target, timeout, request_id, {target_major, target_minor});
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        reportVersionMismatch(*target_major, *target_minor);
        // Last of all: the log may throw, and after a failure the identifier is still the caller's to free.
        std::free(request_id);
    }
    return status;
}

void IAction_engineInitiator::action_engine__get_target_version__Callback(char *target, char *request_id,
                                                                          json::Object const &response) {
    handleResponse(operations::version_query, __get_target_version___callbacks, target, request_id, response,
                   &CallbackWith<unsigned int, unsigned int>::deliver);
}

void IAction_engineInitiator::reportVersionMismatch(unsigned int target_major, unsigned int target_minor) {
    if (target_major != major_version_ || target_minor != minor_version_) {
        // A mismatch is told and nothing more: callers decide by the versions that they get.
        IPC_LOG_ERR("Action_engine Initiator (version %d:%d) queried Target (version %d:%d)",
                    static_cast<int>(major_version_), static_cast<int>(minor_version_),
                    static_cast<int>(target_major), static_cast<int>(target_minor));
    }
}
