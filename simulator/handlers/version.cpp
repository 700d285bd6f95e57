// SPDX-License-Identifier: Apache-2.0
#include "simulator/handlers/handlers.h"

namespace simulator::handlers {

// The initiator's own version changes nothing: it compares the two itself.
void getTargetVersion(Call &call) {
    call.response.number("target_major", call.version.major);
    call.response.number("target_minor", call.version.minor);
}

}  // namespace simulator::handlers
