// SPDX-License-Identifier: Apache-2.0
// Sending a command and reading its response on the caller's thread, for every operation.

#include <cstdlib>

#include "frame/function_name.h"
#include "frame/initiator.h"
#include "operations/protocol.h"

using operations::Kind;
using operations::Member;
using operations::Operation;

korvo_core_status IAction_engineInitiator::sendCommand(Operation const &operation, char const *target,
                                                       char const *request_id,
                                                       std::initializer_list<Input> inputs) {
    json::Object command;
    command.Emplace("command", json::String(operation.method));
    Member const *member = operation.inputs;
    for (Input const input : inputs) {
        if (!writeMember(command, *member, input)) {
            bool const is_text = member->kind == Kind::text;
            // On purpose: only the texts' line has a blank after the colon. People search their logs for both.
            IPC_LOG_WARNING(is_text ? "Initiator: %s called with null input pointer %s"
                                    : "Initiator:%s called with null input pointer %s",
                            FunctionName::requestBuilder(operation).c_str(), member->name);
            return KORVO_CORE_STATUS_INVALID_PARAMS;
        }
        ++member;
    }
    return basicSendCommand(protocol::service, target, request_id, command);
}

korvo_core_status IAction_engineInitiator::receiveResponse(Operation const &operation, char const *target,
                                                           int timeout, void *request_id,
                                                           std::initializer_list<OutPointer> outs) {
    korvo_core_status const status = readResponse(operation, target, timeout, request_id, outs);
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        std::free(request_id);
    }
    return status;
}

korvo_core_status IAction_engineInitiator::readResponse(Operation const &operation, char const *target,
                                                        int timeout, void const *request_id,
                                                        std::initializer_list<OutPointer> outs) {
    json::Object response;
    korvo_core_status status =
        basicReceiveResponse(timeout, protocol::service, target, static_cast<char const *>(request_id),
                             operation.method, response);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        return status;
    }
    Member const *member = operation.results;
    for (OutPointer const out : outs) {
        status = readMember(response, *member, out);
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            IPC_LOG_WARNING(member->kind == Kind::numbers ? "%s:failed converting UINT array (%d)"
                                                          : "%s:failed converting STR array (%d)",
                            FunctionName::responseReader(operation).c_str(), static_cast<int>(status));
            return status;
        }
        ++member;
    }
    return KORVO_CORE_STATUS_NO_ERROR;
}
