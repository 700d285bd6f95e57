// SPDX-License-Identifier: Apache-2.0
#include "simulator/time/clock.h"

#include <gtest/gtest.h>

namespace simulator::tests {

namespace {

using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::seconds;

class ClockTest : public testing::Test {
  protected:
    Clock make(Clock::Settings const &settings) {
        return Clock(
            settings, [this] { return real; }, [this] { return real_wall; });
    }
    void pass(milliseconds time) {
        real += time;
        real_wall += time;
    }
    Clock::Time real = Clock::Time(hours(1000));
    Wall real_wall = Wall(hours(400'000));
    Wall const start = Wall(hours(500'000));
};

}  // namespace

TEST_F(ClockTest, ThatIsRealIsTheMachines) {
    Clock const clock = make({});
    EXPECT_FALSE(clock.isVirtual());
    EXPECT_EQ(clock.rate(), 1U);
    pass(seconds(5));
    EXPECT_EQ(clock.now(), real);
    EXPECT_EQ(clock.wall(), real_wall);
    EXPECT_EQ(clock.realTimeOf(real + seconds(7)), real + seconds(7));
}

TEST_F(ClockTest, ThatIsVirtualStandsUntilItIsMoved) {
    Clock clock = make({true, start, 0});
    auto const begin = clock.now();
    pass(hours(5));
    EXPECT_EQ(clock.now(), begin);
    EXPECT_EQ(clock.wall(), start);
    EXPECT_FALSE(clock.realTimeOf(begin + milliseconds(1)));
    EXPECT_EQ(clock.realTimeOf(begin), real) << "what is due is due now";
    clock.advanceTo(begin + seconds(90));
    EXPECT_EQ(clock.now(), begin + seconds(90));
    EXPECT_EQ(clock.wall(), start + seconds(90));
    clock.advanceTo(begin);
    EXPECT_EQ(clock.now(), begin + seconds(90)) << "never back";
}

TEST_F(ClockTest, ThatBeginsLatestOfAllIsMovedAsFarAsAnyOther) {
    Wall const latest = readMoment("2159-12-31T23:59:59Z").value();
    Clock clock = make({true, latest, 0});
    Clock::Time const begin = clock.now();
    clock.advanceTo(begin + Clock::farthest + hours(1));
    EXPECT_EQ(clock.now(), begin + Clock::farthest);
    EXPECT_EQ(clock.wall(), latest + Clock::farthest);
    EXPECT_GT(clock.wall(), latest);
}

TEST_F(ClockTest, BeginsAtTheTimeOfDayWhereNoneIsGiven) {
    EXPECT_EQ(make({true, std::nullopt, 0}).wall(), real_wall);
}

TEST_F(ClockTest, RunsAtItsRate) {
    Clock clock = make({true, start, 60});
    auto const begin = clock.now();
    pass(seconds(2));
    EXPECT_EQ(clock.now(), begin + seconds(120));
    EXPECT_EQ(clock.wall(), start + seconds(120));
    auto const due = clock.realTimeOf(begin + seconds(180));
    ASSERT_TRUE(due);
    EXPECT_GT(*due, real + milliseconds(999));
    EXPECT_LT(*due, real + milliseconds(1001));
    real = *due;
    EXPECT_GE(clock.now(), begin + seconds(180)) << "then it is due";

    clock.setRate(0);
    auto const stopped = clock.now();
    pass(hours(1));
    EXPECT_EQ(clock.now(), stopped);
    clock.setRate(1);
    pass(seconds(1));
    EXPECT_EQ(clock.now(), stopped + seconds(1));
}

TEST_F(ClockTest, ThatIsSetMovesNothingThatIsDue) {
    Clock clock = make({true, start, 1});
    auto const begin = clock.now();
    clock.set(start - hours(24));
    EXPECT_EQ(clock.now(), begin);
    EXPECT_EQ(clock.wall(), start - hours(24));
    pass(seconds(3));
    EXPECT_EQ(clock.wall(), start - hours(24) + seconds(3));
}

TEST_F(ClockTest, StopsAtTheFarthestTime) {
    Clock clock = make({true, start, Clock::fastest});
    auto const begin = clock.now();
    EXPECT_TRUE(clock.reaches(begin + Clock::farthest));
    EXPECT_FALSE(clock.reaches(begin + Clock::farthest + seconds(1)));
    EXPECT_FALSE(clock.realTimeOf(begin + Clock::farthest + seconds(1)));
    pass(hours(24 * 366 * 100));
    EXPECT_EQ(clock.now(), begin + Clock::farthest);
    clock.advanceTo(Clock::Time::max());
    EXPECT_EQ(clock.now(), begin + Clock::farthest);
}

}  // namespace simulator::tests
