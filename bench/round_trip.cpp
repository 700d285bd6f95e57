// SPDX-License-Identifier: Apache-2.0
// The synchronous round trip beside a bare exchange of the same bytes and beside peers, all processes on one core.

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "bare_exchange.h"
#include "client.h"
#include "exchanged_bytes.h"
#include "korvo_api_action_engine.h"
#include "peer_process.h"
#include "peers/peers.h"
#include "program.h"
#include "service_process.h"
#include "side_by_side.h"

namespace {

std::function<void()> times(int calls, std::function<void()> const &call) {
    return [calls, call] {
        for (int count = 0; count < calls; ++count) {
            call();
        }
    };
}

/// The JSON text of a response behind what stands before it in its frame.
char const *textIn(std::string const &frame) {
    return frame.c_str() + frame.find('{');
}

void compareRelay(Run &run, pid_t service, Client const &client, std::vector<Side> peers) {
    ExchangedBytes const bytes =
        bytesOf(client.logging(), commandFor("Get_relay_action", contents::action_id));
    BareExchange bare(bytes.request, bytes.response);
    int const calls = run.calls(500);
    std::vector<Side> sides = {{"bare bytes", times(calls, [&] { bare.call(); }), {bare.process()}},
                               {"bare bytes, read by hand",
                                times(calls,
                                      [&] {
                                          bare.call();
                                          Relay relay;
                                          by_hand::readRelay(textIn(bare.received()), relay);
                                          relay.check();
                                      }),
                                {bare.process()}},
                               {"ours",
                                times(calls,
                                      [&] {
                                          Relay relay;
                                          client.getRelay(relay);
                                          relay.check();
                                      }),
                                {service}}};
    sides.insert(sides.end(), peers.begin(), peers.end());
    run.results.compared("round trip, relay", compareSideBySide(sides, calls, run.rounds()));
}

void compareLists(Run &run, pid_t service, Client const &client, std::vector<Side> peers) {
    ExchangedBytes const bytes = bytesOf(client.logging(), R"({"command":"Get_actions"})");
    BareExchange bare(bytes.request, bytes.response);
    int const calls = run.calls(200);
    std::vector<Side> sides = {{"bare bytes", times(calls, [&] { bare.call(); }), {bare.process()}},
                               {"bare bytes, read by hand",
                                times(calls,
                                      [&, lists = Lists()]() mutable {
                                          bare.call();
                                          by_hand::readLists(textIn(bare.received()), lists);
                                      }),
                                {bare.process()}},
                               {"bare bytes, read into callers' blocks",
                                times(calls,
                                      [&] {
                                          bare.call();
                                          by_hand::BlockLists lists;
                                          by_hand::readLists(textIn(bare.received()), lists);
                                      }),
                                {bare.process()}},
                               {"ours",
                                times(calls,
                                      [&] {
                                          by_hand::BlockLists lists;
                                          client.getLists(lists);
                                      }),
                                {service}}};
    sides.insert(sides.end(), peers.begin(), peers.end());
    run.results.compared("round trip, lists", compareSideBySide(sides, calls, run.rounds()));
}

void compareRoundTrips(Run &run) {
    useOneCore();
    TemporaryFolder const folder;
    Peers const peers = allPeers();
    std::vector<std::unique_ptr<PeerProcess>> processes;
    for (auto const &peer : peers) {
        processes.push_back(std::make_unique<PeerProcess>(*peer, folder.path()));
    }
    ServiceProcess const service(KORVO_SIMULATOR);
    Client const client;
    client.createContents();

    std::vector<Side> relay_sides;
    std::vector<Side> list_sides;
    for (std::size_t number = 0; number < peers.size(); ++number) {
        std::shared_ptr<Caller> const caller = peers[number]->connect(processes[number]->path());
        Lists first;
        caller->getLists(first);
        first.check();
        relay_sides.push_back({peers[number]->name(),
                               times(run.calls(500),
                                     [caller] {
                                         Relay relay;
                                         caller->getRelay(relay);
                                         relay.check();
                                     }),
                               {processes[number]->process()}});
        list_sides.push_back(
            {peers[number]->name(),
             times(run.calls(200), [caller, lists = Lists()]() mutable { caller->getLists(lists); }),
             {processes[number]->process()}});
    }
    compareRelay(run, service.process(), client, std::move(relay_sides));
    compareLists(run, service.process(), client, std::move(list_sides));
}

}  // namespace

int main(int argc, char **argv) {
    return runBenchmark(argc, argv, compareRoundTrips);
}
