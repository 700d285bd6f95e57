// SPDX-License-Identifier: Apache-2.0
#include "support/ends.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <tuple>

namespace {

std::string takeText(char *text) {
    std::string const copy = text != nullptr ? text : "(NULL)";
    std::free(text);
    return copy;
}

}  // namespace

bool operator==(Command const &left, Command const &right) {
    return std::tie(left.source, left.request_id, left.command) ==
           std::tie(right.source, right.request_id, right.command);
}

bool operator==(Response const &left, Response const &right) {
    return std::tie(left.service, left.target, left.request_id, left.response) ==
           std::tie(right.service, right.target, right.request_id, right.response);
}

bool operator==(Event const &left, Event const &right) {
    return std::tie(left.service, left.source, left.event) ==
           std::tie(right.service, right.source, right.event);
}

Logging::Logging() {
    EXPECT_EQ(korvo_core_logging_init("platform-contract", &handle_), KORVO_CORE_STATUS_NO_ERROR);
}

Logging::~Logging() {
    EXPECT_EQ(korvo_core_logging_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
}

Service::Service(char const *service, char const *target) {
    EXPECT_EQ(korvo_core_ipc_target_init(logging_.handle(), service, target, "contract-service", &handle_),
              KORVO_CORE_STATUS_NO_ERROR);
}

Service::~Service() {
    close();
}

void Service::close() {
    if (handle_ != nullptr) {
        EXPECT_EQ(korvo_core_ipc_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
        handle_ = nullptr;
    }
}

void Service::answerWith(Answer answer) {
    answer_ = std::move(answer);
    EXPECT_EQ(korvo_core_ipc_target_command_receive_callback(handle_, take, this),
              KORVO_CORE_STATUS_NO_ERROR);
}

void Service::take(char **source, char **request_id, char **command, void *context) {
    auto &self = *static_cast<Service *>(context);
    Command const taken{*source, *request_id, *command};
    std::string const response = self.answer_(taken);
    if (!response.empty()) {
        EXPECT_EQ(self.respond(taken, response), KORVO_CORE_STATUS_NO_ERROR);
    }
}

korvo_core_status Service::poll(Command &command, unsigned int timeout) {
    char *source = nullptr;
    char *request_id = nullptr;
    char *text = nullptr;
    korvo_core_status const status =
        korvo_core_ipc_target_command_receive(handle_, timeout, &source, &request_id, &text);
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        command = {takeText(source), takeText(request_id), takeText(text)};
    }
    return status;
}

korvo_core_status Service::respond(Command const &command, std::string const &response) {
    return korvo_core_ipc_target_response_send(handle_, command.source.c_str(), command.request_id.c_str(),
                                               response.c_str());
}

korvo_core_status Service::publish(std::string const &event) {
    return korvo_core_ipc_target_event_send(handle_, event.c_str());
}

Client::Client() {
    EXPECT_EQ(korvo_core_ipc_initiator_init(logging_.handle(), "contract-client", &handle_, 1),
              KORVO_CORE_STATUS_NO_ERROR);
}

Client::~Client() {
    close();
}

void Client::close() {
    if (handle_ != nullptr) {
        EXPECT_EQ(korvo_core_ipc_deinit(handle_), KORVO_CORE_STATUS_NO_ERROR);
        handle_ = nullptr;
    }
}

korvo_core_status Client::send(char const *request_id, char const *command, char const *service,
                               char const *target) {
    return korvo_core_ipc_initiator_command_send(handle_, service, target, request_id, command);
}

korvo_core_status Client::receive(Response &response, int timeout) {
    char *service = nullptr;
    char *target = nullptr;
    char *request_id = nullptr;
    char *text = nullptr;
    korvo_core_status const status =
        korvo_core_ipc_initiator_response_receive(handle_, timeout, &service, &target, &request_id, &text);
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        response = {takeText(service), takeText(target), takeText(request_id), takeText(text)};
    }
    return status;
}

void Client::collectResponses() {
    EXPECT_EQ(korvo_core_ipc_initiator_response_receive_callback(handle_, takeResponse, this),
              KORVO_CORE_STATUS_NO_ERROR);
}

void Client::collectEvents() {
    EXPECT_EQ(korvo_core_ipc_initiator_event_receive_callback(handle_, takeEvent, this),
              KORVO_CORE_STATUS_NO_ERROR);
}

korvo_core_status Client::subscribe(char const *service) {
    return korvo_core_ipc_initiator_event_subscribe(handle_, service);
}

void Client::takeResponse(char **service, char **target, char **request_id, char **response, void *context) {
    static_cast<Client *>(context)->responses.put({*service, *target, *request_id, *response});
}

void Client::takeEvent(char **service, char **source, char **event, void *context) {
    static_cast<Client *>(context)->events.put({*service, *source, *event});
}

std::optional<Event> publishUntilReceived(Service &service, Client &client, std::string const &event) {
    auto const end = std::chrono::steady_clock::now() + patience;
    while (std::chrono::steady_clock::now() < end) {
        EXPECT_EQ(service.publish(event), KORVO_CORE_STATUS_NO_ERROR);
        if (auto received = client.events.take(std::chrono::milliseconds(20))) {
            return received;
        }
    }
    return std::nullopt;
}
