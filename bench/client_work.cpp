// SPDX-License-Identifier: Apache-2.0
// The client library's own work for one call, get_relay_action: building the command, writing it as JSON, reading the
// response and handing out its members. Beside it what one writes by hand for this one call. The core is replaced by
// functions that answer at once.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string_view>

#include "korvo_api_action_engine.h"
#include "korvo_core_private.h"
#include "program.h"
#include "side_by_side.h"

namespace {

constexpr int calls_a_round = 20000;
constexpr std::string_view command = R"({"command":"Get_relay_action","action_id":7})";
constexpr std::string_view response =
    R"({"command":"Get_relay_action","status":0,"action_name":"open the gate","relay_target":"relay 1",)"
    R"("config_mode":1,"config_normally_closed":true,"config_repeat_cycles":3,"config_on_time_ms":500,)"
    R"("config_off_time_ms":250})";

}  // namespace

// In place of the core's own: the program's functions go before those of its libraries.
korvo_core_status korvo_core_private_command_send(void *, char const *, char const *, char const *,
                                                  char const *text, size_t length, void const *) {
    return std::string_view(text, length) == command ? KORVO_CORE_STATUS_NO_ERROR
                                                     : KORVO_CORE_STATUS_INVALID_PARAMS;
}

korvo_core_status korvo_core_private_response_receive(void *, int, char const *, char **text,
                                                      size_t *length) {
    *text = strdup(response.data());
    *length = response.size();
    return *text != nullptr ? KORVO_CORE_STATUS_NO_ERROR : KORVO_CORE_STATUS_ALLOC_FAILED;
}

namespace {

/// What a call hands out.
struct Relay {
    char *action_name = nullptr;
    char *relay_target = nullptr;
    unsigned int config_mode = 0;
    unsigned char config_normally_closed = 0;
    unsigned int config_repeat_cycles = 0;
    unsigned int config_on_time_ms = 0;
    unsigned int config_off_time_ms = 0;

    Relay() = default;
    Relay(Relay const &) = delete;
    Relay &operator=(Relay const &) = delete;
    ~Relay() {
        std::free(action_name);
        std::free(relay_target);
    }
};

void callLibrary(void *handle, Relay &relay) {
    require(korvo_api_action_engine_get_relay_action_send(
                handle, nullptr, 7, &relay.action_name, &relay.relay_target, &relay.config_mode,
                &relay.config_normally_closed, &relay.config_repeat_cycles, &relay.config_on_time_ms,
                &relay.config_off_time_ms),
            "get_relay_action");
}

// By hand, as one may do it who knows that no text holds an escape and no name stands in another one's value.

/// Where the value of a member begins; `name` is the name in quotes, with the colon.
char const *valueOf(char const *text, char const *name) {
    char const *const place = std::strstr(text, name);
    if (place == nullptr) {
        throw std::runtime_error(std::string(name) + " is missing in the response");
    }
    return place + std::strlen(name);
}

unsigned int numberOf(char const *text, char const *name) {
    return static_cast<unsigned int>(std::strtoul(valueOf(text, name), nullptr, 10));
}

char *textOf(char const *text, char const *name) {
    char const *const begin = valueOf(text, name) + 1;
    char const *const end = std::strchr(begin, '"');
    char *const copy = end != nullptr ? strndup(begin, static_cast<std::size_t>(end - begin)) : nullptr;
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    return copy;
}

void callByHand(Relay &relay) {
    static unsigned int last_request = 0;
    char request_id[16];
    std::snprintf(request_id, sizeof request_id, "%u", ++last_request);
    char text[64];
    int const length =
        std::snprintf(text, sizeof text, R"({"command":"Get_relay_action","action_id":%u})", 7U);
    require(korvo_core_private_command_send(nullptr, "action_engine", nullptr, request_id, text,
                                            static_cast<std::size_t>(length), nullptr),
            "sending by hand");
    char *received = nullptr;
    std::size_t size = 0;
    require(korvo_core_private_response_receive(nullptr, -1, request_id, &received, &size),
            "receiving by hand");
    require(numberOf(received, "\"status\":"), "get_relay_action by hand");
    relay.action_name = textOf(received, "\"action_name\":");
    relay.relay_target = textOf(received, "\"relay_target\":");
    relay.config_mode = numberOf(received, "\"config_mode\":");
    relay.config_normally_closed = valueOf(received, "\"config_normally_closed\":")[0] == 't' ? 1 : 0;
    relay.config_repeat_cycles = numberOf(received, "\"config_repeat_cycles\":");
    relay.config_on_time_ms = numberOf(received, "\"config_on_time_ms\":");
    relay.config_off_time_ms = numberOf(received, "\"config_off_time_ms\":");
    std::free(received);
}

void check(Relay const &relay) {
    if (std::string_view(relay.action_name) != "open the gate" ||
        std::string_view(relay.relay_target) != "relay 1" || relay.config_mode != 1 ||
        relay.config_normally_closed != 1 || relay.config_repeat_cycles != 3 ||
        relay.config_on_time_ms != 500 || relay.config_off_time_ms != 250) {
        throw std::runtime_error("a call handed out something else than the response holds");
    }
}

template <typename Call>
Side sideOf(Call call) {
    return {[call] {
                for (int count = 0; count < calls_a_round; ++count) {
                    Relay relay;
                    call(relay);
                    check(relay);
                }
            },
            {}};
}

void run() {
    useOneCore();
    // A messaging handle that is given is never looked into.
    char messaging = 0;
    void *handle = nullptr;
    require(korvo_api_action_engine_initiator_init(&messaging, nullptr, &handle, 0, "bench"),
            "initiator_init");
    Comparison const result = compareSideBySide(
        sideOf(callByHand), sideOf([handle](Relay &relay) { callLibrary(handle, relay); }), calls_a_round);
    (void)korvo_api_action_engine_initiator_deinit(handle);
    std::printf(
        "get_relay_action without a core, %zu bytes out and %zu back.\n"
        "Medians of %d rounds of %d calls, in nanoseconds.\n\n",
        command.size(), response.size(), rounds, calls_a_round);
    std::printf("by hand %.0f   library %.0f   ratio %.2f\n", 1000 * result.yardstick.elapsed,
                1000 * result.measured.elapsed, result.ratio);
}

}  // namespace

int main() {
    return runBenchmark("bench-client-work", run);
}
