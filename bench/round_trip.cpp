// SPDX-License-Identifier: Apache-2.0
// The synchronous round trip beside a bare exchange of the same bytes, all processes on one core.

#include <sched.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "bare_exchange.h"
#include "frame.h"
#include "korvo_api_action_engine.h"
#include "service_process.h"

namespace {

constexpr int rounds = 41;
constexpr int calls_a_round = 2000;
constexpr unsigned int actions = 256;

double now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

clockid_t cpu_clock_of(pid_t process) {
    clockid_t clock{};
    if (clock_getcpuclockid(process, &clock) != 0) {
        throw std::runtime_error("no processor clock for the other process");
    }
    return clock;
}

/// What one call takes: time from call to return, and processor time of the caller and of its peer, in microseconds.
struct Cost {
    double elapsed;
    double caller;
    double peer;
};

template <typename Call>
Cost measure(clockid_t peer_clock, Call call) {
    double const start = now(CLOCK_MONOTONIC);
    double const caller_start = now(CLOCK_PROCESS_CPUTIME_ID);
    double const peer_start = now(peer_clock);
    for (int count = 0; count < calls_a_round; ++count) {
        call();
    }
    return {(now(CLOCK_MONOTONIC) - start) / calls_a_round,
            (now(CLOCK_PROCESS_CPUTIME_ID) - caller_start) / calls_a_round,
            (now(peer_clock) - peer_start) / calls_a_round};
}

template <typename Value>
double median(std::vector<Cost> const &costs, Value value) {
    std::vector<double> values;
    for (Cost const &cost : costs) {
        values.push_back(value(cost));
    }
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

void require(korvo_core_status status, char const *what) {
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        throw std::runtime_error(std::string(what) + ": " + korvo_core_status_to_string(status));
    }
}

/// The texts of one exchange, taken from the service itself, in the frames in which they travel.
struct Bytes {
    std::string request;
    std::string response;
};

Bytes bytes_of(void *logging, std::string const &command) {
    std::string const identifier = "00000000-0000-4000-8000-000000000000";
    void *messaging = nullptr;
    require(korvo_core_ipc_initiator_init(logging, "bench", &messaging, 1), "initiator_init");
    require(korvo_core_ipc_initiator_command_send(messaging, "action_engine", nullptr, identifier.c_str(),
                                                  command.c_str()),
            "command_send");
    char *service = nullptr;
    char *target = nullptr;
    char *request_id = nullptr;
    char *response = nullptr;
    require(
        korvo_core_ipc_initiator_response_receive(messaging, 5000, &service, &target, &request_id, &response),
        "response_receive");
    Bytes bytes;
    platform::frame::append(bytes.request, platform::frame::Type::command, identifier, command);
    platform::frame::append(bytes.response, platform::frame::Type::response, identifier, response);
    std::free(service);
    std::free(target);
    std::free(request_id);
    std::free(response);
    require(korvo_core_ipc_deinit(messaging), "deinit");
    return bytes;
}

template <typename Call>
void compare(char const *name, Bytes const &bytes, pid_t service, Call call) {
    BareExchange bare(bytes.request, bytes.response);
    clockid_t const bare_clock = cpu_clock_of(bare.process());
    clockid_t const service_clock = cpu_clock_of(service);

    std::vector<Cost> bare_costs;
    std::vector<Cost> costs;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        // Side by side, so that what else the machine does meets both.
        bare_costs.push_back(measure(bare_clock, [&] { bare.call(); }));
        costs.push_back(measure(service_clock, call));
        ratios.push_back(costs.back().elapsed / bare_costs.back().elapsed);
    }
    std::nth_element(ratios.begin(), ratios.begin() + rounds / 2, ratios.end());

    auto const elapsed = [](Cost const &cost) { return cost.elapsed; };
    auto const caller = [](Cost const &cost) { return cost.caller; };
    auto const peer = [](Cost const &cost) { return cost.peer; };
    std::printf("%-22s %6zu %6zu   %7.2f %7.2f   %5.2f   %7.2f %7.2f   %7.2f %7.2f\n", name,
                bytes.request.size(), bytes.response.size(), median(bare_costs, elapsed),
                median(costs, elapsed), ratios[rounds / 2], median(bare_costs, caller), median(costs, caller),
                median(bare_costs, peer), median(costs, peer));
}

void run() {
    cpu_set_t core;
    CPU_ZERO(&core);
    CPU_SET(0, &core);
    if (sched_setaffinity(0, sizeof core, &core) != 0) {
        throw std::runtime_error("cannot bind to one core");
    }

    ServiceProcess const service(KORVO_SIMULATOR);
    void *logging = nullptr;
    void *handle = nullptr;
    require(korvo_core_logging_init("bench", &logging), "logging_init");
    require(korvo_api_action_engine_initiator_init(nullptr, logging, &handle, 0, "bench"), "initiator_init");
    unsigned int action_id = 0;
    for (unsigned int count = 0; count < actions; ++count) {
        require(korvo_api_action_engine_create_snapshot_action_send(handle, nullptr, "bench", "bench.jpg",
                                                                    &action_id),
                "create_snapshot_action");
    }

    std::printf("Medians of %d rounds of %d calls, in microseconds; all processes on one core.\n\n", rounds,
                calls_a_round);
    std::printf("%-22s %13s   %15s   %5s   %15s   %15s\n", "", "bytes", "round trip", "", "caller's CPU",
                "peer's CPU");
    std::printf("%-22s %6s %6s   %7s %7s   %5s   %7s %7s   %7s %7s\n", "call", "out", "back", "bare", "ours",
                "ratio", "bare", "client", "bare", "service");

    compare(
        "get_action_type",
        bytes_of(logging, R"({"command":"Get_action_type","action_id":)" + std::to_string(action_id) + "}"),
        service.process(), [&] {
            unsigned int type = 0;
            require(korvo_api_action_engine_get_action_type_send(handle, nullptr, action_id, &type),
                    "get_action_type");
        });
    compare("get_actions (256)", bytes_of(logging, R"({"command":"Get_actions"})"), service.process(), [&] {
        unsigned int **ids = nullptr;
        unsigned int **types = nullptr;
        require(korvo_api_action_engine_get_actions_send(handle, nullptr, &ids, &types), "get_actions");
        korvo_core_free_uint_array(ids);
        korvo_core_free_uint_array(types);
    });

    (void)korvo_api_action_engine_initiator_deinit(handle);
    (void)korvo_core_logging_deinit(logging);
}

}  // namespace

int main() {
    try {
        run();
        return EXIT_SUCCESS;
    } catch (std::exception const &failure) {
        std::fprintf(stderr, "bench-round-trip: %s\n", failure.what());
        return EXIT_FAILURE;
    }
}
