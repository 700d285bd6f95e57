// SPDX-License-Identifier: Apache-2.0
// What a virtual clock, the time zone and an action's filter make of each other at the edges: every line was worked out
// with a calendar.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "simulator/filters.h"
#include "simulator/time/clock.h"
#include "support.h"
#include "time_zone.h"

namespace simulator::tests {

namespace {

constexpr std::uint32_t sun = 1, mon = 2, tue = 4, wed = 8, thu = 16, fri = 32, sat = 64, all = 127;

constexpr std::uint32_t clock(std::uint32_t hour, std::uint32_t minute = 0, std::uint32_t second = 0) {
    return hour * 3600 + minute * 60 + second;
}

struct Case {
    char const *zone;
    char const *moment;
    std::uint32_t weekdays;
    std::uint32_t start;
    std::uint32_t end;
    bool runs;
};

// 2026-11-23 is a Monday.
Case const cases[] = {
    // A window within a day: with its start, without its end.
    {utc, "2026-11-23T07:59:59", mon, clock(8), clock(18), false},
    {utc, "2026-11-23T08:00:00", mon, clock(8), clock(18), true},
    {utc, "2026-11-23T12:00:00", mon, clock(8), clock(18), true},
    {utc, "2026-11-23T17:59:59", mon, clock(8), clock(18), true},
    {utc, "2026-11-23T18:00:00", mon, clock(8), clock(18), false},
    {utc, "2026-11-24T08:00:00", mon, clock(8), clock(18), false},
    {utc, "2026-11-22T12:00:00", mon, clock(8), clock(18), false},
    {utc, "2026-11-30T08:00:00", mon, clock(8), clock(18), true},
    {utc, "2026-11-23T08:00:00", all - mon, clock(8), clock(18), false},
    {utc, "2026-11-23T08:00:00", all, clock(8), clock(8, 0, 1), true},
    {utc, "2026-11-23T08:00:01", all, clock(8), clock(8, 0, 1), false},
    // Midnight.
    {utc, "2026-11-23T00:00:00", mon, 0, 1, true},
    {utc, "2026-11-23T00:00:01", mon, 0, 1, false},
    {utc, "2026-11-22T23:59:59", mon, 0, 1, false},
    {utc, "2026-11-23T23:59:59", mon, clock(23, 59, 59), 86400, true},
    {utc, "2026-11-24T00:00:00", mon, clock(23, 59, 59), 86400, false},
    {utc, "2026-11-23T23:59:58", mon, clock(23, 59, 59), 86400, false},
    {utc, "2026-11-23T23:59:59", mon, 0, 86400, true},
    {utc, "2026-11-23T00:00:00", mon, 0, 86400, true},
    {utc, "2026-11-24T00:00:00", mon, 0, 86400, false},
    {utc, "2026-11-22T23:59:59", mon, 0, 86400, false},
    // Across midnight: the window belongs to the day on which it starts.
    {utc, "2026-11-23T21:59:59", mon, clock(22), clock(6), false},
    {utc, "2026-11-23T22:00:00", mon, clock(22), clock(6), true},
    {utc, "2026-11-23T23:59:59", mon, clock(22), clock(6), true},
    {utc, "2026-11-24T00:00:00", mon, clock(22), clock(6), true},
    {utc, "2026-11-24T05:59:59", mon, clock(22), clock(6), true},
    {utc, "2026-11-24T06:00:00", mon, clock(22), clock(6), false},
    {utc, "2026-11-23T00:00:00", mon, clock(22), clock(6), false},
    {utc, "2026-11-23T05:59:59", mon, clock(22), clock(6), false},
    {utc, "2026-11-24T22:00:00", mon, clock(22), clock(6), false},
    {utc, "2026-11-23T05:59:59", sun, clock(22), clock(6), true},
    {utc, "2026-11-22T05:59:59", sat, clock(22), clock(6), true},
    {utc, "2026-11-22T22:00:00", sat, clock(22), clock(6), false},
    {utc, "2026-11-21T22:00:00", sat, clock(22), clock(6), true},
    {utc, "2026-11-23T23:59:59", mon, clock(23, 59, 59), 0, true},
    {utc, "2026-11-24T00:00:00", mon, clock(23, 59, 59), 0, false},
    {utc, "2026-11-24T00:00:00", mon, clock(23, 59, 59), 1, true},
    {utc, "2026-11-24T00:00:01", mon, clock(23, 59, 59), 1, false},
    {utc, "2026-11-23T23:59:58", mon, clock(23, 59, 59), clock(23, 59, 58), false},
    {utc, "2026-11-24T23:59:57", mon, clock(23, 59, 59), clock(23, 59, 58), true},
    // Equal start and end are the whole of the named day.
    {utc, "2026-11-23T00:00:00", mon, clock(9), clock(9), true},
    {utc, "2026-11-23T08:59:59", mon, clock(9), clock(9), true},
    {utc, "2026-11-23T09:00:00", mon, clock(9), clock(9), true},
    {utc, "2026-11-23T23:59:59", mon, clock(9), clock(9), true},
    {utc, "2026-11-24T00:00:00", mon, clock(9), clock(9), false},
    {utc, "2026-11-22T23:59:59", mon, clock(9), clock(9), false},
    {utc, "2026-11-23T00:00:00", mon, 0, 0, true},
    {utc, "2026-11-24T00:00:00", mon, 0, 0, false},
    {utc, "2026-11-23T12:00:00", mon, 86399, 86399, true},
    {utc, "2026-11-23T12:00:00", 0, 0, 0, false},
    // Each weekday.
    {utc, "2026-11-22T12:00:00", sun, 0, 0, true},
    {utc, "2026-11-24T12:00:00", tue, 0, 0, true},
    {utc, "2026-11-25T12:00:00", wed, 0, 0, true},
    {utc, "2026-11-26T12:00:00", thu, 0, 0, true},
    {utc, "2026-11-27T12:00:00", fri, 0, 0, true},
    {utc, "2026-11-28T12:00:00", sat, 0, 0, true},
    {utc, "2026-11-28T23:59:59", sun, 0, 0, false},
    // The zone decides which day and hour it is.
    {berlin, "2026-11-22T22:59:59Z", mon, 0, 0, false},
    {berlin, "2026-11-22T23:00:00Z", mon, 0, 0, true},
    {new_york, "2026-11-23T04:59:59Z", mon, 0, 0, false},
    {new_york, "2026-11-23T05:00:00Z", mon, 0, 0, true},
    {kolkata, "2026-11-22T18:29:59Z", mon, 0, 0, false},
    {kolkata, "2026-11-22T18:30:00Z", mon, 0, 0, true},
    {berlin, "2026-07-06T06:00:00Z", mon, clock(8), clock(9), true},
    {berlin, "2026-12-07T06:00:00Z", mon, clock(8), clock(9), false},
    {berlin, "2026-12-07T07:00:00Z", mon, clock(8), clock(9), true},
    // The night of Sunday, 2026-03-29, when clocks leave out the hour from 2:00.
    {berlin, "2026-03-29T01:59:59", sun, clock(2), clock(3), false},
    {berlin, "2026-03-29T03:00:00", sun, clock(2), clock(3), false},
    {berlin, "2026-03-29T00:59:59Z", sun, clock(1), clock(2), true},
    {berlin, "2026-03-29T01:00:00Z", sun, clock(1), clock(2), false},
    {berlin, "2026-03-29T01:00:00Z", sun, clock(3), clock(4), true},
    {berlin, "2026-03-29T01:59:59Z", sun, clock(3), clock(4), true},
    {berlin, "2026-03-29T02:00:00Z", sun, clock(3), clock(4), false},
    {berlin, "2026-03-29T01:00:00Z", sun, clock(2, 30), clock(3, 30), true},
    {berlin, "2026-03-29T05:59:59", sat, clock(22), clock(6), true},
    {berlin, "2026-03-29T06:00:00", sat, clock(22), clock(6), false},
    {berlin, "2026-03-29T04:00:00Z", sat, clock(22), clock(6), false},
    {new_york, "2026-03-08T06:59:59Z", sun, clock(1), clock(2), true},
    {new_york, "2026-03-08T07:00:00Z", sun, clock(3), clock(4), true},
    {new_york, "2026-03-08T07:00:00Z", sun, clock(2), clock(3), false},
    {lord_howe, "2026-10-03T15:29:59Z", sun, clock(1), clock(2), true},
    {lord_howe, "2026-10-03T15:30:00Z", sun, clock(2), clock(2, 30), false},
    {lord_howe, "2026-10-03T15:30:00Z", sun, clock(2, 30), clock(3), true},
    // The night of Sunday, 2026-10-25, when clocks show the hour from 2:00 twice.
    {berlin, "2026-10-25T01:59:59", sun, clock(2), clock(3), false},
    {berlin, "2026-10-25T02:00:00+02:00", sun, clock(2), clock(3), true},
    {berlin, "2026-10-25T02:59:59+02:00", sun, clock(2), clock(3), true},
    {berlin, "2026-10-25T02:00:00+01:00", sun, clock(2), clock(3), true},
    {berlin, "2026-10-25T02:59:59+01:00", sun, clock(2), clock(3), true},
    {berlin, "2026-10-25T03:00:00+01:00", sun, clock(2), clock(3), false},
    {berlin, "2026-10-25T02:15:00+02:00", sun, clock(2, 30), clock(4), false},
    {berlin, "2026-10-25T02:45:00+02:00", sun, clock(2, 30), clock(4), true},
    {berlin, "2026-10-25T02:15:00+01:00", sun, clock(2, 30), clock(4), false},
    {berlin, "2026-10-25T02:45:00+01:00", sun, clock(2, 30), clock(4), true},
    {berlin, "2026-10-25T05:59:59+01:00", sat, clock(22), clock(6), true},
    {berlin, "2026-10-25T06:00:00+01:00", sat, clock(22), clock(6), false},
    {new_york, "2026-11-01T05:30:00Z", sun, clock(1), clock(2), true},
    {new_york, "2026-11-01T06:30:00Z", sun, clock(1), clock(2), true},
    {new_york, "2026-11-01T07:00:00Z", sun, clock(1), clock(2), false},
    {lord_howe, "2026-04-04T14:45:00Z", sun, clock(1, 30), clock(2), true},
    {lord_howe, "2026-04-04T15:15:00Z", sun, clock(1, 30), clock(2), true},
    // The leap day, and years without one.
    {utc, "2028-02-29T12:00:00", tue, 0, 0, true},
    {utc, "2028-02-28T23:59:59", tue, 0, 0, false},
    {utc, "2028-03-01T00:00:00", tue, 0, 0, false},
    {utc, "2028-03-01T05:59:59", tue, clock(22), clock(6), true},
    {utc, "2028-02-29T05:59:59", mon, clock(22), clock(6), true},
    {utc, "2027-03-01T00:00:00", mon, 0, 0, true},
    {utc, "2100-03-01T00:00:00", mon, 0, 0, true},
    {utc, "2100-02-28T23:59:59", sun, 0, 0, true},
    {utc, "2000-02-29T00:00:00", tue, 0, 0, true},
    // New Year: 2026 ends on a Thursday.
    {utc, "2026-12-31T23:59:59", thu, clock(23, 59, 59), 86400, true},
    {utc, "2027-01-01T00:00:00", thu, clock(23, 59, 59), 86400, false},
    {utc, "2027-01-01T00:00:00", fri, 0, 1, true},
    {utc, "2027-01-01T05:59:59", thu, clock(22), clock(6), true},
    {utc, "2027-01-01T06:00:00", thu, clock(22), clock(6), false},
    {utc, "2027-01-01T05:59:59", fri, clock(22), clock(6), false},
    {berlin, "2026-12-31T23:00:00Z", fri, 0, 1, true},
    {new_york, "2027-01-01T04:59:59Z", thu, clock(23, 59, 59), 86400, true},
};

static_assert(std::size(cases) >= 100);

}  // namespace

TEST(Boundaries, OfWindowsAndCalendarsAreWhereTheCalendarHasThem) {
    for (Case const &one : cases) {
        TimeZone const zone(one.zone);
        auto const moment = readMoment(one.moment);
        ASSERT_TRUE(moment) << one.moment;
        Clock const clock({true, *moment, 0});
        EXPECT_EQ(mayRun({Numbers{one.weekdays}, Numbers{one.start}, Numbers{one.end}}, clock.local()),
                  one.runs)
            << one.moment << " " << one.zone << ", days " << one.weekdays << ", from " << one.start << " to "
            << one.end;
    }
}

TEST(Boundaries, OfTimersTakeNoNoticeOfChangedClocks) {
    TimeZone const zone(berlin);
    Clock clock({true, readMoment("2026-03-29T01:30:00"), 0});
    Bench bench(clock);
    bench.number(R"({"command":"Create_wiper_action","action_name":"w"})", "action_id");
    bench.number(R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":3600})",
                 "trigger_id");
    bench.number(R"({"command":"Create_association","trigger_id":1,"action_id":1})", "status");
    clock.advanceTo(clock.now() + std::chrono::seconds(3599));
    EXPECT_THAT(bench.run(), testing::IsEmpty());
    clock.advanceTo(clock.now() + std::chrono::seconds(1));
    EXPECT_THAT(bench.run(), testing::ElementsAre(1));
    EXPECT_EQ(momentText(clock.wall()), "2026-03-29T03:30:00+02:00") << "an hour has passed";
}

TEST(Boundaries, OfWindowsFollowTheVirtualClock) {
    TimeZone const zone(utc);
    Clock clock({true, readMoment("2026-11-23T07:59:00"), 0});
    Bench bench(clock);
    bench.number(R"({"command":"Create_wiper_action","action_name":"w"})", "action_id");
    bench.number(R"({"command":"Set_action_filters","action_id":1,"weekday_filters":[2],)"
                 R"("time_filters_start":[28800],"time_filters_end":[64800]})",
                 "status");
    bench.number(R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":59})", "trigger_id");
    bench.number(R"({"command":"Create_association","trigger_id":1,"action_id":1})", "status");
    clock.advanceTo(clock.now() + std::chrono::seconds(59));
    EXPECT_THAT(bench.run(), testing::IsEmpty()) << "it is 7:59:59";
    clock.advanceTo(clock.now() + std::chrono::seconds(59));
    EXPECT_THAT(bench.run(), testing::ElementsAre(1)) << "it is 8:00:58";
    clock.set(*readMoment("2026-11-24T08:00:00"));
    clock.advanceTo(clock.now() + std::chrono::seconds(59));
    EXPECT_THAT(bench.run(), testing::IsEmpty()) << "it is Tuesday";
}

}  // namespace simulator::tests
