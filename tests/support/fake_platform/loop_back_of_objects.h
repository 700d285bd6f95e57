// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_FAKE_PLATFORM_LOOP_BACK_OF_OBJECTS_H
#define KORVO_TESTS_FAKE_PLATFORM_LOOP_BACK_OF_OBJECTS_H

// What the fake libkorvo-interfaces needs of the messaging in the fake libkorvo-core.

#include "fake_platform/fake_platform.h"

namespace fake_platform {

/// Sends a command on behalf of a client object, with what the object said of it when it was asked.
FAKE_PLATFORM_EXPORT korvo_core_status loopCommand(void *messaging, void *object,
                                                   std::optional<bool> asynchronous, Text const &service,
                                                   Text const &target, Text const &request_id,
                                                   Text const &command);

/// Waits for the response to a request.
FAKE_PLATFORM_EXPORT korvo_core_status loopResponse(void *messaging, int timeout, Text const &request_id,
                                                    std::string &response);

}  // namespace fake_platform

#endif
