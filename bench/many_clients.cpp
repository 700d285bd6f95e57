// SPDX-License-Identifier: Apache-2.0
// Four client processes that call one service at once, on all cores.

#include <memory>
#include <vector>

#include "client.h"
#include "peer_process.h"
#include "peers/peers.h"
#include "program.h"
#include "service_process.h"
#include "side_by_side.h"
#include "workers.h"

namespace {

constexpr int clients = 4;

void compareManyClients(Run &run) {
    int const calls = run.calls(1000);
    TemporaryFolder const folder;
    std::vector<std::unique_ptr<PeerProcess>> processes;
    std::vector<std::unique_ptr<Workers>> workers;
    std::vector<Side> sides;
    auto const add_side = [&](std::string const &name, pid_t service,
                              std::function<Workers::Work()> const &prepare) {
        workers.push_back(std::make_unique<Workers>(clients, prepare));
        std::vector<pid_t> all = workers.back()->processes();
        all.push_back(service);
        sides.push_back({name, [side = workers.back().get()] { side->work(); }, all});
    };

    Peers const peers = peersForManyClients();
    for (auto const &peer : peers) {
        processes.push_back(std::make_unique<PeerProcess>(*peer, folder.path()));
        add_side(peer->name(), processes.back()->process(), [&, path = processes.back()->path()] {
            std::shared_ptr<Caller> const caller = peer->connect(path);
            return [caller, calls] {
                for (int count = 0; count < calls; ++count) {
                    Relay relay;
                    caller->getRelay(relay);
                    relay.check();
                }
            };
        });
    }
    ServiceProcess const service(KORVO_SIMULATOR);
    Workers const first_client(1, [] { return [] { Client().createContents(); }; });
    first_client.work();
    add_side("ours", service.process(), [calls] {
        auto const client = std::make_shared<Client>();
        return [client, calls] {
            for (int count = 0; count < calls; ++count) {
                Relay relay;
                client->getRelay(relay);
                relay.check();
            }
        };
    });
    run.results.compared("4 clients at once", compareSideBySide(sides, clients * calls, run.rounds()));
}

}  // namespace

int main(int argc, char **argv) {
    return runBenchmark(argc, argv, compareManyClients);
}
