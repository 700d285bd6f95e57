// SPDX-License-Identifier: Apache-2.0
#include "messaging/reader_role.h"

#include <algorithm>
#include <type_traits>

namespace platform {

namespace {

template <typename Waiters>
void wakeFirst(Waiters const &waiters) {
    for (auto *const waiter : waiters) {
        if (waiter->state == std::remove_pointer_t<decltype(waiter)>::State::waiting) {
            waiter->condition.notify_one();
            break;
        }
    }
}

}  // namespace

Initiator::ReaderRole::ReaderRole(Hold &hold, Initiator &initiator, Connection &connection,
                                  bool by_messaging_thread)
    : hold_(hold), initiator_(initiator), connection_(connection) {
    connection_.has_reader = true;
    if (!by_messaging_thread) {
        initiator_.updateInterest(hold_, connection_);
    }
}

Initiator::ReaderRole::~ReaderRole() {
    hold_.ensureLocked();
    connection_.has_reader = false;
    initiator_.updateInterest(hold_, connection_);
    wakeFirst(connection_.waiters);
    if (initiator_.receivers_have_reader_) {
        initiator_.wakeReceivers();
    }
}

Initiator::RegisteredWaiter::RegisteredWaiter(Hold &hold, Request &request, Connection &connection)
    : hold_(hold), request_(request), connection_(connection) {
    connection_.waiters.push_back(&waiter);
    request_.waiter = &waiter;
}

Initiator::RegisteredWaiter::~RegisteredWaiter() {
    hold_.ensureLocked();
    auto const place = std::find(connection_.waiters.begin(), connection_.waiters.end(), &waiter);
    if (place != connection_.waiters.end()) {
        connection_.waiters.erase(place);
    }
    // Whose time is up, while it reads or as it is told to, was the first itself: another one reads now.
    if (!connection_.has_reader) {
        wakeFirst(connection_.waiters);
    }
    // Answered and lost requests are gone from the table; one that is still waited for is there.
    if (waiter.state == Waiter::State::waiting) {
        request_.waiter = nullptr;
    }
}

}  // namespace platform
