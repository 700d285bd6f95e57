// SPDX-License-Identifier: Apache-2.0
#include "simulator/service.h"

#include <boost/asio/post.hpp>
#include <memory>
#include <stdexcept>
#include <utility>

#include "korvo_core.h"
#include "operations/protocol.h"

namespace simulator {

namespace {

constexpr char const *process_name = "korvo-action-engine-simulator";

/// So many answers are held back at a time; further ones are left out, so that a flood stays bounded.
constexpr unsigned int most_held_back = 4096;

}  // namespace

Service::Service(boost::asio::io_context &io, void *logging, std::string const &target, Catalogue catalogue,
                 Dispatcher::Settings answers, Clock &clock, runners::Runner &runner, Log const &log)
    : io_(io),
      clock_(clock),
      log_(log),
      deadline_(io),
      engine_(std::move(catalogue), surroundings(runner), log),
      dispatcher_(engine_, answers, log) {
    char const *const target_text = target.empty() ? nullptr : target.c_str();
    korvo_core_status status =
        korvo_core_ipc_target_init(logging, protocol::service, target_text, process_name, &messaging_);
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        status = korvo_core_ipc_target_command_receive_callback(messaging_, onCommand, this);
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            (void)korvo_core_ipc_deinit(messaging_);
        }
    }
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        throw std::runtime_error(std::string("cannot listen as \"") + protocol::service + "\", target \"" +
                                 target + "\": " + korvo_core_status_to_string(status) +
                                 ". The log says more; is there another one with this target already?");
    }
    // The store's timers run from now on.
    wake();
}

Service::~Service() {
    (void)korvo_core_ipc_deinit(messaging_);
}

Engine::Surroundings Service::surroundings(runners::Runner &runner) {
    return {[this] { return clock_.now(); }, [this] { return clock_.local(); },
            [&runner](Job const &job) { return runner.run(job); },
            [this](std::string const &event) {
                korvo_core_status const status = korvo_core_ipc_target_event_send(messaging_, event.c_str());
                if (status != KORVO_CORE_STATUS_NO_ERROR) {
                    log_.warning(std::string("an event was not published: ") +
                                 korvo_core_status_to_string(status));
                }
            },
            [this] { wake(); }};
}

void Service::onCommand(char **source, char **request_id, char **command, void *context) {
    auto &service = *static_cast<Service *>(context);
    try {
        service.takeCommand(*source, *request_id, *command);
    } catch (std::exception const &error) {
        // No exception may enter the core. Out of memory is all that can bring us here.
        service.log_.error(std::string("a command was not answered: ") + error.what());
    }
}

void Service::takeCommand(char const *source, char const *request_id, char const *command) {
    Dispatcher::Answer const answer = dispatcher_.answer(command);
    if (answer.text.empty()) {
        return;
    }
    if (answer.delay.count() == 0) {
        send(source, request_id, answer.text);
    } else {
        sendLater(source, request_id, answer.text, answer.delay);
    }
}

void Service::sendLater(std::string source, std::string request_id, std::string response,
                        std::chrono::milliseconds delay) {
    if (held_back_ >= most_held_back) {
        log_.warning("an answer is left out: " + std::to_string(most_held_back) + " are held back already");
        return;
    }
    ++held_back_;
    auto const when = boost::asio::steady_timer::clock_type::now() + delay;
    boost::asio::post(io_, [this, when, source = std::move(source), request_id = std::move(request_id),
                            response = std::move(response)]() mutable {
        auto const timer = std::make_shared<boost::asio::steady_timer>(io_, when);
        timer->async_wait([this, timer, source = std::move(source), request_id = std::move(request_id),
                           response = std::move(response)](boost::system::error_code const &error) {
            --held_back_;
            if (!error) {
                send(source.c_str(), request_id.c_str(), response);
            }
        });
    });
}

void Service::send(char const *source, char const *request_id, std::string const &response) {
    korvo_core_status const status =
        korvo_core_ipc_target_response_send(messaging_, source, request_id, response.c_str());
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        log_.info(std::string("an answer was not delivered: ") + korvo_core_status_to_string(status));
    }
}

void Service::wake() {
    // One message is enough however much there is to do.
    if (!woken_.exchange(true)) {
        boost::asio::post(io_, [this] {
            woken_ = false;
            work();
        });
    }
}

void Service::work() {
    if (!working_) {
        working_ = true;
        workOn();
    }
}

void Service::workOn() {
    // One action at a time, so that signals and held back answers get their turn in between.
    if (engine_.step()) {
        boost::asio::post(io_, [this] { workOn(); });
    } else {
        working_ = false;
        waitForDeadline();
    }
}

void Service::waitForDeadline() {
    auto const next = engine_.nextDeadline();
    auto const when = next ? clock_.realTimeOf(*next) : std::nullopt;
    if (!when) {
        deadline_.cancel();
        return;
    }
    deadline_.expires_at(*when);
    deadline_.async_wait([this](boost::system::error_code const &error) {
        if (!error) {
            work();
        }
    });
}

}  // namespace simulator
