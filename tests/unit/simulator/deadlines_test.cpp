// SPDX-License-Identifier: Apache-2.0
#include "simulator/deadlines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace simulator::tests {

using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr Deadlines::Time start{std::chrono::hours(5)};

std::vector<Deadlines::Ticket> allDue(Deadlines &deadlines, Deadlines::Time now) {
    std::vector<Deadlines::Ticket> due;
    while (auto const ticket = deadlines.takeDue(now)) {
        due.push_back(*ticket);
    }
    return due;
}

}  // namespace

TEST(Deadlines, ARepeatingOneIsDueEachPeriod) {
    Deadlines deadlines;
    deadlines.repeat(7, start, seconds(10));
    EXPECT_EQ(deadlines.next(), start + seconds(10));
    EXPECT_THAT(allDue(deadlines, start + seconds(10) - std::chrono::nanoseconds(1)), IsEmpty());
    EXPECT_THAT(allDue(deadlines, start + seconds(10)), ElementsAre(7));
    EXPECT_THAT(allDue(deadlines, start + seconds(10)), IsEmpty());
    EXPECT_THAT(allDue(deadlines, start + seconds(20)), ElementsAre(7));
}

TEST(Deadlines, PassedPeriodsAreNotMadeUpForAndTheRhythmStays) {
    Deadlines deadlines;
    deadlines.repeat(7, start, seconds(10));
    EXPECT_THAT(allDue(deadlines, start + seconds(57)), ElementsAre(7));
    EXPECT_EQ(deadlines.next(), start + seconds(60));
}

TEST(Deadlines, TheLongestDueComesFirst) {
    Deadlines deadlines;
    deadlines.repeat(1, start, seconds(30));
    deadlines.repeat(2, start, seconds(20));
    deadlines.repeat(3, start, seconds(20));
    EXPECT_THAT(allDue(deadlines, start + seconds(30)), ElementsAre(2, 3, 1));
}

TEST(Deadlines, APeriodOf0IsNeverDueAndEndsAnEarlierOne) {
    Deadlines deadlines;
    deadlines.repeat(7, start, seconds(10));
    deadlines.repeat(7, start, seconds(0));
    EXPECT_FALSE(deadlines.next());
    EXPECT_FALSE(deadlines.contains(7));
}

TEST(Deadlines, TheLongestPeriodIsNotDueTooEarly) {
    Deadlines deadlines;
    deadlines.repeat(7, start, seconds(4294967295));
    EXPECT_THAT(allDue(deadlines, start + seconds(4294967294)), IsEmpty());
    EXPECT_THAT(allDue(deadlines, start + seconds(4294967295)), ElementsAre(7));
}

TEST(Deadlines, ANewOneTakesThePlaceOfTheOld) {
    Deadlines deadlines;
    deadlines.repeat(7, start, seconds(10));
    deadlines.repeat(7, start + seconds(5), seconds(10));
    EXPECT_EQ(deadlines.next(), start + seconds(15));
    deadlines.once(7, start + seconds(1));
    EXPECT_THAT(allDue(deadlines, start + seconds(100)), ElementsAre(7));
    EXPECT_FALSE(deadlines.next());
}

TEST(Deadlines, ARemovedOneIsNotDue) {
    Deadlines deadlines;
    deadlines.repeat(7, start, seconds(10));
    deadlines.repeat(8, start, seconds(10));
    deadlines.remove(7);
    deadlines.remove(9);
    EXPECT_THAT(allDue(deadlines, start + seconds(10)), ElementsAre(8));
}

}  // namespace simulator::tests
