// SPDX-License-Identifier: Apache-2.0
#include "peers/peers.h"

#include "peers/message_peer.h"

JsonLibrary const &fastestJson() {
#ifdef KORVO_BENCH_RAPIDJSON
    return rapidjson_pooled;
#else
    return boost_json;
#endif
}

namespace {

std::unique_ptr<Peer> overSocket(JsonLibrary const &json) {
    return std::make_unique<MessagePeer>(std::string("socket + ") + json.name, makeSocketTransport(), json);
}

void addZeroMq([[maybe_unused]] Peers &peers) {
#ifdef KORVO_BENCH_ZEROMQ
    peers.push_back(std::make_unique<MessagePeer>("ZeroMQ", makeZeroMqTransport(), fastestJson()));
#endif
}

void addGrpc([[maybe_unused]] Peers &peers) {
#ifdef KORVO_BENCH_GRPC
    peers.push_back(std::make_unique<MessagePeer>("gRPC", makeGrpcTransport(), fastestJson()));
#endif
}

void addSdBus([[maybe_unused]] Peers &peers) {
#ifdef KORVO_BENCH_SDBUS
    peers.push_back(makeSdBusPeer());
#endif
}

}  // namespace

Peers allPeers() {
    Peers peers;
#ifdef KORVO_BENCH_RAPIDJSON
    peers.push_back(overSocket(rapidjson_pooled));
#endif
    peers.push_back(overSocket(boost_json));
#ifdef KORVO_BENCH_NLOHMANN
    peers.push_back(overSocket(nlohmann_json));
#endif
    addSdBus(peers);
    addZeroMq(peers);
#ifdef KORVO_BENCH_NNG
    peers.push_back(std::make_unique<MessagePeer>("nng", makeNngTransport(), fastestJson()));
#endif
    addGrpc(peers);
    return peers;
}

Peers peersWithFlights() {
    Peers peers;
    addZeroMq(peers);
    peers.push_back(overSocket(fastestJson()));
    addSdBus(peers);
    addGrpc(peers);
    return peers;
}

Peers peersForManyClients() {
    Peers peers;
    peers.push_back(overSocket(fastestJson()));
    addSdBus(peers);
    addZeroMq(peers);
    addGrpc(peers);
    return peers;
}

EventPeers eventPeers() {
    EventPeers peers;
#ifdef KORVO_BENCH_ZEROMQ
    peers.push_back(makeZeroMqEventPeer());
#endif
#ifdef KORVO_BENCH_NNG
    peers.push_back(makeNngEventPeer());
#endif
#ifdef KORVO_BENCH_SDBUS
    peers.push_back(makeSdBusEventPeer());
#endif
    return peers;
}
