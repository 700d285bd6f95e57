// SPDX-License-Identifier: Apache-2.0
// Handles that are closed while other threads call.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
#include <set>
#include <string>
#include <thread>

#include "processes/limits.h"
#include "support/ends.h"

namespace {

constexpr korvo_core_status done = KORVO_CORE_STATUS_NO_ERROR;
constexpr korvo_core_status closed = KORVO_CORE_STATUS_INVALID_PARAMS;

/// Calls until the handle is closed, and gives the statuses before that. After its first call it is one of those who are `calling`.
template <typename Call>
std::set<korvo_core_status> callUntilClosed(Call call, std::atomic<unsigned int> &calling) {
    std::set<korvo_core_status> statuses;
    korvo_core_status status = call();
    ++calling;
    while (status != closed) {
        statuses.insert(status);
        status = call();
    }
    return statuses;
}

}  // namespace

TEST(HandleInUse, IsClosedAndEndsEachCallInAStatus) {
    constexpr int rounds = 100;
    std::set<korvo_core_status> const expected{done, KORVO_CORE_STATUS_IPC_FAILED};
    testing::internal::CaptureStderr();
    for (int round = 0; round < rounds; ++round) {
        Service service;
        auto client = std::make_unique<Client>();
        void *const handle = client->handle();
        std::array<std::set<korvo_core_status>, 4> statuses;
        std::array<std::thread, 4> threads;
        std::atomic<unsigned int> calling{0};
        std::size_t next = 0;
        auto const start = [&](auto call) {
            threads.at(next) = std::thread(
                [&place = statuses.at(next), &calling, call] { place = callUntilClosed(call, calling); });
            ++next;
        };
        start([handle] {
            return korvo_core_ipc_initiator_command_send(handle, "sample", "", "id", "a command");
        });
        start([handle] {
            // A connection of its own each time, since this service is not there.
            korvo_core_status const status =
                korvo_core_ipc_initiator_command_send(handle, "absent", "", "id", "a command");
            return status == KORVO_CORE_STATUS_DISABLED_TARGET ? done : status;
        });
        start([handle] { return korvo_core_ipc_initiator_event_subscribe(handle, "absent"); });
        start([handle, service_name = std::string("s")]() mutable {
            service_name += 's';
            korvo_core_status const status =
                korvo_core_ipc_initiator_event_subscribe(handle, service_name.c_str());
            return status == done ? korvo_core_ipc_initiator_event_unsubscribe(handle, service_name.c_str())
                                  : status;
        });
        EXPECT_TRUE(processes::becomesTrue([&] { return calling == threads.size(); }));
        client->close();
        for (std::thread &thread : threads) {
            thread.join();
        }
        for (auto const &seen : statuses) {
            EXPECT_FALSE(seen.empty());
            for (korvo_core_status const status : seen) {
                EXPECT_EQ(expected.count(status), 1U) << status;
            }
        }
    }
    (void)testing::internal::GetCapturedStderr();
}
