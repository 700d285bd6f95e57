// SPDX-License-Identifier: Apache-2.0
#include "base/flood.h"

#include <gtest/gtest.h>

using platform::Clock;
using platform::Flood;
using std::chrono::milliseconds;

TEST(Flood, WritesTheFirstLineAndTellsTheNumberOfTheRestWhenTheSecondIsOver) {
    Flood flood;
    Clock::time_point const start{std::chrono::hours(1)};
    EXPECT_TRUE(flood.count(start));
    EXPECT_FALSE(flood.due());
    for (int n = 1; n < 1000; ++n) {
        EXPECT_FALSE(flood.count(start + milliseconds(n)));
    }
    EXPECT_EQ(flood.due(), start + milliseconds(1000));
    EXPECT_EQ(flood.takeUntold(start + milliseconds(1000)), 999U);
    EXPECT_EQ(flood.total(), 1000U);
    EXPECT_FALSE(flood.due());
    EXPECT_FALSE(flood.count(start + milliseconds(1999)));
    EXPECT_TRUE(flood.count(start + milliseconds(2000)));
    EXPECT_EQ(flood.total(), 1002U);
    // The one in between is told of with the next.
    EXPECT_TRUE(flood.due());
}

TEST(Flood, WritesWhatComesSeldom) {
    Flood flood;
    Clock::time_point const start{std::chrono::hours(1)};
    for (int n = 0; n < 10; ++n) {
        EXPECT_TRUE(flood.count(start + n * Flood::pause));
        EXPECT_FALSE(flood.due());
    }
}
