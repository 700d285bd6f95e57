// SPDX-License-Identifier: Apache-2.0
// What the service keeps can be read back through the client library, at each bound; what is one beyond is refused.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <string>

#include "support/operation.h"
#include "support/service.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

constexpr auto refused = KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE;
constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;

class Bounds : public ::testing::Test {
  protected:
    Answer call(std::string const &name, Values const &inputs = {}) {
        return operation(name).send(client_.handle(), nullptr, inputs);
    }

    /// Changes the store behind the service's back, which is stopped meanwhile.
    void changeStore(std::string const &statements) {
        service_.stop();
        sqlite3 *database = nullptr;
        ASSERT_EQ(sqlite3_open(store_.c_str(), &database), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(database);
        sqlite3_close(database);
        service_.start();
    }

    std::filesystem::path store_ = Workspace::ofThisProgram().newFolder("store") / "catalogue.db";
    Service service_{{"--store", store_.string()}};
    Client client_;
};

}  // namespace

TEST_F(Bounds, AFullCatalogueCanBeListedAndTakesNoMore) {
    constexpr unsigned int most = 50'000;
    constexpr unsigned int last = 4294967294U;
    // All but one entry of either kind, with the longest identifiers that leave one for the last.
    changeStore(R"sql(
        CREATE TEMP TABLE n AS WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 49998)
            SELECT 4294967293 - i AS id FROM n;
        INSERT INTO actions (id, type, settings, filters) SELECT id, 7, '{"action_name":"wipe"}',
            '{"weekday_filters":[],"time_filters_start":[],"time_filters_end":[]}' FROM n;
        INSERT INTO triggers (id, type, settings) SELECT id, 1, '{"trigger_name":"never","timer_seconds":0}' FROM n;
        INSERT INTO associations SELECT 4294967293, id FROM n;
        INSERT OR IGNORE INTO associations SELECT id, 4294967293 FROM n;
    )sql");
    Answer const action = call("create_washer_action", {"last"});
    ASSERT_EQ(action.status, done);
    EXPECT_EQ(action.results, (Values{last}));
    ASSERT_EQ(call("create_timer_trigger", {"last", 0U}).status, done);
    EXPECT_EQ(call("create_washer_action", {"more"}).status, refused);
    EXPECT_EQ(call("create_timer_trigger", {"more", 0U}).status, refused);

    struct Listing {
        char const *name;
        Values inputs;
        std::size_t entries;
    };
    Listing const listings[] = {{"get_actions", {}, most},
                                {"get_triggers", {}, most},
                                {"get_trigger_associations", {last - 1}, most - 1},
                                {"get_action_associations", {last - 1}, most - 1}};
    for (Listing const &listing : listings) {
        Answer const answer = call(listing.name, listing.inputs);
        ASSERT_EQ(answer.status, done) << listing.name;
        auto const &ids = std::get<Numbers>(answer.results[0]);
        ASSERT_EQ(ids.size(), listing.entries) << listing.name;
        EXPECT_EQ(ids.front(), last - 49'999) << listing.name;
        EXPECT_EQ(std::get<Numbers>(answer.results[1]).size(), listing.entries) << listing.name;
    }
    EXPECT_EQ(call("get_action_counts").results, (Values{most, Numbers{7, 8}, Numbers{most - 1, 1}}));
}

TEST_F(Bounds, TheLongestNameCanBeReadAndALongerOneIsRefused) {
    // An answer has at most 1,000,000 bytes, of which 58 stand around the name.
    std::string const longest(1'000'000 - 58, 'n');
    EXPECT_EQ(call("create_wiper_action", {longest + "n"}).status, refused);
    Answer const made = call("create_wiper_action", {longest});
    ASSERT_EQ(made.status, done);
    EXPECT_EQ(call("get_wiper_action", {made.results[0]}).results, (Values{longest}));
    EXPECT_EQ(call("modify_wiper_action", {made.results[0], longest + "m"}).status, refused);
    EXPECT_EQ(call("get_wiper_action", {made.results[0]}).results, (Values{longest}));
    EXPECT_EQ(call("get_action_counts").results, (Values{1U, Numbers{7}, Numbers{1}}));
}

TEST_F(Bounds, TheMostFiltersCanBeReadAndOneMoreIsRefused) {
    Answer const made = call("create_wiper_action", {"w"});
    ASSERT_EQ(made.status, done);
    // An answer has at most 1,000,000 bytes: 110 around the elements, and two for each but the lists' last.
    Numbers const most(166'648, 1);
    Numbers const more(166'649, 1);
    EXPECT_EQ(call("set_action_filters", {made.results[0], more, more, more}).status, refused);
    EXPECT_EQ(call("get_action_filters", {made.results[0]}).results,
              (Values{Numbers{}, Numbers{}, Numbers{}}));
    ASSERT_EQ(call("set_action_filters", {made.results[0], most, most, most}).status, done);
    EXPECT_EQ(call("get_action_filters", {made.results[0]}).results, (Values{most, most, most}));
}

}  // namespace end_to_end
