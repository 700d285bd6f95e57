// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <list>
#include <vector>

#include "support/ends.h"

TEST(Events, ReachASubscriberWithServiceAndSource) {
    Service service("sample", "north");
    Client client;
    ASSERT_EQ(client.subscribe(), KORVO_CORE_STATUS_NO_ERROR);
    client.collectEvents();
    auto const event = publishUntilReceived(service, client, "{\"event\":\"Moved\"}");
    ASSERT_TRUE(event.has_value());
    EXPECT_EQ(*event, (Event{"sample", "north", "{\"event\":\"Moved\"}"}));
}

TEST(Events, OfAServiceThatStartsAfterTheSubscriptionArriveToo) {
    Client client;
    client.collectEvents();
    ASSERT_EQ(client.subscribe(), KORVO_CORE_STATUS_NO_ERROR);
    Service service;
    EXPECT_TRUE(publishUntilReceived(service, client, "{\"event\":\"Late\"}").has_value());
}

TEST(Events, OfEveryTargetOfTheServiceArrive) {
    Client client;
    client.collectEvents();
    ASSERT_EQ(client.subscribe(), KORVO_CORE_STATUS_NO_ERROR);
    Service north("sample", "north");
    Service south("sample", "south");
    auto const from_north = publishUntilReceived(north, client, "{\"event\":\"A\"}");
    ASSERT_TRUE(from_north.has_value());
    EXPECT_EQ(from_north->source, "north");
    // Events of the first that were published more than once may still be on their way.
    std::optional<Event> from_south = publishUntilReceived(south, client, "{\"event\":\"B\"}");
    while (from_south.has_value() && from_south->source == "north") {
        from_south = publishUntilReceived(south, client, "{\"event\":\"B\"}");
    }
    ASSERT_TRUE(from_south.has_value());
    EXPECT_EQ(*from_south, (Event{"sample", "south", "{\"event\":\"B\"}"}));
}

TEST(Events, ReachEverySubscriberInTheirOrder) {
    Service service;
    std::list<Client> clients(4);
    for (Client &client : clients) {
        client.collectEvents();
        ASSERT_EQ(client.subscribe(), KORVO_CORE_STATUS_NO_ERROR);
        ASSERT_TRUE(publishUntilReceived(service, client, "{\"event\":\"Ready\"}").has_value());
    }
    constexpr int count = 50;
    for (int number = 0; number < count; ++number) {
        ASSERT_EQ(service.publish("{\"event\":\"" + std::to_string(number) + "\"}"),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    for (Client &client : clients) {
        int expected = 0;
        while (expected < count) {
            auto const event = client.events.take();
            ASSERT_TRUE(event.has_value()) << "after " << expected;
            if (event->event != "{\"event\":\"Ready\"}") {
                EXPECT_EQ(event->event, "{\"event\":\"" + std::to_string(expected) + "\"}");
                ++expected;
            }
        }
    }
}

TEST(Events, OfOtherServicesDoNotArrive) {
    Service wanted("wanted", "");
    Service unwanted("unwanted", "");
    Client client;
    client.collectEvents();
    ASSERT_EQ(client.subscribe("wanted"), KORVO_CORE_STATUS_NO_ERROR);
    // A connection to the other service, over which its events could come.
    ASSERT_EQ(client.send("id", "{}", "unwanted", ""), KORVO_CORE_STATUS_NO_ERROR);
    Command command;
    ASSERT_EQ(unwanted.poll(command), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(unwanted.publish("{\"event\":\"No\"}"), KORVO_CORE_STATUS_NO_ERROR);
    auto const event = publishUntilReceived(wanted, client, "{\"event\":\"Yes\"}");
    ASSERT_TRUE(event.has_value());
    EXPECT_EQ(event->event, "{\"event\":\"Yes\"}");
}

TEST(Events, DoNotArriveAfterUnsubscribing) {
    Service ended("ended", "");
    Service kept("kept", "");
    Client client;
    client.collectEvents();
    ASSERT_EQ(client.subscribe("ended"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(client.subscribe("kept"), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_TRUE(publishUntilReceived(ended, client, "{\"event\":\"Before\"}").has_value());
    ASSERT_EQ(korvo_core_ipc_initiator_event_unsubscribe(client.handle(), "ended"),
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(ended.publish("{\"event\":\"After\"}"), KORVO_CORE_STATUS_NO_ERROR);
    for (bool is_done = false; !is_done;) {
        auto const event = publishUntilReceived(kept, client, "{\"event\":\"Marker\"}");
        ASSERT_TRUE(event.has_value());
        EXPECT_NE(event->event, "{\"event\":\"After\"}");
        is_done = event->event == "{\"event\":\"Marker\"}";
    }
}

TEST(Events, ArriveAgainAfterTheServiceWasRestarted) {
    Client client;
    client.collectEvents();
    ASSERT_EQ(client.subscribe(), KORVO_CORE_STATUS_NO_ERROR);
    {
        Service service;
        ASSERT_TRUE(publishUntilReceived(service, client, "{\"event\":\"Before\"}").has_value());
    }
    Service again;
    std::optional<Event> event;
    do {
        event = publishUntilReceived(again, client, "{\"event\":\"After\"}");
        ASSERT_TRUE(event.has_value());
    } while (event->event != "{\"event\":\"After\"}");
}

TEST(Events, WithoutSubscribersAreNoError) {
    Service service;
    EXPECT_EQ(service.publish("{\"event\":\"Alone\"}"), KORVO_CORE_STATUS_NO_ERROR);
}
