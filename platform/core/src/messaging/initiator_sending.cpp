// SPDX-License-Identifier: Apache-2.0
// Initiator: sending commands.
//
// Nobody waits for room in a socket. A command is taken with its row in the table of requests; its frame leaves on the
// caller's own thread, unless another thread is just writing to the connection or the socket is full: then it gathers,
// and whoever writes takes it along. A full socket is tried again by whoever next sends or waits on it, and by the
// messaging thread, which is started for it where there is none. Frames leave in the order in which their commands were taken.
//
// Commands from inside callbacks gather too, as long as further callbacks wait, so that a flight of answers makes one
// flight of new commands.
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "messaging/initiator.h"

namespace platform {

namespace {

/// How often a sender takes along what others have gathered meanwhile before it leaves that to the messaging thread.
constexpr int rounds_for_others = 4;

/// Ties a request to the thread that sends it, while both last.
class Sending {
  public:
    Sending(Hold &hold, Request &request) : hold_(hold) {
        self_.request = &request;
        request.sender = &self_;
    }
    ~Sending() {
        hold_.ensureLocked();
        if (self_.request != nullptr) {
            self_.request->sender = nullptr;
        }
    }
    Sending(Sending const &) = delete;
    Sending &operator=(Sending const &) = delete;

    /// NULL when it was answered already, or lost.
    Request *request() const { return self_.request; }
    bool isLost() const { return self_.is_lost; }

  private:
    Hold &hold_;
    Sender self_;
};

}  // namespace

korvo_core_status Initiator::send(std::string_view service, std::string_view target,
                                  std::string_view request_id, std::string_view command,
                                  Purpose const &purpose) {
    Address const address{std::string(service), std::string(target)};
    Hold hold(mutex_, log_);
    if (!frame::fits(request_id, command)) {
        return fail(hold, Phase::send, &address,
                    "a command of " + std::to_string(command.size()) +
                        " bytes was not sent; a message has at most " +
                        std::to_string(limits::frame_payload));
    }
    for (bool is_second_try = false;; is_second_try = true) {
        ConnectionPointer connection;
        korvo_core_status status = connectionTo(hold, address, connection);
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            return status;
        }
        if (connection->is_blocked) {
            writeBlocked(hold, *connection);
            if (!connection->is_alive) {
                continue;
            }
        }
        std::size_t const size = frame::sizeOf(request_id, command);
        std::size_t const unsent = connection->unsent();
        if (unsent != 0 && unsent + size > limits::unsent_command_bytes) {
            return fail(hold, Phase::send, &address,
                        "it reads nothing, and " + std::to_string(unsent) + " bytes wait for it already");
        }
        bool const gathers = mayGather(*connection, purpose.route);
        // Before the command leaves, since another thread may read the response at once.
        Request *request = nullptr;
        status = track(hold, *connection, request_id, purpose, request);
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            return status;
        }
        std::size_t const begin = connection->gathered.size();
        try {
            frame::append(connection->gathered, frame::Type::command, request_id, command);
        } catch (...) {
            requests_.erase(*request);
            throw;
        }
        if (gathers) {
            arrangeWriting(hold, *connection);
            return KORVO_CORE_STATUS_NO_ERROR;
        }

        Sending const sending(hold, *request);
        connection->takeGathered();
        WriteResult const written = write(hold, *connection);
        bool const left_nothing = written == WriteResult::failed && connection->sent <= begin;
        if (written == WriteResult::failed && sending.request() != nullptr) {
            requests_.erase(*sending.request());
        }
        finishWriting(hold, *connection, written);
        if (written != WriteResult::failed && !sending.isLost()) {
            return KORVO_CORE_STATUS_NO_ERROR;
        }
        // Trying again is safe only where the service cannot have seen any of it.
        if (!left_nothing || is_second_try) {
            return fail(hold, Phase::send, &address, "the connection was lost");
        }
    }
}

korvo_core_status Initiator::connectionTo(Hold &hold, Address const &address, ConnectionPointer &connection) {
    for (bool is_second_try = false;; is_second_try = true) {
        if (is_closing_) {
            return fail(hold, Phase::send, &address, "the handle was closed");
        }
        connection = findConnection(address);
        if (connection != nullptr) {
            return KORVO_CORE_STATUS_NO_ERROR;
        }
        hold.unlock(mutex_);
        std::string problem;
        korvo_core_status const status = connect(address, connection, problem);
        hold.lock(mutex_);
        if (status == KORVO_CORE_STATUS_IPC_FAILED) {
            return fail(hold, Phase::connect, &address, problem);
        }
        if (status != KORVO_CORE_STATUS_NO_ERROR || connection->is_alive) {
            return status;
        }
        if (is_second_try) {
            return fail(hold, Phase::connect, &address, "the connection was lost at once");
        }
    }
}

korvo_core_status Initiator::track(Hold &hold, Connection &connection, std::string_view request_id,
                                   Purpose const &purpose, Request *&request) {
    if (Request *const earlier = requests_.find(request_id)) {
        if (earlier->waiter != nullptr || earlier->sender != nullptr) {
            hold.warn(
                "a command was not sent: a thread waits for the response to an earlier one with the same "
                "request identifier");
            return KORVO_CORE_STATUS_MULTI_THREAD_ACCESS;
        }
        requests_.erase(*earlier);
    }
    bool const is_asynchronous = purpose.route == Route::owner_callback;
    if (is_asynchronous && deliveries_.responses() >= limits::tracked_requests) {
        return fail(hold, Phase::send, connection.address.get(),
                    "callbacks for " + std::to_string(limits::tracked_requests) + " responses wait already");
    }
    if (requests_.isFull()) {
        Request *const oldest = requests_.oldestUnattended();
        if (oldest == nullptr) {
            return fail(hold, Phase::send, connection.address.get(),
                        "threads wait for as many responses as can be waited for");
        }
        if (dropped_requests_.count()) {
            hold.warn("more requests are unanswered than can be kept track of; the oldest were given up (" +
                      std::to_string(dropped_requests_.total()) + " so far)");
        }
        if (oldest->route == Route::owner_callback) {
            end(*oldest);
        }
        requests_.erase(*oldest);
    }
    Text substitute = is_asynchronous ? Text(purpose.substitute) : Text();
    request = &requests_.add(request_id, connection.serial, connection.address, purpose.route, purpose.owner);
    request->response = std::move(substitute);
    return KORVO_CORE_STATUS_NO_ERROR;
}

void Initiator::end(Request &request) {
    Delivery delivery;
    delivery.route = Route::owner_callback;
    delivery.owner = request.owner;
    delivery.address = request.address;
    delivery.first = Text(request.id);
    delivery.body = std::move(request.response);
    deliveries_.putSubstitute(std::move(delivery));
    wakeThread();
}

bool Initiator::mayGather(Connection const &connection, Route route) const {
    return connection.is_sending || connection.is_blocked ||
           (route == Route::owner_callback && onMessagingThread() && deliveries_.responses() != 0);
}

void Initiator::arrangeWriting(Hold &hold, Connection &connection) {
    if (connection.is_sending || connection.is_blocked) {
        // Whoever writes takes it along.
        return;
    }
    if (!is_gathering_) {
        is_gathering_ = true;
        gathering_since_ = Clock::now();
    }
    if (!onMessagingThread()) {
        requireThread(hold, connection);
        wakeThread();
    } else if (connection.gathered.size() >= limits::gathered_command_bytes) {
        writeAll(hold, connection);
    }
}

void Initiator::writeGathered(Hold &hold) {
    if (!is_gathering_) {
        return;
    }
    is_gathering_ = false;
    std::vector<ConnectionPointer> const connections = connections_;
    for (ConnectionPointer const &connection : connections) {
        if (!connection->gathered.empty() && !connection->is_sending && !connection->is_blocked) {
            writeAll(hold, *connection);
        }
    }
}

void Initiator::writeAll(Hold &hold, Connection &connection) {
    connection.takeGathered();
    finishWriting(hold, connection, write(hold, connection));
}

void Initiator::writeBlocked(Hold &hold, Connection &connection) {
    connection.is_blocked = false;
    --blocked_;
    connection.is_sending = true;
    finishWriting(hold, connection, write(hold, connection));
    updateInterest(connection);
}

void Initiator::writeControl(Hold &hold, Connection &connection, frame::Type type) {
    frame::append(connection.gathered, type);
    if (!connection.is_sending && !connection.is_blocked) {
        writeAll(hold, connection);
    }
}

Initiator::WriteResult Initiator::write(Hold &hold, Connection &connection) {
    hold.unlock(mutex_);
    std::string &bytes = connection.outgoing;
    WriteResult result = WriteResult::whole;
    while (connection.sent < bytes.size() && result == WriteResult::whole) {
        ssize_t const count = ::send(connection.socket.get(), bytes.data() + connection.sent,
                                     bytes.size() - connection.sent, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count >= 0) {
            connection.sent += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            result = WriteResult::blocked;
        } else if (errno != EINTR) {
            result = WriteResult::failed;
        }
    }
    if (result == WriteResult::whole) {
        bytes.clear();
        connection.sent = 0;
        if (bytes.capacity() > 2 * limits::read_buffer) {
            bytes = std::string();
        }
    }
    hold.lock(mutex_);
    return result;
}

void Initiator::finishWriting(Hold &hold, Connection &connection, WriteResult written) {
    for (int round = 0; round < rounds_for_others && written == WriteResult::whole && connection.is_alive &&
                        !connection.gathered.empty();
         ++round) {
        connection.takeGathered();
        written = write(hold, connection);
    }
    connection.is_sending = false;
    if (!connection.is_alive) {
        return;
    }
    if (written == WriteResult::failed) {
        lose(hold, connection, "a command could not be sent");
    } else if (written == WriteResult::blocked) {
        connection.is_blocked = true;
        ++blocked_;
        requireThread(hold, connection);
        updateInterest(connection);
    } else if (!connection.gathered.empty()) {
        arrangeWriting(hold, connection);
    }
}

void Initiator::requireThread(Hold &hold, Connection &connection) {
    if (is_closing_) {
        return;
    }
    try {
        startThread(hold);
    } catch (std::exception const &error) {
        lose(hold, connection, error.what());
    }
}

void Initiator::writeLast(Hold &hold) {
    Deadline const deadline(static_cast<int>(limits::last_sending.count()));
    std::vector<ConnectionPointer> const connections = connections_;
    for (ConnectionPointer const &connection : connections) {
        if (connection->is_sending || connection->unsent() == 0) {
            continue;
        }
        if (connection->is_blocked) {
            connection->is_blocked = false;
            --blocked_;
        }
        connection->is_sending = true;
        WriteResult written = WriteResult::blocked;
        while (written == WriteResult::blocked && connection->is_alive) {
            connection->outgoing += connection->gathered;
            connection->gathered.clear();
            written = write(hold, *connection);
            if (written == WriteResult::blocked) {
                if (deadline.hasPassed()) {
                    break;
                }
                hold.unlock(mutex_);
                pollfd ready = {connection->socket.get(), POLLOUT, 0};
                (void)poll(&ready, 1, deadline.remaining());
                hold.lock(mutex_);
            }
        }
        connection->is_sending = false;
        std::size_t const unsent = connection->unsent();
        if (unsent != 0) {
            hold.warn(std::to_string(unsent) + " bytes of commands for service " +
                      connection->address->service + " were not sent: the handle was closed");
        }
    }
}

korvo_core_status Initiator::fail(Hold &hold, Phase phase, Address const *peer, std::string_view reason) {
    failures_.tell(hold, phase, peer, reason);
    return KORVO_CORE_STATUS_IPC_FAILED;
}

}  // namespace platform
