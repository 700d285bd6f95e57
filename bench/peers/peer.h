// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PEERS_PEER_H
#define KORVO_BENCH_PEERS_PEER_H

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "peers/contents.h"

/// A client that is connected to a peer's service. One thread uses it.
class Caller {
  public:
    virtual ~Caller() = default;

    virtual void getRelay(Relay &relay) = 0;
    virtual void getLists(Lists &lists) = 0;
    /// Sends so many requests for the relay before it reads the first response, and checks all of them.
    virtual void flight(int calls) = 0;
};

/// Gets a service's events.
class Subscriber {
  public:
    virtual ~Subscriber() = default;

    virtual void receive(Event &event) = 0;
};

/// Sends a service's events.
class Publisher {
  public:
    virtual ~Publisher() = default;

    /// Returns when all of them have subscribed. Called before the first event.
    virtual void waitFor(int subscribers) = 0;
    virtual void publish() = 0;
    /// Called behind the last event of a burst: nothing may stay behind in this process until the next one.
    virtual void flush() {}
};

/// Another way to do what our library does: other software, with the same contents, in a service process and clients
/// of its own. Services and clients meet at a path. What fails throws std::exception.
class Peer {
  public:
    virtual ~Peer() = default;

    virtual std::string name() const = 0;

    /// Serves until the process is killed. Calls `ready` as soon as clients may connect.
    virtual void serve(std::string const &path, std::function<void()> const &ready) const = 0;
    virtual std::unique_ptr<Caller> connect(std::string const &path) const = 0;
};

/// A peer's way to publish and to subscribe. The publisher is made first.
class EventPeer {
  public:
    virtual ~EventPeer() = default;

    virtual std::string name() const = 0;
    virtual std::unique_ptr<Publisher> publisher(std::string const &path) const = 0;
    virtual std::unique_ptr<Subscriber> subscribe(std::string const &path) const = 0;
};

#endif
