// SPDX-License-Identifier: Apache-2.0
#include "simulator/filters.h"

#include <gtest/gtest.h>

namespace simulator::tests {

namespace {

constexpr unsigned int sunday = 0;
constexpr unsigned int monday = 1;
constexpr unsigned int friday = 5;
constexpr unsigned int saturday = 6;

constexpr std::uint32_t hours(std::uint32_t count) {
    return count * 3600;
}

bool allowed(Numbers weekdays, Numbers starts, Numbers ends, LocalTime now) {
    return mayRun({std::move(weekdays), std::move(starts), std::move(ends)}, now);
}

}  // namespace

TEST(Filters, NoneLetAnActionRunAlways) {
    EXPECT_TRUE(allowed({}, {}, {}, {sunday, 0}));
    EXPECT_TRUE(allowed({}, {}, {}, {saturday, 86399}));
}

TEST(Filters, EqualStartAndEndAreTheWholeDay) {
    // Monday to Friday.
    EXPECT_FALSE(allowed({62}, {0}, {0}, {sunday, 86399}));
    EXPECT_TRUE(allowed({62}, {0}, {0}, {monday, 0}));
    EXPECT_TRUE(allowed({62}, {0}, {0}, {friday, 86399}));
    EXPECT_FALSE(allowed({62}, {0}, {0}, {saturday, 0}));
}

TEST(Filters, EachWeekdayHasItsFlagFromSundayOn) {
    std::uint32_t const flags[] = {1, 2, 4, 8, 16, 32, 64};
    for (unsigned int today = 0; today < 7; ++today) {
        for (unsigned int flag = 0; flag < 7; ++flag) {
            EXPECT_EQ(allowed({flags[flag]}, {0}, {0}, {today, hours(12)}), today == flag)
                << today << " " << flag;
        }
    }
}

TEST(Filters, AWindowHasItsStartAndNotItsEnd) {
    EXPECT_FALSE(allowed({127}, {hours(8)}, {hours(18)}, {monday, hours(8) - 1}));
    EXPECT_TRUE(allowed({127}, {hours(8)}, {hours(18)}, {monday, hours(8)}));
    EXPECT_TRUE(allowed({127}, {hours(8)}, {hours(18)}, {monday, hours(18) - 1}));
    EXPECT_FALSE(allowed({127}, {hours(8)}, {hours(18)}, {monday, hours(18)}));
}

TEST(Filters, AWindowOverMidnightBelongsToTheDayOnWhichItStarts) {
    Numbers const on_saturdays = {64};
    EXPECT_FALSE(allowed(on_saturdays, {hours(22)}, {hours(6)}, {saturday, hours(22) - 1}));
    EXPECT_TRUE(allowed(on_saturdays, {hours(22)}, {hours(6)}, {saturday, hours(22)}));
    EXPECT_TRUE(allowed(on_saturdays, {hours(22)}, {hours(6)}, {sunday, 0}));
    EXPECT_TRUE(allowed(on_saturdays, {hours(22)}, {hours(6)}, {sunday, hours(6) - 1}));
    EXPECT_FALSE(allowed(on_saturdays, {hours(22)}, {hours(6)}, {sunday, hours(6)}));
    EXPECT_FALSE(allowed(on_saturdays, {hours(22)}, {hours(6)}, {saturday, 0}));
    EXPECT_FALSE(allowed(on_saturdays, {hours(22)}, {hours(6)}, {sunday, hours(23)}));
}

TEST(Filters, EqualStartAndEndAreTheWholeDayAtWhateverHour) {
    Numbers const on_mondays = {2};
    EXPECT_TRUE(allowed(on_mondays, {hours(9)}, {hours(9)}, {monday, 0}));
    EXPECT_TRUE(allowed(on_mondays, {hours(9)}, {hours(9)}, {monday, hours(9) - 1}));
    EXPECT_TRUE(allowed(on_mondays, {hours(9)}, {hours(9)}, {monday, 86399}));
    EXPECT_FALSE(allowed(on_mondays, {hours(9)}, {hours(9)}, {2, 0}));
    EXPECT_FALSE(allowed(on_mondays, {hours(9)}, {hours(9)}, {sunday, 86399}));
}

TEST(Filters, OneThatFitsIsEnoughAndTheListsBelongTogetherByPlace) {
    Numbers const weekdays = {2, 32};
    Numbers const starts = {hours(1), hours(10)};
    Numbers const ends = {hours(2), hours(11)};
    EXPECT_TRUE(allowed(weekdays, starts, ends, {monday, hours(1)}));
    EXPECT_TRUE(allowed(weekdays, starts, ends, {friday, hours(10)}));
    EXPECT_FALSE(allowed(weekdays, starts, ends, {monday, hours(10)}));
    EXPECT_FALSE(allowed(weekdays, starts, ends, {friday, hours(1)}));
}

TEST(Filters, ASetWithoutWeekdaysFitsNone) {
    for (unsigned int today = 0; today < 7; ++today) {
        EXPECT_FALSE(allowed({0}, {0}, {0}, {today, hours(12)}));
        EXPECT_FALSE(allowed({0}, {hours(11)}, {hours(13)}, {today, hours(12)}));
    }
}

}  // namespace simulator::tests
