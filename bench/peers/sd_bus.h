// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PEERS_SD_BUS_H
#define KORVO_BENCH_PEERS_SD_BUS_H

#include <systemd/sd-bus.h>

#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "program.h"

// D-Bus without a broker: each client has a connection of its own to the service.

namespace sdbus {

constexpr char object_path[] = "/bench";
constexpr char interface_name[] = "bench.Actions";

/// Returns the result; throws when it is an error.
inline int checked(int result, char const *what) {
    if (result < 0) {
        throw std::runtime_error(std::string("sd-bus: ") + what + ": " + std::strerror(-result));
    }
    return result;
}

/// One connection.
class Bus {
  public:
    /// A client's end.
    explicit Bus(std::string const &path);
    /// The service's end on a socket that was accepted.
    explicit Bus(int socket);
    ~Bus() { sd_bus_flush_close_unref(bus_); }
    Bus(Bus &&other) noexcept : bus_(other.bus_) { other.bus_ = nullptr; }
    Bus(Bus const &) = delete;
    Bus &operator=(Bus const &) = delete;

    sd_bus *get() const { return bus_; }

  private:
    sd_bus *bus_ = nullptr;
};

/// Where clients come in.
class Listening {
  public:
    explicit Listening(std::string const &path);
    ~Listening();
    Listening(Listening const &) = delete;
    Listening &operator=(Listening const &) = delete;

    int socket() const { return socket_; }
    Bus accept() const;

  private:
    int socket_;
};

/// A message that was received.
class Message {
  public:
    Message() = default;
    ~Message() { sd_bus_message_unref(message_); }
    Message(Message const &) = delete;
    Message &operator=(Message const &) = delete;

    sd_bus_message *get() const { return message_; }
    sd_bus_message **out() { return &message_; }

  private:
    sd_bus_message *message_ = nullptr;
};

}  // namespace sdbus

#endif
