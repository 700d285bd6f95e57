// SPDX-License-Identifier: Apache-2.0
// Initiator: taking commands.
//
// Nobody waits for room in a socket. A command is taken with its row in the table of requests; its frame leaves on the
// caller's own thread, and what has gathered before it leaves with it, so frames leave in the order in which their
// commands were taken. There are four exceptions, in which a frame gathers:
//
// - Another thread is just writing to the connection: that one takes it along.
// - The socket is full: it is tried again by whoever next sends or waits on it, and by the writing thread.
// - Several answers to asynchronous commands are outstanding, and this is one more: the writing thread is woken, once for
//   all that gathers until it comes.
// - The same inside a callback, with several further callbacks to make: it leaves when those have been made, or when the
//   writing thread next looks, which it does from time to time while this goes on. So a callback that takes long holds
//   up no command.

#include "messaging/initiator.h"

namespace platform {

namespace {

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
        // Before the command leaves, since another thread may read the response at once.
        Request *request = nullptr;
        bool const may_be_left = mayGather(*connection, purpose.route);
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
        bool const is_left_to_others = connection->is_sending || connection->is_blocked;
        if (is_left_to_others || (may_be_left && arrangeWriting(hold))) {
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
            hold.warn(
                "more requests are unanswered than can be kept track of; the oldest were given up (%llu so "
                "far)",
                dropped_requests_.total());
        }
        if (oldest->route == Route::owner_callback) {
            end(*oldest);
        }
        requests_.erase(*oldest);
    }
    Text substitute = is_asynchronous ? Text(purpose.substitute) : Text();
    Request &added =
        requests_.add(request_id, connection.serial, connection.address, purpose.route, purpose.owner);
    if (is_asynchronous) {
        try {
            // With it, ending the call needs no memory any more.
            added.place = placeFor(added);
        } catch (...) {
            requests_.erase(added);
            throw;
        }
        added.response = std::move(substitute);
        added.unanswered = &connection.unanswered;
        ++connection.unanswered;
    }
    request = &added;
    return KORVO_CORE_STATUS_NO_ERROR;
}

void Initiator::end(Request &request) noexcept {
    request.place->body = std::move(request.response);
    deliveries_.putSubstitute(std::move(request.place));
    wakeThread();
}

bool Initiator::mayGather(Connection const &connection, Route route) const {
    if (route != Route::owner_callback || connection.gathered.size() >= limits::gathered_command_bytes) {
        return false;
    }
    if (onMessagingThread()) {
        std::size_t const few = connection.gathered.empty() ? limits::commands_sent_at_once : 1;
        return deliveries_.responses() >= few;
    }
    return connection.unanswered >= limits::commands_sent_at_once;
}

bool Initiator::arrangeWriting(Hold &hold) {
    if (!onMessagingThread()) {
        return wakeWriter(hold);
    }
    callbacks_gather_ = true;
    return writer_watches_ || wakeWriter(hold);
}

korvo_core_status Initiator::fail(Hold &hold, Phase phase, Address const *peer, std::string_view reason) {
    failures_.tell(hold, phase, peer, reason);
    return KORVO_CORE_STATUS_IPC_FAILED;
}

}  // namespace platform
