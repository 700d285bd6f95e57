// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PEERS_ZEROMQ_H
#define KORVO_BENCH_PEERS_ZEROMQ_H

#include <zmq.h>

#include <cerrno>
#include <stdexcept>
#include <string>
#include <string_view>

#include "program.h"

// What both patterns of ZeroMQ need.

inline void zmqRequire(bool holds, char const *what) {
    if (!holds) {
        throw std::runtime_error(std::string("ZeroMQ: ") + what + ": " + zmq_strerror(errno));
    }
}

/// A socket with a context, and thus a thread, of its own.
class ZmqSocket {
  public:
    explicit ZmqSocket(int type) : context_(zmq_ctx_new()), socket_(zmq_socket(context_, type)) {
        zmqRequire(socket_ != nullptr, "socket");
        set(ZMQ_LINGER, 0);
        // No message is ever dropped.
        set(ZMQ_SNDHWM, 0);
        set(ZMQ_RCVHWM, 0);
    }
    ~ZmqSocket() {
        zmq_close(socket_);
        zmq_ctx_term(context_);
    }
    ZmqSocket(ZmqSocket const &) = delete;
    ZmqSocket &operator=(ZmqSocket const &) = delete;

    void *get() const { return socket_; }

    void set(int option, int value) {
        zmqRequire(zmq_setsockopt(socket_, option, &value, sizeof value) == 0, "setsockopt");
    }
    void bind(std::string const &path) {
        zmqRequire(zmq_bind(socket_, ("ipc://" + path).c_str()) == 0, "bind");
    }
    void connect(std::string const &path) {
        zmqRequire(zmq_connect(socket_, ("ipc://" + path).c_str()) == 0, "connect");
    }
    void send(std::string_view bytes, int flags = 0) {
        zmqRequire(zmq_send(socket_, bytes.data(), bytes.size(), flags) >= 0, "send");
    }

  private:
    void *context_;
    void *socket_;
};

/// A message that was received.
class ZmqMessage {
  public:
    ZmqMessage() { zmq_msg_init(&message_); }
    ~ZmqMessage() { zmq_msg_close(&message_); }
    ZmqMessage(ZmqMessage const &) = delete;
    ZmqMessage &operator=(ZmqMessage const &) = delete;

    /// In place of what it held.
    std::string_view receive(ZmqSocket &socket) {
        zmqRequire(zmq_msg_recv(&message_, socket.get(), 0) >= 0, "receive");
        return {static_cast<char const *>(zmq_msg_data(&message_)), zmq_msg_size(&message_)};
    }

  private:
    zmq_msg_t message_;
};

#endif
