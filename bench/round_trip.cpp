// SPDX-License-Identifier: Apache-2.0
// The synchronous round trip beside a bare exchange of the same bytes, all processes on one core.

#include <cstdio>
#include <cstdlib>
#include <functional>

#include "bare_exchange.h"
#include "client.h"
#include "exchanged_bytes.h"
#include "korvo_api_action_engine.h"
#include "program.h"
#include "service_process.h"
#include "side_by_side.h"

namespace {

constexpr int calls_a_round = 2000;
constexpr unsigned int actions = 256;

std::function<void()> roundOf(std::function<void()> const &call) {
    return [call] {
        for (int count = 0; count < calls_a_round; ++count) {
            call();
        }
    };
}

void compare(char const *name, ExchangedBytes const &bytes, pid_t service,
             std::function<void()> const &call) {
    BareExchange bare(bytes.request, bytes.response);
    Comparison const result = compareSideBySide({roundOf([&] { bare.call(); }), {bare.process()}},
                                                {roundOf(call), {service}}, calls_a_round);
    std::printf("%-22s %6zu %6zu   %7.2f %7.2f   %5.2f   %7.2f %7.2f   %7.2f %7.2f\n", name,
                bytes.request.size(), bytes.response.size(), result.yardstick.elapsed,
                result.measured.elapsed, result.ratio, result.yardstick.own, result.measured.own,
                result.yardstick.peers, result.measured.peers);
}

void run() {
    useOneCore();
    ServiceProcess const service(KORVO_SIMULATOR);
    Client const client;
    void *const handle = client.handle();
    unsigned int const action_id = client.createRelayAction();
    for (unsigned int count = 1; count < actions; ++count) {
        (void)client.createRelayAction();
    }

    std::printf("Medians of %d rounds of %d calls, in microseconds; all processes on one core.\n\n", rounds,
                calls_a_round);
    std::printf("%-22s %13s   %15s   %5s   %15s   %15s\n", "", "bytes", "round trip", "", "caller's CPU",
                "peer's CPU");
    std::printf("%-22s %6s %6s   %7s %7s   %5s   %7s %7s   %7s %7s\n", "call", "out", "back", "bare", "ours",
                "ratio", "bare", "client", "bare", "service");

    compare("get_action_type", bytesOf(client.logging(), commandFor("Get_action_type", action_id)),
            service.process(), [&] {
                unsigned int type = 0;
                require(korvo_api_action_engine_get_action_type_send(handle, nullptr, action_id, &type),
                        "get_action_type");
            });
    compare("get_relay_action", bytesOf(client.logging(), commandFor("Get_relay_action", action_id)),
            service.process(), [&] {
                char *name = nullptr;
                char *relay = nullptr;
                unsigned int mode = 0;
                unsigned char normally_closed = 0;
                unsigned int cycles = 0;
                unsigned int on_time = 0;
                unsigned int off_time = 0;
                require(korvo_api_action_engine_get_relay_action_send(handle, nullptr, action_id, &name,
                                                                      &relay, &mode, &normally_closed,
                                                                      &cycles, &on_time, &off_time),
                        "get_relay_action");
                std::free(name);
                std::free(relay);
            });
    compare("get_actions (256)", bytesOf(client.logging(), R"({"command":"Get_actions"})"), service.process(),
            [&] {
                unsigned int **ids = nullptr;
                unsigned int **types = nullptr;
                require(korvo_api_action_engine_get_actions_send(handle, nullptr, &ids, &types),
                        "get_actions");
                korvo_core_free_uint_array(ids);
                korvo_core_free_uint_array(types);
            });
}

}  // namespace

int main() {
    return runBenchmark("bench-round-trip", run);
}
