// SPDX-License-Identifier: Apache-2.0
#include "client.h"

#include "korvo_api_action_engine.h"
#include "program.h"

Client::Client() {
    require(korvo_core_logging_init("bench", &logging_), "logging_init");
    require(korvo_api_action_engine_initiator_init(nullptr, logging_, &handle_, 0, "bench"),
            "initiator_init");
}

Client::~Client() {
    (void)korvo_api_action_engine_initiator_deinit(handle_);
    (void)korvo_core_logging_deinit(logging_);
}

unsigned int Client::createRelayAction() const {
    unsigned int action_id = 0;
    require(
        korvo_api_action_engine_create_relay_action_send(
            handle_, nullptr, "open the gate", "relay 1", /*config_mode*/ 1, /*config_normally_closed*/ 1,
            /*config_repeat_cycles*/ 3, /*config_on_time_ms*/ 500, /*config_off_time_ms*/ 250, &action_id),
        "create_relay_action");
    return action_id;
}

std::string commandFor(char const *method, unsigned int action_id) {
    return std::string(R"({"command":")") + method + R"(","action_id":)" + std::to_string(action_id) + "}";
}
