// SPDX-License-Identifier: Apache-2.0
// Initiator: connections, from making them to losing them.
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "messaging/initiator.h"

namespace platform {

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

Initiator::ConnectionPointer Initiator::findConnection(std::uint64_t serial) {
    for (ConnectionPointer const &connection : connections_) {
        if (connection->serial == serial) {
            return connection;
        }
    }
    return nullptr;
}

korvo_core_status Initiator::connect(Address const &address, ConnectionPointer &connection) {
    return connectByName(socketName(address.service, address.target),
                         std::make_shared<Address const>(address), true, connection);
}

korvo_core_status Initiator::connectByName(std::string const &socket_name,
                                           std::shared_ptr<Address const> address, bool knows_target,
                                           ConnectionPointer &connection) {
    std::lock_guard<std::mutex> const only_one(connect_mutex_);
    std::uint64_t serial = 0;
    {
        Hold hold(mutex_, log_);
        if (is_closing_) {
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
    process::Descriptor socket = openSocket(socket_name, *address, status);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        return status;
    }
    auto const made = std::make_shared<Connection>(std::move(socket), serial, socket_name, std::move(address),
                                                   knows_target);
    bool subscribe = false;
    {
        Hold hold(mutex_, log_);
        subscribe = subscriptions_.count(made->address->service) != 0;
    }
    // Before anybody else can use the connection, so that no event that a command causes comes too early.
    if (subscribe && writeControl(*made, frame::Type::subscribe) != WriteResult::whole) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }

    Hold hold(mutex_, log_);
    if (is_closing_) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    connections_.push_back(made);
    if (subscribe) {
        made->is_subscribed = true;
        adoptSubscription(hold, *made);
    }
    if (is_running_) {
        watch(*made, true);
    }
    wakeReceivers();
    connection = made;
    return KORVO_CORE_STATUS_NO_ERROR;
}

process::Descriptor Initiator::openSocket(std::string const &socket_name, Address const &address,
                                          korvo_core_status &status) {
    status = KORVO_CORE_STATUS_IPC_FAILED;
    process::Descriptor const folder = folder_.open(log_);
    if (!folder) {
        return {};
    }
    auto const socket_address = folder_.address(folder, socket_name);
    if (!socket_address) {
        log_.error("the path of the runtime folder %s is too long for sockets", folder_.path().c_str());
        return {};
    }
    process::Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket) {
        log_.error("cannot make a socket: %s", errorText(errno).c_str());
        return {};
    }
    if (::connect(socket.get(), reinterpret_cast<sockaddr const *>(&*socket_address),
                  sizeof *socket_address) != 0) {
        if (errno == ENOENT || errno == ECONNREFUSED) {
            log_.info("service %s, target \"%s\" is not there", address.service.c_str(),
                      address.target.c_str());
            status = KORVO_CORE_STATUS_DISABLED_TARGET;
        } else {
            log_.error("cannot connect to service %s, target \"%s\": %s", address.service.c_str(),
                       address.target.c_str(), errorText(errno).c_str());
        }
        return {};
    }
    if (!isTrustedPeer(socket.get(), log_)) {
        return {};
    }
    // Blocking, since the reader waits in recv() itself; whoever must not wait says so with each call.
    int const flags = fcntl(socket.get(), F_GETFL);
    if (flags < 0 || fcntl(socket.get(), F_SETFL, flags & ~O_NONBLOCK) != 0) {
        log_.error("cannot set up a socket: %s", errorText(errno).c_str());
        return {};
    }
    status = KORVO_CORE_STATUS_NO_ERROR;
    return socket;
}

void Initiator::lose(Hold &hold, Connection &connection, char const *reason) {
    if (!connection.is_alive) {
        return;
    }
    connection.is_alive = false;
    watch(connection, false);
    // Wakes whoever reads or writes the socket now; the descriptor itself is closed by its last user.
    (void)shutdown(connection.socket.get(), SHUT_RDWR);
    RequestTable::Lost const lost = requests_.lose(connection.serial);
    if (lost.for_anyone != 0) {
        ++receiver_losses_;
        wakeReceivers();
    }
    std::string const &service = connection.address->service;
    if (!is_closing_) {
        if (lost.for_callbacks != 0) {
            hold.warn("lost the connection to service " + service + " (" + reason + "): the responses to " +
                      std::to_string(lost.for_callbacks) + " asynchronous requests will not come");
        }
        if (connection.is_subscribed && subscriptions_.count(service) != 0) {
            hold.warn("lost the connection to service " + service + " (" + reason +
                      "): its events are missed until it is back");
            auto const now = Clock::now();
            auto const due =
                now - connection.made < limits::reconnect_pause ? now + limits::reconnect_pause : now;
            lost_subscriptions_[connection.socket_name] = LostSubscription{service, now, due};
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
    hold.warn("subscribed again to service " + lost->second.service + "; its events of the last " +
              std::to_string(gap.count()) + " ms were missed");
    lost_subscriptions_.erase(lost);
}

void Initiator::watch(Connection &connection, bool wanted) {
    if (!epoll_ || wanted == connection.is_polled) {
        return;
    }
    epoll_event event = {};
    event.events = connection.has_reader ? 0U : static_cast<unsigned int>(EPOLLIN);
    event.data.u64 = connection.serial;
    int const operation = wanted ? EPOLL_CTL_ADD : EPOLL_CTL_DEL;
    if (epoll_ctl(epoll_.get(), operation, connection.socket.get(), &event) == 0) {
        connection.is_polled = wanted;
    }
}

}  // namespace platform
