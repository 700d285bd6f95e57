// SPDX-License-Identifier: Apache-2.0
#include "messaging/requests.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using platform::Address;
using platform::Request;
using platform::RequestTable;
using platform::Route;
using platform::Sender;
using platform::Text;
using platform::Waiter;
namespace {

std::shared_ptr<Address const> const somewhere =
    std::make_shared<Address const>(Address{"service", "target"});

Request &add(RequestTable &table, std::string const &id, Route route, std::uint64_t connection = 1) {
    return table.add(id, connection, somewhere, route, nullptr);
}

}  // namespace

TEST(RequestTableTest, FindsWhatWasAddedUntilItIsErased) {
    RequestTable table;
    Request &request = add(table, "one", Route::receiver);
    EXPECT_EQ(table.find("one"), &request);
    EXPECT_EQ(table.find("two"), nullptr);
    table.erase(request);
    EXPECT_EQ(table.find("one"), nullptr);
}

TEST(RequestTableTest, KeepsTheLatest1024Responses) {
    RequestTable table;
    unsigned int dropped = 0;
    for (int number = 0; number < 1030; ++number) {
        dropped += table.keep(add(table, std::to_string(number), Route::receiver), Text("x"));
    }
    EXPECT_EQ(dropped, 6U);
    EXPECT_EQ(table.find("5"), nullptr);
    ASSERT_NE(table.find("6"), nullptr);
    EXPECT_EQ(table.find("6")->response.view(), "x");
    EXPECT_NE(table.find("1029"), nullptr);
}

TEST(RequestTableTest, Keeps8MebibytesOfResponses) {
    RequestTable table;
    std::string const large(1024 * 1024, 'x');
    unsigned int dropped = 0;
    for (int number = 0; number < 10; ++number) {
        dropped += table.keep(add(table, std::to_string(number), Route::receiver), Text(large));
    }
    EXPECT_EQ(dropped, 2U);
    EXPECT_EQ(table.find("1"), nullptr);
    EXPECT_NE(table.find("2"), nullptr);
}

TEST(RequestTableTest, GivesResponsesForAnyoneInTheOrderOfTheirArrival) {
    RequestTable table;
    Request &first = add(table, "first", Route::anyone);
    Request &second = add(table, "second", Route::anyone);
    Request &owned = add(table, "owned", Route::receiver);
    EXPECT_EQ(table.firstForAnyone(), nullptr);
    (void)table.keep(owned, Text("o"));
    (void)table.keep(second, Text("2"));
    (void)table.keep(first, Text("1"));
    ASSERT_EQ(table.firstForAnyone(), &second);
    table.erase(second);
    EXPECT_EQ(table.firstForAnyone(), &first);
}

TEST(RequestTableTest, IsFullWith65536AndKnowsTheOldestThatNobodyAttendsTo) {
    RequestTable table;
    EXPECT_EQ(table.oldestUnattended(), nullptr);
    Waiter waiter;
    Sender sender;
    add(table, "waited for", Route::receiver).waiter = &waiter;
    add(table, "being sent", Route::receiver).sender = &sender;
    EXPECT_EQ(table.oldestUnattended(), nullptr);
    for (int number = 2; number < 65536; ++number) {
        EXPECT_FALSE(table.isFull());
        add(table, std::to_string(number), Route::receiver);
    }
    EXPECT_TRUE(table.isFull());
    ASSERT_NE(table.oldestUnattended(), nullptr);
    EXPECT_EQ(table.oldestUnattended()->id, "2");
}

TEST(RequestTableTest, TellsTheWaitersOfALostConnectionAndKeepsWhatCameInTime) {
    RequestTable table;
    Waiter waiter;
    Waiter elsewhere;
    add(table, "waited for", Route::receiver, 1).waiter = &waiter;
    add(table, "elsewhere", Route::receiver, 2).waiter = &elsewhere;
    add(table, "for anyone", Route::anyone, 1);
    add(table, "for a callback", Route::owner_callback, 1).response = Text("substitute");
    Sender sender;
    Request &being_sent = add(table, "being sent", Route::owner_callback, 1);
    being_sent.sender = &sender;
    sender.request = &being_sent;
    (void)table.keep(add(table, "kept", Route::receiver, 1), Text("x"));

    std::vector<std::string> ended;
    RequestTable::Lost const lost = table.lose(1, [&](Request &request) {
        ended.emplace_back(std::string(request.id) + ":" + std::string(request.response.view()));
    });

    EXPECT_EQ(waiter.state, Waiter::State::lost);
    EXPECT_EQ(elsewhere.state, Waiter::State::waiting);
    EXPECT_EQ(lost.for_anyone, 1U);
    EXPECT_EQ(lost.for_callbacks, 1U);
    EXPECT_EQ(ended, std::vector<std::string>{"for a callback:substitute"});
    // The thread that sends it tells its caller.
    EXPECT_TRUE(sender.is_lost);
    EXPECT_EQ(sender.request, nullptr);
    EXPECT_EQ(table.find("waited for"), nullptr);
    EXPECT_EQ(table.find("for anyone"), nullptr);
    EXPECT_NE(table.find("kept"), nullptr);
    EXPECT_NE(table.find("elsewhere"), nullptr);
}
