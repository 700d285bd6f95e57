// SPDX-License-Identifier: Apache-2.0
// Lists every action of the service with its type.
#include <cstdio>
#include <cstdlib>
#include <korvo/action_engine.hpp>

namespace {

char const *nameOf(ActionType type) {
    switch (type) {
        case kSendEmailAction:
            return "e-mail";
        case kFtpUploadAction:
            return "FTP upload";
        case kSaveSnapshotAction:
            return "snapshot";
        case kPtzPatternAction:
            return "PTZ pattern";
        case kPtzPresetAction:
            return "PTZ preset";
        case kPtzTourAction:
            return "PTZ tour";
        case kPtzScanAction:
            return "PTZ scan";
        case kWiperAction:
            return "wiper";
        case kWasherAction:
            return "washer";
        case kRelayAction:
            return "relay";
    }
    return "of a type that this program does not know";
}

}  // namespace

int main() {
    try {
        korvo::ActionEngine const engine = korvo::ActionEngine::open({"list_actions"}).value();
        auto const actions = engine.get_actions().value();
        if (actions.empty()) {
            std::puts("The service has no actions.");
        }
        for (korvo::ActionEntry const &action : actions) {
            std::printf("action %u: %s\n", korvo::number(action.action_id), nameOf(action.action_type));
        }
        return EXIT_SUCCESS;
    } catch (korvo::Error const &error) {
        std::fprintf(stderr, "list_actions: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
