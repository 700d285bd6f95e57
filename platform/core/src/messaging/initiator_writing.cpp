// SPDX-License-Identifier: Apache-2.0
// Initiator: what has been taken goes to the sockets.
//
// One thread at a time writes to a connection, with the mutex free, and takes along what gathers meanwhile. The writing
// thread is there for what no sender can do without waiting: it is started when something is first left to it, lasts as
// long as callbacks are registered or a socket is full, makes no callbacks itself and waits for nobody who does.
#include <poll.h>
#include <sched.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include "base/wake.h"
#include "base/worker.h"
#include "error_words.h"
#include "messaging/initiator.h"

namespace platform {

namespace {

/// How often a sender takes along what others have gathered meanwhile before it leaves that to the writing thread.
constexpr int rounds_for_others = 4;

/// What an event of the writing thread's set is about, where it is not a connection's serial number.
constexpr std::uint64_t wake_tag = 0;

/// On a core that is busy the thread that wakes this one goes on, and more gathers.
void giveWayWhenWoken() {
    if (sched_getscheduler(0) == SCHED_OTHER) {
        sched_param const parameters = {};
        (void)sched_setscheduler(0, SCHED_BATCH, &parameters);
    }
}

}  // namespace

Initiator::ConnectionPointer Initiator::findGathered() {
    for (ConnectionPointer const &connection : connections_) {
        if (!connection->gathered.empty() && !connection->is_sending && !connection->is_blocked) {
            return connection;
        }
    }
    return nullptr;
}

bool Initiator::writeGathered(Hold &hold) {
    bool has_written = false;
    while (ConnectionPointer const connection = is_closing_ ? nullptr : findGathered()) {
        writeAll(hold, *connection);
        has_written = true;
    }
    return has_written;
}

void Initiator::writeAll(Hold &hold, Connection &connection) {
    connection.takeGathered();
    finishWriting(hold, connection, write(hold, connection));
}

void Initiator::writeBlocked(Hold &hold, Connection &connection) {
    // It stays in the writing thread's set: mostly it is full again.
    connection.is_blocked = false;
    --blocked_;
    connection.is_sending = true;
    finishWriting(hold, connection, write(hold, connection));
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
    for (int round = 0; written == WriteResult::whole && connection.is_alive && !connection.gathered.empty();
         ++round) {
        if (round >= rounds_for_others && wakeWriter(hold)) {
            break;
        }
        connection.takeGathered();
        written = write(hold, connection);
    }
    connection.is_sending = false;
    if (is_closing_) {
        written_.notify_all();
    }
    if (!connection.is_alive) {
        return;
    }
    if (written == WriteResult::failed) {
        lose(hold, connection, "a command could not be sent");
    } else if (written == WriteResult::blocked) {
        connection.is_blocked = true;
        ++blocked_;
        waitForRoom(hold, connection);
    } else {
        stopWaitingForRoom(connection);
    }
}

void Initiator::waitForRoom(Hold &hold, Connection &connection) {
    if (is_closing_) {
        return;
    }
    if (!wakeWriter(hold)) {
        lose(hold, connection, "its socket is full, and no thread can be started that waits for room");
    } else if (!connection.is_awaiting_room) {
        connection.is_awaiting_room = full_.add(connection.socket.get(), connection.serial, EPOLLOUT);
        if (!connection.is_awaiting_room) {
            lose(hold, connection, "its socket is full, and the system cannot tell when it has room");
        }
    }
}

void Initiator::stopWaitingForRoom(Connection &connection) {
    if (connection.is_awaiting_room) {
        connection.is_awaiting_room = false;
        (void)full_.remove(connection.socket.get());
        if (!hasWorkForWriter()) {
            nudgeWriter();
        }
    }
}

bool Initiator::wakeWriter(Hold &hold) {
    if (writer_is_running_) {
        nudgeWriter();
        return true;
    }
    if (is_closing_) {
        return false;
    }
    if (writer_.joinable()) {
        // It has given up writer_is_running_ as its last act under the mutex, so this does not wait for long.
        writer_.join();
    }
    try {
        process::Descriptor wake = makeWake();
        full_.open();
        if (!full_.add(wake.get(), wake_tag, EPOLLIN)) {
            throw std::system_error(errno, std::generic_category(), "epoll");
        }
        writer_wake_ = std::move(wake);
        writer_ = startWorker("korvo-sending", [self = shared_from_this()] { self->runWriter(); });
    } catch (std::exception const &error) {
        full_.close();
        hold.warn("cannot start a thread that sends: %s", wordsOf(error));
        return false;
    }
    writer_is_running_ = true;
    return true;
}

void Initiator::nudgeWriter() {
    if (writer_is_running_ && writer_is_asleep_) {
        writer_is_asleep_ = false;
        signalWake(writer_wake_);
    }
}

void Initiator::runWriter() {
    giveWayWhenWoken();
    Hold hold(mutex_, log_);
    for (;;) {
        try {
            (void)writeGathered(hold);
            if (is_closing_ || !hasWorkForWriter()) {
                break;
            }
            waitToWrite(hold);
        } catch (std::exception const &error) {
            hold.ensureLocked();
            hold.warn("a command was lost: %s", wordsOf(error));
        }
    }
    for (ConnectionPointer const &connection : connections_) {
        connection->is_awaiting_room = false;
    }
    full_.close();
    writer_wake_.reset();
    writer_is_running_ = false;
}

void Initiator::waitToWrite(Hold &hold) {
    int const epoll = full_.descriptor();
    writer_watches_ = std::exchange(callbacks_gather_, false);
    int const timeout = writer_watches_ ? static_cast<int>(limits::watching.count()) : -1;
    writer_is_asleep_ = true;
    hold.unlock(mutex_);
    std::array<epoll_event, 16> events;
    int const count = epoll_wait(epoll, events.data(), static_cast<int>(events.size()), timeout);
    hold.lock(mutex_);
    writer_is_asleep_ = false;
    writer_watches_ = false;
    for (int index = 0; index < count; ++index) {
        // A copy, since the kernel's structure is packed and its member need not be aligned.
        std::uint64_t const tag = events.at(static_cast<std::size_t>(index)).data.u64;
        if (tag == wake_tag) {
            drainWake(writer_wake_);
            continue;
        }
        ConnectionPointer const connection = findConnection(tag);
        if (connection != nullptr && connection->is_blocked) {
            writeBlocked(hold, *connection);
        }
    }
}

void Initiator::writeLast(Hold &hold) {
    Deadline const deadline(static_cast<int>(limits::last_sending.count()));
    for (ConnectionPointer connection = connectionAfter(0); connection != nullptr;
         connection = connectionAfter(connection->serial)) {
        // Whoever is just writing waits for nobody, and does not take the rest along any more.
        while (connection->is_sending && connection->is_alive && !deadline.hasPassed()) {
            deadline.wait(written_, hold.mutex());
        }
        if (connection->is_sending || !connection->is_alive || connection->unsent() == 0) {
            continue;
        }
        if (connection->is_blocked) {
            connection->is_blocked = false;
            --blocked_;
        }
        connection->is_sending = true;
        WriteResult written = WriteResult::blocked;
        while (written == WriteResult::blocked && connection->is_alive) {
            if (connection->outgoing.empty()) {
                connection->takeGathered();
            }
            written = write(hold, *connection);
            if (written == WriteResult::whole && !connection->gathered.empty()) {
                written = WriteResult::blocked;
                continue;
            }
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
            hold.warn("%zu bytes of commands for service %s were not sent: the handle was closed", unsent,
                      connection->address->service.c_str());
        }
    }
}

}  // namespace platform
