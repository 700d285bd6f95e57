// SPDX-License-Identifier: Apache-2.0
// Peers that die, stop, are strangers, or do not keep to the protocol.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "development/child_process.h"
#include "development/raw_socket.h"
#include "korvo_core_private.h"
#include "messaging/addressing.h"
#include "messaging/frame.h"
#include "support/ends.h"

using platform::socketName;
namespace frame = platform::frame;

namespace {

std::string socketPath(char const *service = "sample", char const *target = "") {
    return std::string(std::getenv("KORVO_RUNTIME_DIR")) + "/" + socketName(service, target);
}

std::string frameOf(frame::Type type, std::string_view first, std::string_view second) {
    std::string bytes;
    frame::append(bytes, type, first, second);
    return bytes;
}

/// Whether the service answers an initiator.
void expectToServe(Service &service) {
    Client client;
    ASSERT_EQ(client.send("still there", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "still there");
}

using Milliseconds = std::chrono::milliseconds;

Milliseconds since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - start);
}

}  // namespace

TEST(KilledService, EndsACallThatWaitsAndTheNextCallWorksWhenItIsBack) {
    auto process = std::make_unique<ServiceProcess>();
    ASSERT_TRUE(process->isReady());
    Client client;
    ASSERT_EQ(client.send("first", "echo"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);

    ASSERT_EQ(client.send("second", "silent"), KORVO_CORE_STATUS_NO_ERROR);
    Mailbox<korvo_core_status> ended;
    std::thread caller([&] {
        Response none;
        ended.put(client.receive(none, -1));
    });
    EXPECT_FALSE(ended.take(Milliseconds(50)).has_value());
    auto const start = std::chrono::steady_clock::now();
    process->kill();
    EXPECT_EQ(ended.take(), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_LT(since(start), Milliseconds(2000));
    caller.join();

    EXPECT_EQ(client.send("third", "echo"), KORVO_CORE_STATUS_DISABLED_TARGET);
    // The dead process's socket file is still there; the new one takes its place.
    EXPECT_TRUE(std::filesystem::exists(socketPath()));
    Service again;
    ASSERT_EQ(client.send("fourth", "echo"), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(again.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "fourth");
}

TEST(KilledService, EndsEveryCallThatWaitsOnIt) {
    auto process = std::make_unique<ServiceProcess>();
    ASSERT_TRUE(process->isReady());
    Client client;
    constexpr int callers = 4;
    Mailbox<korvo_core_status> ended;
    std::vector<std::thread> threads;
    for (int caller = 0; caller < callers; ++caller) {
        ASSERT_EQ(client.send(std::to_string(caller).c_str(), "silent"), KORVO_CORE_STATUS_NO_ERROR);
        threads.emplace_back([&] {
            Response none;
            ended.put(client.receive(none, -1));
        });
    }
    EXPECT_FALSE(ended.take(Milliseconds(50)).has_value());
    process->kill();
    for (int caller = 0; caller < callers; ++caller) {
        EXPECT_EQ(ended.take(), KORVO_CORE_STATUS_IPC_FAILED);
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
}

TEST(KilledService, DoesNotGetACommandTwice) {
    auto process = std::make_unique<ServiceProcess>();
    ASSERT_TRUE(process->isReady());
    Client client;
    ASSERT_EQ(client.send("unanswered", "silent"), KORVO_CORE_STATUS_NO_ERROR);
    process->kill();
    Service again;
    ASSERT_EQ(client.send("next", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(again.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "next");
    EXPECT_EQ(again.poll(command, 0), KORVO_CORE_STATUS_IPC_FAILED);
}

TEST(StoppedService, MakesCallsTimeOutAndAnswersLate) {
    ServiceProcess process;
    ASSERT_TRUE(process.isReady());
    Client client;
    process.signal(SIGSTOP);
    ASSERT_EQ(client.send("id", "echo"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.receive(response, 100), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_GE(since(start), Milliseconds(99));
    process.signal(SIGCONT);
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.request_id, "id");
}

TEST(KilledInitiator, LeavesAServiceThatServesOthers) {
    Service service;
    ChildProcess process([](std::function<void()> const &ready) {
        void *client = nullptr;
        if (korvo_core_ipc_initiator_init(nullptr, "victim", &client, 1) == KORVO_CORE_STATUS_NO_ERROR &&
            korvo_core_ipc_initiator_event_subscribe(client, "sample") == KORVO_CORE_STATUS_NO_ERROR &&
            korvo_core_ipc_initiator_command_send(client, "sample", "", "last words", "{}") ==
                KORVO_CORE_STATUS_NO_ERROR) {
            ready();
        }
        (void)pause();
    });
    ASSERT_TRUE(process.isReady());
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "last words");
    process.kill();
    (void)service.respond(command, "{}");
    EXPECT_EQ(service.publish("{}"), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(service.poll(command, 0), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(service.respond(command, "{}"), KORVO_CORE_STATUS_DISABLED_TARGET);
    expectToServe(service);
}

TEST(BrokenInitiator, IsDisconnectedAndHarmsNobody) {
    Service service;
    for (std::string const &garbage :
         {std::string("GET / HTTP/1.1\r\n\r\n"), std::string("KV\x01\x01\xff\xff\xff\xff", 8),
          std::string(5000, '\0')}) {
        RawSocket const peer = RawSocket::connect(socketPath());
        ASSERT_TRUE(peer.isOpen());
        ASSERT_TRUE(peer.send(garbage));
        Command command;
        EXPECT_EQ(service.poll(command, 50), KORVO_CORE_STATUS_IPC_FAILED);
        EXPECT_TRUE(peer.ends());
    }
    expectToServe(service);
}

TEST(BrokenInitiator, ThatSendsHalfAFrameHoldsNobodyUp) {
    Service service;
    RawSocket const peer = RawSocket::connect(socketPath());
    ASSERT_TRUE(peer.send(std::string("KV\x01\x01\x00\x00\x10\x00partial", 15)));
    expectToServe(service);
}

TEST(BrokenInitiator, ThatSendsWhatOnlyServicesSendIsPassedOver) {
    Service service;
    RawSocket const peer = RawSocket::connect(socketPath());
    ASSERT_TRUE(peer.send(frameOf(frame::Type::response, "id", "{}") + frameOf(frame::Type::event, "", "{}") +
                          frameOf(frame::Type::command, "id", "{}")));
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "id");
}

namespace {

/// Something that listens in a service's place and speaks as the test says.
class FakeService {
  public:
    FakeService() : listener_(RawSocket::listen(socketPath("broken", ""))) {}
    ~FakeService() { (void)unlink(socketPath("broken", "").c_str()); }
    FakeService(FakeService const &) = delete;
    FakeService &operator=(FakeService const &) = delete;

    RawSocket accept() const { return listener_.accept(); }

  private:
    RawSocket listener_;
};

}  // namespace

TEST(BrokenService, EndsACallAtOnce) {
    FakeService const service;
    Client client;
    ASSERT_EQ(client.send("id", "{}", "broken", ""), KORVO_CORE_STATUS_NO_ERROR);
    RawSocket const peer = service.accept();
    ASSERT_FALSE(peer.receive().empty());
    ASSERT_TRUE(peer.send("this is no frame"));
    Response response;
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.receive(response, 20000), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_LT(since(start), Milliseconds(10000));
    EXPECT_TRUE(peer.ends());
}

TEST(BrokenService, MayAnswerWhatWasNotAskedWithoutHarm) {
    FakeService const service;
    Client client;
    ASSERT_EQ(client.send("id", "{}", "broken", ""), KORVO_CORE_STATUS_NO_ERROR);
    RawSocket const peer = service.accept();
    ASSERT_FALSE(peer.receive().empty());
    ASSERT_TRUE(peer.send(frameOf(frame::Type::response, "another id", "{\"n\":1}") +
                          frameOf(frame::Type::event, "s", "{\"event\":\"Unwanted\"}") +
                          frameOf(frame::Type::command, "id", "{}") +
                          frameOf(frame::Type::response, "id", "{\"n\":2}") +
                          frameOf(frame::Type::response, "id", "{\"n\":3}")));
    Response response;
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.response, "{\"n\":2}");
    EXPECT_EQ(client.receive(response, 0), KORVO_CORE_STATUS_IPC_FAILED);
}

TEST(TalkingService, MakesNoCallLongerThanItsTimeout) {
    // Whole frames that are for nobody, and one byte after the other of a frame that never ends.
    for (bool const by_the_byte : {false, true}) {
        FakeService const service;
        Client client;
        ASSERT_EQ(client.send("id", "{}", "broken", ""), KORVO_CORE_STATUS_NO_ERROR);
        RawSocket const peer = service.accept();
        ASSERT_FALSE(peer.receive().empty());
        std::atomic<bool> is_over{false};
        std::thread talker([&] {
            std::string const frame = frameOf(frame::Type::response, "another id", std::string(100'000, ' '));
            auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
            for (std::size_t place = 0; !is_over && std::chrono::steady_clock::now() < end; ++place) {
                (void)peer.send(by_the_byte ? frame.substr(place % 50'000, 1) : frame);
                if (by_the_byte) {
                    std::this_thread::sleep_for(Milliseconds(1));
                }
            }
        });
        auto const start = std::chrono::steady_clock::now();
        char *response = nullptr;
        std::size_t length = 0;
        EXPECT_EQ(korvo_core_private_response_receive(client.handle(), 200, "id", &response, &length),
                  KORVO_CORE_STATUS_IPC_FAILED);
        Response any;
        EXPECT_EQ(client.receive(any, 200), KORVO_CORE_STATUS_IPC_FAILED);
        EXPECT_LT(since(start), Milliseconds(8000)) << (by_the_byte ? "bytes" : "frames");
        is_over = true;
        client.close();
        talker.join();
    }
}

TEST(SilentService, LeavesAThreadThatTakesOverReadingTheRestOfItsTime) {
    FakeService const service;
    Client client;
    for (char const *const id : {"first", "second"}) {
        ASSERT_EQ(
            korvo_core_private_command_send(client.handle(), "broken", "", id, "{}", 2, nullptr, nullptr),
            KORVO_CORE_STATUS_NO_ERROR);
    }
    auto const time_of_receive = [&](char const *id, int timeout) {
        auto const start = std::chrono::steady_clock::now();
        char *response = nullptr;
        std::size_t length = 0;
        EXPECT_EQ(korvo_core_private_response_receive(client.handle(), timeout, id, &response, &length),
                  KORVO_CORE_STATUS_IPC_FAILED);
        return since(start);
    };
    // The first one reads for both, and leaves half a second before the second one's time is up.
    std::thread first([&] { (void)time_of_receive("first", 2500); });
    std::this_thread::sleep_for(Milliseconds(100));
    EXPECT_LT(time_of_receive("second", 3000), Milliseconds(4500));
    first.join();
}

TEST(SlowService, AnswersAThreadWhoseReaderGaveUp) {
    FakeService const service;
    Client client;
    for (char const *const id : {"first", "second", "third"}) {
        ASSERT_EQ(
            korvo_core_private_command_send(client.handle(), "broken", "", id, "{}", 2, nullptr, nullptr),
            KORVO_CORE_STATUS_NO_ERROR);
    }
    RawSocket const peer = service.accept();
    auto const receive = [&](char const *id, int timeout) {
        char *response = nullptr;
        std::size_t length = 0;
        korvo_core_status const status =
            korvo_core_private_response_receive(client.handle(), timeout, id, &response, &length);
        std::free(response);
        return status;
    };
    constexpr int long_ms = 25'000;
    // The first one reads for all; the second one's time is up as well before there is an answer to the third.
    std::thread first([&] { EXPECT_EQ(receive("first", 300), KORVO_CORE_STATUS_IPC_FAILED); });
    std::this_thread::sleep_for(Milliseconds(100));
    std::thread second([&] { EXPECT_EQ(receive("second", 200), KORVO_CORE_STATUS_IPC_FAILED); });
    std::this_thread::sleep_for(Milliseconds(50));
    auto const start = std::chrono::steady_clock::now();
    std::thread third([&] { EXPECT_EQ(receive("third", long_ms), KORVO_CORE_STATUS_NO_ERROR); });
    first.join();
    second.join();
    EXPECT_TRUE(peer.send(frameOf(frame::Type::response, "third", "{}")));
    third.join();
    EXPECT_LT(since(start), Milliseconds(long_ms / 2));
}

TEST(LostService, IsToldToWhoReceivesLater) {
    Client client;
    {
        Service const service;
        ASSERT_EQ(client.send("lost", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    }
    // This one notices the loss, before anybody receives.
    ASSERT_EQ(client.send("never there", "{}"), KORVO_CORE_STATUS_DISABLED_TARGET);
    Response response;
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.receive(response, 20'000), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_LT(since(start), Milliseconds(10'000)) << "it waited for what was lost";
    EXPECT_EQ(client.receive(response, 0), KORVO_CORE_STATUS_IPC_FAILED);
}

TEST(BusyService, IsSubscribedToAsSoonAsItTakesConnections) {
    FakeService const service;
    std::vector<RawSocket> queue;
    for (int waiting = 0; waiting < 9; ++waiting) {
        queue.push_back(RawSocket::connect(socketPath("broken", "")));
    }
    Client client;
    client.collectEvents();
    ASSERT_EQ(client.subscribe("broken"), KORVO_CORE_STATUS_NO_ERROR);
    for (RawSocket const &waiting : queue) {
        EXPECT_TRUE(waiting.isOpen());
        (void)service.accept();
    }
    // Nothing has told the client that there is room now.
    RawSocket const peer = service.accept();
    ASSERT_TRUE(peer.send(frameOf(frame::Type::event, "s", "{\"event\":\"Late\"}")));
    auto const event = client.events.take();
    ASSERT_TRUE(event.has_value());
    EXPECT_EQ(event->event, "{\"event\":\"Late\"}");
}

TEST(BrokenService, CannotAnswerForAnotherOne) {
    FakeService const broken;
    Service service;
    Client client;
    ASSERT_EQ(client.send("to broken", "{}", "broken", ""), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.send("to sample", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    RawSocket const peer = broken.accept();
    ASSERT_FALSE(peer.receive().empty());
    ASSERT_TRUE(peer.send(frameOf(frame::Type::response, "to sample", "{\"forged\":true}") +
                          frameOf(frame::Type::response, "to broken", "{}")));
    Response response;
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.request_id, "to broken");
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(service.respond(command, "{\"forged\":false}"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.response, "{\"forged\":false}");
}

TEST(Strangers, AreDisconnectedByTheService) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    std::optional<Service> service(std::in_place);
    // Opens what the folder and the socket keep closed, so that only the check of the peer is left.
    ASSERT_EQ(chmod(std::getenv("KORVO_RUNTIME_DIR"), 0755), 0);
    ASSERT_EQ(chmod(socketPath().c_str(), 0777), 0);
    std::string const path = socketPath();
    ChildProcess stranger([&](std::function<void()> const &ready) {
        if (setuid(12345) != 0) {
            return;
        }
        std::vector<RawSocket> peers;
        for (int attempt = 0; attempt < 200; ++attempt) {
            peers.push_back(RawSocket::connect(path));
            if (!peers.back().isOpen() ||
                !peers.back().send(frameOf(frame::Type::command, "stranger", "{}"))) {
                return;
            }
        }
        ready();
        (void)pause();
    });
    ASSERT_TRUE(stranger.isReady());
    testing::internal::CaptureStderr();
    Command command;
    EXPECT_EQ(service->poll(command, 200), KORVO_CORE_STATUS_IPC_FAILED);
    expectToServe(*service);
    // At its end, if not before, the number of those is told that have no line of their own.
    service.reset();
    std::string const said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("of user 12345"), std::string::npos) << said;
    EXPECT_NE(said.find("more connections of others were refused, 200 in all"), std::string::npos) << said;
    EXPECT_LE(std::count(said.begin(), said.end(), '\n'), 10) << said;
}

TEST(Strangers, WhoListenInAServicesPlaceAreNotSpokenTo) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can become another user";
    }
    std::string const folder = std::getenv("KORVO_RUNTIME_DIR");
    std::string const path = socketPath("strange", "");
    std::string const elsewhere = folder + "/open";
    ASSERT_EQ(mkdir(elsewhere.c_str(), 0777), 0);
    ASSERT_EQ(chmod(elsewhere.c_str(), 0777), 0);
    ASSERT_EQ(chmod(folder.c_str(), 0755), 0);
    ChildProcess stranger([&](std::function<void()> const &ready) {
        if (setuid(12345) != 0) {
            return;
        }
        RawSocket const listener = RawSocket::listen(elsewhere + "/socket");
        if (listener.isOpen()) {
            ready();
        }
        (void)pause();
    });
    ASSERT_TRUE(stranger.isReady());
    ASSERT_EQ(rename((elsewhere + "/socket").c_str(), path.c_str()), 0);
    Client client;
    testing::internal::CaptureStderr();
    EXPECT_EQ(client.send("id", "{}", "strange", ""), KORVO_CORE_STATUS_IPC_FAILED);
    std::string const said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("of user 12345"), std::string::npos) << said;
    (void)unlink(path.c_str());
    (void)rmdir(elsewhere.c_str());
}
