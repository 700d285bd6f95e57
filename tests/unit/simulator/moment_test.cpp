// SPDX-License-Identifier: Apache-2.0
#include "simulator/time/moment.h"

#include <gtest/gtest.h>

#include <string>

#include "time_zone.h"

namespace simulator::tests {

namespace {

/// Seconds since 1970; -1 for what is refused.
std::int64_t secondsOf(char const *text) {
    auto const moment = readMoment(text);
    return moment ? std::chrono::duration_cast<std::chrono::seconds>(moment->time_since_epoch()).count() : -1;
}

Wall at(std::int64_t seconds) {
    return Wall(std::chrono::seconds(seconds));
}

}  // namespace

TEST(Moment, IsReadInTheZoneOfTheProcessOrWithAnOffset) {
    TimeZone const zone(berlin);
    EXPECT_EQ(secondsOf("1970-01-01T01:00:00"), 0);
    EXPECT_EQ(secondsOf("2026-11-23T07:59:00"), 1795417140);
    EXPECT_EQ(secondsOf("2026-11-23T06:59:00Z"), 1795417140);
    EXPECT_EQ(secondsOf("2026-11-23T01:59:00-05:00"), 1795417140);
    EXPECT_EQ(secondsOf("2026-11-23T12:29:00+05:30"), 1795417140);
    EXPECT_EQ(secondsOf("2026-07-01T00:00:00"), 1782856800);
}

TEST(Moment, IsTheFirstOfTheTwoThatAClockShowsTwice) {
    TimeZone const zone(berlin);
    EXPECT_EQ(secondsOf("2026-10-25T02:30:00"), secondsOf("2026-10-25T00:30:00Z"));
    EXPECT_EQ(secondsOf("2026-10-25T02:30:00+01:00"), secondsOf("2026-10-25T01:30:00Z"));
    EXPECT_EQ(secondsOf("2026-10-25T03:00:00"), secondsOf("2026-10-25T02:00:00Z"));
}

TEST(Moment, ThatDoesNotExistIsRefused) {
    TimeZone const zone(berlin);
    // Left out in spring.
    EXPECT_EQ(secondsOf("2026-03-29T02:00:00"), -1);
    EXPECT_EQ(secondsOf("2026-03-29T02:59:59"), -1);
    EXPECT_EQ(secondsOf("2026-03-29T03:00:00"), secondsOf("2026-03-29T01:00:00Z"));
    for (char const *const text : {"",
                                   "now",
                                   "2026-11-23",
                                   "2026-11-23 07:59:00",
                                   "2026-11-23T07:59",
                                   "2026-11-23T07:59:00z",
                                   "2026-11-23T07:59:00.5",
                                   "2026-11-23T07:59:00+1:00",
                                   "2026-11-23T07:59:00+0100",
                                   "2026-11-23T07:59:00+24:00",
                                   "2026-11-23T07:59:00+00:60",
                                   "2026-13-01T00:00:00",
                                   "2026-00-01T00:00:00",
                                   "2026-02-29T00:00:00",
                                   "2026-04-31T00:00:00",
                                   "2026-01-01T24:00:00",
                                   "2026-01-01T00:60:00",
                                   "2026-01-01T00:00:60",
                                   "-026-01-01T00:00:00",
                                   "2026-+1-01T00:00:00",
                                   "1969-12-31T23:59:59",
                                   "2160-01-01T00:00:00",
                                   "2100-02-29T00:00:00",
                                   " 2026-11-23T07:59:00",
                                   "2026-11-23T07:59:00 ",
                                   "2026-11-23T07:59:00Z+01:00"}) {
        EXPECT_EQ(secondsOf(text), -1) << text;
    }
    EXPECT_NE(secondsOf("2028-02-29T00:00:00"), -1);
    EXPECT_NE(secondsOf("2000-02-29T00:00:00"), -1);
}

TEST(Moment, IsToldAsTheZoneShowsIt) {
    {
        TimeZone const zone(berlin);
        EXPECT_EQ(momentText(at(1795417140)), "2026-11-23T07:59:00+01:00");
        EXPECT_EQ(momentText(at(1782856800)), "2026-07-01T00:00:00+02:00");
        EXPECT_EQ(momentText(at(1795417140) + std::chrono::milliseconds(999)), "2026-11-23T07:59:00+01:00");
    }
    {
        TimeZone const zone(new_york);
        EXPECT_EQ(momentText(at(1795417140)), "2026-11-23T01:59:00-05:00");
    }
    {
        TimeZone const zone(kolkata);
        EXPECT_EQ(momentText(at(1795417140)), "2026-11-23T12:29:00+05:30");
    }
}

TEST(Moment, ThatIsToldIsReadBack) {
    for (char const *const name : {utc, berlin, new_york, lord_howe, kolkata}) {
        TimeZone const zone(name);
        // Each half an hour of 2026, both changes of the clocks among them.
        for (std::int64_t seconds = 1767225600; seconds < 1798761600; seconds += 1800) {
            ASSERT_EQ(secondsOf(momentText(at(seconds)).c_str()), seconds) << name;
        }
    }
}

TEST(LocalTime, IsWhatAClockInTheTimeZoneShows) {
    TimeZone const zone(berlin);
    LocalTime const monday = localTime(at(1795417140));
    EXPECT_EQ(monday.weekday, 1U);
    EXPECT_EQ(monday.seconds, 7U * 3600 + 59 * 60);
    LocalTime const night = localTime(*readMoment("2026-03-29T00:59:59Z") + std::chrono::milliseconds(999));
    EXPECT_EQ(night.weekday, 0U);
    EXPECT_EQ(night.seconds, 7199U);
    EXPECT_EQ(localTime(*readMoment("2026-03-29T01:00:00Z")).seconds, 10800U);
}

}  // namespace simulator::tests
