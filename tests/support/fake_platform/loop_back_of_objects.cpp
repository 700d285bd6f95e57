// SPDX-License-Identifier: Apache-2.0
#include "fake_platform/loop_back_of_objects.h"

#include "fake_platform/loop_back.h"

namespace fake_platform {

korvo_core_status loopCommand(void *messaging, void *object, std::optional<bool> asynchronous,
                              Text const &service, Text const &target, Text const &request_id,
                              Text const &command) {
    return LoopBack::instance().sendCommand(messaging, object, asynchronous, service, target, request_id,
                                            command);
}

korvo_core_status loopResponse(void *messaging, int timeout, Text const &request_id, std::string &response) {
    Message message;
    korvo_core_status const status = LoopBack::instance().receiveResponse(
        messaging, timeout, [&](Message const &candidate) { return candidate[2] == request_id; }, message);
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        response = message[3].value_or("");
    }
    return status;
}

}  // namespace fake_platform
