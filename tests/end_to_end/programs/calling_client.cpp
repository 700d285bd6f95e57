// SPDX-License-Identifier: Apache-2.0
// A client that is to be killed: calling_client call|subscribe. It writes "calling" when its command is sent, or
// "subscribed" when it waits for events.
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "korvo_api_action_engine.h"

int main(int argc, char **argv) {
    bool const subscribe = argc > 1 && std::string(argv[1]) == "subscribe";
    void *logging = nullptr;
    void *handle = nullptr;
    unsigned int major = 0;
    unsigned int minor = 0;
    if (korvo_core_logging_init("calling_client", &logging) != KORVO_CORE_STATUS_NO_ERROR ||
        korvo_api_action_engine_initiator_init(nullptr, logging, &handle, subscribe ? 1 : 0,
                                               "calling_client") != KORVO_CORE_STATUS_NO_ERROR ||
        korvo_api_action_engine___get_target_version___send(handle, nullptr, &major, &minor) !=
            KORVO_CORE_STATUS_NO_ERROR) {
        std::cerr << "calling_client: no service\n";
        return EXIT_FAILURE;
    }
    if (subscribe) {
        std::cout << "subscribed" << std::endl;
        for (;;) {
            pause();
        }
    }
    char *request_id = nullptr;
    unsigned int **trigger_id = nullptr;
    unsigned int **trigger_type = nullptr;
    (void)korvo_api_action_engine_get_triggers_non_blocking_send(handle, nullptr, &request_id);
    std::cout << "calling" << std::endl;
    (void)korvo_api_action_engine_get_triggers_receive_with_timeout(handle, nullptr, -1, request_id,
                                                                    &trigger_id, &trigger_type);
    return EXIT_SUCCESS;
}
