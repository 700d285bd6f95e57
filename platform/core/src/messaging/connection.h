// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_CONNECTION_H
#define KORVO_PLATFORM_CONNECTION_H

#include <cstdint>
#include <memory>
#include <mutex>
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

    // Guarded by the initiator's mutex.
    std::shared_ptr<Address const> address;
    /// False while the connection is only known from the name of its socket, which does not tell the target's
    /// text.
    bool knows_target;
    bool is_alive = true;
    bool has_reader = false;
    bool is_subscribed = false;
    /// Whether the messaging thread's epoll set holds the socket.
    bool is_polled = false;
    std::vector<Waiter *> waiters;

    // Used by the reader only.
    frame::Decoder decoder;
    int receive_timeout = -1;

    // Never taken while the initiator's mutex is held.
    std::mutex send_mutex;
    /// Guarded by send_mutex.
    std::string outgoing;
};

}  // namespace platform

#endif
