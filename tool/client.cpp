// SPDX-License-Identifier: Apache-2.0
#include "tool/client.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <boost/json/value_to.hpp>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <memory>
#include <thread>

#include "korvo_api_action_engine.h"
#include "tool/failure.h"
#include "tool/interruption.h"
#include "tool/marshalling.h"

namespace tool {
namespace {

namespace json = boost::json;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// How long a wait lasts before it is looked whether the user has interrupted.
constexpr milliseconds slice{200};
/// How many calls are on their way at once; the platform keeps more answers than that.
constexpr std::size_t window = 128;

bool isIn(json::value const &list, unsigned int identifier) {
    auto const &entries = list.as_array();
    return std::any_of(entries.begin(), entries.end(), [&](json::value const &entry) {
        return entry.to_number<unsigned int>() == identifier;
    });
}

std::string textOf(korvo_core_status status) {
    return std::string(korvo_core_status_to_string(status)) + ", status " + std::to_string(status);
}

std::string runtimeFolder() {
    auto const variable = [](char const *name) {
        char const *const value = std::getenv(name);
        return std::string(value == nullptr ? "" : value);
    };
    std::string const chosen = variable("KORVO_RUNTIME_DIR");
    if (!chosen.empty()) {
        return chosen;
    }
    std::string const session = variable("XDG_RUNTIME_DIR");
    std::error_code ignored;
    if (!session.empty() && session.front() == '/' && std::filesystem::is_directory(session, ignored)) {
        return session + "/korvo";
    }
    std::string const temporary = variable("TMPDIR");
    return (!temporary.empty() && temporary.front() == '/' ? temporary : "/tmp") + "/korvo-" +
           std::to_string(::geteuid());
}

}  // namespace

void checkRuntimeFolder() {
    std::string const folder = runtimeFolder();
    struct stat found = {};
    if (::stat(folder.c_str(), &found) != 0) {
        return;
    }
    std::string const advice = "name another folder in KORVO_RUNTIME_DIR";
    if (found.st_uid != ::geteuid()) {
        throw Failure(Exit::not_permitted,
                      "the runtime folder " + folder + " belongs to user " + std::to_string(found.st_uid) +
                          ", and this is user " + std::to_string(::geteuid()),
                      advice + ", or run this as its user");
    }
    if ((found.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        throw Failure(Exit::not_permitted, "others can write to the runtime folder " + folder,
                      "run \"chmod 700 " + folder + "\", or " + advice);
    }
}

void failWithoutService(Settings const &settings, char const *service) {
    checkRuntimeFolder();
    std::string const target = settings.target.empty() ? "" : " with the target \"" + settings.target + "\"";
    throw Failure(
        Exit::no_service,
        std::string("no service \"") + service + "\"" + target + " is running in " + runtimeFolder(),
        "start it (on a workstation: korvo-action-engine-simulator), or check --target and "
        "KORVO_RUNTIME_DIR",
        KORVO_CORE_STATUS_DISABLED_TARGET);
}

struct Client::Request {
    Operation const *operation;
    char *identifier = nullptr;
    Clock::time_point sent = {};

    explicit Request(Operation const &called) : operation(&called) {}
    ~Request() { korvo_api_action_engine_free_uuid(identifier); }
    Request(Request const &) = delete;
    Request &operator=(Request const &) = delete;
};

Client::Client(Settings const &settings, bool subscribe_events) : settings_(&settings) {
    (void)korvo_core_logging_init("tool", &logging_);
    auto const status = korvo_api_action_engine_initiator_init(
        nullptr, logging_, &handle_, subscribe_events ? 1 : 0, "korvo-action-engine");
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        (void)korvo_core_logging_deinit(logging_);
        checkRuntimeFolder();
        throw Failure(Exit::other, "the messaging cannot be opened in " + runtimeFolder(),
                      "-v shows the log, which says why", static_cast<int>(status));
    }
}

Client::~Client() {
    (void)korvo_api_action_engine_initiator_deinit(handle_);
    (void)korvo_core_logging_deinit(logging_);
}

void Client::send(Request &request, json::object const &inputs) {
    Inputs const converted(*request.operation, inputs);
    auto const status = request.operation->send(handle_, target(), &request.identifier, converted.slots());
    request.sent = Clock::now();
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        fail(*request.operation, inputs, status);
    }
}

korvo_core_status Client::await(std::string const &what, std::string const &late, Clock::time_point sent,
                                std::function<korvo_core_status(milliseconds)> const &receive) const {
    for (;;) {
        auto const begin = Clock::now();
        auto wait = slice;
        if (settings_->timeout) {
            auto const left = std::chrono::duration_cast<milliseconds>(sent + *settings_->timeout - begin);
            wait = std::clamp(left, milliseconds(0), slice);
        }
        auto const status = receive(wait);
        auto const now = Clock::now();
        bool const is_late = settings_->timeout && now >= sent + *settings_->timeout;
        if (status != KORVO_CORE_STATUS_IPC_FAILED || (!is_late && now < begin + wait)) {
            return status;
        }
        interruption::check();
        if (is_late) {
            throw Failure(Exit::time_out,
                          what + " was not answered within " + std::to_string(settings_->timeout->count()) +
                              " ms" + late,
                          "wait longer with --timeout, or see what the service does",
                          static_cast<int>(status));
        }
    }
}

json::object Client::receive(Request &request) {
    std::optional<Results> results;
    auto const status = await(
        request.operation->method, "; the service may still do it", request.sent, [&](milliseconds wait) {
            results.emplace(*request.operation);
            return request.operation->receive(handle_, target(), static_cast<int>(wait.count()),
                                              request.identifier, results->slots());
        });
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        fail(*request.operation, {}, status);
    }
    request.identifier = nullptr;
    return results->members();
}

json::object Client::call(Operation const &operation, json::object const &inputs) {
    Request request(operation);
    send(request, inputs);
    try {
        return receive(request);
    } catch (Failure const &failure) {
        if (failure.status() == KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE) {
            fail(operation, inputs, KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE);
        }
        throw;
    }
}

void Client::callAll(std::vector<Call> const &calls,
                     std::function<void(std::size_t, std::optional<json::object>)> const &done) {
    std::deque<std::unique_ptr<Request>> on_their_way;
    std::size_t next = 0;
    for (std::size_t place = 0; place < calls.size(); ++place) {
        for (; next < calls.size() && on_their_way.size() < window; ++next) {
            on_their_way.push_back(std::make_unique<Request>(*calls[next].operation));
            send(*on_their_way.back(), calls[next].inputs);
        }
        std::optional<json::object> results;
        try {
            results = receive(*on_their_way.front());
        } catch (Failure const &failure) {
            if (failure.code() != Exit::refused) {
                throw;
            }
        }
        on_their_way.pop_front();
        done(place, std::move(results));
    }
}

/// A service that is just ending may still take a connection and close it, so a lost answer is asked for again.
bool Client::isThere() {
    constexpr int tries = 3;
    for (int place = 0; place < tries; ++place) {
        unsigned int major = 0;
        unsigned int minor = 0;
        auto const status =
            korvo_api_action_engine___get_target_version___send(handle_, target(), &major, &minor);
        if (status != KORVO_CORE_STATUS_IPC_FAILED) {
            return status != KORVO_CORE_STATUS_DISABLED_TARGET;
        }
    }
    return true;
}

bool Client::isListed(std::string const &member, unsigned int identifier) {
    return isIn(call(operation(member == "action_id" ? "get_actions" : "get_triggers")).at(member),
                identifier);
}

void Client::fail(Operation const &called, json::object const &inputs, korvo_core_status status) {
    std::string const method = called.method;
    int const number = static_cast<int>(status);
    switch (status) {
        case KORVO_CORE_STATUS_DISABLED_TARGET:
            failWithoutService(*settings_, "action_engine");
        case KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE:
            for (Member const &input : called.inputs) {
                std::string const name = input.name;
                bool const is_identifier = name == "action_id" || name == "trigger_id";
                if (!is_identifier || !inputs.contains(name)) {
                    continue;
                }
                auto const identifier = inputs.at(name).to_number<unsigned int>();
                if (!isListed(name, identifier)) {
                    throw Failure(Exit::no_such_identifier,
                                  std::string("there is no ") +
                                      (name == "action_id" ? "action " : "trigger ") +
                                      std::to_string(identifier),
                                  "\"korvo-action-engine list\" shows which there are", number);
                }
            }
            throw Failure(Exit::refused, "the service refused " + method + " (" + textOf(status) + ")",
                          "see that the identifiers are of the right kind and the settings make sense; the "
                          "service's log says more",
                          number);
        case KORVO_CORE_STATUS_INVALID_PARAMS:
            throw Failure(Exit::refused,
                          "an input of " + method + " is not accepted (" + textOf(status) + ")",
                          "see that all texts are UTF-8; the service's log says more", number);
        case KORVO_CORE_STATUS_UNSUPPORTED_FUNCTION:
            throw Failure(Exit::version, "the service does not know " + method + " (" + textOf(status) + ")",
                          "use a service of this interface version", number);
        case KORVO_CORE_STATUS_IPC_FAILED:
            if (!isThere()) {
                failWithoutService(*settings_, "action_engine");
            }
            throw Failure(Exit::other,
                          "no answer to " + method +
                              " that could be read: the connection was lost, or a message was broken or too "
                              "long",
                          "try again; -v shows the log", number);
        default:
            throw Failure(Exit::other, method + " failed: " + textOf(status), "-v shows the log", number);
    }
}

std::pair<unsigned int, unsigned int> Client::serviceVersion() {
    using Identifier = std::unique_ptr<char, decltype(&korvo_api_action_engine_free_uuid)>;
    std::vector<Identifier> asked;
    auto const ask = [&] {
        char *identifier = nullptr;
        auto const status =
            korvo_api_action_engine___get_target_version___non_blocking_send(handle_, target(), &identifier);
        asked.emplace_back(identifier, korvo_api_action_engine_free_uuid);
        return status;
    };
    unsigned int major = 0;
    unsigned int minor = 0;
    auto const sent = Clock::now();
    auto again = slice;
    // No form of the query waits for so long as is wanted, so it is looked for an answer again and again.
    auto const look = [&](milliseconds wait) {
        auto const end = Clock::now() + wait;
        for (auto nap = milliseconds(1);; nap = std::min(2 * nap, milliseconds(20))) {
            for (auto &identifier : asked) {
                auto const status = korvo_api_action_engine___get_target_version___receive(
                    handle_, 0, target(), identifier.get(), &major, &minor);
                if (status == KORVO_CORE_STATUS_NO_ERROR) {
                    (void)identifier.release();
                }
                if (status != KORVO_CORE_STATUS_IPC_FAILED) {
                    return status;
                }
            }
            auto const now = Clock::now();
            if (now >= end) {
                break;
            }
            std::this_thread::sleep_for(std::min(nap, std::chrono::ceil<milliseconds>(end - now)));
        }
        // This does not tell an answer that is late from one that is lost, which another query gets.
        if (Clock::now() >= sent + again) {
            again *= 2;
            auto const status = ask();
            return status == KORVO_CORE_STATUS_NO_ERROR ? KORVO_CORE_STATUS_IPC_FAILED : status;
        }
        return KORVO_CORE_STATUS_IPC_FAILED;
    };
    auto status = ask();
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        status = await("the query of the version", "", sent, look);
    }
    if (status == KORVO_CORE_STATUS_DISABLED_TARGET) {
        failWithoutService(*settings_, "action_engine");
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        throw Failure(Exit::other, "the service does not tell its version: " + textOf(status),
                      "-v shows the log", static_cast<int>(status));
    }
    return {major, minor};
}

void Client::requireVersion() {
    if (!settings_->required_version) {
        return;
    }
    auto const in_words = [](std::pair<unsigned int, unsigned int> version) {
        return std::to_string(version.first) + "." + std::to_string(version.second);
    };
    auto const version = serviceVersion();
    if (version != *settings_->required_version) {
        throw Failure(Exit::version,
                      "the service speaks version " + in_words(version) + ", and --require-version wants " +
                          in_words(*settings_->required_version),
                      "use another service, or leave --require-version out");
    }
}

}  // namespace tool
