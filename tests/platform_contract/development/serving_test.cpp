// SPDX-License-Identifier: Apache-2.0
// Who serves: the service's own thread while a callback is registered, else whoever polls. And how many are served.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "development/raw_socket.h"
#include "messaging/addressing.h"
#include "processes/limits.h"
#include "support/ends.h"

namespace {

constexpr korvo_core_status done = KORVO_CORE_STATUS_NO_ERROR;

std::string echo(Command const &command) {
    return command.command;
}

}  // namespace

TEST(Serving, GoesFromTheCallbackToWhoPollsAndBack) {
    Service service;
    Client client;
    for (int round = 0; round < 3; ++round) {
        service.answerWith(echo);
        Command command;
        testing::internal::CaptureStderr();
        EXPECT_EQ(service.poll(command, 0), KORVO_CORE_STATUS_MULTI_THREAD_ACCESS);
        EXPECT_NE(testing::internal::GetCapturedStderr().find(
                      "commands cannot be polled for while a command callback is registered"),
                  std::string::npos);
        ASSERT_EQ(client.send("called", "{}"), done);
        Response response;
        EXPECT_EQ(client.receive(response), done);
        EXPECT_EQ(response.request_id, "called");

        ASSERT_EQ(korvo_core_ipc_target_command_receive_callback(service.handle(), nullptr, nullptr), done);
        ASSERT_EQ(client.send("polled", "{}"), done);
        EXPECT_EQ(service.poll(command), done);
        EXPECT_EQ(command.request_id, "polled");
        // One more is taken from the socket with the next poll, or later by the callback.
        ASSERT_EQ(client.send("first of two", "{}"), done);
        ASSERT_EQ(client.send("left", "{}"), done);
        EXPECT_EQ(service.poll(command), done);
        EXPECT_EQ(command.request_id, "first of two");
        service.answerWith(echo);
        EXPECT_EQ(client.receive(response), done);
        EXPECT_EQ(response.request_id, "left");
        ASSERT_EQ(korvo_core_ipc_target_command_receive_callback(service.handle(), nullptr, nullptr), done);
    }
}

TEST(Serving, TakesACallbackBackAlsoWhereAnotherOneIsRegisteredMeanwhile) {
    struct Called {
        std::atomic<bool> runs{false};
        std::atomic<bool> may_return{false};
        std::atomic<bool> has_returned{false};
    } called;
    Service const service;
    ASSERT_EQ(korvo_core_ipc_target_command_receive_callback(
                  service.handle(),
                  [](char **, char **, char **, void *context) {
                      auto &self = *static_cast<Called *>(context);
                      self.runs = true;
                      (void)processes::becomesTrue([&] { return self.may_return.load(); });
                      self.has_returned = true;
                  },
                  &called),
              done);
    Client client;
    ASSERT_EQ(client.send("one", "{}"), done);
    ASSERT_TRUE(processes::becomesTrue([&] { return called.runs.load(); }));
    std::atomic<bool> is_back{false};
    std::thread taking_back([&] {
        EXPECT_EQ(korvo_core_ipc_target_command_receive_callback(service.handle(), nullptr, nullptr), done);
        EXPECT_TRUE(called.has_returned);
        is_back = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ASSERT_EQ(korvo_core_ipc_target_command_receive_callback(
                  service.handle(), [](char **, char **, char **, void *) {}, nullptr),
              done);
    EXPECT_FALSE(is_back);
    called.may_return = true;
    EXPECT_TRUE(processes::becomesTrue([&] { return is_back.load(); }));
    // Ends the wait of who is still there.
    EXPECT_EQ(korvo_core_ipc_target_command_receive_callback(service.handle(), nullptr, nullptr), done);
    taking_back.join();
}

TEST(Serving, GivesEachCommandToOneOfTheThreadsThatPoll) {
    Service service;
    constexpr std::size_t threads = 4;
    std::vector<Command> taken(threads);
    std::vector<std::thread> polling;
    for (Command &command : taken) {
        polling.emplace_back([&] { EXPECT_EQ(service.poll(command), done); });
    }
    Client client;
    std::set<std::string> sent;
    for (std::size_t number = 0; number < threads; ++number) {
        sent.insert(std::to_string(number));
        ASSERT_EQ(client.send(std::to_string(number).c_str(), "{}"), done);
    }
    std::set<std::string> found;
    for (std::size_t number = 0; number < threads; ++number) {
        polling[number].join();
        found.insert(taken[number].request_id);
    }
    EXPECT_EQ(found, sent);
}

TEST(Serving, Refuses513InitiatorsAndTakesTheNextWhenOneLeaves) {
    rlimit descriptors = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &descriptors), 0);
    if (descriptors.rlim_max < 2000) {
        GTEST_SKIP() << "this process may not have as many descriptors";
    }
    rlimit const before = descriptors;
    descriptors.rlim_cur = std::max<rlim_t>(descriptors.rlim_cur, 2000);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &descriptors), 0);
    {
        testing::internal::CaptureStderr();
        Service service;
        service.answerWith(echo);
        std::string const path =
            std::string(std::getenv("KORVO_RUNTIME_DIR")) + "/" + platform::socketName("sample", "");
        std::vector<RawSocket> taken;
        for (int number = 0; number < 512; ++number) {
            taken.push_back(RawSocket::connect(path));
            ASSERT_TRUE(taken.back().isOpen()) << number;
        }
        EXPECT_TRUE(RawSocket::connect(path).ends()) << "it was let in";
        taken.pop_back();
        // The service may learn a little later that one has left.
        bool is_served = false;
        auto const end = std::chrono::steady_clock::now() + patience;
        while (!is_served && std::chrono::steady_clock::now() < end) {
            Client client;
            Response response;
            is_served = client.send("id", "{}") == done && client.receive(response) == done;
        }
        EXPECT_TRUE(is_served);
        std::string const log = testing::internal::GetCapturedStderr();
        EXPECT_NE(log.find("refused an initiator: service sample has 512 already; 1 refused so far"),
                  std::string::npos)
            << log;
    }
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
}
