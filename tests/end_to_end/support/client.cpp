// SPDX-License-Identifier: Apache-2.0
#include "support/client.h"

#include <gtest/gtest.h>

#include "support/workspace.h"

namespace end_to_end {

/// The handle is made in this program's folder, where its service is.
static char const *atHome() {
    Workspace::ofThisProgram();
    return "end_to_end";
}

Client::Client(Events events, void *shared_messaging)
    : client_(atHome(), events == Events::subscribed, shared_messaging) {}

void Client::close() {
    milliseconds const taken = timeOf([&] { (void)client_.close(); });
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
