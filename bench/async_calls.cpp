// SPDX-License-Identifier: Apache-2.0
// Asynchronous calls, 64 in flight, all processes on one core. Beside peers, and beside two bare exchanges: one that
// writes the bytes of all 64 requests at once and gets all 64 responses at once, and one that writes each request alone,
// as a caller must who wants to know what became of each.

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>

#include "bare_exchange.h"
#include "client.h"
#include "exchanged_bytes.h"
#include "flights.h"
#include "korvo_api_action_engine.h"
#include "peer_process.h"
#include "peers/peers.h"
#include "program.h"
#include "service_process.h"
#include "side_by_side.h"

namespace {

/// Messaging that client handles share.
class Messaging {
  public:
    Messaging() {
        require(korvo_core_ipc_initiator_init(nullptr, "bench", &messaging_, 1), "initiator_init");
    }
    ~Messaging() { end(); }
    Messaging(Messaging const &) = delete;
    Messaging &operator=(Messaging const &) = delete;

    void *get() const { return messaging_; }
    void end() {
        if (messaging_ != nullptr) {
            (void)korvo_core_ipc_deinit(messaging_);
            messaging_ = nullptr;
        }
    }

  private:
    void *messaging_ = nullptr;
};

/// Keeps 64 calls in flight: the callback of each sends the next one. It may not do so on its own handle, whose
/// operation is locked meanwhile; so there are two handles on one messaging handle, and calls change between them.
class Chains {
  public:
    ~Chains() { messaging_.end(); }

    void round(int calls) {
        left_to_send_ = calls - in_flight;
        arrivals_.expect(calls);
        for (int call = 0; call < in_flight; ++call) {
            sendRelayAsync(first_.client, land, &first_);
        }
        arrivals_.waitForAll();
        cancelRelayAsync(first_.client, land, &first_);
        cancelRelayAsync(second_.client, land, &second_);
    }

  private:
    struct End {
        Chains *chains;
        Client client;
        End *other;
    };

    static void land(char *, korvo_core_status status, char *name, char *relay, unsigned int, unsigned char,
                     unsigned int, unsigned int, unsigned int, void *context) {
        std::free(name);
        std::free(relay);
        End const &end = *static_cast<End *>(context);
        if (end.chains->left_to_send_-- > 0) {
            korvo_core_status const sent = korvo_api_action_engine_get_relay_action_send_async(
                end.other->client.handle(), nullptr, contents::action_id, land, end.other);
            status = status != KORVO_CORE_STATUS_NO_ERROR ? status : sent;
        }
        end.chains->arrivals_.count(status);
    }

    Arrivals arrivals_;
    /// Read and written by the messaging thread, which runs all callbacks, while calls are on their way.
    std::atomic<int> left_to_send_{0};
    Messaging messaging_;
    End first_{this, Client(messaging_.get()), &second_};
    End second_{this, Client(messaging_.get()), &first_};
};

std::string repeated(std::string const &text) {
    std::string all;
    for (int count = 0; count < in_flight; ++count) {
        all += text;
    }
    return all;
}

void compareFlights(Run &run) {
    useOneCore();
    TemporaryFolder const folder;
    Peers const peers = peersWithFlights();
    std::vector<std::unique_ptr<PeerProcess>> processes;
    for (auto const &peer : peers) {
        processes.push_back(std::make_unique<PeerProcess>(*peer, folder.path()));
    }
    ServiceProcess const service(KORVO_SIMULATOR);
    ExchangedBytes one;
    {
        Client const client;
        client.createContents();
        one = bytesOf(client.logging(), commandFor("Get_relay_action", contents::action_id));
    }
    BareExchange bare(repeated(one.request), repeated(one.response));

    int const flights = run.calls(50);
    std::vector<Side> sides;
    for (std::size_t number = 0; number < peers.size(); ++number) {
        std::shared_ptr<Caller> const caller = peers[number]->connect(processes[number]->path());
        sides.push_back({peers[number]->name(),
                         [caller, flights] {
                             for (int count = 0; count < flights; ++count) {
                                 caller->flight(in_flight);
                             }
                         },
                         {processes[number]->process()}});
    }
    auto const bare_round = [&bare, flights](std::size_t pieces) {
        return [&bare, flights, pieces] {
            for (int count = 0; count < flights; ++count) {
                bare.call(pieces);
            }
        };
    };
    sides.push_back({"bare bytes, all in one write", bare_round(1), {bare.process()}});
    sides.push_back({"bare bytes, a write each", bare_round(in_flight), {bare.process()}});
    Flights from_outside;
    sides.push_back({"ours",
                     [&] {
                         for (int count = 0; count < flights; ++count) {
                             from_outside.fly();
                             // Or there would be more registrations than calls in flight.
                             from_outside.cancel();
                         }
                     },
                     {service.process()}});
    Chains from_callback;
    sides.push_back(
        {"ours, from the callback", [&] { from_callback.round(flights * in_flight); }, {service.process()}});
    run.results.compared("64 calls in flight", compareSideBySide(sides, in_flight * flights, run.rounds()));
}

}  // namespace

int main(int argc, char **argv) {
    return runBenchmark(argc, argv, compareFlights);
}
