// SPDX-License-Identifier: Apache-2.0
// The functions of the fake libkorvo-interfaces.

#include "frame/interfaces.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iterator>

#include "fake_platform/json_text.h"
#include "fake_platform/loop_back_of_objects.h"
#include "fake_platform/script.h"
#include "json/json.h"
#include "json/lists.h"

using fake_platform::Call;
using fake_platform::Function;
using fake_platform::Text;

namespace {

Text textOf(char const *text) {
    return text != nullptr ? Text(text) : std::nullopt;
}

/// Whether there is a place for each text, and the last is there; the others may be missing.
bool isWhole(std::initializer_list<char **> texts) {
    return std::all_of(texts.begin(), texts.end(), [](char **text) { return text != nullptr; }) &&
           **std::prev(texts.end()) != nullptr;
}

/// The message behind a text, and the text of one of its members; false when it is no message.
bool readMessage(char const *text, char const *member, json::Object &message, std::string &value) {
    if (!fake_platform::objectOf(text, message) && !fake_platform::parse(text, message)) {
        return false;
    }
    try {
        value = static_cast<json::Object const &>(message)[member].CastTo<json::String>().value();
        return true;
    } catch (json::Exception const &) {
        return false;
    }
}

}  // namespace

korvo_core_status korvoInitiatorInterfaces::basicSendCommand(char const *service, char const *target,
                                                             char const *request_id,
                                                             json::Object const &command) {
    Call call;
    call.function = Function::send_command;
    call.messaging = messagingHandle();
    call.object = this;
    call.service = textOf(service);
    call.target = textOf(target);
    call.request_id = textOf(request_id);
    call.request_id_address = request_id;
    call.json = command;
    if (fake_platform::asks()) {
        auto const method = command.Find("command");
        if (method != command.end()) {
            call.asynchronous =
                isAsynchronous(method->element.CastTo<json::String>().value().c_str(), request_id);
        }
    }
    if (fake_platform::scripted()) {
        return fake_platform::enter(call).value_or(KORVO_CORE_STATUS_NO_ERROR);
    }
    std::optional<bool> asynchronous;
    if (fake_platform::asks()) {
        asynchronous = call.asynchronous;
    }
    return fake_platform::loopCommand(messagingHandle(), this, asynchronous, call.service, call.target,
                                      call.request_id, fake_platform::textOf(command));
}

korvo_core_status korvoInitiatorInterfaces::basicReceiveResponse(int timeout, char const *service,
                                                                 char const *target, char const *request_id,
                                                                 char const *method, json::Object &response) {
    Call call;
    call.function = Function::receive_response;
    call.messaging = messagingHandle();
    call.object = this;
    call.service = textOf(service);
    call.target = textOf(target);
    call.request_id = textOf(request_id);
    call.request_id_address = request_id;
    call.method = textOf(method);
    call.number = timeout;
    call.json = response;
    if (fake_platform::scripted()) {
        auto const arranged = fake_platform::enter(call);
        if (arranged.value_or(KORVO_CORE_STATUS_NO_ERROR) != KORVO_CORE_STATUS_NO_ERROR) {
            return *arranged;
        }
        return fake_platform::takeResponse(response) ? KORVO_CORE_STATUS_NO_ERROR
                                                     : KORVO_CORE_STATUS_IPC_FAILED;
    }
    std::string text;
    korvo_core_status const status =
        fake_platform::loopResponse(messagingHandle(), timeout, call.request_id, text);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        return status;
    }
    json::Object received;
    if (!fake_platform::parse(text, received)) {
        korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR,
                               "a response is no JSON object: %s", text.c_str());
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    auto const outcome = received.Find("status");
    if (outcome == received.end()) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    auto const answered =
        static_cast<korvo_core_status>(json::ToUnsigned(outcome->element.ConvertTo<json::Number>().value()));
    if (answered == KORVO_CORE_STATUS_NO_ERROR) {
        response = received;
    }
    return answered;
}

void korvoInitiatorInterfaces::initiatorResponseCallback(char **service, char **target, char **request_id,
                                                         char **response) {
    if (!isWhole({service, target, request_id, response})) {
        return;
    }
    json::Object message;
    std::string method;
    if (!readMessage(*response, "command", message, method)) {
        korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR, "a response is broken: %s",
                               *response);
        return;
    }
    subclassResponseDispatch(method.c_str(), *target, *request_id, message);
}

void korvoInitiatorInterfaces::initiatorCallback(char **service, char **source, char **event) {
    if (!isWhole({service, source, event})) {
        return;
    }
    json::Object message;
    std::string name;
    if (!readMessage(*event, "event", message, name)) {
        korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR, "an event is broken: %s",
                               *event);
        return;
    }
    subclassEventDispatch(*source, name.c_str(), message);
}

korvo_core_status convertJsonToValue(json::UnknownElement const &element, char **text) {
    Call call;
    call.function = Function::convert_json_to_value;
    if (text == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    auto const arranged = fake_platform::enter(call);
    if (arranged.value_or(KORVO_CORE_STATUS_NO_ERROR) != KORVO_CORE_STATUS_NO_ERROR) {
        return *arranged;
    }
    try {
        *text = strdup(element.CastTo<json::String>().value().c_str());
    } catch (json::Exception const &) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    return *text != nullptr ? KORVO_CORE_STATUS_NO_ERROR : KORVO_CORE_STATUS_ALLOC_FAILED;
}
