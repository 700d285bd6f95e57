// SPDX-License-Identifier: Apache-2.0
#include "lua_layer/queue.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace korvo::lua_layer {

using Lock = std::lock_guard<std::mutex>;

// Never destroyed: threads of the messaging may still ring while the process ends.
Bell &bell() {
    static Bell &only = *new Bell;
    return only;
}

namespace {

void ring() noexcept {
    ++bell().count;
    bell().rings.notify_all();
}

}  // namespace

Queue::Queue(std::size_t most_events)
    : most_events_(most_events), descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

Queue::~Queue() {
    if (descriptor_ >= 0) {
        (void)close(descriptor_);
    }
}

/// Lets the descriptor say what holds.
void Queue::show() noexcept {
    bool const is_readable = !events_.empty() || answers_ > 0;
    if (is_readable != is_readable_) {
        is_readable_ = is_readable;
        eventfd_t value = 1;
        (void)(is_readable ? eventfd_write(descriptor_, value) : eventfd_read(descriptor_, &value));
    }
}

void Queue::putEvent(ActionCompleted const &event) noexcept {
    std::unique_ptr<Event> made;
    try {
        made = std::make_unique<Event>(Event{event, 0});
    } catch (std::bad_alloc const &) {
    }
    Lock const lock(bell().mutex);
    if (made != nullptr && events_.size() < most_events_) {
        made->dropped = dropped_before_next_;
        try {
            events_.push_back(std::move(made));
            dropped_before_next_ = 0;
            show();
            ring();
            return;
        } catch (std::bad_alloc const &) {
        }
    }
    ++dropped_;
    ++dropped_before_next_;
}

std::unique_ptr<Event> Queue::takeEvent() noexcept {
    Lock const lock(bell().mutex);
    if (events_.empty()) {
        return nullptr;
    }
    std::unique_ptr<Event> event = std::move(events_.front());
    events_.pop_front();
    show();
    return event;
}

void Queue::closed() noexcept {
    Lock const lock(bell().mutex);
    ring();
}

double Queue::dropped() const noexcept {
    Lock const lock(bell().mutex);
    return dropped_;
}

void Queue::answerCame() noexcept {
    ++answers_;
    show();
    ring();
}

void Queue::answerGone() noexcept {
    --answers_;
    show();
}

void QueuedCall::settle(Result<Values> &&result) noexcept {
    Lock const lock(bell().mutex);
    answer_.emplace(std::move(result));
    if (!is_over_) {
        queue_->answerCame();
    }
}

Result<Values> *QueuedCall::take() noexcept {
    Lock const lock(bell().mutex);
    if (is_over_ || !answer_) {
        return nullptr;
    }
    is_over_ = true;
    queue_->answerGone();
    return &*answer_;
}

bool QueuedCall::isAnswered() const noexcept {
    Lock const lock(bell().mutex);
    return answer_.has_value();
}

void QueuedCall::abandon() noexcept {
    Lock const lock(bell().mutex);
    if (!is_over_ && answer_) {
        queue_->answerGone();
    }
    is_over_ = true;
    ring();
}

}  // namespace korvo::lua_layer
