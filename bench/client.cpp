// SPDX-License-Identifier: Apache-2.0
#include "client.h"

#include "korvo_api_action_engine.h"
#include "program.h"

Client::Client(void *messaging, bool subscribes) {
    require(korvo_core_logging_init("bench", &logging_), "logging_init");
    require(
        korvo_api_action_engine_initiator_init(messaging, logging_, &handle_, subscribes ? 1 : 0, "bench"),
        "initiator_init");
}

Client::~Client() {
    (void)korvo_api_action_engine_initiator_deinit(handle_);
    (void)korvo_core_logging_deinit(logging_);
}

void Client::getRelay(Relay &relay) const {
    require(korvo_api_action_engine_get_relay_action_send(
                handle_, nullptr, contents::action_id, &relay.action_name, &relay.relay_target,
                &relay.config_mode, &relay.config_normally_closed, &relay.config_repeat_cycles,
                &relay.config_on_time_ms, &relay.config_off_time_ms),
            "get_relay_action");
}

void Client::getLists(by_hand::BlockLists &lists) const {
    require(korvo_api_action_engine_get_actions_send(handle_, nullptr, &lists.ids, &lists.types),
            "get_actions");
}

unsigned int Client::createRelayAction() const {
    unsigned int action_id = 0;
    require(korvo_api_action_engine_create_relay_action_send(
                handle_, nullptr, contents::action_name, contents::relay_target, contents::mode,
                contents::normally_closed ? 1 : 0, contents::repeat_cycles, contents::on_time_ms,
                contents::off_time_ms, &action_id),
            "create_relay_action");
    return action_id;
}

void Client::createContents() const {
    for (std::size_t count = 0; count < contents::actions; ++count) {
        (void)createRelayAction();
    }
    by_hand::BlockLists lists;
    getLists(lists);
    lists.check();
}

std::string commandFor(char const *method, unsigned int action_id) {
    return std::string(R"({"command":")") + method + R"(","action_id":)" + std::to_string(action_id) + "}";
}
