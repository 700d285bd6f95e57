// SPDX-License-Identifier: Apache-2.0
// Events from one process to 8 others, which read them; beside peers, and beside bare sockets to which the same bytes are
// written, many events at once; all processes on one core.

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "client.h"
#include "korvo_api_action_engine.h"
#include "listeners.h"
#include "messaging/frame.h"
#include "peers/encoding.h"
#include "peers/peers.h"
#include "program.h"
#include "side_by_side.h"
#include "socket_transfer.h"
#include "temporary_folder.h"

namespace {

constexpr int subscribers = 8;
/// Fewer than an initiator keeps for its callbacks, so that none is dropped.
constexpr int events_a_burst = 512;
constexpr int gathered = 64;
static_assert(events_a_burst % gathered == 0);

/// What processes wait for that must begin before the publishers exist.
class Gate {
  public:
    Gate() { require(pipe(ends_), "pipe"); }
    ~Gate() {
        close(ends_[0]);
        open();
    }
    Gate(Gate const &) = delete;
    Gate &operator=(Gate const &) = delete;

    void open() {
        if (ends_[1] >= 0) {
            close(ends_[1]);
            ends_[1] = -1;
        }
    }

    /// In another process than the one that opens it.
    void wait() {
        open();
        char nothing = 0;
        require(read(ends_[0], &nothing, 1), "waiting at the gate");
    }

  private:
    int ends_[2];
};

/// Counts the events of a burst.
class Counter {
  public:
    explicit Counter(Listeners::Tell const &tell) : tell_(tell) {}

    void count() {
        if (++events_ == events_a_burst) {
            events_ = 0;
            tell_();
        }
    }

  private:
    Listeners::Tell const &tell_;
    int events_ = 0;
};

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

/// The publishing side of our service.
class OurPublisher : public Publisher {
  public:
    OurPublisher() : event_(boost_json.encoding()->event()) {
        require(korvo_core_ipc_target_init(nullptr, "action_engine", nullptr, "bench", &messaging_),
                "target_init");
    }
    ~OurPublisher() override { (void)korvo_core_ipc_deinit(messaging_); }
    OurPublisher(OurPublisher const &) = delete;
    OurPublisher &operator=(OurPublisher const &) = delete;

    /// A command of each arrives behind its subscription.
    void waitFor(int count) override {
        for (int number = 0; number < count; ++number) {
            char *source = nullptr;
            char *request_id = nullptr;
            char *command = nullptr;
            require(korvo_core_ipc_target_command_receive(messaging_, 10'000, &source, &request_id, &command),
                    "waiting for the subscribers");
            std::free(source);
            std::free(request_id);
            std::free(command);
        }
        // From now on the service's own thread sends what a socket did not take at once.
        require(korvo_core_ipc_target_command_receive_callback(messaging_, ignoreCommand, nullptr),
                "command_receive_callback");
    }

    void publish() override {
        require(korvo_core_ipc_target_event_send(messaging_, event_.c_str()), "event_send");
    }

  private:
    static void ignoreCommand(char **, char **, char **, void *) {}

    std::string event_;
    void *messaging_ = nullptr;
};

void takeOurEvent(unsigned int action_id, char const *action_name, unsigned char success, char const *,
                  void *counter) {
    Event{action_id, action_name, success != 0}.check();
    static_cast<Counter *>(counter)->count();
}

[[noreturn]] void subscribeToOurs(Counter &counter) {
    Client const client(nullptr, /*subscribes*/ true);
    korvo_api_action_engine_action_completed_register_event_handler(client.handle(), takeOurEvent, &counter);
    char *request_id = nullptr;
    require(korvo_api_action_engine_get_action_type_non_blocking_send(client.handle(), nullptr, &request_id,
                                                                      contents::action_id),
            "telling the publisher");
    for (;;) {
        pause();
    }
}

void listenToPeer(EventPeer const &peer, std::string const &path, Counter &counter) {
    std::unique_ptr<Subscriber> const subscriber = peer.subscribe(path);
    for (;;) {
        Event event;
        subscriber->receive(event);
        event.check();
        counter.count();
    }
}

/// All that is there of one side.
struct Publishing {
    std::string name;
    std::function<std::unique_ptr<Publisher>()> make_publisher;
    std::unique_ptr<Publisher> publisher;
    // Ends first, or its processes would find the publisher gone.
    std::unique_ptr<Listeners> listeners;
};

void compareEvents(Run &run) {
    useOneCore();
    int const bursts = run.calls(5);
    std::string one;
    platform::frame::append(one, platform::frame::Type::event, "", boost_json.encoding()->event());
    std::string together;
    for (int count = 0; count < gathered; ++count) {
        together += one;
    }

    TemporaryFolder const folder;
    Gate gate;
    std::vector<Publishing> publishings;
    EventPeers const peers = eventPeers();
    for (auto const &peer : peers) {
        std::string const path = folder.path() + "/" + peer->name();
        publishings.push_back(
            {peer->name(), [&, path] { return peer->publisher(path); }, nullptr,
             std::make_unique<Listeners>(subscribers, [&](int, Listeners::Tell const &tell) {
                 gate.wait();
                 Counter counter(tell);
                 listenToPeer(*peer, path, counter);
             })});
    }
    publishings.push_back({"ours", [] { return std::make_unique<OurPublisher>(); }, nullptr,
                           std::make_unique<Listeners>(subscribers, [&](int, Listeners::Tell const &tell) {
                               gate.wait();
                               Counter counter(tell);
                               subscribeToOurs(counter);
                           })});
    Sockets const sockets;
    Listeners const bare_listeners(subscribers, [&](int number, Listeners::Tell const &tell) {
        gate.wait();
        std::string burst(one.size() * events_a_burst, '\0');
        while (receiveAll(sockets.listeners(static_cast<std::size_t>(number)), burst)) {
            tell();
        }
    });

    for (Publishing &publishing : publishings) {
        publishing.publisher = publishing.make_publisher();
    }
    gate.open();
    std::vector<Side> sides;
    for (Publishing const &publishing : publishings) {
        publishing.publisher->waitFor(subscribers);
        sides.push_back({publishing.name,
                         [&publishing, bursts] {
                             for (int burst = 0; burst < bursts; ++burst) {
                                 for (int count = 0; count < events_a_burst; ++count) {
                                     publishing.publisher->publish();
                                 }
                                 publishing.publisher->flush();
                                 publishing.listeners->waitForAll();
                             }
                         },
                         publishing.listeners->processes()});
    }
    sides.push_back({"bare bytes, 64 events in one write",
                     [&] {
                         for (int burst = 0; burst < bursts; ++burst) {
                             for (int count = 0; count < events_a_burst; count += gathered) {
                                 for (std::size_t number = 0; number < subscribers; ++number) {
                                     require(sendAll(sockets.publishers(number), together) ? 0 : -1,
                                             "sending");
                                 }
                             }
                             bare_listeners.waitForAll();
                         }
                     },
                     bare_listeners.processes()});
    run.results.compared("events to 8 subscribers",
                         compareSideBySide(sides, events_a_burst * bursts, run.rounds()));
}

}  // namespace

int main(int argc, char **argv) {
    return runBenchmark(argc, argv, compareEvents);
}
