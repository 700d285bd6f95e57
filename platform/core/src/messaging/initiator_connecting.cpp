// SPDX-License-Identifier: Apache-2.0
// Initiator: connections, from making them to losing them.
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "messaging/initiator.h"

namespace platform {

namespace {

/// What the messaging thread does on a connection: it reads unless somebody else does.
unsigned int interestIn(Connection const &connection) {
    return connection.has_reader ? 0U : static_cast<unsigned int>(EPOLLIN);
}

}  // namespace

Initiator::ConnectionPointer Initiator::findConnection(Address const &address) {
    for (ConnectionPointer const &connection : connections_) {
        if (connection->knows_target && connection->address->target == address.target &&
            connection->address->service == address.service) {
            return connection;
        }
    }
    return nullptr;
}

Initiator::ConnectionPointer Initiator::findConnection(std::string_view socket_name) {
    for (ConnectionPointer const &connection : connections_) {
        if (connection->socket_name == socket_name) {
            return connection;
        }
    }
    return nullptr;
}

Initiator::ConnectionPointer Initiator::connectionAfter(std::uint64_t serial) const {
    ConnectionPointer next;
    for (ConnectionPointer const &connection : connections_) {
        if (connection->serial > serial && (next == nullptr || connection->serial < next->serial)) {
            next = connection;
        }
    }
    return next;
}

Initiator::ConnectionPointer Initiator::findConnection(std::uint64_t serial) {
    for (ConnectionPointer const &connection : connections_) {
        if (connection->serial == serial) {
            return connection;
        }
    }
    return nullptr;
}

korvo_core_status Initiator::connect(Address const &address, ConnectionPointer &connection,
                                     std::string &problem) {
    return connectByName(socketName(address.service, address.target),
                         std::make_shared<Address const>(address), true, connection, problem);
}

korvo_core_status Initiator::connectByName(std::string const &socket_name,
                                           std::shared_ptr<Address const> address, bool knows_target,
                                           ConnectionPointer &connection, std::string &problem) {
    std::lock_guard<std::mutex> const only_one(connect_mutex_);
    std::uint64_t serial = 0;
    {
        Hold hold(mutex_, log_);
        if (is_closing_) {
            problem = "the handle was closed";
            return KORVO_CORE_STATUS_IPC_FAILED;
        }
        connection = findConnection(socket_name);
        if (connection != nullptr) {
            if (knows_target && !connection->knows_target) {
                connection->address = std::move(address);
                connection->knows_target = true;
            }
            return KORVO_CORE_STATUS_NO_ERROR;
        }
        serial = next_serial_++;
    }

    korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
    process::Descriptor socket = openSocket(socket_name, *address, status, problem);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        return status;
    }
    auto const made = std::make_shared<Connection>(std::move(socket), serial, socket_name, std::move(address),
                                                   knows_target);
    Hold hold(mutex_, log_);
    // What can fail comes first: afterwards others know the connection.
    if (connections_.size() == connections_.capacity()) {
        connections_.reserve(2 * connections_.size() + 4);
    }
    bool const subscribe = subscriptions_.count(made->address->service) != 0;
    if (subscribe) {
        // Before anybody else can use the connection, so that no event that a command causes comes too early.
        writeControl(hold, *made, frame::Type::subscribe);
    }
    if (is_closing_ || !made->is_alive) {
        lose(hold, *made, "the handle was closed");
        problem = is_closing_ ? "the handle was closed" : "the connection was lost at once";
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    connections_.push_back(made);
    if (subscribe && subscriptions_.count(made->address->service) != 0) {
        made->is_subscribed = true;
        adoptSubscription(hold, *made);
    } else if (subscribe) {
        // It was taken back while the mutex was free.
        writeControl(hold, *made, frame::Type::unsubscribe);
    }
    if (is_running_ && !made->is_polled && !watch(*made)) {
        ErrorText const reason(errno);
        lose(hold, *made, reason.get());
        problem = std::string("the socket cannot be watched: ") + reason.get();
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    wakeReceivers();
    connection = made;
    return KORVO_CORE_STATUS_NO_ERROR;
}

process::Descriptor Initiator::openSocket(std::string const &socket_name, Address const &address,
                                          korvo_core_status &status, std::string &problem) {
    status = KORVO_CORE_STATUS_IPC_FAILED;
    process::Descriptor const folder = folder_.open(log_);
    if (!folder) {
        problem = "the runtime folder cannot be used";
        return {};
    }
    sockaddr_un const socket_address = folder_.address(folder, socket_name);
    auto socket = process::Descriptor::madeBy(
        [] { return ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); });
    if (!socket) {
        problem = "cannot make a socket: " + errorText(errno);
        return {};
    }
    if (::connect(socket.get(), reinterpret_cast<sockaddr const *>(&socket_address), sizeof socket_address) !=
        0) {
        if (errno == ENOENT || errno == ECONNREFUSED) {
            log_.info("service %s, target \"%s\" is not there", address.service.c_str(),
                      address.target.c_str());
            status = KORVO_CORE_STATUS_DISABLED_TARGET;
        } else {
            problem = errorText(errno);
        }
        return {};
    }
    Flood each_is_told;
    if (!isTrustedPeer(socket.get(), log_, each_is_told)) {
        problem = "the process at the other end is another user's";
        return {};
    }
    // Blocking, since the reader waits in recv() itself; whoever must not wait says so with each call.
    int const flags = fcntl(socket.get(), F_GETFL);
    if (flags < 0 || fcntl(socket.get(), F_SETFL, flags & ~O_NONBLOCK) != 0) {
        problem = "cannot set up a socket: " + errorText(errno);
        return {};
    }
    status = KORVO_CORE_STATUS_NO_ERROR;
    return socket;
}

void Initiator::lose(Hold &hold, Connection &connection, char const *reason) noexcept {
    if (!connection.is_alive) {
        return;
    }
    connection.is_alive = false;
    if (connection.is_polled) {
        connection.is_polled = false;
        (void)epoll_.remove(connection.socket.get());
    }
    // Wakes whoever reads or writes the socket now; the descriptor itself is closed by its last user.
    (void)shutdown(connection.socket.get(), SHUT_RDWR);
    if (connection.is_blocked) {
        connection.is_blocked = false;
        --blocked_;
    }
    stopWaitingForRoom(connection);
    connection.gathered.clear();
    RequestTable::Lost const lost =
        requests_.lose(connection.serial, [this](Request &request) KORVO_REQUIRES(mutex_) {
            if (!is_closing_) {
                end(request);
            }
        });
    if (lost.for_anyone != 0) {
        ++receiver_losses_;
        wakeReceivers();
    }
    std::string const &service = connection.address->service;
    if (!is_closing_) {
        if (lost.for_callbacks != 0) {
            hold.warn(
                "lost the connection to service %s (%s): the responses to %u asynchronous requests will not "
                "come",
                service.c_str(), reason, lost.for_callbacks);
        }
        if (lost.for_anyone != 0) {
            hold.warn(
                "lost the connection to service %s (%s): the responses to %u requests of no object will not "
                "come",
                service.c_str(), reason, lost.for_anyone);
        }
        auto const subscription = subscriptions_.find(service);
        if (connection.is_subscribed && subscription != subscriptions_.end()) {
            hold.warn("lost the connection to service %s (%s): its events are missed until it is back",
                      service.c_str(), reason);
            auto const now = Clock::now();
            auto const due =
                now - connection.made < limits::reconnect_pause ? now + limits::reconnect_pause : now;
            subscription->second.due = std::min(subscription->second.due, due);
            try {
                lost_subscriptions_.insert_or_assign(connection.socket_name, LostSubscription{service, now});
            } catch (std::bad_alloc const &) {
                // Then nobody is told how long events were missed.
            }
            wakeThread();
        }
    }
    auto const place =
        std::find_if(connections_.begin(), connections_.end(),
                     [&](ConnectionPointer const &other) { return other.get() == &connection; });
    if (place != connections_.end()) {
        connections_.erase(place);
    }
}

void Initiator::adoptSubscription(Hold &hold, Connection &connection) {
    auto const lost = lost_subscriptions_.find(connection.socket_name);
    if (lost == lost_subscriptions_.end()) {
        return;
    }
    auto const gap = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - lost->second.since);
    hold.warn("subscribed again to service %s; its events of the last %lld ms were missed",
              lost->second.service.c_str(), static_cast<long long>(gap.count()));
    lost_subscriptions_.erase(lost);
}

bool Initiator::watch(Connection &connection) {
    connection.polled_events = interestIn(connection);
    connection.is_polled = epoll_.add(connection.socket.get(), connection.serial, connection.polled_events);
    return connection.is_polled;
}

void Initiator::updateInterest(Hold &hold, Connection &connection) {
    unsigned int const events = interestIn(connection);
    if (!connection.is_polled || events == connection.polled_events) {
        return;
    }
    connection.polled_events = events;
    if (!epoll_.change(connection.socket.get(), connection.serial, events)) {
        lose(hold, connection, ErrorText(errno).get());
    }
}

}  // namespace platform
