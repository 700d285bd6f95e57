// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <thread>

#include "development/child_process.h"
#include "support/ends.h"

namespace {

/// The first call that does not return status 3, counted from 1; 0 when all do.
int firstWrongCall(void *client, void *target) {
    char *text[4] = {};
    korvo_core_status const statuses[] = {
        korvo_core_ipc_initiator_command_send(client, "sample", "", "id", "{}"),
        korvo_core_ipc_initiator_response_receive(client, -1, &text[0], &text[1], &text[2], &text[3]),
        korvo_core_ipc_initiator_response_receive_callback(client, nullptr, nullptr),
        korvo_core_ipc_initiator_event_subscribe(client, "sample"),
        korvo_core_ipc_initiator_event_unsubscribe(client, "sample"),
        korvo_core_ipc_initiator_event_receive_callback(client, nullptr, nullptr),
        korvo_core_ipc_target_command_receive(target, 1000, &text[0], &text[1], &text[2]),
        korvo_core_ipc_target_command_receive_callback(target, nullptr, nullptr),
        korvo_core_ipc_target_response_send(target, "source", "id", "{}"),
        korvo_core_ipc_target_event_send(target, "{}"),
        korvo_core_ipc_deinit(client),
        korvo_core_ipc_deinit(target),
    };
    int number = 0;
    for (korvo_core_status const status : statuses) {
        ++number;
        if (status != KORVO_CORE_STATUS_MULTI_THREAD_ACCESS) {
            return number;
        }
    }
    return 0;
}

}  // namespace

TEST(ForkedChild, GetsStatus3ForInheritedHandles) {
    Service service;
    Client client;
    ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(resultInChild([&] { return firstWrongCall(client.handle(), service.handle()); }), 0);
    // Nothing of that has reached the parent's connection.
    Command command;
    ASSERT_EQ(service.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(command.request_id, "id");
    ASSERT_EQ(service.respond(command, "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Response response;
    EXPECT_EQ(client.receive(response), KORVO_CORE_STATUS_NO_ERROR);
}

TEST(ForkedChild, OfAParentWithMessagingThreadsGetsStatus3Too) {
    Service service;
    service.answerWith([](Command const &command) { return command.command; });
    Client client;
    client.collectResponses();
    ASSERT_EQ(client.send("before", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(client.responses.take().has_value());
    for (int round = 0; round < 20; ++round) {
        // The threads are at work, and have locks, at the moment of the fork.
        ASSERT_EQ(client.send(std::to_string(round).c_str(), "{}"), KORVO_CORE_STATUS_NO_ERROR);
        EXPECT_EQ(resultInChild([&] { return firstWrongCall(client.handle(), service.handle()); }), 0);
        EXPECT_TRUE(client.responses.take().has_value());
    }
}

TEST(ForkedChild, MayOpenHandlesOfItsOwn) {
    Service service;
    Client inherited;
    ASSERT_EQ(inherited.send("from parent", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(
        resultInChild([] {
            void *client = nullptr;
            if (korvo_core_ipc_initiator_init(nullptr, "child", &client, 1) != KORVO_CORE_STATUS_NO_ERROR) {
                return 1;
            }
            if (korvo_core_ipc_initiator_command_send(client, "sample", "", "from child", "{}") !=
                KORVO_CORE_STATUS_NO_ERROR) {
                return 2;
            }
            return korvo_core_ipc_deinit(client) == KORVO_CORE_STATUS_NO_ERROR ? 0 : 3;
        }),
        0);
    Command first;
    Command second;
    ASSERT_EQ(service.poll(first), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(service.poll(second), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(first.request_id, "from parent");
    EXPECT_EQ(second.request_id, "from child");
}

TEST(ForkedChild, LogsThroughInheritedLoggers) {
    Logging const logging;
    testing::internal::CaptureStderr();
    EXPECT_EQ(resultInChild([&] {
                  return static_cast<int>(korvo_core_logging_log(
                      logging.handle(), KORVO_CORE_LOG_PRIORITY_ERR, "from the child"));
              }),
              0);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("[platform-contract]: from the child\n"),
              std::string::npos);
}

TEST(ForkedChild, ClosesNoInheritedLogger) {
    Logging const logging;
    EXPECT_EQ(resultInChild([&] { return static_cast<int>(korvo_core_logging_deinit(logging.handle())); }),
              KORVO_CORE_STATUS_MULTI_THREAD_ACCESS);
}

TEST(ForkedChild, HoldsNeitherConnectionsNorNamesOfItsParent) {
    auto service = std::make_unique<Service>();
    Client client;
    ASSERT_EQ(client.send("id", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(service->poll(command), KORVO_CORE_STATUS_NO_ERROR);
    ChildProcess lingering([](std::function<void()> const &ready) {
        ready();
        (void)pause();
    });
    ASSERT_TRUE(lingering.isReady());
    service.reset();
    // Were the child's copies open, this would wait until the time-out.
    Response response;
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.receive(response, 20000), KORVO_CORE_STATUS_IPC_FAILED);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    Service again;
    EXPECT_EQ(client.send("next", "{}"), KORVO_CORE_STATUS_NO_ERROR);
}

TEST(ForkedChild, KeepsNoSocketThatWasBeingMade) {
    Service service;
    // Answers nothing: the clients do not stay for an answer.
    service.answerWith([](Command const &) { return std::string(); });
    std::atomic<bool> is_over{false};
    std::thread connecting([&] {
        while (!is_over) {
            Client client;
            (void)client.send("id", "{}");
        }
    });
    int kept = 0;
    for (int round = 0; round < 300; ++round) {
        kept += resultInChild([] {
            int sockets = 0;
            for (int descriptor = STDERR_FILENO + 1; descriptor < 256; ++descriptor) {
                struct stat found = {};
                sockets += fstat(descriptor, &found) == 0 && S_ISSOCK(found.st_mode) ? 1 : 0;
            }
            return sockets;
        });
    }
    is_over = true;
    connecting.join();
    EXPECT_EQ(kept, 0);
}

TEST(ForkedChild, OfACallbackEndsWithoutTouchingTheParentsHandle) {
    struct Forking {
        Mailbox<int> results;
        static void forkHere(char **, char **, char **, char **, void *context) {
            auto &self = *static_cast<Forking *>(context);
            pid_t const child = fork();
            if (child == 0) {
                // Returns into the core, on the only thread there is; that ends the process.
                (void)alarm(20);
                return;
            }
            self.results.put(static_cast<int>(child));
        }
    } forking;
    Service service;
    service.answerWith([](Command const &command) { return command.command; });
    Client client;
    ASSERT_EQ(
        korvo_core_ipc_initiator_response_receive_callback(client.handle(), Forking::forkHere, &forking),
        KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.send("first", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    auto const child = forking.results.take();
    ASSERT_TRUE(child.has_value());
    ASSERT_GT(*child, 0);
    int status = -1;
    ASSERT_EQ(waitpid(*child, &status, 0), *child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    client.collectResponses();
    ASSERT_EQ(client.send("second", "{}"), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_TRUE(client.responses.take().has_value());
}
