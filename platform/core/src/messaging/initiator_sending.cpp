// SPDX-License-Identifier: Apache-2.0
// Initiator: sending commands.
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "messaging/announcements.h"
#include "messaging/initiator.h"
#include "messaging/reader_role.h"

namespace platform {

namespace {

/// How long a sender leaves reading to another thread before it looks again whether that thread still does.
constexpr int look_again_ms = 20;

}  // namespace

korvo_core_status Initiator::send(std::string_view service, std::string_view target,
                                  std::string_view request_id, std::string_view command, For purpose,
                                  void const *owner) {
    Route route = Route::anyone;
    if (purpose == For::object) {
        route = announcements::take(serial_, owner) ? Route::owner_callback : Route::receiver;
    }
    if (!frame::fits(request_id, command)) {
        log_.error("a command of %zu bytes for service %.*s was not sent: a message has at most %zu bytes",
                   command.size(), static_cast<int>(service.size()), service.data(), limits::frame_payload);
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    Address const address{std::string(service), std::string(target)};

    for (bool is_second_try = false;; is_second_try = true) {
        ConnectionPointer connection;
        Hold hold(mutex_, log_);
        if (is_closing_) {
            return KORVO_CORE_STATUS_IPC_FAILED;
        }
        connection = findConnection(address);
        if (connection == nullptr) {
            hold.unlock();
            korvo_core_status const status = connect(address, connection);
            if (status != KORVO_CORE_STATUS_NO_ERROR) {
                return status;
            }
            hold.lock();
            if (!connection->is_alive) {
                if (is_second_try) {
                    return KORVO_CORE_STATUS_IPC_FAILED;
                }
                continue;
            }
        }
        if (Request *const earlier = requests_.find(request_id)) {
            if (earlier->waiter != nullptr) {
                hold.warn(
                    "a command was not sent: a thread waits for the response to an earlier one with the "
                    "same request identifier");
                return KORVO_CORE_STATUS_MULTI_THREAD_ACCESS;
            }
            requests_.erase(*earlier);
        }
        // Before the command leaves, since the response may be read by another thread at once.
        if (!requests_.add(request_id, connection->serial, connection->address, route, owner)) {
            hold.warn("a command was not sent: threads wait for as many responses as can be waited for");
            return KORVO_CORE_STATUS_IPC_FAILED;
        }
        hold.unlock();

        WriteResult written = WriteResult::nothing;
        {
            std::lock_guard<std::mutex> const only_sender(connection->send_mutex);
            connection->outgoing.clear();
            frame::append(connection->outgoing, frame::Type::command, request_id, command);
            written = write(*connection, connection->outgoing);
            if (connection->outgoing.capacity() > 2 * limits::read_buffer) {
                connection->outgoing = std::string();
            }
        }
        if (written == WriteResult::whole) {
            return KORVO_CORE_STATUS_NO_ERROR;
        }

        hold.lock();
        Request *const unsent = requests_.find(request_id);
        if (unsent != nullptr && unsent->waiter == nullptr && unsent->connection == connection->serial) {
            requests_.erase(*unsent);
        }
        lose(hold, *connection, "a command could not be sent");
        // Trying again is safe only where the service cannot have seen any of it.
        if (written == WriteResult::part || is_second_try) {
            return KORVO_CORE_STATUS_IPC_FAILED;
        }
    }
}

Initiator::WriteResult Initiator::write(Connection &connection, std::string_view bytes) {
    Deadline deadline(0);
    bool is_waiting = false;
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        ssize_t const count = ::send(connection.socket.get(), bytes.data() + sent, bytes.size() - sent,
                                     MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count >= 0) {
            sent += static_cast<std::size_t>(count);
            continue;
        }
        if (errno == EINTR) {
            continue;
        }
        if (errno != EAGAIN && errno != EWOULDBLOCK) {
            return sent == 0 ? WriteResult::nothing : WriteResult::part;
        }
        if (!is_waiting) {
            is_waiting = true;
            deadline = Deadline(static_cast<int>(limits::send_patience.count()));
        }
        if (!waitUntilWritable(connection, deadline)) {
            // A service that takes nothing for so long would not take it on a new connection either.
            return WriteResult::part;
        }
    }
    return WriteResult::whole;
}

bool Initiator::waitUntilWritable(Connection &connection, Deadline const &deadline) {
    Hold hold(mutex_, log_);
    while (connection.is_alive && !is_closing_) {
        if (deadline.hasPassed()) {
            hold.warn("service " + connection.address->service + " took no more bytes for " +
                      std::to_string(limits::send_patience.count()) + " ms; the connection is given up");
            return false;
        }
        pollfd ready = {connection.socket.get(), POLLOUT, 0};
        if (connection.has_reader) {
            hold.unlock();
            (void)poll(&ready, 1, std::min(deadline.remaining(), look_again_ms));
            hold.lock();
        } else {
            ReaderRole const role(hold, *this, connection);
            hold.unlock();
            ready.events |= POLLIN;
            if (poll(&ready, 1, deadline.remaining()) > 0 && (ready.revents & POLLIN) != 0) {
                (void)read(hold, connection, MSG_DONTWAIT);
            }
        }
        if ((ready.revents & (POLLOUT | POLLERR | POLLHUP)) != 0) {
            return true;
        }
    }
    // The next attempt to send tells how far the frame came.
    return !is_closing_;
}

Initiator::WriteResult Initiator::writeControl(Connection &connection, frame::Type type) {
    std::lock_guard<std::mutex> const only_sender(connection.send_mutex);
    connection.outgoing.clear();
    frame::append(connection.outgoing, type);
    return write(connection, connection.outgoing);
}

}  // namespace platform
