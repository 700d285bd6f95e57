// SPDX-License-Identifier: Apache-2.0
// Events from one process to 8 others, beside bare sockets to which the same bytes are written, many events at once;
// all processes on one core.

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <stdexcept>
#include <string>

#include "korvo_core.h"
#include "listeners.h"
#include "messaging/frame.h"
#include "program.h"
#include "side_by_side.h"
#include "socket_transfer.h"
#include "temporary_folder.h"

namespace {

constexpr int subscribers = 8;
/// Fewer than an initiator keeps for its callbacks, so that none is dropped.
constexpr int events_a_burst = 512;
constexpr int bursts_a_round = 10;
constexpr int gathered = 64;
static_assert(events_a_burst % gathered == 0);

constexpr char service[] = "bench";
constexpr char event[] =
    R"({"event":"Action_completed","action_id":7,"action_name":"open the gate","success":true})";

/// A stream socket to each of the listeners.
class Sockets {
  public:
    Sockets() {
        for (auto &pair : pairs_) {
            require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair.data()), "socketpair");
        }
    }
    ~Sockets() {
        for (auto const &pair : pairs_) {
            close(pair[0]);
            close(pair[1]);
        }
    }
    Sockets(Sockets const &) = delete;
    Sockets &operator=(Sockets const &) = delete;

    int publishers(std::size_t number) const { return pairs_.at(number)[0]; }
    int listeners(std::size_t number) const { return pairs_.at(number)[1]; }

  private:
    std::array<std::array<int, 2>, subscribers> pairs_;
};

/// The publishing side of the service.
class Publisher {
  public:
    Publisher() {
        require(korvo_core_ipc_target_init(nullptr, service, nullptr, "bench", &messaging_), "target_init");
    }
    ~Publisher() { (void)korvo_core_ipc_deinit(messaging_); }
    Publisher(Publisher const &) = delete;
    Publisher &operator=(Publisher const &) = delete;

    /// Returns when all subscribers have subscribed, with the service's own thread started.
    void waitForSubscribers() const {
        for (int count = 0; count < subscribers; ++count) {
            char *source = nullptr;
            char *request_id = nullptr;
            char *command = nullptr;
            require(korvo_core_ipc_target_command_receive(messaging_, 10'000, &source, &request_id, &command),
                    "waiting for the subscribers");
            std::free(source);
            std::free(request_id);
            std::free(command);
        }
        require(korvo_core_ipc_target_command_receive_callback(messaging_, ignoreCommand, nullptr),
                "command_receive_callback");
    }

    void publish() const { require(korvo_core_ipc_target_event_send(messaging_, event), "event_send"); }

  private:
    static void ignoreCommand(char **, char **, char **, void *) {}

    void *messaging_ = nullptr;
};

/// What a subscriber keeps count with.
struct Subscription {
    Listeners::Tell const &tell;
    int events = 0;

    static void take(char **, char **, char **, void *context) {
        auto &self = *static_cast<Subscription *>(context);
        if (++self.events == events_a_burst) {
            self.events = 0;
            self.tell();
        }
    }
};

void subscribe(Listeners::Tell const &tell) {
    Subscription subscription{tell};
    void *messaging = nullptr;
    require(korvo_core_ipc_initiator_init(nullptr, "bench", &messaging, 1), "initiator_init");
    require(korvo_core_ipc_initiator_event_receive_callback(messaging, Subscription::take, &subscription),
            "event_receive_callback");
    require(korvo_core_ipc_initiator_event_subscribe(messaging, service), "event_subscribe");
    // It arrives behind the subscription, so the publisher knows when it has that.
    require(korvo_core_ipc_initiator_command_send(messaging, service, nullptr, "1", "{}"), "command_send");
    for (;;) {
        pause();
    }
}

void run() {
    useOneCore();
    std::string one;
    platform::frame::append(one, platform::frame::Type::event, "", event);
    std::string together;
    for (int count = 0; count < gathered; ++count) {
        together += one;
    }

    Sockets const sockets;
    Listeners const bare_listeners(subscribers, [&](int number, Listeners::Tell const &tell) {
        std::string burst(one.size() * events_a_burst, '\0');
        while (receiveAll(sockets.listeners(static_cast<std::size_t>(number)), burst)) {
            tell();
        }
    });
    auto const bare_round = [&] {
        for (int burst = 0; burst < bursts_a_round; ++burst) {
            for (int count = 0; count < events_a_burst; count += gathered) {
                for (std::size_t number = 0; number < subscribers; ++number) {
                    require(sendAll(sockets.publishers(number), together) ? 0 : -1, "sending");
                }
            }
            bare_listeners.waitForAll();
        }
    };

    TemporaryFolder const folder;
    Publisher const publisher;
    Listeners const listeners(subscribers, [](int, Listeners::Tell const &tell) { subscribe(tell); });
    publisher.waitForSubscribers();
    auto const round = [&] {
        for (int burst = 0; burst < bursts_a_round; ++burst) {
            for (int count = 0; count < events_a_burst; ++count) {
                publisher.publish();
            }
            listeners.waitForAll();
        }
    };

    Comparison const result =
        compareSideBySide({bare_round, bare_listeners.processes()}, {round, listeners.processes()},
                          events_a_burst * bursts_a_round);
    std::printf(
        "Events of %zu bytes to %d subscribers, in bursts of %d; bare, %d are written at once.\n"
        "Medians of %d rounds of %d events, in microseconds an event; all processes on one core.\n\n",
        one.size(), subscribers, events_a_burst, gathered, rounds, events_a_burst * bursts_a_round);
    printShare("publisher", "subscribers", result);
}

}  // namespace

int main() {
    return runBenchmark("bench-events", run);
}
