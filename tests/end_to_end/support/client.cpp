// SPDX-License-Identifier: Apache-2.0
#include "support/client.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/workspace.h"

namespace end_to_end {

Client::Client(Events events, void *shared_messaging) {
    Workspace::ofThisProgram();
    if (korvo_core_logging_init("end_to_end", &logging_) != KORVO_CORE_STATUS_NO_ERROR) {
        throw std::runtime_error("no logging");
    }
    korvo_core_status const status = korvo_api_action_engine_initiator_init(
        shared_messaging, logging_, &handle_, events == Events::subscribed ? 1 : 0, "end_to_end");
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        (void)korvo_core_logging_deinit(logging_);
        throw std::runtime_error("no client handle: " + std::string(korvo_core_status_to_string(status)));
    }
}

Client::~Client() {
    if (handle_ != nullptr) {
        (void)korvo_api_action_engine_initiator_deinit(handle_);
    }
    (void)korvo_core_logging_deinit(logging_);
}

void Client::close() {
    milliseconds const taken = timeOf([&] { (void)korvo_api_action_engine_initiator_deinit(handle_); });
    handle_ = nullptr;
    EXPECT_LT(taken.count(), closing.count()) << "milliseconds to close a client handle";
}

void EventRecorder::registerOn(Client const &client) {
    korvo_api_action_engine_action_completed_register_event_handler(client.handle(), handle, this);
}

void EventRecorder::unregisterFrom(Client const &client) {
    korvo_api_action_engine_action_completed_unregister_event_handler_with_context(client.handle(), handle,
                                                                                   this);
}

void EventRecorder::handle(unsigned int action_id, char const *action_name, unsigned char success,
                           char const *source, void *context) {
    auto *const self = static_cast<EventRecorder *>(context);
    ActionCompleted const event{action_id, action_name, success, source};
    if (self->also) {
        self->also(event);
    }
    std::lock_guard<std::mutex> const lock(self->mutex_);
    self->events_.push_back(event);
    self->changed_.notify_all();
}

std::vector<ActionCompleted> EventRecorder::events() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return events_;
}

std::size_t EventRecorder::count() const {
    std::lock_guard<std::mutex> const lock(mutex_);
    return events_.size();
}

bool EventRecorder::waitForCount(std::size_t wanted, milliseconds limit) const {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return events_.size() >= wanted; });
}

void Latch::open() {
    std::lock_guard<std::mutex> const lock(mutex_);
    open_ = true;
    changed_.notify_all();
}

bool Latch::wait(milliseconds limit) const {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return open_; });
}

}  // namespace end_to_end
