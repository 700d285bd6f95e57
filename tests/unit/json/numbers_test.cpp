// SPDX-License-Identifier: Apache-2.0
#include "json/numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

struct Case {
    double number;
    unsigned int expected;
};

}  // namespace

TEST(NumbersAsUnsigned, AreCutTowardZeroAndKeptWithinTheType) {
    double const infinity = std::numeric_limits<double>::infinity();
    Case const cases[] = {
        {0.0, 0},
        {-0.0, 0},
        {std::numeric_limits<double>::denorm_min(), 0},
        {std::nextafter(1.0, 0.0), 0},
        {1.0, 1},
        {std::nextafter(2.0, 0.0), 1},
        {2.9, 2},
        {-std::numeric_limits<double>::denorm_min(), 0},
        {-0.9, 0},
        {-1.0, 0},
        {-3.0, 0},
        {-4294967296.0, 0},
        {std::numeric_limits<double>::lowest(), 0},
        {2147483647.0, 2147483647U},
        {2147483648.0, 2147483648U},
        {4294967294.0, 4294967294U},
        {4294967294.999, 4294967294U},
        {4294967295.0, 4294967295U},
        {4294967295.999, 4294967295U},
        {4294967296.0, 4294967295U},
        {4294967297.0, 4294967295U},
        {1e10, 4294967295U},
        {std::numeric_limits<double>::max(), 4294967295U},
        {infinity, 4294967295U},
        {-infinity, 0},
        {std::numeric_limits<double>::quiet_NaN(), 0},
        {-std::numeric_limits<double>::quiet_NaN(), 0},
    };
    for (Case const &one : cases) {
        EXPECT_EQ(json::ToUnsigned(one.number), one.expected) << one.number;
    }
}

TEST(NumbersAsUnsigned, ComeBackFromEveryPowerOfTwo) {
    for (unsigned int bit = 0; bit < 32; ++bit) {
        unsigned int const value = 1U << bit;
        EXPECT_EQ(json::ToUnsigned(value), value);
        EXPECT_EQ(json::ToUnsigned(value - 1U), value - 1U);
    }
}
