// SPDX-License-Identifier: Apache-2.0
// The functions of the fake libkorvo-core.

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "korvo_core.h"
#include "loop_back.h"
#include "script.h"

using fake_platform::Call;
using fake_platform::Function;
using fake_platform::Handle;
using fake_platform::LoopBack;
using fake_platform::Message;
using fake_platform::Text;

namespace {

Text textOf(char const *text) {
    return text != nullptr ? Text(text) : std::nullopt;
}

/// A logging handle; what is logged is recorded by the script.
struct Logger {
    int unused = 0;
};

template <typename T>
T **allocateList(unsigned int count, bool with_elements) {
    T **const list = static_cast<T **>(std::calloc(std::size_t{count} + 1, sizeof(T *)));
    for (unsigned int place = 0; list != nullptr && with_elements && place < count; ++place) {
        list[place] = static_cast<T *>(std::calloc(1, sizeof(T)));
    }
    return list;
}

template <typename T>
void freeList(T **list) {
    for (T **element = list; element != nullptr && *element != nullptr; ++element) {
        std::free(*element);
    }
    std::free(list);
}

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
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_deinit(void) {
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_ipc_initiator_init(void *logging, char const *name, void **messaging, int flag) {
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
    return LoopBack::instance().sendCommand(messaging, nullptr, textOf(service), textOf(target),
                                            textOf(request_id), textOf(command));
}

korvo_core_status korvo_core_ipc_initiator_response_receive(void *messaging, int timeout, char **service,
                                                            char **target, char **request_id,
                                                            char **response) {
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
    return LoopBack::instance().subscribe(messaging, textOf(service), false);
}

korvo_core_status korvo_core_ipc_initiator_event_receive_callback(
    void *messaging, void (*callback)(char **, char **, char **, void *), void *context) {
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

korvo_core_status korvo_core_ipc_target_init(void *, char const *service, char const *target, char const *,
                                             void **messaging) {
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
    return LoopBack::instance().registerCommandEntry(messaging, {callback, context});
}

korvo_core_status korvo_core_ipc_target_response_send(void *messaging, char const *source,
                                                      char const *request_id, char const *response) {
    return LoopBack::instance().sendResponse(messaging, textOf(source), textOf(request_id), textOf(response));
}

korvo_core_status korvo_core_ipc_target_event_send(void *messaging, char const *event) {
    return LoopBack::instance().sendEvent(messaging, textOf(event));
}

korvo_core_status korvo_core_ipc_deinit(void *messaging) {
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

korvo_core_status korvo_core_logging_init(char const *, void **logging) {
    if (logging == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    *logging = new Logger();
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_logging_deinit(void *logging) {
    delete static_cast<Logger *>(logging);
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_logging_is_priority_active(void *, korvo_core_log_priority, int *active) {
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
    korvo_core_logging_logv(logging, priority, format, arguments);
    va_end(arguments);
    return KORVO_CORE_STATUS_NO_ERROR;
}

void korvo_core_logging_logv(void *logging, korvo_core_log_priority priority, char const *format,
                             va_list arguments) {
    char text[4096];
    (void)std::vsnprintf(text, sizeof text, format, arguments);
    fake_platform::record({logging, priority, text});
}

unsigned char **korvo_core_alloc_bool_array(unsigned int count) {
    return allocateList<unsigned char>(count, true);
}

unsigned int **korvo_core_alloc_uint_array(unsigned int count) {
    return allocateList<unsigned int>(count, true);
}

int **korvo_core_alloc_int_array(unsigned int count) {
    return allocateList<int>(count, true);
}

double **korvo_core_alloc_double_array(unsigned int count) {
    return allocateList<double>(count, true);
}

char **korvo_core_alloc_string_array(unsigned int count) {
    return allocateList<char>(count, false);
}

void korvo_core_free_bool_array(unsigned char **list) {
    freeList(list);
}

void korvo_core_free_uint_array(unsigned int **list) {
    freeList(list);
}

void korvo_core_free_int_array(int **list) {
    freeList(list);
}

void korvo_core_free_double_array(double **list) {
    freeList(list);
}

void korvo_core_free_string_array(char **list) {
    freeList(list);
}
