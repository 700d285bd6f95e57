// SPDX-License-Identifier: Apache-2.0
#include "tool/control.h"

#include <algorithm>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>
#include <cstdlib>
#include <memory>

#include "tool/client.h"
#include "tool/failure.h"
#include "tool/interruption.h"

namespace tool {
namespace {

namespace json = boost::json;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr char const *service = "action_engine_simulator";
constexpr milliseconds slice{200};

struct Free {
    void operator()(char *text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Free>;

void eventReceived(char **, char **, char **event, void *context) {
    static_cast<Waiter *>(context)->add(*event);
}

}  // namespace

Control::Control(Settings const &settings) : settings_(&settings) {
    (void)korvo_core_logging_init("tool", &logging_);
    auto const status = korvo_core_ipc_initiator_init(logging_, "korvo-action-engine", &messaging_, 1);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        (void)korvo_core_logging_deinit(logging_);
        checkRuntimeFolder();
        throw Failure(Exit::other, "the messaging cannot be opened", "-v shows the log, which says why",
                      static_cast<int>(status));
    }
}

Control::~Control() {
    (void)korvo_core_ipc_deinit(messaging_);
    (void)korvo_core_logging_deinit(logging_);
}

void Control::fail(std::string const &command, korvo_core_status status) {
    if (status == KORVO_CORE_STATUS_DISABLED_TARGET) {
        failWithoutService(*settings_, service);
    }
    throw Failure(Exit::other,
                  "no answer to " + command + " (" + korvo_core_status_to_string(status) +
                      "): the connection was lost, or a message was too long",
                  "try again; -v shows the log", static_cast<int>(status));
}

std::string Control::receive(std::string const &command, std::string const &request) {
    auto const begin = Clock::now();
    for (;;) {
        auto const now = Clock::now();
        auto wait = slice;
        if (settings_->timeout) {
            auto const left = std::chrono::duration_cast<milliseconds>(begin + *settings_->timeout - now);
            wait = std::clamp(left, milliseconds(0), slice);
        }
        char *texts[4] = {};
        auto const status = korvo_core_ipc_initiator_response_receive(
            messaging_, static_cast<int>(wait.count()), &texts[0], &texts[1], &texts[2], &texts[3]);
        Text const owned[] = {Text(texts[0]), Text(texts[1]), Text(texts[2]), Text(texts[3])};
        if (status == KORVO_CORE_STATUS_NO_ERROR) {
            if (request == owned[2].get()) {
                return owned[3].get();
            }
            continue;
        }
        auto const after = Clock::now();
        bool const late = settings_->timeout && after >= begin + *settings_->timeout;
        if (status != KORVO_CORE_STATUS_IPC_FAILED || (!late && after < now + wait)) {
            fail(command, status);
        }
        interruption::check();
        if (late) {
            throw Failure(
                Exit::time_out,
                command + " was not answered within " + std::to_string(settings_->timeout->count()) + " ms",
                "wait longer with --timeout", static_cast<int>(status));
        }
    }
}

json::object Control::ask(std::string const &command, json::object members) {
    std::string const request = std::to_string(++requests_);
    members["command"] = command;
    auto const status = korvo_core_ipc_initiator_command_send(messaging_, service, target(), request.c_str(),
                                                              json::serialize(members).c_str());
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        fail(command, status);
    }
    json::error_code error;
    json::value answer = json::parse(receive(command, request), error);
    if (error || !answer.is_object() || !answer.get_object().contains("status")) {
        throw Failure(Exit::other, "the answer to " + command + " is not what it should be",
                      "see that the service is of this version");
    }
    json::object &told = answer.get_object();
    int const outcome = told.at("status").to_number<int>();
    if (outcome != 0) {
        auto const *const reason = told.if_contains("reason");
        throw Failure(outcome == KORVO_CORE_STATUS_UNSUPPORTED_FUNCTION ? Exit::version : Exit::refused,
                      "the service refused " + command + ": " +
                          (reason != nullptr && reason->is_string() ? std::string(reason->get_string())
                                                                    : "it does not say why"),
                      "docs/simulator-control.md tells what it takes", outcome);
    }
    told.stable_erase("status");
    told.stable_erase("command");
    return std::move(told);
}

void Control::subscribe(Waiter &waiter) {
    auto status = korvo_core_ipc_initiator_event_receive_callback(messaging_, eventReceived, &waiter);
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        status = korvo_core_ipc_initiator_event_subscribe(messaging_, service);
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        fail("the subscription", status);
    }
}

std::unique_ptr<Control> controlIfThere(Settings const &settings) {
    auto control = std::make_unique<Control>(settings);
    try {
        (void)control->ask("Get_clock");
    } catch (Failure const &failure) {
        if (failure.code() != Exit::no_service) {
            throw;
        }
        return nullptr;
    }
    return control;
}

}  // namespace tool
