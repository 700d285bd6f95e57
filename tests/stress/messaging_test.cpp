// SPDX-License-Identifier: Apache-2.0
// Load on the messaging: callers on shared handles, handles that come and go, a service that dies and comes back.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/automation.h"
#include "support/operation.h"
#include "support/service.h"
#include "support/workload.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

constexpr unsigned int threads = 8;

unsigned int rounds() {
    char const *const chosen = std::getenv("KORVO_STRESS_ROUNDS");
    return chosen != nullptr ? static_cast<unsigned int>(std::strtoul(chosen, nullptr, 10)) : 25;
}

TEST(Stress, EightThreadsOnOneHandleWithEvents) {
    EventRecorder recorder;
    Service const service;
    Client client(Events::subscribed);
    recorder.registerOn(client);
    Automation const automation(client, "stress");
    auto const mark = ErrorOutput::ofThisProgram().mark();
    callFromThreads({&client}, threads, rounds(), automation, {&recorder});
    EXPECT_TRUE(recorder.waitForCount(threads * rounds())) << recorder.count();
    EXPECT_EQ(recorder.count(), threads * rounds());
    std::string const log = ErrorOutput::ofThisProgram().since(mark);
    EXPECT_EQ(log.find("no initiator callback was registered"), std::string::npos) << log;
}

TEST(Stress, EightThreadsOnThreeHandles) {
    Service const service;
    Client clients[3] = {Client(Events::subscribed), Client(Events::ignored), Client(Events::subscribed)};
    Automation const automation(clients[0], "stress");
    callFromThreads({&clients[0], &clients[1], &clients[2]}, threads, rounds(), automation);
}

TEST(Stress, HandlesThatComeAndGo) {
    Service const service;
    Client steady;
    Automation const automation(steady, "stress");
    std::vector<std::thread> running;
    for (unsigned int n = 0; n < threads; ++n) {
        running.emplace_back([&] {
            for (unsigned int round = 0; round < rounds(); ++round) {
                EventRecorder recorder;
                auto const pending = std::make_unique<PendingAnswer>();
                Client client(round % 2 == 0 ? Events::subscribed : Events::ignored);
                recorder.registerOn(client);
                automation.fire(client);
                EXPECT_EQ(operation("get_actions").sendAsync(client.handle(), nullptr, {}, *pending),
                          KORVO_CORE_STATUS_NO_ERROR);
                // Half of them go while the answer is on its way.
                if (round % 4 < 2) {
                    EXPECT_TRUE(pending->wait().has_value());
                }
            }
        });
    }
    for (std::thread &thread : running) {
        thread.join();
    }
    EXPECT_EQ(numberOfActions(steady), 1U);
}

TEST(Stress, AServiceThatIsKilledAgainAndAgain) {
    Service service;
    Client client(Events::subscribed);
    std::atomic<bool> over{false};
    std::atomic<unsigned int> succeeded{0};
    std::vector<std::thread> running;
    for (unsigned int n = 0; n < threads; ++n) {
        running.emplace_back([&, n] {
            Way const way = all_ways[n % std::size(all_ways)];
            // Asynchronous calls that are lost get no callback, which call() takes for a failure.
            Way const chosen = way == Way::asynchronous ? Way::send : way;
            while (!over) {
                Answer const answer = call(operation("get_actions"), chosen, client, nullptr, {});
                auto const status = answer.status;
                EXPECT_TRUE(status == KORVO_CORE_STATUS_NO_ERROR || status == KORVO_CORE_STATUS_IPC_FAILED ||
                            status == KORVO_CORE_STATUS_DISABLED_TARGET)
                    << status;
                succeeded += status == KORVO_CORE_STATUS_NO_ERROR ? 1 : 0;
            }
        });
    }
    for (unsigned int round = 0; round < rounds() / 5 + 1; ++round) {
        unsigned int const before = succeeded;
        auto const limit = Clock::now() + patience;
        while (succeeded == before && Clock::now() < limit) {
            std::this_thread::yield();
        }
        EXPECT_GT(succeeded, before) << "no call succeeds after restart " << round;
        service.kill();
        service.start();
    }
    over = true;
    for (std::thread &thread : running) {
        thread.join();
    }
    EXPECT_EQ(numberOfActions(client), 0U);
}

}  // namespace

}  // namespace end_to_end
