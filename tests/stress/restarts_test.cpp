// SPDX-License-Identifier: Apache-2.0
// Asynchronous calls while the service is killed and started again: as many callbacks as calls that were taken.
// KORVO_STRESS_CALLS and KORVO_STRESS_RESTARTS say how many of both.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <thread>

#include "chosen_number.h"
#include "korvo_api_action_engine.h"
#include "support/client.h"
#include "support/service.h"

namespace end_to_end {

namespace {

/// So many calls are on their way at a time at most.
constexpr unsigned int most_pending = 2000;

/// What became of the calls.
struct Tally {
    std::atomic<unsigned int> answered{0};
    std::atomic<unsigned int> lost{0};
    std::atomic<unsigned int> other{0};

    unsigned int called() const { return answered + lost + other; }
};

void count(char *, korvo_core_status status, unsigned int, void *context) {
    auto &tally = *static_cast<Tally *>(context);
    if (status == KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE) {
        // There is no such action, says the service.
        ++tally.answered;
    } else if (status == KORVO_CORE_STATUS_IPC_FAILED) {
        ++tally.lost;
    } else {
        ++tally.other;
    }
}

TEST(Restarts, EveryAsynchronousCallThatWasTakenIsCalledBackOnce) {
    unsigned int const wanted = chosenNumber("KORVO_STRESS_CALLS", 5000);
    unsigned int const restarts = chosenNumber("KORVO_STRESS_RESTARTS", 3);
    Tally tally;
    Service service;
    Client client;
    std::atomic<unsigned int> taken{0};
    std::thread caller([&] {
        while (taken < wanted) {
            if (taken - tally.called() < most_pending &&
                korvo_api_action_engine_get_action_type_send_async(client.handle(), nullptr, 1, count,
                                                                   &tally) == KORVO_CORE_STATUS_NO_ERROR) {
                ++taken;
            } else {
                std::this_thread::yield();
            }
        }
    });
    for (unsigned int restart = 1; restart <= restarts; ++restart) {
        unsigned int const due = static_cast<unsigned int>(std::uint64_t{wanted} * restart / (restarts + 1));
        unsigned int const answered = tally.answered;
        while ((taken < due || tally.answered == answered) && tally.called() < wanted) {
            std::this_thread::yield();
        }
        service.kill();
        service.start();
    }
    caller.join();
    auto const limit = Clock::now() + patience;
    while (tally.called() < taken && Clock::now() < limit) {
        std::this_thread::yield();
    }
    // Whatever comes too often has come when this is over.
    client.close();
    std::printf("[  NOTE    ] %u calls, %u restarts: %u answered, %u told that the connection was lost\n",
                taken.load(), restarts, tally.answered.load(), tally.lost.load());
    EXPECT_EQ(tally.called(), taken);
    EXPECT_EQ(tally.other, 0U);
    EXPECT_GE(tally.answered, 1U);
}

}  // namespace

}  // namespace end_to_end
