// SPDX-License-Identifier: Apache-2.0
// What happens at the bounds of the messaging, and how long closing takes.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <set>
#include <thread>

#include "development/child_process.h"
#include "korvo_core_private.h"
#include "support/ends.h"

namespace {

using Milliseconds = std::chrono::milliseconds;
constexpr std::size_t mebibyte = 1024 * 1024;

Milliseconds since(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration_cast<Milliseconds>(std::chrono::steady_clock::now() - start);
}

std::size_t entriesOf(char const *folder) {
    std::size_t count = 0;
    for (auto const &entry : std::filesystem::directory_iterator(folder)) {
        (void)entry;
        ++count;
    }
    return count;
}

}  // namespace

TEST(MessageSize, IsAtMostOneMebibyte) {
    Service service;
    Client client;
    // Two texts with four bytes of length each: 1048576 - 8 - 2 are left for the command.
    std::string const largest(mebibyte - 8 - 2, 'x');
    std::thread sender([&] { EXPECT_EQ(client.send("id", largest.c_str()), KORVO_CORE_STATUS_NO_ERROR); });
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    sender.join();
    EXPECT_EQ(command.command, largest);
    std::thread responder([&] {
        EXPECT_EQ(service.respond(command, largest), KORVO_CORE_STATUS_NO_ERROR);
        Command none;
        EXPECT_EQ(service.poll(none, 2000), KORVO_CORE_STATUS_IPC_FAILED);
    });
    Response response;
    EXPECT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.response, largest);
    responder.join();
}

TEST(MessageSize, BeyondTheBoundIsRefusedAndNothingIsSent) {
    Service service;
    Client client;
    std::string const too_large(mebibyte, 'x');
    EXPECT_EQ(client.send("id", too_large.c_str()), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(service.publish(too_large), KORVO_CORE_STATUS_IPC_FAILED);
    ASSERT_EQ(client.send("next", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "next");
    EXPECT_EQ(service.respond(command, too_large), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_EQ(service.respond(command, "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.response, "{}");
}

TEST(SlowSubscriber, LosesEventsAndDelaysNobody) {
    Service service;
    service.answerWith([](Command const &command) { return command.command; });
    Client slow;
    ASSERT_EQ(slow.subscribe(), KORVO_CORE_STATUS_NO_ERROR);
    // After this answer the subscription is known to the service; from here on nobody reads for this client.
    ASSERT_EQ(slow.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    ASSERT_EQ(slow.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    Client quick;
    quick.collectEvents();
    ASSERT_EQ(quick.subscribe(), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(quick.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(quick.receive(response), KORVO_CORE_STATUS_NO_ERROR);

    std::string const large(100000, 'x');
    testing::internal::CaptureStderr();
    constexpr std::size_t count = 50;
    for (std::size_t number = 0; number < count; ++number) {
        EXPECT_EQ(service.publish(std::to_string(number) + large), KORVO_CORE_STATUS_NO_ERROR);
        auto const event = quick.events.take();
        ASSERT_TRUE(event.has_value()) << number;
        EXPECT_EQ(event->event, std::to_string(number) + large);
    }
    std::string const said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("does not read its events"), std::string::npos) << said;

    // What was kept for the slow one still arrives, from the first on, and then what is published now.
    slow.collectEvents();
    auto const first = slow.events.take();
    ASSERT_TRUE(first.has_value());
    EXPECT_EQ(first->event, "0" + large);
    std::size_t received = 1;
    std::optional<Event> event;
    do {
        event = publishUntilReceived(service, slow, "now");
        ASSERT_TRUE(event.has_value());
        ++received;
    } while (event->event != "now");
    EXPECT_LT(received, count);
}

TEST(SlowInitiator, ThatDoesNotReadItsResponsesIsDisconnected) {
    Service service;
    Client client;
    std::string const large(mebibyte / 2, 'x');
    korvo_core_status status = KORVO_CORE_STATUS_NO_ERROR;
    int responses = 0;
    while (status == KORVO_CORE_STATUS_NO_ERROR && responses < 100) {
        ASSERT_EQ(client.send(std::to_string(responses).c_str(), "{}"), KORVO_CORE_STATUS_NO_ERROR);
        Command command;
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
        status = service.respond(command, large);
        ++responses;
    }
    EXPECT_EQ(status, KORVO_CORE_STATUS_IPC_FAILED);
    // 8 MiB in the service's queue and what the socket holds.
    EXPECT_GE(responses, 16);
    EXPECT_LE(responses, 32);
    Client another;
    ASSERT_EQ(another.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    EXPECT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
}

TEST(EventsWithoutACallback, WaitUpToABound) {
    Service service;
    Client client;
    ASSERT_EQ(client.subscribe(), KORVO_CORE_STATUS_NO_ERROR);
    testing::internal::CaptureStderr();
    // Events before a response are read by the thread that waits for the response.
    int number = 0;
    for (int round = 0; round < 30; ++round) {
        ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
        Command command;
        ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
        for (int count = 0; count < 50; ++count) {
            ASSERT_EQ(service.publish(std::to_string(number++)), KORVO_CORE_STATUS_NO_ERROR);
        }
        ASSERT_EQ(service.respond(command, "{}"), KORVO_CORE_STATUS_NO_ERROR);
        Response response;
        ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    }
    std::string const said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("events come faster"), std::string::npos) << said;
    client.collectEvents();
    for (int expected = 0; expected < 1024; ++expected) {
        auto const event = client.events.take();
        ASSERT_TRUE(event.has_value()) << expected;
        EXPECT_EQ(event->event, std::to_string(expected));
    }
}

TEST(ReceiveByIdentifier, OfWhatCanNeverComeReturnsAtOnce) {
    Service service;
    Client client;
    char *response = nullptr;
    std::size_t length = 0;
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(korvo_core_private_response_receive(client.handle(), -1, "never sent", &response, &length),
              KORVO_CORE_STATUS_IPC_FAILED);
    ASSERT_EQ(
        korvo_core_private_command_send(client.handle(), "sample", "", "lost", "{}", 2, nullptr, nullptr),
        KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    service.close();
    EXPECT_EQ(korvo_core_private_response_receive(client.handle(), -1, "lost", &response, &length),
              KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_LT(since(start), Milliseconds(10000));
}

TEST(ReceiveByIdentifier, TurnsASecondThreadAway) {
    Service service;
    Client client;
    ASSERT_EQ(korvo_core_private_command_send(client.handle(), "sample", "", "id", "{}", 2, nullptr, nullptr),
              KORVO_CORE_STATUS_NO_ERROR);
    auto const receive = [&](int timeout) {
        char *response = nullptr;
        std::size_t length = 0;
        korvo_core_status const status =
            korvo_core_private_response_receive(client.handle(), timeout, "id", &response, &length);
        std::free(response);
        return status;
    };
    std::thread first([&] {
        korvo_core_status status = KORVO_CORE_STATUS_MULTI_THREAD_ACCESS;
        while (status == KORVO_CORE_STATUS_MULTI_THREAD_ACCESS) {
            // It may meet the other thread, which polls, and is then the second itself.
            status = receive(-1);
        }
        EXPECT_EQ(status, KORVO_CORE_STATUS_NO_ERROR);
    });
    // Until the first thread waits, polling finds nothing.
    korvo_core_status status = KORVO_CORE_STATUS_IPC_FAILED;
    auto const end = std::chrono::steady_clock::now() + patience;
    while (status == KORVO_CORE_STATUS_IPC_FAILED && std::chrono::steady_clock::now() < end) {
        status = receive(0);
    }
    EXPECT_EQ(status, KORVO_CORE_STATUS_MULTI_THREAD_ACCESS);
    // Nor is another command sent under an identifier that somebody waits for.
    EXPECT_EQ(korvo_core_private_command_send(client.handle(), "sample", "", "id", "{}", 2, nullptr, nullptr),
              KORVO_CORE_STATUS_MULTI_THREAD_ACCESS);
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(service.respond(command, "{}"), KORVO_CORE_STATUS_NO_ERROR);
    first.join();
}

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// Sanitizers take their time, and not always the same.
constexpr Milliseconds closing_time{1000};
#else
constexpr Milliseconds closing_time{100};
#endif

void expectToCloseSoon(Client &client) {
    auto const start = std::chrono::steady_clock::now();
    client.close();
    EXPECT_LE(since(start), closing_time);
}

}  // namespace

TEST(ClosingTime, IsShortForAnIdleInitiator) {
    Service service;
    Client client;
    client.collectResponses();
    client.collectEvents();
    ASSERT_EQ(client.subscribe(), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.subscribe("absent"), KORVO_CORE_STATUS_NO_ERROR);
    expectToCloseSoon(client);
}

TEST(ClosingTime, IsShortWhileCallsWait) {
    Service service;
    Client client;
    client.collectEvents();
    void *const handle = client.handle();
    ASSERT_EQ(korvo_core_private_command_send(handle, "sample", "", "id", "{}", 2, nullptr, nullptr),
              KORVO_CORE_STATUS_NO_ERROR);
    Gate begun;
    std::thread caller([&] {
        char *response = nullptr;
        std::size_t length = 0;
        begun.open();
        EXPECT_NE(korvo_core_private_response_receive(handle, -1, "id", &response, &length),
                  KORVO_CORE_STATUS_NO_ERROR);
    });
    ASSERT_TRUE(begun.wait());
    expectToCloseSoon(client);
    caller.join();
}

TEST(ClosingTime, IsShortWhileASocketIsFullAndTellsWhatWasNotSent) {
    ServiceProcess process;
    ASSERT_TRUE(process.isReady());
    process.signal(SIGSTOP);
    Client client;
    std::string const large(mebibyte / 2, 'x');
    ASSERT_EQ(client.send("1", large.c_str()), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.send("2", large.c_str()), KORVO_CORE_STATUS_NO_ERROR);
    testing::internal::CaptureStderr();
    expectToCloseSoon(client);
    std::string const said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("bytes of commands for service sample were not sent"), std::string::npos) << said;
}

TEST(ClosingTime, IsShortForAService) {
    Service service;
    service.answerWith([](Command const &command) { return command.command; });
    Client client;
    ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    auto const start = std::chrono::steady_clock::now();
    service.close();
    EXPECT_LE(since(start), closing_time);
}

TEST(FullSocket, TakesCommandsUpToABoundAndSendsThemInOrderWhenThereIsRoom) {
    ServiceProcess process;
    ASSERT_TRUE(process.isReady());
    process.signal(SIGSTOP);
    Client client;
    std::string const large(mebibyte / 2, 'x');
    int taken = 0;
    while (taken < 30 &&
           client.send(std::to_string(taken).c_str(), large.c_str()) == KORVO_CORE_STATUS_NO_ERROR) {
        ++taken;
    }
    // 8 MiB wait, and some more are in the socket.
    EXPECT_GE(taken, 15);
    EXPECT_LE(taken, 18);
    Response response;
    EXPECT_EQ(client.receive(response, 30), KORVO_CORE_STATUS_IPC_FAILED);
    process.signal(SIGCONT);
    for (int number = 0; number < taken; ++number) {
        ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR) << number;
        EXPECT_EQ(response.request_id, std::to_string(number));
        EXPECT_EQ(response.response.size(), large.size());
    }
    ASSERT_EQ(client.send("next", "echo"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(response.request_id, "next");
}

TEST(FullSocket, DoesNotStopAServiceThatWritesBack) {
    // Both directions fill up, unless the sender reads while it cannot write.
    ServiceProcess process;
    ASSERT_TRUE(process.isReady());
    Client client;
    std::string const large(100000, 'x');
    constexpr int count = 60;
    for (int number = 0; number < count; ++number) {
        ASSERT_EQ(client.send(std::to_string(number).c_str(), large.c_str()), KORVO_CORE_STATUS_NO_ERROR);
    }
    for (int number = 0; number < count; ++number) {
        Response response;
        ASSERT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(response.request_id, std::to_string(number));
        EXPECT_EQ(response.response.size(), large.size());
    }
}

TEST(Descriptors, AndThreadsAndFilesAreGivenBack) {
    auto const use_everything = [] {
        Service service("sample", "north");
        service.answerWith([](Command const &command) { return command.command; });
        Client client;
        client.collectResponses();
        client.collectEvents();
        ASSERT_EQ(client.subscribe(), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_EQ(client.send("id", "{}", "sample", "north"), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_TRUE(client.responses.take().has_value());
        ASSERT_TRUE(publishUntilReceived(service, client, "{}").has_value());
        Client polling;
        ASSERT_EQ(polling.send("id", "{}", "sample", "north"), KORVO_CORE_STATUS_NO_ERROR);
        Response response;
        ASSERT_EQ(polling.receive(response), KORVO_CORE_STATUS_NO_ERROR);
    };
    // Counted while one that is not ours runs: one that was joined may be listed for a moment longer, and a sanitizer
    // may start its own together with the first.
    std::size_t threads = 0;
    std::thread([&threads] { threads = entriesOf("/proc/self/task") - 1; }).join();
    use_everything();
    std::size_t const descriptors = entriesOf("/proc/self/fd");
    std::size_t const files = entriesOf(std::getenv("KORVO_RUNTIME_DIR"));
    for (int round = 0; round < 5; ++round) {
        use_everything();
    }
    EXPECT_EQ(entriesOf("/proc/self/fd"), descriptors);
    auto const end = std::chrono::steady_clock::now() + patience;
    while (entriesOf("/proc/self/task") > threads && std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
    EXPECT_EQ(entriesOf("/proc/self/task"), threads);
    EXPECT_EQ(entriesOf(std::getenv("KORVO_RUNTIME_DIR")), files);
}

TEST(Descriptors, AreClosedInProgramsThatAreStarted) {
    auto const kept_open = [] {
        std::set<std::string> descriptors;
        for (auto const &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::string name = entry.path().filename().string();
            int const flags = fcntl(std::stoi(name), F_GETFD);
            if (flags >= 0 && (flags & FD_CLOEXEC) == 0) {
                descriptors.insert(std::move(name));
            }
        }
        return descriptors;
    };
    std::set<std::string> const before = kept_open();
    Service service;
    service.answerWith([](Command const &command) { return command.command; });
    Client client;
    client.collectEvents();
    ASSERT_EQ(client.subscribe(), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(publishUntilReceived(service, client, "{}").has_value());
    EXPECT_EQ(kept_open(), before);
}
