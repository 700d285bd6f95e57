// SPDX-License-Identifier: Apache-2.0
#include "messaging/failure_log.h"

#include <gtest/gtest.h>

#include <string>

#include "base/mutex.h"

using platform::Address;
using platform::Clock;
using platform::FailureLog;
using platform::Hold;
using platform::Log;
using platform::Phase;

namespace {

/// What the work writes to the log.
template <typename Work>
std::string linesOf(Work work) {
    Log const log(nullptr);
    platform::Mutex mutex;
    testing::internal::CaptureStderr();
    {
        Hold hold(mutex, log);
        work(hold);
    }
    return testing::internal::GetCapturedStderr();
}

std::size_t countOf(std::string const &text, std::string const &part) {
    std::size_t count = 0;
    for (std::size_t place = text.find(part); place != std::string::npos;
         place = text.find(part, place + 1)) {
        ++count;
    }
    return count;
}

Clock::time_point const start{std::chrono::hours(1)};
Address const north{"sample", "north"};

}  // namespace

TEST(FailureLogTest, TellsThePhaseThePeerAndTheReason) {
    FailureLog failures;
    std::string const said =
        linesOf([&](Hold &hold) { failures.tell(hold, Phase::connect, &north, "it is shut", start); });
    EXPECT_NE(
        said.find(
            "a call failed with status 4 while connecting, service sample, target \"north\": it is shut"),
        std::string::npos)
        << said;
    EXPECT_NE(said.find("warning"), std::string::npos) << said;
}

TEST(FailureLogTest, CountsWhatRepeatsWithinASecond) {
    FailureLog failures;
    std::string const first = linesOf([&](Hold &hold) {
        for (int number = 0; number < 5; ++number) {
            failures.tell(hold, Phase::wait, &north, "late", start + std::chrono::milliseconds(number * 200));
        }
    });
    EXPECT_EQ(countOf(first, "late"), 1U) << first;
    std::string const next = linesOf([&](Hold &hold) {
        failures.tell(hold, Phase::wait, &north, "late", start + std::chrono::milliseconds(1000));
    });
    EXPECT_NE(next.find("late (6 so far, 4 of them not told)"), std::string::npos) << next;
}

TEST(FailureLogTest, TellsPhasesAndPeersApart) {
    FailureLog failures;
    Address const south{"sample", "south"};
    std::string const said = linesOf([&](Hold &hold) {
        failures.tell(hold, Phase::wait, &north, "late", start);
        failures.tell(hold, Phase::wait, &south, "late", start);
        failures.tell(hold, Phase::read, &north, "late", start);
        failures.tell(hold, Phase::read, nullptr, "late", start);
    });
    EXPECT_EQ(countOf(said, "late"), 4U) << said;
}

TEST(FailureLogTest, TellsTheRestAtTheEnd) {
    FailureLog failures;
    std::string const said = linesOf([&](Hold &hold) {
        failures.tell(hold, Phase::send, &north, "full", start);
        failures.tell(hold, Phase::send, &north, "full", start);
        failures.tell(hold, Phase::send, &north, "full", start);
        failures.tellRest(hold);
        failures.tellRest(hold);
    });
    EXPECT_EQ(countOf(said, "2 more since the last line, 3 in all"), 1U) << said;
}

TEST(FailureLogTest, BeginsAnewWithTheRestToldWhenItKnowsTooMany) {
    FailureLog failures;
    std::string const before = linesOf([&](Hold &hold) {
        failures.tell(hold, Phase::connect, &north, "full", start);
        failures.tell(hold, Phase::connect, &north, "full", start);
        for (int number = 1; number < 64; ++number) {
            Address const other{"sample", std::to_string(number)};
            failures.tell(hold, Phase::connect, &other, "full", start);
        }
    });
    EXPECT_EQ(countOf(before, "full"), 64U) << before;
    Address const one_more{"sample", "one more"};
    std::string const after = linesOf([&](Hold &hold) {
        failures.tell(hold, Phase::connect, &one_more, "full", start);
        failures.tell(hold, Phase::connect, &north, "full", start);
    });
    EXPECT_NE(after.find("while connecting, service sample, target \"north\": 1 more since the last line, "
                         "2 in all"),
              std::string::npos)
        << after;
    // As if it had never failed before.
    EXPECT_NE(after.find("service sample, target \"north\": full\n"), std::string::npos) << after;
}
