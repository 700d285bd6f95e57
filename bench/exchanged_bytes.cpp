// SPDX-License-Identifier: Apache-2.0
#include "exchanged_bytes.h"

#include <cstdlib>

#include "korvo_core.h"
#include "messaging/frame.h"
#include "program.h"

ExchangedBytes bytesOf(void *logging, std::string const &command) {
    std::string const identifier = "00000000-0000-4000-8000-000000000000";
    void *messaging = nullptr;
    require(korvo_core_ipc_initiator_init(logging, "bench", &messaging, 1), "initiator_init");
    require(korvo_core_ipc_initiator_command_send(messaging, "action_engine", nullptr, identifier.c_str(),
                                                  command.c_str()),
            "command_send");
    char *service = nullptr;
    char *target = nullptr;
    char *request_id = nullptr;
    char *response = nullptr;
    require(
        korvo_core_ipc_initiator_response_receive(messaging, 5000, &service, &target, &request_id, &response),
        "response_receive");
    ExchangedBytes bytes;
    platform::frame::append(bytes.request, platform::frame::Type::command, identifier, command);
    platform::frame::append(bytes.response, platform::frame::Type::response, identifier, response);
    std::free(service);
    std::free(target);
    std::free(request_id);
    std::free(response);
    require(korvo_core_ipc_deinit(messaging), "deinit");
    return bytes;
}
