// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_PEERS_PEERS_H
#define KORVO_BENCH_PEERS_PEERS_H

#include "peers/peer.h"

// The peers that were there when this was built. bench/CMakeLists.txt says which are not.

using Peers = std::vector<std::unique_ptr<Peer>>;
using EventPeers = std::vector<std::unique_ptr<EventPeer>>;

/// A plain socket with each of the JSON libraries, then all others.
Peers allPeers();
/// Those among them that can have many requests on their way on one connection.
Peers peersWithFlights();
/// Those that are worth looking at with several clients at once.
Peers peersForManyClients();
EventPeers eventPeers();

#ifdef KORVO_BENCH_SDBUS
std::unique_ptr<Peer> makeSdBusPeer();
std::unique_ptr<EventPeer> makeSdBusEventPeer();
#endif
#ifdef KORVO_BENCH_ZEROMQ
std::unique_ptr<EventPeer> makeZeroMqEventPeer();
#endif
#ifdef KORVO_BENCH_NNG
std::unique_ptr<EventPeer> makeNngEventPeer();
#endif

#endif
