// SPDX-License-Identifier: Apache-2.0
#include "flights.h"

#include <chrono>
#include <cstdlib>
#include <stdexcept>

#include "program.h"

void Arrivals::expect(int count) {
    std::lock_guard<std::mutex> const lock(mutex_);
    expected_ = count;
}

void Arrivals::count(korvo_core_status status) {
    std::lock_guard<std::mutex> const lock(mutex_);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        failed_ = status;
    }
    if (--expected_ == 0) {
        all_.notify_one();
    }
}

void Arrivals::waitForAll() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (!all_.wait_for(lock, std::chrono::seconds(30), [&] { return expected_ == 0; })) {
        throw std::runtime_error("a response did not come");
    }
    require(failed_, "get_relay_action");
}

void sendRelayAsync(Client const &client, RelayCallback callback, void *context) {
    require(korvo_api_action_engine_get_relay_action_send_async(client.handle(), nullptr, contents::action_id,
                                                                callback, context),
            "get_relay_action_send_async");
}

void cancelRelayAsync(Client const &client, RelayCallback callback, void *context) {
    require(korvo_api_action_engine_get_relay_action_cancel_async(client.handle(), callback, context),
            "get_relay_action_cancel_async");
}

void Flights::fly() {
    arrivals_.expect(in_flight);
    for (int call = 0; call < in_flight; ++call) {
        sendRelayAsync(client_, land, this);
    }
    arrivals_.waitForAll();
}

void Flights::land(char *, korvo_core_status status, char *name, char *relay, unsigned int, unsigned char,
                   unsigned int, unsigned int, unsigned int, void *context) {
    std::free(name);
    std::free(relay);
    static_cast<Flights *>(context)->arrivals_.count(status);
}
