// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_FLIGHTS_H
#define KORVO_BENCH_FLIGHTS_H

#include <condition_variable>
#include <mutex>

#include "client.h"
#include "korvo_api_action_engine.h"

constexpr int in_flight = 64;

/// Waits for as many responses as are expected.
class Arrivals {
  public:
    void expect(int count);
    /// One has come.
    void count(korvo_core_status status);
    /// Throws std::runtime_error when one brought another status than 0, or does not come within 30 seconds.
    void waitForAll();

  private:
    std::mutex mutex_;
    std::condition_variable all_;
    int expected_ = 0;
    korvo_core_status failed_ = KORVO_CORE_STATUS_NO_ERROR;
};

/// The callback's type of the call that flights are made of, and that call. Throws std::runtime_error.
using RelayCallback = korvo_api_action_engine_get_relay_action_method_callback_func_ptr;
void sendRelayAsync(Client const &client, RelayCallback callback, void *context);
/// Registrations stay until they are cancelled.
void cancelRelayAsync(Client const &client, RelayCallback callback, void *context);

/// Sends 64 calls from outside of any callback, and waits for their responses.
class Flights {
  public:
    /// Leaves 64 registrations behind.
    void fly();
    /// Drops the registrations of this object's calls.
    void cancel() { cancelRelayAsync(client_, land, this); }

    Client const &client() const { return client_; }

  private:
    static void land(char *, korvo_core_status status, char *name, char *relay, unsigned int, unsigned char,
                     unsigned int, unsigned int, unsigned int, void *context);

    // Before the client, whose callbacks use it.
    Arrivals arrivals_;
    Client client_;
};

#endif
