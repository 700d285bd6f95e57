// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_CONNECTION_H
#define KORVO_PLATFORM_CONNECTION_H

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/deadline.h"
#include "base/process.h"
#include "messaging/frame.h"
#include "messaging/requests.h"

namespace platform {

/// An initiator's connection to one target of a service. What is read from it is read by the one thread that
/// has the reader role; see initiator.h.
struct Connection {
    Connection(process::Descriptor descriptor, std::uint64_t number, std::string name_of_socket,
               std::shared_ptr<Address const> leads_to, bool target_is_known)
        : socket(std::move(descriptor)),
          serial(number),
          socket_name(std::move(name_of_socket)),
          address(std::move(leads_to)),
          knows_target(target_is_known) {}

    process::Descriptor const socket;
    std::uint64_t const serial;
    std::string const socket_name;
    Clock::time_point const made = Clock::now();

    // Guarded by the initiator's mutex, which cannot be named here.
    std::shared_ptr<Address const> address;
    /// False while the connection is only known from the name of its socket, which does not tell the target's
    /// text.
    bool knows_target;
    bool is_alive = true;
    bool has_reader = false;
    bool is_subscribed = false;
    /// Whether the messaging thread's epoll set holds the socket, and what it waits for there.
    bool is_polled = false;
    unsigned int polled_events = 0;
    std::vector<Waiter *> waiters;
    /// Commands for callbacks that have been taken and whose responses have not come.
    std::size_t unanswered = 0;

    /// A thread is just writing; it has `outgoing` for itself, and takes what gathers meanwhile with it.
    bool is_sending = false;
    /// The socket was full: what is in `outgoing` waits for room, and the writing thread's set may hold the socket.
    bool is_blocked = false;
    bool is_awaiting_room = false;
    /// Frames that were taken and that nobody is writing yet; they come after those in `outgoing`.
    std::string gathered;

    // Used by the reader only.
    frame::Decoder decoder;
    int receive_timeout = -1;

    /// Makes the calling thread the one that writes; what has gathered is what it writes. Nothing may be left in
    /// `outgoing`.
    void takeGathered() noexcept {
        is_sending = true;
        outgoing.swap(gathered);
    }

    /// Bytes that were taken and wait for the socket, without those that a thread is just writing.
    std::size_t unsent() const { return gathered.size() + (is_sending ? 0 : outgoing.size() - sent); }

    // Used by the thread that writes only; guarded by the initiator's mutex while there is none.
    std::string outgoing;
    /// How much of `outgoing` has left already.
    std::size_t sent = 0;
};

}  // namespace platform

#endif
