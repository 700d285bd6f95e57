// SPDX-License-Identifier: Apache-2.0
// Asynchronous calls, 64 in flight, beside a bare exchange that writes the bytes of all 64 requests at once and gets
// all 64 responses at once, and beside one that writes each request alone, as a caller must who wants to know what became
// of each; all processes on one core.

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <stdexcept>
#include <string>

#include "bare_exchange.h"
#include "client.h"
#include "exchanged_bytes.h"
#include "korvo_api_action_engine.h"
#include "program.h"
#include "service_process.h"
#include "side_by_side.h"

namespace {

constexpr int in_flight = 64;
constexpr int flights_a_round = 100;

/// Counts the responses of one flight.
class Flight {
  public:
    static void land(char *, korvo_core_status status, char *name, char *relay, unsigned int, unsigned char,
                     unsigned int, unsigned int, unsigned int, void *context) {
        std::free(name);
        std::free(relay);
        static_cast<Flight *>(context)->count(status);
    }

    void waitForAll() {
        std::unique_lock<std::mutex> lock(mutex_);
        if (!landed_.wait_for(lock, std::chrono::seconds(10), [&] { return count_ == in_flight; })) {
            throw std::runtime_error("a response did not come");
        }
        count_ = 0;
        require(failed_, "get_relay_action");
    }

  private:
    void count(korvo_core_status status) {
        std::lock_guard<std::mutex> const lock(mutex_);
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            failed_ = status;
        }
        if (++count_ == in_flight) {
            landed_.notify_one();
        }
    }

    std::mutex mutex_;
    std::condition_variable landed_;
    int count_ = 0;
    korvo_core_status failed_ = KORVO_CORE_STATUS_NO_ERROR;
};

std::string repeated(std::string const &text) {
    std::string all;
    for (int count = 0; count < in_flight; ++count) {
        all += text;
    }
    return all;
}

void run() {
    useOneCore();
    ServiceProcess const service(KORVO_SIMULATOR);
    // Before the client, whose callbacks use it.
    Flight flight;
    Client const client;
    unsigned int const action_id = client.createRelayAction();

    ExchangedBytes const one = bytesOf(client.logging(), commandFor("Get_relay_action", action_id));
    BareExchange bare(repeated(one.request), repeated(one.response));
    auto const bareRound = [&bare](std::size_t pieces) {
        return [&bare, pieces] {
            for (int count = 0; count < flights_a_round; ++count) {
                bare.call(pieces);
            }
        };
    };
    auto const round = [&] {
        for (int count = 0; count < flights_a_round; ++count) {
            for (int call = 0; call < in_flight; ++call) {
                require(korvo_api_action_engine_get_relay_action_send_async(client.handle(), nullptr,
                                                                            action_id, Flight::land, &flight),
                        "get_relay_action_send_async");
            }
            flight.waitForAll();
            // Registrations stay until they are cancelled, and there would be more of them than calls in flight.
            require(
                korvo_api_action_engine_get_relay_action_cancel_async(client.handle(), Flight::land, &flight),
                "get_relay_action_cancel_async");
        }
    };
    std::printf(
        "get_relay_action, %d asynchronous calls in flight, %zu bytes out and %zu back each.\n"
        "Medians of %d rounds of %d calls, in microseconds a call; all processes on one core.\n",
        in_flight, one.request.size(), one.response.size(), rounds, in_flight * flights_a_round);
    auto const compare = [&](char const *yardstick, std::size_t pieces) {
        Comparison const result = compareSideBySide(
            {bareRound(pieces), {bare.process()}}, {round, {service.process()}}, in_flight * flights_a_round);
        std::printf("\nBare, %s:\n", yardstick);
        printShare("caller", "service", result);
    };
    compare("all requests in one write", 1);
    compare("a write for each request", in_flight);
}

}  // namespace

int main() {
    return runBenchmark("bench-async-calls", run);
}
