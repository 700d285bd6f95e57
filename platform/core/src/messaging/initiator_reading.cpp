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

korvo_core_status Initiator::receive(std::string_view request_id, int timeout, Text &response) {
    Deadline const deadline(timeout);
    Hold hold(mutex_, log_);
    Request *const request = requests_.find(request_id);
    if (request == nullptr || is_closing_) {
        // Never sent, already taken, dropped or lost with its connection: no response can come.
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    if (request->shelf != Request::Shelf::outstanding) {
        if (request->shelf == Request::Shelf::answered) {
            withdraw(request_id);
        }
        response = std::move(request->response);
        requests_.erase(*request);
        return KORVO_CORE_STATUS_NO_ERROR;
    }
    if (request->waiter != nullptr) {
        hold.warn("two threads receive the response to one request; the second was turned away");
        return KORVO_CORE_STATUS_MULTI_THREAD_ACCESS;
    }
    ConnectionPointer const connection = findConnection(request->connection);
    if (connection == nullptr) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }

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
        while (waiter.state == Waiter::State::waiting && !is_over) {
            hold.unlock();
            if (!deadline.isPoll()) {
                setReceiveTimeout(*connection, wait);
            }
            ReadResult const result = read(hold, *connection, deadline.isPoll() ? MSG_DONTWAIT : 0);
            is_over = result == ReadResult::nothing && deadline.hasPassed();
            wait = deadline.remaining();
            if (wait == 0 && !deadline.isPoll()) {
                // As a time-out of the socket, 0 would mean no end.
                wait = 1;
            }
        }
    }
    if (waiter.state != Waiter::State::answered) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    response = std::move(waiter.response);
    return KORVO_CORE_STATUS_NO_ERROR;
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
        if (is_closing_ || losses != receiver_losses_ || (has_looked && deadline.hasPassed())) {
            return KORVO_CORE_STATUS_IPC_FAILED;
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
            }
        }
        hold.unlock();
        (void)poll(ready.data(), ready.size(), deadline.remaining());
        drainWake(receivers_wake_);
        for (std::size_t index = 0; index < connections.size(); ++index) {
            if (ready[index + 1].revents != 0) {
                (void)read(hold, *connections[index], MSG_DONTWAIT);
                hold.unlock();
            }
        }
        hold.lock();
    } catch (...) {
        if (!hold.owns_lock()) {
            hold.lock();
        }
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
    hold.lock();
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
    Text response(frame.second);
    if (Waiter *const waiter = request->waiter) {
        waiter->response = std::move(response);
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
    switch (request->route) {
        case Route::receiver:
            keep(hold, *request, std::move(response));
            break;
        case Route::owner_callback:
            queueResponse(hold, Route::owner_callback, request->owner, request->address, Text(frame.first),
                          Text(frame.second));
            if (request->shelf == Request::Shelf::outstanding) {
                requests_.rememberAnswered(*request, std::move(response));
            }
            break;
        case Route::anyone:
            if (response_callbacks_.empty()) {
                keep(hold, *request, std::move(response));
                receivers_.notify_one();
                wakeReceivers();
            } else {
                queueResponse(hold, Route::anyone, nullptr, request->address, Text(frame.first),
                              std::move(response));
                requests_.erase(*request);
            }
            break;
    }
}

void Initiator::routeEvent(Hold &hold, Connection &connection, frame::Frame const &frame) {
    // A last event may still come after unsubscribing.
    if (!connection.is_subscribed) {
        return;
    }
    Delivery event;
    event.number = next_delivery_++;
    event.address = connection.address;
    if (!waiting_events_.hasRoom(frame.first.size() + frame.second.size(), limits::waiting_events,
                                 limits::waiting_event_bytes)) {
        if (waiting_events_.dropped.count()) {
            hold.warn("events come faster than the callbacks take them; dropped (" +
                      std::to_string(waiting_events_.dropped.total()) + " so far)");
        }
        return;
    }
    event.first = Text(frame.first);
    event.body = Text(frame.second);
    waiting_events_.bytes += DeliveryQueue::sizeOf(event);
    waiting_events_.items.push_back(std::move(event));
    wakeThread();
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

void Initiator::queueResponse(Hold &hold, Route route, void const *owner,
                              std::shared_ptr<Address const> address, Text id, Text body) {
    if (!waiting_responses_.hasRoom(id.size() + body.size(), limits::waiting_responses,
                                    limits::waiting_response_bytes)) {
        if (waiting_responses_.dropped.count()) {
            hold.warn("responses come faster than the callbacks take them; dropped (" +
                      std::to_string(waiting_responses_.dropped.total()) + " so far)");
        }
        return;
    }
    Delivery delivery;
    delivery.number = next_delivery_++;
    delivery.route = route;
    delivery.owner = owner;
    delivery.address = std::move(address);
    delivery.first = std::move(id);
    delivery.body = std::move(body);
    waiting_responses_.bytes += DeliveryQueue::sizeOf(delivery);
    waiting_responses_.items.push_back(std::move(delivery));
    wakeThread();
}

void Initiator::withdraw(std::string_view request_id) {
    for (auto item = waiting_responses_.items.begin(); item != waiting_responses_.items.end(); ++item) {
        if (item->first.view() == request_id) {
            waiting_responses_.bytes -= DeliveryQueue::sizeOf(*item);
            waiting_responses_.items.erase(item);
            return;
        }
    }
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
