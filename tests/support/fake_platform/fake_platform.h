// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_FAKE_PLATFORM_H
#define KORVO_TESTS_FAKE_PLATFORM_H

// A stand-in for libkorvo-core and libkorvo-interfaces, so that the unchanged client library is tested
// without a service. It has two modes, and a third one for callers of the core's C functions (core_calls.h):
//
//   loop-back  (as loaded) commands go from initiator handles to target handles of the same process, and
//              responses and events back, the way any platform does it. Each handle with an entry point has a
//              thread of its own that calls it.
//   scripted   (after script()) every call is recorded and answered as the test says; nothing is carried
//              anywhere. Sending succeeds, receiving gives the next of the responses that the test lined up,
//              and status 4 (as after a time-out) when there is none. Responses and events arrive when the
//              test delivers them, on the thread on which it does.
//
// All functions here may be called from any thread.

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "json/json.h"
#include "korvo_core.h"

#define FAKE_PLATFORM_EXPORT __attribute__((visibility("default")))

namespace fake_platform {

/// The platform's functions that the client library uses.
enum class Function {
    initiator_init,
    deinit,
    response_receive_callback,
    event_subscribe,
    event_receive_callback,
    send_command,
    receive_response,
    convert_json_to_value,
    log,
};

/// A text argument; empty for NULL.
using Text = std::optional<std::string>;

/// One call of the client library's. What a function does not take is left as it is here.
struct Call {
    Function function;
    void *logging = nullptr;
    void *messaging = nullptr;
    void *object =
        nullptr;  // of a callback registration: the context; of sending and receiving: the client object
    Text service;
    Text target;
    Text request_id;
    void const *request_id_address = nullptr;
    Text method;
    Text name;
    int number = 0;             // the time-out, or the flag of initiator_init
    json::Object json;          // the command; or the response object as it was handed in
    bool asynchronous = false;  // what the client object said of a command; false when it was not asked
};

struct LogLine {
    void *logging;
    unsigned int priority;
    std::string text;
};

inline bool operator==(LogLine const &left, LogLine const &right) {
    return left.logging == right.logging && left.priority == right.priority && left.text == right.text;
}

/// What a call does instead of succeeding.
enum class Throw { nothing, standard_exception, json_exception, number };

struct Outcome {
    Outcome(korvo_core_status returned) : status(returned) {}
    Outcome(Throw what) : thrown(what) {}

    korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
    Throw thrown = Throw::nothing;
};

/// Forgets all recordings, outcomes and responses, and starts the scripted mode.
FAKE_PLATFORM_EXPORT void script();

/// Forgets all recordings, outcomes and responses, and returns to the loop-back mode. No block of memory is
/// kept but those of open handles.
FAKE_PLATFORM_EXPORT void reset();

/// The libkorvo-interfaces to play. As loaded it asks each object whether a command is asynchronous; a camera's own
/// may not know of that question, and never asks. script() and reset() go back to asking.
FAKE_PLATFORM_EXPORT void neverAsk();

/// Makes the nth call of a function from now on (1 is the next one; 0 stands for every call) end like this.
/// Recorded all the same. Scripted mode only.
FAKE_PLATFORM_EXPORT void arrange(Function function, Outcome outcome, unsigned int nth = 0);

/// Lines up the response that a receive gets.
FAKE_PLATFORM_EXPORT void respond(json::Object const &response);

/// The calls so far in order, all of them or those of one function. Lines logged are not among them.
FAKE_PLATFORM_EXPORT std::vector<Call> calls();
FAKE_PLATFORM_EXPORT std::vector<Call> calls(Function function);

FAKE_PLATFORM_EXPORT std::vector<LogLine> logLines();

/// Delivers a response, as any thread of a messaging layer would: through the entry point that was registered
/// last, or that was registered with this context. The member "command" names the method. Throws
/// std::logic_error when there is no such registration.
FAKE_PLATFORM_EXPORT void deliverResponse(Text const &target, std::string const &request_id,
                                          json::Object const &response, void *context = nullptr);

/// The same for an event; the member "event" names it.
FAKE_PLATFORM_EXPORT void deliverEvent(Text const &source, json::Object const &event,
                                       void *context = nullptr);

/// Is a response (an event) delivered anywhere?
FAKE_PLATFORM_EXPORT bool hasResponseEntry();
FAKE_PLATFORM_EXPORT bool hasEventEntry();

/// Runs once, at the beginning of the next closing of a messaging handle.
FAKE_PLATFORM_EXPORT void onClosing(std::function<void()> const &action);

/// Messaging handles that were opened and not closed.
FAKE_PLATFORM_EXPORT std::size_t openMessagingHandles();

}  // namespace fake_platform

#endif
