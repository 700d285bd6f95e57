// SPDX-License-Identifier: Apache-2.0
// Any text as a response to any operation, or as an event, must end in a status. What the reader of
// asynchronous calls accepts, the one of synchronous calls, which also converts, must accept too, with the same results.
//
// The first byte says which operation, or the event. Below 128 the text goes on behind its usual beginning.
#include <cstdarg>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <optional>
#include <string>

#include "fuzz_input.h"
#include "korvo_api_action_engine.h"
#include "korvo_core_private.h"
#include "typed_calls/operation.h"

namespace {

using namespace typed_calls;

/// What the functions below, which stand before libkorvo-core's, are to do.
struct Messaging {
    std::string text;
    bool is_continued = false;
    std::string request_id;
    void (*response)(char **, char **, char **, char **, void *) = nullptr;
    void (*event)(char **, char **, char **, void *) = nullptr;
    void *response_context = nullptr;
    void *event_context = nullptr;
    std::string whole;
} messaging;

/// The method that a command names, which is its first member.
std::string methodOf(std::string const &command) {
    std::size_t const begin = std::strlen("{\"command\":\"");
    return command.substr(begin, command.find('"', begin) - begin);
}

class Results : public Receiver {
  public:
    void called(char const *, korvo_core_status status, Values results, int) override {
        if (answer) {
            std::abort();
        }
        answer = Answer{status, std::move(results)};
    }
    std::optional<Answer> answer;
};

Values inputsOf(Operation const &operation) {
    Values inputs;
    for (Kind const kind : operation.inputs()) {
        switch (kind) {
            case Kind::number:
                inputs.emplace_back(Number{1});
                break;
            case Kind::flag:
                inputs.emplace_back(Flag{1});
                break;
            case Kind::text:
                inputs.emplace_back(Text("text"));
                break;
            case Kind::texts:
                inputs.emplace_back(Texts{"text"});
                break;
            case Kind::numbers:
                inputs.emplace_back(Numbers{1});
                break;
        }
    }
    return inputs;
}

void deliver(void (*callback)(char **, char **, char **, char **, void *), void *context) {
    char *texts[] = {strdup("action_engine"), strdup(""), strdup(messaging.request_id.c_str()),
                     strdup(messaging.whole.c_str())};
    callback(&texts[0], &texts[1], &texts[2], &texts[3], context);
    for (char *const text : texts) {
        std::free(text);
    }
}

void tryResponse(void *handle, Operation const &operation) {
    Values const inputs = inputsOf(operation);
    Answer const at_once = operation.send(handle, nullptr, inputs);
    Results later;
    if (operation.sendAsync(handle, nullptr, inputs, later) != KORVO_CORE_STATUS_NO_ERROR) {
        std::abort();
    }
    deliver(messaging.response, messaging.response_context);
    if (later.answer && later.answer->status == KORVO_CORE_STATUS_NO_ERROR &&
        (at_once.status != KORVO_CORE_STATUS_NO_ERROR || at_once.results != later.answer->results)) {
        std::abort();
    }
}

void takeEvent(unsigned int, char const *action_name, unsigned char, char const *, void *events) {
    if (action_name == nullptr || ++*static_cast<unsigned int *>(events) > 1) {
        std::abort();
    }
}

void tryEvent(void *handle) {
    unsigned int events = 0;
    korvo_api_action_engine_action_completed_register_event_handler(handle, takeEvent, &events);
    messaging.whole = (messaging.is_continued ? "{\"event\":\"Action_completed\"," : "") + messaging.text;
    char *texts[] = {strdup("action_engine"), strdup(""), strdup(messaging.whole.c_str())};
    messaging.event(&texts[0], &texts[1], &texts[2], messaging.event_context);
    for (char *const text : texts) {
        std::free(text);
    }
}

}  // namespace

korvo_core_status korvo_core_logging_log(void *, korvo_core_log_priority, char const *, ...) {
    return KORVO_CORE_STATUS_NO_ERROR;
}

void korvo_core_logging_logv(void *, korvo_core_log_priority, char const *, va_list) {}

korvo_core_status korvo_core_ipc_initiator_init(void *, char const *, void **handle, int) {
    *handle = &messaging;
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_ipc_deinit(void *) {
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_ipc_initiator_event_subscribe(void *, char const *) {
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_ipc_initiator_event_unsubscribe(void *, char const *) {
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_ipc_initiator_response_receive_callback(
    void *, void (*callback)(char **, char **, char **, char **, void *), void *context) {
    messaging.response = callback;
    messaging.response_context = context;
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_ipc_initiator_event_receive_callback(
    void *, void (*callback)(char **, char **, char **, void *), void *context) {
    messaging.event = callback;
    messaging.event_context = context;
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_private_command_send(void *, char const *, char const *, char const *request_id,
                                                  char const *command, std::size_t length, void const *,
                                                  char const *) {
    messaging.request_id = request_id;
    messaging.whole = messaging.text;
    if (messaging.is_continued) {
        messaging.whole =
            "{\"command\":\"" + methodOf(std::string(command, length)) + "\",\"status\":0," + messaging.text;
    }
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_private_response_receive(void *, int, char const *, char **response,
                                                      std::size_t *length) {
    // As the asynchronous way has it, where a text ends with its first zero.
    *response = strdup(messaging.whole.c_str());
    *length = std::strlen(*response);
    return KORVO_CORE_STATUS_NO_ERROR;
}

// Texts and lists that were read before a later member could not be stay, as docs/oddities.md tells; the contract tests list
// them one by one. Any other leak is found.
extern "C" char const *__lsan_default_suppressions();  // NOLINT: the sanitizer's name
extern "C" __attribute__((visibility("default"))) char const *__lsan_default_suppressions() {  // NOLINT
    return "leak:copyText\nleak:convertJsonArrayToList\n";
}

int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    messaging.is_continued = data[0] < 128;
    messaging.text.assign(reinterpret_cast<char const *>(data) + 1, size - 1);
    void *handle = nullptr;
    if (korvo_api_action_engine_initiator_init(nullptr, nullptr, &handle, 1, "fuzz") !=
        KORVO_CORE_STATUS_NO_ERROR) {
        std::abort();
    }
    std::size_t const which = data[0] % (operations().size() + 2);
    if (which == operations().size()) {
        tryEvent(handle);
    } else if (which == operations().size() + 1) {
        tryResponse(handle, versionQuery());
    } else {
        tryResponse(handle, *std::next(operations().begin(), static_cast<std::ptrdiff_t>(which))->second);
    }
    korvo_api_action_engine_initiator_deinit(handle);
    return 0;
}
