// SPDX-License-Identifier: Apache-2.0
#include "messaging/deliveries.h"

#include <gtest/gtest.h>

#include <string>

using platform::Deliveries;
using platform::Delivery;
using platform::Text;

namespace {

Delivery message(std::string const &first, std::string const &body = "") {
    Delivery delivery;
    delivery.first = Text(first);
    delivery.body = Text(body);
    return delivery;
}

/// What is taken, as "kind first body".
std::string taken(Deliveries &deliveries, bool with_events = true) {
    Delivery delivery;
    switch (deliveries.take(with_events, delivery)) {
        case Deliveries::Kind::none:
            return "none";
        case Deliveries::Kind::response:
            return "response " + std::string(delivery.first.view()) + " " + std::string(delivery.body.view());
        case Deliveries::Kind::event:
            return "event " + std::string(delivery.first.view()) + " " + std::string(delivery.body.view());
    }
    return "";
}

}  // namespace

TEST(DeliveriesTest, AreTakenInTheOrderOfTheirArrival) {
    Deliveries deliveries;
    EXPECT_EQ(taken(deliveries), "none");
    EXPECT_TRUE(deliveries.putResponse(message("1", "a"), Text()));
    EXPECT_TRUE(deliveries.putEvent(message("2", "b")));
    deliveries.putSubstitute(message("3", "c"));
    EXPECT_EQ(taken(deliveries), "response 1 a");
    EXPECT_EQ(taken(deliveries), "event 2 b");
    EXPECT_EQ(taken(deliveries), "response 3 c");
    EXPECT_EQ(taken(deliveries), "none");
}

TEST(DeliveriesTest, KeepEventsUntilSomebodyWantsThem) {
    Deliveries deliveries;
    EXPECT_TRUE(deliveries.putEvent(message("event")));
    EXPECT_TRUE(deliveries.putResponse(message("response"), Text()));
    EXPECT_EQ(taken(deliveries, false), "response response ");
    EXPECT_EQ(taken(deliveries, false), "none");
    EXPECT_EQ(taken(deliveries), "event event ");
}

TEST(DeliveriesTest, HoldAtMost1024Events) {
    Deliveries deliveries;
    for (int number = 0; number < 1024; ++number) {
        ASSERT_TRUE(deliveries.putEvent(message("event")));
    }
    EXPECT_FALSE(deliveries.putEvent(message("one more")));
    (void)taken(deliveries);
    EXPECT_TRUE(deliveries.putEvent(message("one more")));
}

TEST(DeliveriesTest, Hold16384ResponsesAndDeliverASubstituteForWhatIsBeyond) {
    Deliveries deliveries;
    for (int number = 0; number < 16384; ++number) {
        ASSERT_TRUE(deliveries.putResponse(message("response"), Text("substitute")));
    }
    EXPECT_FALSE(deliveries.putResponse(message("promised", "body"), Text("substitute")));
    EXPECT_FALSE(deliveries.putResponse(message("not promised", "body"), Text()));
    EXPECT_EQ(deliveries.responses(), 16385U);
    for (int number = 0; number < 16384; ++number) {
        ASSERT_EQ(taken(deliveries), "response response ");
    }
    EXPECT_EQ(taken(deliveries), "response promised substitute");
    EXPECT_EQ(taken(deliveries), "none");
}

TEST(DeliveriesTest, Hold32MebibytesOfResponses) {
    Deliveries deliveries;
    std::string const large(1024 * 1024, 'x');
    for (int number = 0; number < 32; ++number) {
        ASSERT_TRUE(deliveries.putResponse(message("", large), Text()));
    }
    EXPECT_FALSE(deliveries.putResponse(message("", "x"), Text()));
    (void)taken(deliveries);
    EXPECT_TRUE(deliveries.putResponse(message("", large), Text()));
}
