// SPDX-License-Identifier: Apache-2.0
// Services and clients that die, stop, keep silent, talk without end, byte by byte, or lie, one process after the other. Every
// call ends in its time and everybody else is served. KORVO_STRESS_PEERS says how many of each kind; how long the worst call
// took is printed. The limit is wide, since tests share the machine.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "chosen_number.h"
#include "korvo_core_private.h"
#include "messaging/addressing.h"
#include "messaging/bounds.h"
#include "messaging/frame.h"
#include "platform_contract/development/child_process.h"
#include "platform_contract/development/raw_socket.h"
#include "platform_contract/support/ends.h"

namespace frame = platform::frame;

namespace {

using Milliseconds = std::chrono::milliseconds;

constexpr int time_out = 20;
constexpr Milliseconds most_overshoot{1500};
constexpr char substitute[] = "nothing came";

std::string socketPath(char const *service) {
    return platform::RuntimeFolder::fromEnvironment().path() + "/" + platform::socketName(service, "");
}

std::string frameOf(frame::Type type, std::string_view first, std::string_view second) {
    std::string bytes;
    frame::append(bytes, type, first, second);
    return bytes;
}

/// Of a frame; the length has four bytes.
std::string header(char type, char const *length) {
    return std::string("KV\x01", 3) + type + std::string(length, 4);
}

void byteByByte(RawSocket const &peer, std::string const &bytes) {
    for (std::size_t place = 0; peer.send(bytes.substr(place, 1)); place = (place + 1) % bytes.size()) {
        (void)poll(nullptr, 0, 1);
    }
}

/// What one does on its end of a connection; `number` lets those of a kind differ. It may return; the process then ends.
struct Kind {
    char const *name;
    std::function<void(RawSocket const &peer, unsigned int number)> behave;
};

void listenTillTheEnd(RawSocket const &peer) {
    while (!peer.receive().empty()) {
    }
}

/// None answers.
std::vector<Kind> const services = {
    {"killed", [](RawSocket const &, unsigned int) { (void)raise(SIGKILL); }},
    {"killed within an answer",
     [](RawSocket const &peer, unsigned int number) {
         (void)peer.send(frameOf(frame::Type::response, "sync", "{}").substr(0, 1 + number % 17));
         (void)raise(SIGKILL);
     }},
    {"stopped", [](RawSocket const &, unsigned int) { (void)raise(SIGSTOP); }},
    {"silent", [](RawSocket const &peer, unsigned int) { listenTillTheEnd(peer); }},
    {"slow by the byte",
     [](RawSocket const &peer, unsigned int) {
         byteByByte(peer, frameOf(frame::Type::response, "nobody", std::string(2000, 'x')));
     }},
    {"talking without end",
     [](RawSocket const &peer, unsigned int number) {
         std::string const talk = frameOf(frame::Type::response, "nobody", std::string(100 + number, 'x')) +
                                  frameOf(frame::Type::event, "source", "{\"event\":\"Unwanted\"}");
         while (peer.send(talk)) {
         }
     }},
    {"lying",
     [](RawSocket const &peer, unsigned int number) {
         std::vector<std::string> const lies = {
             frameOf(frame::Type::command, "sync", "{}") + frameOf(frame::Type::subscribe, "", ""),
             frameOf(frame::Type::response, "another", "{}"),
             header('\x02', "\xff\xff\xff\xff"),
             header('\x00', "\x00\x00\x00\x00"),
             header('\x7f', "\x04\x00\x00\x00"),
             header('\x02', "\x04\x00\x00\x00") + std::string("\xff\xff\xff\x7f", 4),
             "HTTP/1.1 200 OK\r\n\r\n",
             std::string(5000, '\0'),
         };
         (void)peer.send(lies.at(number % lies.size()));
         listenTillTheEnd(peer);
     }},
};

std::vector<Kind> const clients = {
    {"killed", [](RawSocket const &, unsigned int) { (void)raise(SIGKILL); }},
    {"killed within a command",
     [](RawSocket const &peer, unsigned int number) {
         (void)peer.send(frameOf(frame::Type::command, "id", "{}").substr(0, 1 + number % 17));
         (void)raise(SIGKILL);
     }},
    {"stopped",
     [](RawSocket const &peer, unsigned int) {
         std::string subscription;
         frame::append(subscription, frame::Type::subscribe);
         (void)peer.send(subscription + frameOf(frame::Type::command, "id", std::string(100'000, 'x')));
         (void)raise(SIGSTOP);
     }},
    {"silent", [](RawSocket const &peer, unsigned int) { listenTillTheEnd(peer); }},
    {"slow by the byte", [](RawSocket const &peer,
                            unsigned int) { byteByByte(peer, frameOf(frame::Type::command, "id", "{}")); }},
    {"talking without end and never reading",
     [](RawSocket const &peer, unsigned int number) {
         std::string const talk = frameOf(frame::Type::command, "id", std::string(1000 + number, 'x'));
         while (peer.send(talk)) {
         }
     }},
    {"beginning what never ends",
     [](RawSocket const &peer, unsigned int) {
         std::string const whole =
             frameOf(frame::Type::command, "id", std::string(platform::limits::frame_payload - 10, 'x'));
         (void)peer.send(whole.substr(0, whole.size() - 1));
         listenTillTheEnd(peer);
     }},
    {"lying",
     [](RawSocket const &peer, unsigned int number) {
         std::vector<std::string> const lies = {
             frameOf(frame::Type::response, "id", "{}") + frameOf(frame::Type::event, "source", "{}"),
             header('\x01', "\xff\xff\xff\xff"),
             header('\x00', "\x00\x00\x00\x00"),
             header('\x7f', "\x04\x00\x00\x00"),
             header('\x04', "\x04\x00\x00\x00") + "more",
             header('\x01', "\x04\x00\x00\x00") + std::string("\xff\xff\xff\x7f", 4),
             "GET / HTTP/1.1\r\n\r\n",
             std::string(5000, '\0'),
         };
         (void)peer.send(lies.at(number % lies.size()));
         listenTillTheEnd(peer);
     }},
};

/// A client and a service that keep to what is agreed. The service gives commands back.
class Good {
  public:
    Good() {
        EXPECT_EQ(
            korvo_core_ipc_target_command_receive_callback(service_.handle(), answer, service_.handle()),
            KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(korvo_core_ipc_initiator_response_receive_callback(client_.handle(), take, this),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    ~Good() {
        client_.close();
        service_.close();
    }
    Good(Good const &) = delete;
    Good &operator=(Good const &) = delete;

    void *client() const { return client_.handle(); }
    korvo_core_status publish() { return service_.publish("{\"event\":\"E\"}"); }

    korvo_core_status send(char const *service, std::string const &id, bool asynchronously = false) const {
        return korvo_core_private_command_send(client(), service, "", id.c_str(), "{}", 2, this,
                                               asynchronously ? substitute : nullptr);
    }
    korvo_core_status receive(std::string const &id, int limit) const {
        char *response = nullptr;
        std::size_t length = 0;
        korvo_core_status const status =
            korvo_core_private_response_receive(client(), limit, id.c_str(), &response, &length);
        std::free(response);
        return status;
    }
    /// What the good service says.
    void expectAnswer() const {
        auto const start = std::chrono::steady_clock::now();
        ASSERT_EQ(send("sample", "good"), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(receive("good", 20'000), KORVO_CORE_STATUS_NO_ERROR);
        note(start, Milliseconds(0));
    }

    void note(std::chrono::steady_clock::time_point start, Milliseconds due) const {
        auto const elapsed = std::chrono::steady_clock::now() - start;
        worst_ = std::max(worst_, std::chrono::duration_cast<Milliseconds>(elapsed) - due);
    }
    void tell(char const *what, char const *kind, unsigned int peers) {
        std::printf("[  NOTE    ] %u %s, %s: the worst call took %lld ms more than it may\n", peers, what,
                    kind, static_cast<long long>(worst_.count()));
        EXPECT_LT(worst_, most_overshoot) << what << ", " << kind;
        worst_ = Milliseconds(0);
    }

    Mailbox<std::string> responses;

  private:
    static void answer(char **source, char **request_id, char **command, void *messaging) {
        // Whether it is taken is not asked: it is not, of one who is gone.
        (void)korvo_core_ipc_target_response_send(messaging, *source, *request_id, *command);
    }
    static void take(char **, char **, char **, char **response, void *context) {
        static_cast<Good *>(context)->responses.put(*response);
    }

    Service service_;
    Client client_;
    mutable Milliseconds worst_{0};
};

unsigned int peersOfEach() {
    return chosenNumber("KORVO_STRESS_PEERS", 4);
}

}  // namespace

TEST(Peers, ThatAreServicesEndEveryCallInItsTime) {
    setenv("KORVO_LOG_LEVEL", "error", 1);
    Good good;
    std::string const path = socketPath("bad");
    std::size_t called = 0;
    for (auto const &[name, behave] : services) {
        unsigned int taken = 0;
        for (unsigned int number = 0; number < peersOfEach(); ++number) {
            SCOPED_TRACE(name + (" " + std::to_string(number)));
            ChildProcess process([&, &act = behave](std::function<void()> const &ready) {
                RawSocket const listener = RawSocket::listen(path);
                ready();
                RawSocket const peer = listener.accept();
                if (!peer.receive().empty()) {
                    act(peer, number);
                }
            });
            ASSERT_TRUE(process.isReady());
            korvo_core_status const sent = good.send("bad", "async", true);
            // 4 where the end of the last one, or of this one, came first; then nobody is called back.
            EXPECT_TRUE(sent == KORVO_CORE_STATUS_NO_ERROR || sent == KORVO_CORE_STATUS_IPC_FAILED) << sent;
            taken += sent == KORVO_CORE_STATUS_NO_ERROR ? 1U : 0U;
            auto const start = std::chrono::steady_clock::now();
            korvo_core_status status = good.send("bad", "sync");
            if (status == KORVO_CORE_STATUS_NO_ERROR) {
                status = good.receive("sync", time_out);
            }
            // 10 where it has gone already.
            EXPECT_TRUE(status == KORVO_CORE_STATUS_IPC_FAILED || status == KORVO_CORE_STATUS_DISABLED_TARGET)
                << status;
            good.note(start, Milliseconds(time_out));
            good.expectAnswer();
            process.kill();
            (void)unlink(path.c_str());
            if (sent == KORVO_CORE_STATUS_NO_ERROR) {
                EXPECT_EQ(good.responses.take(), substitute);
            }
            if (HasFailure()) {
                return;
            }
        }
        good.tell("services", name, peersOfEach());
        // Each once.
        called += taken;
        EXPECT_EQ(good.responses.count(), called) << name;
    }
    EXPECT_GE(called, peersOfEach());
}

TEST(Peers, ThatAreClientsKeepTheServiceFromNobody) {
    setenv("KORVO_LOG_LEVEL", "error", 1);
    Good good;
    std::string const path = socketPath("sample");
    for (auto const &[name, behave] : clients) {
        for (unsigned int number = 0; number < peersOfEach(); ++number) {
            SCOPED_TRACE(name + (" " + std::to_string(number)));
            ChildProcess process([&, &act = behave](std::function<void()> const &ready) {
                RawSocket const peer = RawSocket::connect(path);
                if (peer.isOpen()) {
                    ready();
                    act(peer, number);
                }
            });
            ASSERT_TRUE(process.isReady());
            // While it does what it does.
            auto const end = std::chrono::steady_clock::now() + Milliseconds(time_out);
            while (!HasFailure() && std::chrono::steady_clock::now() < end) {
                good.expectAnswer();
                EXPECT_EQ(good.publish(), KORVO_CORE_STATUS_NO_ERROR);
            }
            good.expectAnswer();
            process.kill();
            good.expectAnswer();
            if (HasFailure()) {
                return;
            }
        }
        good.tell("clients", name, peersOfEach());
    }
}
