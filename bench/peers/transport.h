// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PEERS_TRANSPORT_H
#define KORVO_BENCH_PEERS_TRANSPORT_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "peers/encoding.h"

// How messages travel that somebody else has written: a request identifier and a text, as one string of bytes.

/// Identifiers as long as those of our own library.
constexpr std::size_t request_id_size = 36;

/// A client's end. One thread uses it.
class Connection {
  public:
    virtual ~Connection() = default;

    virtual void send(std::string_view message) = 0;
    /// The text stays until the next call.
    virtual std::string_view receive() = 0;
};

/// What a service answers; the text stays until the next call.
using Answer = std::function<std::string_view(std::string_view request)>;

class Transport {
  public:
    virtual ~Transport() = default;

    /// Serves until the process is killed. `make_answer` is called for each thread that answers.
    virtual void serve(std::string const &path, std::function<void()> const &ready,
                       std::function<Answer()> const &make_answer) const = 0;
    virtual std::unique_ptr<Connection> connect(std::string const &path) const = 0;
};

/// Transports that were there when this was built.
std::unique_ptr<Transport> makeSocketTransport();
#ifdef KORVO_BENCH_ZEROMQ
std::unique_ptr<Transport> makeZeroMqTransport();
#endif
#ifdef KORVO_BENCH_GRPC
std::unique_ptr<Transport> makeGrpcTransport();
#endif
#ifdef KORVO_BENCH_NNG
std::unique_ptr<Transport> makeNngTransport();
#endif

#endif
