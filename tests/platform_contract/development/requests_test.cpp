// SPDX-License-Identifier: Apache-2.0
#include "messaging/requests.h"

#include <gtest/gtest.h>

#include <string>

#include "messaging/announcements.h"

using platform::Address;
using platform::Request;
using platform::RequestTable;
using platform::Route;
using platform::Text;
using platform::Waiter;
namespace announcements = platform::announcements;

namespace {

std::shared_ptr<Address const> const somewhere =
    std::make_shared<Address const>(Address{"service", "target"});

Request &add(RequestTable &table, std::string const &id, Route route, std::uint64_t connection = 1) {
    EXPECT_TRUE(table.add(id, connection, somewhere, route, nullptr));
    return *table.find(id);
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

TEST(RequestTableTest, RemembersTheLast32AnsweredResponses) {
    RequestTable table;
    for (int number = 0; number < 33; ++number) {
        table.rememberAnswered(add(table, std::to_string(number), Route::owner_callback), Text("x"));
    }
    EXPECT_EQ(table.find("0"), nullptr);
    EXPECT_NE(table.find("1"), nullptr);
    EXPECT_NE(table.find("32"), nullptr);
}

TEST(RequestTableTest, ForgetsTheOldestUnansweredRequestWhenItIsFull) {
    RequestTable table;
    Waiter waiter;
    add(table, "waited for", Route::receiver).waiter = &waiter;
    for (int number = 1; number < 65536; ++number) {
        add(table, std::to_string(number), Route::receiver);
    }
    add(table, "one more", Route::receiver);
    EXPECT_NE(table.find("waited for"), nullptr);
    EXPECT_EQ(table.find("1"), nullptr);
    EXPECT_NE(table.find("2"), nullptr);
}

TEST(RequestTableTest, TellsTheWaitersOfALostConnectionAndKeepsWhatCameInTime) {
    RequestTable table;
    Waiter waiter;
    Waiter elsewhere;
    add(table, "waited for", Route::receiver, 1).waiter = &waiter;
    add(table, "elsewhere", Route::receiver, 2).waiter = &elsewhere;
    add(table, "for anyone", Route::anyone, 1);
    add(table, "for a callback", Route::owner_callback, 1);
    (void)table.keep(add(table, "kept", Route::receiver, 1), Text("x"));

    RequestTable::Lost const lost = table.lose(1);

    EXPECT_EQ(waiter.state, Waiter::State::lost);
    EXPECT_EQ(elsewhere.state, Waiter::State::waiting);
    EXPECT_EQ(lost.for_anyone, 1U);
    EXPECT_EQ(lost.for_callbacks, 1U);
    EXPECT_EQ(table.find("waited for"), nullptr);
    EXPECT_EQ(table.find("for anyone"), nullptr);
    EXPECT_NE(table.find("kept"), nullptr);
    EXPECT_NE(table.find("elsewhere"), nullptr);
}

TEST(Announcements, AreUsedOnce) {
    int owner = 0;
    announcements::make(1, &owner);
    EXPECT_TRUE(announcements::take(1, &owner));
    EXPECT_FALSE(announcements::take(1, &owner));
}

TEST(Announcements, AreForOneOwnerOnOneInitiator) {
    int owner = 0;
    int other = 0;
    announcements::make(1, &owner);
    EXPECT_FALSE(announcements::take(1, &other));
    EXPECT_FALSE(announcements::take(2, &owner));
    EXPECT_TRUE(announcements::take(1, &owner));
}

TEST(Announcements, ThatAreNotUsedAreForgottenOldestFirst) {
    int owners[9] = {};
    for (int &owner : owners) {
        announcements::make(1, &owner);
    }
    EXPECT_FALSE(announcements::take(1, &owners[0]));
    for (int index = 1; index < 9; ++index) {
        EXPECT_TRUE(announcements::take(1, &owners[index])) << index;
    }
}
