// SPDX-License-Identifier: Apache-2.0
// The functions of the fake libkorvo-core.

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "fake_platform/loop_back.h"
#include "fake_platform/recorded.h"
#include "fake_platform/script.h"
#include "korvo_core.h"

using fake_platform::Call;
using fake_platform::Function;
using fake_platform::Handle;
using fake_platform::LoopBack;
using fake_platform::Message;
using fake_platform::out;
using fake_platform::shownOut;
using fake_platform::Text;

namespace {

Text textOf(char const *text) {
    return text != nullptr ? Text(text) : std::nullopt;
}

KORVO_CORE_PRINTF(1, 0) std::string formatted(char const *format, va_list arguments) {
    char text[4096];
    (void)std::vsnprintf(text, sizeof text, format, arguments);
    return text;
}

/// A logging handle; what is logged is recorded by the script.
struct Logger {
    int unused = 0;
};

}  // namespace

namespace fake_platform {

void deliverResponse(Text const &target, std::string const &request_id, json::Object const &response,
                     void *context) {
    if (!LoopBack::instance().callResponseEntry({"action_engine", target, request_id, textFor(response)},
                                                context)) {
        throw std::logic_error("no entry point for responses is registered");
    }
}

void deliverEvent(Text const &source, json::Object const &event, void *context) {
    if (!LoopBack::instance().callEventEntry({"action_engine", source, textFor(event)}, context)) {
        throw std::logic_error("no entry point for events is registered");
    }
}

bool hasResponseEntry() {
    return LoopBack::instance().hasResponseEntry();
}

bool hasEventEntry() {
    return LoopBack::instance().hasEventEntry();
}

std::size_t openMessagingHandles() {
    return LoopBack::instance().count();
}

}  // namespace fake_platform

char const *korvo_core_status_to_string(korvo_core_status status) {
    RECORDED(char const *, status);
    static char const *const texts[] = {"no error",
                                        "invalid parameters",
                                        "allocation failed",
                                        "multi-thread access",
                                        "messaging failed",
                                        "incorrect setting type",
                                        "setting not present",
                                        "internal exception caught",
                                        "unsupported function",
                                        "remote function failure",
                                        "disabled target"};
    return status < sizeof texts / sizeof texts[0] ? texts[status] : "unknown status";
}

korvo_core_status korvo_core_init(void) {
    RECORDED_ALONE(korvo_core_status);
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_deinit(void) {
    RECORDED_ALONE(korvo_core_status);
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_ipc_initiator_init(void *logging, char const *name, void **messaging, int flag) {
    RECORDED(korvo_core_status, logging, name, shownOut(messaging), flag);
    Call call;
    call.function = Function::initiator_init;
    call.logging = logging;
    call.name = textOf(name);
    call.number = flag;
    auto const arranged = fake_platform::enter(call);
    if (arranged.value_or(KORVO_CORE_STATUS_NO_ERROR) != KORVO_CORE_STATUS_NO_ERROR) {
        return *arranged;
    }
    if (messaging == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    *messaging = LoopBack::instance().open(Handle());
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_ipc_initiator_command_send(void *messaging, char const *service,
                                                        char const *target, char const *request_id,
                                                        char const *command) {
    RECORDED(korvo_core_status, messaging, service, target, request_id, command);
    return LoopBack::instance().sendCommand(messaging, nullptr, std::nullopt, textOf(service), textOf(target),
                                            textOf(request_id), textOf(command));
}

korvo_core_status korvo_core_ipc_initiator_response_receive(void *messaging, int timeout, char **service,
                                                            char **target, char **request_id,
                                                            char **response) {
    RECORDED(korvo_core_status, messaging, timeout, out(service), out(target), out(request_id),
             out(response));
    Message message;
    korvo_core_status const status = LoopBack::instance().receiveResponse(
        messaging, timeout, [](Message const &) { return true; }, message);
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        fake_platform::handOut(message, {service, target, request_id, response});
    }
    return status;
}

korvo_core_status korvo_core_ipc_initiator_response_receive_callback(
    void *messaging, void (*callback)(char **, char **, char **, char **, void *), void *context) {
    RECORDED(korvo_core_status, messaging, callback, context);
    Call call;
    call.function = Function::response_receive_callback;
    call.messaging = messaging;
    call.object = context;
    auto const arranged = fake_platform::enter(call);
    if (arranged.value_or(KORVO_CORE_STATUS_NO_ERROR) != KORVO_CORE_STATUS_NO_ERROR) {
        return *arranged;
    }
    return LoopBack::instance().registerResponseEntry(messaging, {callback, context});
}

korvo_core_status korvo_core_ipc_initiator_event_subscribe(void *messaging, char const *service) {
    RECORDED(korvo_core_status, messaging, service);
    Call call;
    call.function = Function::event_subscribe;
    call.messaging = messaging;
    call.service = textOf(service);
    auto const arranged = fake_platform::enter(call);
    if (arranged.value_or(KORVO_CORE_STATUS_NO_ERROR) != KORVO_CORE_STATUS_NO_ERROR) {
        return *arranged;
    }
    return LoopBack::instance().subscribe(messaging, textOf(service), true);
}

korvo_core_status korvo_core_ipc_initiator_event_unsubscribe(void *messaging, char const *service) {
    RECORDED(korvo_core_status, messaging, service);
    return LoopBack::instance().subscribe(messaging, textOf(service), false);
}

korvo_core_status korvo_core_ipc_initiator_event_receive_callback(
    void *messaging, void (*callback)(char **, char **, char **, void *), void *context) {
    RECORDED(korvo_core_status, messaging, callback, context);
    Call call;
    call.function = Function::event_receive_callback;
    call.messaging = messaging;
    call.object = context;
    auto const arranged = fake_platform::enter(call);
    if (arranged.value_or(KORVO_CORE_STATUS_NO_ERROR) != KORVO_CORE_STATUS_NO_ERROR) {
        return *arranged;
    }
    return LoopBack::instance().registerEventEntry(messaging, {callback, context});
}

korvo_core_status korvo_core_ipc_target_init(void *logging, char const *service, char const *target,
                                             char const *name, void **messaging) {
    RECORDED(korvo_core_status, logging, service, target, name, shownOut(messaging));
    if (service == nullptr || messaging == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    Handle handle;
    handle.is_target = true;
    handle.service = service;
    handle.target = target != nullptr ? target : "";
    void *const opened = LoopBack::instance().open(handle);
    if (opened == nullptr) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    *messaging = opened;
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_ipc_target_command_receive(void *messaging, unsigned int timeout, char **source,
                                                        char **request_id, char **command) {
    RECORDED(korvo_core_status, messaging, timeout, out(source), out(request_id), out(command));
    Message message;
    korvo_core_status const status =
        LoopBack::instance().receiveCommand(messaging, static_cast<int>(timeout), message);
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        fake_platform::handOut(message, {source, request_id, command});
    }
    return status;
}

korvo_core_status korvo_core_ipc_target_command_receive_callback(
    void *messaging, void (*callback)(char **, char **, char **, void *), void *context) {
    RECORDED(korvo_core_status, messaging, callback, context);
    return LoopBack::instance().registerCommandEntry(messaging, {callback, context});
}

korvo_core_status korvo_core_ipc_target_response_send(void *messaging, char const *source,
                                                      char const *request_id, char const *response) {
    RECORDED(korvo_core_status, messaging, source, request_id, response);
    return LoopBack::instance().sendResponse(messaging, textOf(source), textOf(request_id), textOf(response));
}

korvo_core_status korvo_core_ipc_target_event_send(void *messaging, char const *event) {
    RECORDED(korvo_core_status, messaging, event);
    return LoopBack::instance().sendEvent(messaging, textOf(event));
}

korvo_core_status korvo_core_ipc_deinit(void *messaging) {
    RECORDED(korvo_core_status, messaging);
    Call call;
    call.function = Function::deinit;
    call.messaging = messaging;
    if (std::function<void()> const action = fake_platform::takeClosingAction()) {
        action();
    }
    // The handle is closed also when the test arranges a failure: nobody could close it afterwards.
    korvo_core_status const status = LoopBack::instance().close(messaging);
    return fake_platform::enter(call).value_or(status);
}

korvo_core_status korvo_core_logging_init(char const *name, void **logging) {
    RECORDED(korvo_core_status, name, shownOut(logging));
    if (logging == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    *logging = new Logger();
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_logging_deinit(void *logging) {
    RECORDED(korvo_core_status, logging);
    delete static_cast<Logger *>(logging);
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_logging_is_priority_active(void *logging, korvo_core_log_priority priority,
                                                        int *active) {
    RECORDED(korvo_core_status, logging, priority, out(active));
    if (active == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    *active = 1;
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_logging_log(void *logging, korvo_core_log_priority priority, char const *format,
                                         ...) {
    va_list arguments;
    va_start(arguments, format);
    if (fake_platform::recordsCore()) {
        std::string const text = format != nullptr ? formatted(format, arguments) : "";
        va_end(arguments);
        return fake_platform::recorded<korvo_core_status>(__func__, logging, priority, format,
                                                          format != nullptr ? text.c_str() : nullptr);
    }
    if (format != nullptr) {
        korvo_core_logging_logv(logging, priority, format, arguments);
    }
    va_end(arguments);
    return format != nullptr ? KORVO_CORE_STATUS_NO_ERROR : KORVO_CORE_STATUS_INVALID_PARAMS;
}

void korvo_core_logging_logv(void *logging, korvo_core_log_priority priority, char const *format,
                             va_list arguments) {
    fake_platform::record({logging, priority, formatted(format, arguments)});
}
