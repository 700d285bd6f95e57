// SPDX-License-Identifier: Apache-2.0
// Initiator: reading messages, and finding out whom they are for.
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <list>

#include "base/wake.h"
#include "messaging/initiator.h"
#include "messaging/reader_role.h"

namespace platform {

namespace {

/// A poll takes what is there, and does not keep step with a peer that goes on sending.
constexpr int reads_of_a_poll = 64;

}  // namespace
korvo_core_status Initiator::receive(std::string_view request_id, int timeout, Text &response) {
    Deadline const deadline(timeout);
    Hold hold(mutex_, log_);
    if (is_closing_) {
        return fail(hold, Phase::wait, nullptr, "the handle was closed");
    }
    Request *const request = requests_.find(request_id);
    ConnectionPointer const connection = request != nullptr ? findConnection(request->connection) : nullptr;
    if (request != nullptr && request->shelf == Request::Shelf::kept) {
        response = std::move(request->response);
        requests_.erase(*request);
        return KORVO_CORE_STATUS_NO_ERROR;
    }
    if (request == nullptr || connection == nullptr) {
        return fail(
            hold, Phase::wait, nullptr,
            "no response can come to a request that was never sent, has been answered, was given up, or was "
            "lost with its connection");
    }
    if (request->waiter != nullptr) {
        hold.warn("two threads receive the response to one request; the second was turned away");
        return KORVO_CORE_STATUS_MULTI_THREAD_ACCESS;
    }
    std::shared_ptr<Address const> const address = request->address;

    RegisteredWaiter registered(hold, *request, *connection);
    Waiter &waiter = registered.waiter;
    bool is_over = false;
    // The full time-out is mostly what the socket has from the last call, and then costs no system call. Who has waited
    // for another thread's reading has only the rest of it.
    int wait = timeout;
    while (waiter.state == Waiter::State::waiting && !is_over) {
        if (connection->has_reader) {
            is_over = deadline.hasPassed();
            if (!is_over) {
                deadline.wait(waiter.condition, hold.mutex());
                wait = deadline.remaining();
                is_over = wait == 0;
            }
            continue;
        }
        ReaderRole const role(hold, *this, *connection);
        int reads = 0;
        while (waiter.state == Waiter::State::waiting && !is_over) {
            ReadResult result = ReadResult::nothing;
            if (connection->is_blocked || !(deadline.isPoll() || setReceiveTimeout(*connection, wait))) {
                result = writeAndRead(hold, *connection, wait);
            } else {
                hold.unlock(mutex_);
                result = read(hold, *connection, deadline.isPoll() ? MSG_DONTWAIT : 0);
            }
            if (waiter.state == Waiter::State::waiting) {
                // After every read: a peer that goes on sending other things must not make this call longer.
                wait = deadline.remaining();
                is_over = wait == 0 &&
                          (!deadline.isPoll() || result != ReadResult::some || ++reads == reads_of_a_poll);
            }
        }
    }
    if (waiter.state == Waiter::State::answered) {
        response = std::move(waiter.response);
        return KORVO_CORE_STATUS_NO_ERROR;
    }
    if (waiter.state == Waiter::State::out_of_memory) {
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    }
    if (waiter.state == Waiter::State::lost) {
        return fail(hold, Phase::read, address.get(),
                    is_closing_ ? "the handle was closed" : "the connection was lost");
    }
    if (deadline.isPoll()) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    return fail(hold, Phase::wait, address.get(), "no response within " + std::to_string(timeout) + " ms");
}

Initiator::ReadResult Initiator::writeAndRead(Hold &hold, Connection &connection, int timeout) {
    pollfd ready = {connection.socket.get(), POLLIN, 0};
    if (connection.is_blocked) {
        ready.events |= POLLOUT;
    }
    hold.unlock(mutex_);
    (void)poll(&ready, 1, timeout);
    hold.lock(mutex_);
    if ((ready.revents & POLLOUT) != 0 && connection.is_blocked) {
        writeBlocked(hold, connection);
    }
    if ((ready.revents & ~POLLOUT) == 0) {
        return ReadResult::nothing;
    }
    hold.unlock(mutex_);
    return read(hold, connection, MSG_DONTWAIT);
}

korvo_core_status Initiator::receiveAny(int timeout, Response &response) {
    Deadline const deadline(timeout);
    Hold hold(mutex_, log_);
    // A loss that nobody has been told of yet counts as well.
    unsigned int const losses = told_losses_;
    bool has_looked = false;
    for (;;) {
        if (Request *const request = requests_.firstForAnyone()) {
            response.service = Text(request->address->service);
            response.target = Text(request->address->target);
            response.request_id = Text(request->id);
            response.response = std::move(request->response);
            requests_.erase(*request);
            return KORVO_CORE_STATUS_NO_ERROR;
        }
        if (is_closing_) {
            return fail(hold, Phase::wait, nullptr, "the handle was closed");
        }
        if (losses != receiver_losses_) {
            told_losses_ = receiver_losses_;
            return fail(hold, Phase::read, nullptr, "a connection was lost");
        }
        if (has_looked && deadline.hasPassed()) {
            return deadline.isPoll() ? KORVO_CORE_STATUS_IPC_FAILED
                                     : fail(hold, Phase::wait, nullptr,
                                            "no response within " + std::to_string(timeout) + " ms");
        }
        if (receivers_have_reader_) {
            has_looked = true;
            if (!deadline.hasPassed()) {
                deadline.wait(receivers_, hold.mutex());
            }
            continue;
        }

        readForReceivers(hold, deadline);
        has_looked = true;
    }
}

void Initiator::readForReceivers(Hold &hold, Deadline const &deadline) {
    if (!receivers_wake_) {
        receivers_wake_ = makeWake();
    }
    std::vector<ConnectionPointer> const connections = connections_;
    std::vector<pollfd> ready(1 + connections.size());
    ready[0] = {receivers_wake_.get(), POLLIN, 0};
    std::list<ReaderRole> roles;
    receivers_have_reader_ = true;
    try {
        for (std::size_t index = 0; index < connections.size(); ++index) {
            // Ignored by poll() where another thread reads.
            ready[index + 1] = {-1, POLLIN, 0};
            if (!connections[index]->has_reader) {
                roles.emplace_back(hold, *this, *connections[index]);
                ready[index + 1].fd = connections[index]->socket.get();
                if (connections[index]->is_blocked) {
                    ready[index + 1].events |= POLLOUT;
                }
            }
        }
        hold.unlock(mutex_);
        (void)poll(ready.data(), ready.size(), deadline.remaining());
        drainWake(receivers_wake_);
        for (std::size_t index = 0; index < connections.size(); ++index) {
            if ((ready[index + 1].revents & POLLOUT) != 0) {
                hold.lock(mutex_);
                if (connections[index]->is_blocked) {
                    writeBlocked(hold, *connections[index]);
                }
                hold.unlock(mutex_);
            }
            if ((ready[index + 1].revents & ~POLLOUT) != 0) {
                (void)read(hold, *connections[index], MSG_DONTWAIT);
                hold.unlock(mutex_);
            }
        }
        hold.lock(mutex_);
    } catch (...) {
        hold.ensureLocked();
        receivers_have_reader_ = false;
        receivers_.notify_all();
        throw;
    }
    receivers_have_reader_ = false;
    receivers_.notify_all();
}

Initiator::ReadResult Initiator::read(Hold &hold, Connection &connection, int flags) {
    frame::Decoder::Space const space = connection.decoder.space();
    ssize_t const count = recv(connection.socket.get(), space.begin, space.size, flags);
    int const failure = errno;
    hold.lock(mutex_);
    if (count < 0 && (failure == EAGAIN || failure == EWOULDBLOCK || failure == EINTR)) {
        return ReadResult::nothing;
    }
    if (count <= 0) {
        lose(hold, connection, count == 0 ? "it was closed" : ErrorText(failure).get());
        return ReadResult::lost;
    }
    connection.decoder.filled(static_cast<std::size_t>(count));
    frame::Frame frame;
    for (;;) {
        switch (connection.decoder.next(frame)) {
            case frame::Decoder::Result::frame:
                try {
                    route(hold, connection, frame);
                } catch (std::bad_alloc const &) {
                    // The frames behind it are other callers'.
                    hold.warn("service %s sent what memory is too short for; dropped",
                              connection.address->service.c_str());
                }
                break;
            case frame::Decoder::Result::incomplete:
                return ReadResult::some;
            case frame::Decoder::Result::broken:
                hold.warn("service %s sent a broken frame: %s", connection.address->service.c_str(),
                          connection.decoder.problem());
                lose(hold, connection, "it sent a broken frame");
                return ReadResult::lost;
        }
    }
}

void Initiator::route(Hold &hold, Connection &connection, frame::Frame const &frame) {
    if (frame.type == frame::Type::response) {
        routeResponse(hold, connection, frame);
    } else if (frame.type == frame::Type::event) {
        routeEvent(hold, connection, frame);
    } else {
        hold.warn("service %s sent what only initiators send; ignored", connection.address->service.c_str());
    }
}

void Initiator::routeResponse(Hold &hold, Connection &connection, frame::Frame const &frame) {
    Request *const request = requests_.find(frame.first);
    // Only the service that was asked may answer.
    if (request == nullptr || request->connection != connection.serial) {
        if (dropped_unknown_.count()) {
            hold.warn(
                "service %s answered a request that is unknown, or known no longer; dropped (%llu so far)",
                connection.address->service.c_str(), dropped_unknown_.total());
        }
        return;
    }
    if (Waiter *const waiter = request->waiter) {
        try {
            waiter->response = Text(frame.second);
            waiter->state = Waiter::State::answered;
        } catch (std::bad_alloc const &) {
            waiter->state = Waiter::State::out_of_memory;
        }
        waiter->condition.notify_one();
        requests_.erase(*request);
        return;
    }
    if (request->shelf == Request::Shelf::kept) {
        if (dropped_unknown_.count()) {
            hold.warn("service %s answered a request twice; dropped (%llu so far)",
                      connection.address->service.c_str(), dropped_unknown_.total());
        }
        return;
    }
    bool const is_for_anyone = request->route == Route::anyone;
    if (request->route == Route::receiver || (is_for_anyone && response_callbacks_.empty())) {
        try {
            keep(hold, *request, Text(frame.second));
        } catch (std::bad_alloc const &) {
            loseKept(hold, *request);
        }
        if (is_for_anyone) {
            receivers_.notify_one();
            wakeReceivers();
        }
        return;
    }
    if (is_for_anyone) {
        try {
            DeliveryPlace place = placeFor(*request);
            place->body = Text(frame.second);
            requests_.erase(*request);
            queueResponse(hold, std::move(place), Text());
        } catch (std::bad_alloc const &) {
            loseKept(hold, *request);
        }
        return;
    }
    DeliveryPlace place = std::move(request->place);
    Text substitute = std::move(request->response);
    requests_.erase(*request);
    try {
        place->body = Text(frame.second);
    } catch (std::bad_alloc const &) {
        hold.warn("service %s sent a response that memory is too short for; its callback gets status 4",
                  connection.address->service.c_str());
        place->body = std::move(substitute);
        deliveries_.putSubstitute(std::move(place));
        wakeThread();
        return;
    }
    queueResponse(hold, std::move(place), std::move(substitute));
}

void Initiator::loseKept(Hold &hold, Request &request) {
    if (request.route == Route::anyone) {
        ++receiver_losses_;
    }
    hold.warn("service %s sent a response that memory is too short for; dropped",
              request.address->service.c_str());
    requests_.erase(request);
}

DeliveryPlace Initiator::placeFor(Request const &request) {
    Delivery delivery;
    delivery.route = request.route;
    delivery.owner = request.owner;
    delivery.address = request.address;
    delivery.first = Text(request.id);
    delivery.service = Text(request.address->service);
    delivery.target = Text(request.address->target);
    return DeliveryPlace(std::move(delivery));
}

void Initiator::routeEvent(Hold &hold, Connection &connection, frame::Frame const &frame) {
    // A last event may still come after unsubscribing.
    if (!connection.is_subscribed) {
        return;
    }
    DeliveryPlace place;
    try {
        Delivery event;
        event.address = connection.address;
        event.first = Text(frame.first);
        event.body = Text(frame.second);
        place = DeliveryPlace(std::move(event));
    } catch (std::bad_alloc const &) {
        loseEvent(hold, "memory is too short for events");
        return;
    }
    if (deliveries_.putEvent(std::move(place))) {
        wakeThread();
    } else {
        loseEvent(hold, "events come faster than the callbacks take them");
    }
}

void Initiator::loseEvent(Hold &hold, char const *reason) {
    if (dropped_events_.count()) {
        hold.warn("%s; dropped (%llu so far)", reason, dropped_events_.total());
    }
}

void Initiator::keep(Hold &hold, Request &request, Text response) {
    bool tell = false;
    for (unsigned int dropped = requests_.keep(request, std::move(response)); dropped != 0; --dropped) {
        tell = dropped_kept_.count() || tell;
    }
    if (tell) {
        hold.warn("responses are not received; the oldest were dropped (%llu so far)", dropped_kept_.total());
    }
}

void Initiator::queueResponse(Hold &hold, DeliveryPlace response, Text substitute) {
    if (!deliveries_.putResponse(std::move(response), std::move(substitute)) && dropped_responses_.count()) {
        hold.warn("responses come faster than the callbacks take them; dropped (%llu so far)",
                  dropped_responses_.total());
    }
    wakeThread();
}

bool Initiator::setReceiveTimeout(Connection &connection, int timeout) {
    if (connection.receive_timeout == timeout) {
        return true;
    }
    timeval value = {};
    if (timeout > 0) {
        value.tv_sec = timeout / 1000;
        value.tv_usec = (timeout % 1000) * 1000;
    }
    if (setsockopt(connection.socket.get(), SOL_SOCKET, SO_RCVTIMEO, &value, sizeof value) != 0) {
        return false;
    }
    connection.receive_timeout = timeout < 0 ? -1 : timeout;
    return true;
}

}  // namespace platform
