// SPDX-License-Identifier: Apache-2.0
#include "messaging/reader_role.h"

#include <sys/epoll.h>

#include <algorithm>

namespace platform {

Initiator::ReaderRole::ReaderRole(Hold &hold, Initiator &initiator, Connection &connection,
                                  bool by_messaging_thread)
    : hold_(hold), initiator_(initiator), connection_(connection), by_messaging_thread_(by_messaging_thread) {
    connection_.has_reader = true;
    setInterest(0);
}

Initiator::ReaderRole::~ReaderRole() {
    if (!hold_.owns_lock()) {
        hold_.lock();
    }
    connection_.has_reader = false;
    setInterest(EPOLLIN);
    for (Waiter *const waiter : connection_.waiters) {
        if (waiter->state == Waiter::State::waiting) {
            waiter->condition.notify_one();
            break;
        }
    }
    if (initiator_.receivers_have_reader_) {
        initiator_.wakeReceivers();
    }
}

void Initiator::ReaderRole::setInterest(unsigned int events) {
    if (by_messaging_thread_ || !connection_.is_polled) {
        return;
    }
    epoll_event event = {};
    event.events = events;
    event.data.u64 = connection_.serial;
    (void)epoll_ctl(initiator_.epoll_.get(), EPOLL_CTL_MOD, connection_.socket.get(), &event);
}

Initiator::RegisteredWaiter::RegisteredWaiter(Hold &hold, Request &request, Connection &connection)
    : hold_(hold), request_(request), connection_(connection) {
    connection_.waiters.push_back(&waiter);
    request_.waiter = &waiter;
}

Initiator::RegisteredWaiter::~RegisteredWaiter() {
    if (!hold_.owns_lock()) {
        hold_.lock();
    }
    auto const place = std::find(connection_.waiters.begin(), connection_.waiters.end(), &waiter);
    if (place != connection_.waiters.end()) {
        connection_.waiters.erase(place);
    }
    // Answered and lost requests are gone from the table; one that is still waited for is there.
    if (waiter.state == Waiter::State::waiting) {
        request_.waiter = nullptr;
    }
}

}  // namespace platform
