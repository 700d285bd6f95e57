// SPDX-License-Identifier: Apache-2.0
// The part of the base class that turns JSON values into messages and messages into JSON values.
#include <pthread.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "error_words.h"
#include "frame/interfaces.h"
#include "json/numbers.h"
#include "json_reader.h"
#include "json_writer.h"
#include "korvo_core_private.h"

namespace {

struct Free {
    void operator()(char *text) const { std::free(text); }
};

constexpr std::size_t large_buffer = 64 * 1024;

/// What a thread keeps from one command to the next. A variable of the thread's own would not do: where memory is short the
/// C library ends the process when it has to note the variable's destructor.
struct Kept {
    /// The text of the last command; its memory serves the next one.
    std::string command;
    /// The method of the last asynchronous command, and what its callback gets when no response can come any more.
    std::string method;
    std::string substitute;
};

/// Throws std::bad_alloc.
Kept &keptByThread() {
    static pthread_key_t const key = [] {
        pthread_key_t made = 0;
        if (pthread_key_create(&made, [](void *kept) { delete static_cast<Kept *>(kept); }) != 0) {
            throw std::bad_alloc();
        }
        return made;
    }();
    auto *kept = static_cast<Kept *>(pthread_getspecific(key));
    if (kept == nullptr) {
        auto made = std::make_unique<Kept>();
        if (pthread_setspecific(key, made.get()) != 0) {
            throw std::bad_alloc();
        }
        kept = made.release();
    }
    return *kept;
}

std::string &commandBuffer() {
    std::string &buffer = keptByThread().command;
    buffer.clear();
    if (buffer.capacity() > large_buffer) {
        buffer = std::string();
    }
    return buffer;
}

/// Valid until the thread's next call.
char const *substituteFor(std::string const &method) {
    Kept &kept = keptByThread();
    if (kept.substitute.empty() || method != kept.method) {
        json::Object response;
        response["command"] = json::String(method);
        response["status"] = json::Number(static_cast<double>(KORVO_CORE_STATUS_IPC_FAILED));
        // Empty until it is whole.
        kept.substitute.clear();
        kept.method = method;
        std::string text;
        // What was just written into the command can be written here.
        (void)json_text::write(response, text);
        kept.substitute = std::move(text);
    }
    return kept.substitute.c_str();
}

char const *printable(char const *text) {
    return text != nullptr ? text : "(none)";
}

/// The value of a member of type T, or NULL.
template <typename T>
T const *findValue(json::Object const &object, char const *name) {
    auto const member = object.Find(name);
    if (member == object.end()) {
        return nullptr;
    }
    json::detail::ConstFinder<T> finder;
    member->element.Accept(finder);
    return finder.found;
}

bool areTexts(std::initializer_list<char **> texts) {
    for (char **const text : texts) {
        if (text == nullptr || *text == nullptr) {
            return false;
        }
    }
    return true;
}

/// Runs the handling of one incoming message. No exception leaves it, since the thread that delivers messages
/// has nobody to hand it to.
template <typename Handling>
void contain(void *logging, char const *kind, Handling handling) {
    try {
        handling();
    } catch (std::exception const &error) {
        korvo_core_logging_log(logging, KORVO_CORE_LOG_PRIORITY_ERR, "handling %s failed: %s", kind,
                               platform::wordsOf(error));
    } catch (...) {
        korvo_core_logging_log(logging, KORVO_CORE_LOG_PRIORITY_ERR, "handling %s failed", kind);
    }
}

}  // namespace

korvo_core_status korvoInitiatorInterfaces::basicSendCommand(char const *service, char const *target,
                                                             char const *request_id,
                                                             json::Object const &command) try {
    std::string &text = commandBuffer();
    std::string const problem = json_text::write(command, text);
    if (!problem.empty()) {
        korvo_core_logging_log(
            logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR,
            "a command for service %s was not sent, since it cannot be written as JSON: %s",
            printable(service), problem.c_str());
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    auto const *const method = findValue<json::String>(command, "command");
    bool const is_asynchronous = method != nullptr && isAsynchronous(method->value().c_str(), request_id);
    return korvo_core_private_command_send(messaging_handle_, service, target, request_id, text.data(),
                                           text.size(), this,
                                           is_asynchronous ? substituteFor(method->value()) : nullptr);
} catch (std::bad_alloc const &) {
    // As in libkorvo-core, and no exception, which the client library would take for one of its own.
    return KORVO_CORE_STATUS_ALLOC_FAILED;
}

korvo_core_status korvoInitiatorInterfaces::basicReceiveResponse(int timeout, char const *service,
                                                                 char const *, char const *request_id,
                                                                 char const *method,
                                                                 json::Object &response) try {
    char *block = nullptr;
    std::size_t length = 0;
    korvo_core_status const received =
        korvo_core_private_response_receive(messaging_handle_, timeout, request_id, &block, &length);
    if (received != KORVO_CORE_STATUS_NO_ERROR) {
        return received;
    }
    std::unique_ptr<char, Free> const text(block);

    json::Object read;
    std::string const problem = json_text::read({text.get(), length}, read);
    if (!problem.empty()) {
        korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR,
                               "the response of service %s to %s is no usable JSON: %s", printable(service),
                               printable(method), problem.c_str());
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    auto const *const answered = findValue<json::String>(read, "command");
    if (answered != nullptr && method != nullptr && answered->value() != method) {
        korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR,
                               "service %s answered %s with a response to %s", printable(service), method,
                               answered->value().c_str());
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    auto const *const status = findValue<json::Number>(read, "status");
    if (status == nullptr) {
        korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR,
                               "the response of service %s to %s has no status", printable(service),
                               printable(method));
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    auto const outcome = static_cast<korvo_core_status>(json::ToUnsigned(status->value()));
    if (outcome == KORVO_CORE_STATUS_NO_ERROR) {
        response = std::move(read);
    }
    return outcome;
} catch (std::bad_alloc const &) {
    return KORVO_CORE_STATUS_ALLOC_FAILED;
}

void korvoInitiatorInterfaces::initiatorResponseCallback(char **service, char **target, char **request_id,
                                                         char **response) {
    contain(logging_handle_, "a response", [&] {
        if (!areTexts({service, target, request_id, response})) {
            korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR,
                                   "a response without texts came in");
            return;
        }
        json::Object read;
        std::string const problem = json_text::read(*response, read);
        if (!problem.empty()) {
            korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR,
                                   "a response of service %s is no usable JSON: %s", *service,
                                   problem.c_str());
            return;
        }
        auto const *const method = findValue<json::String>(read, "command");
        if (method == nullptr) {
            korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR,
                                   "a response of service %s does not say to what command", *service);
            return;
        }
        // A copy, since the one who is called may change the response.
        std::string const name = method->value();
        subclassResponseDispatch(name.c_str(), *target, *request_id, read);
    });
}

void korvoInitiatorInterfaces::initiatorCallback(char **service, char **source, char **event) {
    contain(logging_handle_, "an event", [&] {
        if (!areTexts({service, source, event})) {
            korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR,
                                   "an event without texts came in");
            return;
        }
        json::Object read;
        std::string const problem = json_text::read(*event, read);
        if (!problem.empty()) {
            korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR,
                                   "an event of service %s is no usable JSON: %s", *service, problem.c_str());
            return;
        }
        auto const *const event_name = findValue<json::String>(read, "event");
        if (event_name == nullptr) {
            korvo_core_logging_log(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR,
                                   "an event of service %s does not say which one it is", *service);
            return;
        }
        std::string const name = event_name->value();
        subclassEventDispatch(*source, name.c_str(), read);
    });
}
