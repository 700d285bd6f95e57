// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PEERS_MESSAGE_PEER_H
#define KORVO_BENCH_PEERS_MESSAGE_PEER_H

#include "peers/peer.h"
#include "peers/transport.h"

/// A peer made of a transport and a JSON library.
class MessagePeer : public Peer {
  public:
    MessagePeer(std::string name, std::unique_ptr<Transport> transport, JsonLibrary const &json)
        : name_(std::move(name)), transport_(std::move(transport)), json_(json) {}

    std::string name() const override { return name_; }
    void serve(std::string const &path, std::function<void()> const &ready) const override;
    std::unique_ptr<Caller> connect(std::string const &path) const override;

  private:
    std::string name_;
    std::unique_ptr<Transport> transport_;
    JsonLibrary const &json_;
};

#endif
