// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PEERS_NNG_SUPPORT_H
#define KORVO_BENCH_PEERS_NNG_SUPPORT_H

#include <nng/nng.h>

#include <stdexcept>
#include <string>
#include <string_view>

// What both patterns of nng need.

inline void nngRequire(int outcome, char const *what) {
    if (outcome != 0) {
        throw std::runtime_error(std::string("nng: ") + what + ": " + nng_strerror(outcome));
    }
}

class NngSocket {
  public:
    explicit NngSocket(int (*open)(nng_socket *)) { nngRequire(open(&socket_), "open"); }
    ~NngSocket() { nng_close(socket_); }
    NngSocket(NngSocket const &) = delete;
    NngSocket &operator=(NngSocket const &) = delete;

    nng_socket get() const { return socket_; }

    void listen(std::string const &path) {
        nngRequire(nng_listen(socket_, ("ipc://" + path).c_str(), nullptr, 0), "listen");
    }
    void connect(std::string const &path) {
        nngRequire(nng_dial(socket_, ("ipc://" + path).c_str(), nullptr, 0), "dial");
    }
    void send(std::string_view bytes) {
        nng_msg *message = nullptr;
        nngRequire(nng_msg_alloc(&message, 0), "message");
        nngRequire(nng_msg_append(message, bytes.data(), bytes.size()), "message");
        int const outcome = nng_sendmsg(socket_, message, 0);
        if (outcome != 0) {
            nng_msg_free(message);
            nngRequire(outcome, "send");
        }
    }

  private:
    nng_socket socket_{};
};

/// A message that was received.
class NngMessage {
  public:
    NngMessage() = default;
    ~NngMessage() { release(); }
    NngMessage(NngMessage const &) = delete;
    NngMessage &operator=(NngMessage const &) = delete;

    /// In place of what it held.
    std::string_view receive(NngSocket &socket) {
        release();
        nngRequire(nng_recvmsg(socket.get(), &message_, 0), "receive");
        return {static_cast<char const *>(nng_msg_body(message_)), nng_msg_len(message_)};
    }

  private:
    void release() {
        if (message_ != nullptr) {
            nng_msg_free(message_);
            message_ = nullptr;
        }
    }

    nng_msg *message_ = nullptr;
};

#endif
