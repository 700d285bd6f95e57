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
    while (waiter.state == Waiter::State::waiting && !is_over) {
        if (connection->has_reader) {
            is_over = deadline.hasPassed();
            if (!is_over) {
                deadline.wait(waiter.condition, hold.mutex());
            }
            continue;
        }
        ReaderRole const role(hold, *this, *connection);
        // The full time-out is mostly what the socket has from the last call, and then costs no system call.
        int wait = timeout;
        int reads = 0;
        while (waiter.state == Waiter::State::waiting && !is_over) {
            ReadResult result = ReadResult::nothing;
            if (connection->is_blocked) {
                result = writeAndRead(hold, *connection, wait);
            } else {
                hold.unlock(mutex_);
                if (!deadline.isPoll()) {
                    setReceiveTimeout(*connection, wait);
                }
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
    pollfd ready = {connection.socket.get(), POLLIN | POLLOUT, 0};
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
    unsigned int const losses = receiver_losses_;
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
        lose(hold, connection, count == 0 ? "it was closed" : errorText(failure).c_str());
        return ReadResult::lost;
    }
    connection.decoder.filled(static_cast<std::size_t>(count));
    frame::Frame frame;
    for (;;) {
        switch (connection.decoder.next(frame)) {
            case frame::Decoder::Result::frame:
                route(hold, connection, frame);
                break;
            case frame::Decoder::Result::incomplete:
                return ReadResult::some;
            case frame::Decoder::Result::broken:
                hold.warn("service " + connection.address->service +
                          " sent a broken frame: " + connection.decoder.problem());
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
        hold.warn("service " + connection.address->service + " sent what only initiators send; ignored");
    }
}

void Initiator::routeResponse(Hold &hold, Connection &connection, frame::Frame const &frame) {
    Request *const request = requests_.find(frame.first);
    // Only the service that was asked may answer.
    if (request == nullptr || request->connection != connection.serial) {
        if (dropped_unknown_.count()) {
            hold.warn("service " + connection.address->service +
                      " answered a request that is unknown, or known no " + "longer; dropped (" +
                      std::to_string(dropped_unknown_.total()) + " so far)");
        }
        return;
    }
    if (Waiter *const waiter = request->waiter) {
        waiter->response = Text(frame.second);
        waiter->state = Waiter::State::answered;
        waiter->condition.notify_one();
        requests_.erase(*request);
        return;
    }
    if (request->shelf == Request::Shelf::kept) {
        if (dropped_unknown_.count()) {
            hold.warn("service " + connection.address->service + " answered a request twice; dropped (" +
                      std::to_string(dropped_unknown_.total()) + " so far)");
        }
        return;
    }
    bool const is_for_anyone = request->route == Route::anyone;
    if (request->route == Route::receiver || (is_for_anyone && response_callbacks_.empty())) {
        keep(hold, *request, Text(frame.second));
        if (is_for_anyone) {
            receivers_.notify_one();
            wakeReceivers();
        }
        return;
    }
    Delivery delivery;
    delivery.route = request->route;
    delivery.owner = request->owner;
    delivery.address = request->address;
    delivery.first = Text(frame.first);
    delivery.body = Text(frame.second);
    Text substitute = std::move(request->response);
    requests_.erase(*request);
    queueResponse(hold, std::move(delivery), std::move(substitute));
}

void Initiator::routeEvent(Hold &hold, Connection &connection, frame::Frame const &frame) {
    // A last event may still come after unsubscribing.
    if (!connection.is_subscribed) {
        return;
    }
    Delivery event;
    event.address = connection.address;
    event.first = Text(frame.first);
    event.body = Text(frame.second);
    if (deliveries_.putEvent(std::move(event))) {
        wakeThread();
    } else if (dropped_events_.count()) {
        hold.warn("events come faster than the callbacks take them; dropped (" +
                  std::to_string(dropped_events_.total()) + " so far)");
    }
}

void Initiator::keep(Hold &hold, Request &request, Text response) {
    bool tell = false;
    for (unsigned int dropped = requests_.keep(request, std::move(response)); dropped != 0; --dropped) {
        tell = dropped_kept_.count() || tell;
    }
    if (tell) {
        hold.warn("responses are not received; the oldest were dropped (" +
                  std::to_string(dropped_kept_.total()) + " so far)");
    }
}

void Initiator::queueResponse(Hold &hold, Delivery response, Text substitute) {
    if (!deliveries_.putResponse(std::move(response), std::move(substitute)) && dropped_responses_.count()) {
        hold.warn("responses come faster than the callbacks take them; dropped (" +
                  std::to_string(dropped_responses_.total()) + " so far)");
    }
    wakeThread();
}

void Initiator::setReceiveTimeout(Connection &connection, int timeout) {
    if (connection.receive_timeout == timeout) {
        return;
    }
    timeval value = {};
    if (timeout > 0) {
        value.tv_sec = timeout / 1000;
        value.tv_usec = (timeout % 1000) * 1000;
    }
    if (setsockopt(connection.socket.get(), SOL_SOCKET, SO_RCVTIMEO, &value, sizeof value) == 0) {
        connection.receive_timeout = timeout < 0 ? -1 : timeout;
    }
}

}  // namespace platform
