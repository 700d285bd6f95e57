// SPDX-License-Identifier: Apache-2.0
#include "support/object.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

Object::Object(void *messaging) : korvoInitiatorInterfaces(messaging, nullptr, 1, 0, "contract-object", 10) {}

Object::~Object() {
    closeOwnedMessaging();
}

void Object::subclassResponseDispatch(char const *method, char *target, char *request_id,
                                      json::Object &response) {
    if (at_response != nullptr) {
        at_response(*this);
    }
    responses.put({method, target, request_id, response});
}

void Object::subclassEventDispatch(char const *source, char const *event, json::Object &payload) {
    events.put({source, event, payload});
}

korvo_core_status Object::send(char const *request_id, char const *method, double number) {
    json::Object command;
    command["command"] = json::String(method);
    command["number"] = json::Number(number);
    return basicSendCommand("sample", "", request_id, command);
}

korvo_core_status Object::receive(char const *request_id, char const *method, json::Object &response,
                                  int timeout) {
    return basicReceiveResponse(timeout, "sample", "", request_id, method, response);
}

korvo_core_status Object::exchange(char const *method, double number, json::Object &response) {
    std::unique_ptr<char, decltype(&std::free)> const request_id(generateUUID(), std::free);
    korvo_core_status const sent = send(request_id.get(), method, number);
    return sent != KORVO_CORE_STATUS_NO_ERROR ? sent : receive(request_id.get(), method, response);
}

void Object::registerForResponses() {
    EXPECT_EQ(korvo_core_ipc_initiator_response_receive_callback(messagingHandle(), takeResponse, this),
              KORVO_CORE_STATUS_NO_ERROR);
}

korvo_core_status Object::sendAsync(char const *request_id, char const *method, double number) {
    registerForResponses();
    {
        std::lock_guard<std::mutex> const lock(mutex_);
        asynchronous_.insert(request_id);
    }
    return send(request_id, method, number);
}

bool Object::isAsynchronous(char const *, char const *request_id) {
    std::lock_guard<std::mutex> const lock(mutex_);
    return asynchronous_.count(request_id) != 0;
}
void Object::collectEvents() {
    EXPECT_EQ(korvo_core_ipc_initiator_event_subscribe(messagingHandle(), "sample"),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_core_ipc_initiator_event_receive_callback(messagingHandle(), takeEvent, this),
              KORVO_CORE_STATUS_NO_ERROR);
}

void Object::takeResponse(char **service, char **target, char **request_id, char **response, void *context) {
    static_cast<Object *>(context)->initiatorResponseCallback(service, target, request_id, response);
}

void Object::takeEvent(char **service, char **source, char **event, void *context) {
    static_cast<Object *>(context)->initiatorCallback(service, source, event);
}

std::optional<double> numberIn(json::Object const &object, char const *name) {
    try {
        return object[name].CastTo<json::Number>().value();
    } catch (json::Exception const &) {
        return std::nullopt;
    }
}
