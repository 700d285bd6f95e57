// SPDX-License-Identifier: Apache-2.0
// What the service keeps: identifiers, types, counts, associations, and what becomes of them.
#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <numeric>
#include <string>

#include "support/operation.h"
#include "support/service.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

class Catalogue : public ::testing::Test {
  protected:
    Answer call(std::string const &name, Values const &inputs = {}) {
        return operation(name).send(client_.handle(), nullptr, inputs);
    }

    korvo_core_status statusOf(std::string const &name, Values const &inputs) {
        return call(name, inputs).status;
    }

    unsigned int create(std::string const &name, Values const &settings) {
        Answer const answer = call("create_" + name, settings);
        EXPECT_EQ(answer.status, KORVO_CORE_STATUS_NO_ERROR);
        return answer.results.empty() ? 0 : std::get<Number>(answer.results[0]);
    }

    /// The results of a query that succeeds.
    Values resultsOf(std::string const &name, Values const &inputs = {}) {
        Answer const answer = call(name, inputs);
        EXPECT_EQ(answer.status, KORVO_CORE_STATUS_NO_ERROR) << name;
        return answer.results;
    }

    std::filesystem::path store_ = Workspace::ofThisProgram().newFolder("store") / "catalogue.db";
    Service service_{{"--store", store_.string()}};
    Client client_;
};

constexpr auto refused = KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE;
constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;

TEST_F(Catalogue, IsEmptyAtFirst) {
    EXPECT_EQ(resultsOf("get_actions"), (Values{Numbers{}, Numbers{}}));
    EXPECT_EQ(resultsOf("get_triggers"), (Values{Numbers{}, Numbers{}}));
    EXPECT_EQ(resultsOf("get_action_counts"), (Values{0U, Numbers{}, Numbers{}}));
    EXPECT_EQ(resultsOf("get_trigger_counts"), (Values{0U, Numbers{}, Numbers{}}));
}

TEST_F(Catalogue, CountsByType) {
    create("ptz_scan_action", {"scan", "1"});
    create("ptz_tour_action", {"tour 1", "1"});
    create("ptz_tour_action", {"tour 2", "2"});
    create("email_action", {"mail", "", Texts{}, Texts{}, "", "", "", Flag{0}, Flag{0}});
    EXPECT_EQ(resultsOf("get_action_counts"), (Values{4U, Numbers{0, 5, 6}, Numbers{1, 2, 1}}));

    create("timer_trigger", {"never", 0U});
    create("stable_onvif_trigger", {"stable", "", "", Texts{}, Texts{}, 3U});
    create("timer_trigger", {"never either", 0U});
    EXPECT_EQ(resultsOf("get_trigger_counts"), (Values{3U, Numbers{1, 2}, Numbers{2, 1}}));
}

TEST_F(Catalogue, KnowsTheTourAsFiveAndTheScanAsSix) {
    unsigned int const scan = create("ptz_scan_action", {"scan", "1"});
    unsigned int const tour = create("ptz_tour_action", {"tour", "1"});
    EXPECT_EQ(resultsOf("get_action_type", {scan}), (Values{static_cast<unsigned int>(kPtzScanAction)}));
    EXPECT_EQ(resultsOf("get_action_type", {tour}), (Values{static_cast<unsigned int>(kPtzTourAction)}));
    EXPECT_EQ(resultsOf("get_actions"), (Values{Numbers{scan, tour}, Numbers{6, 5}}));
}

TEST_F(Catalogue, NeverGivesAnIdentifierOutTwice) {
    unsigned int const first = create("wiper_action", {"first"});
    unsigned int const second = create("wiper_action", {"second"});
    EXPECT_NE(first, 0U);
    EXPECT_NE(first, second);
    ASSERT_EQ(statusOf("delete_action", {second}), done);
    unsigned int const third = create("washer_action", {"third"});
    EXPECT_NE(third, first);
    EXPECT_NE(third, second);
    EXPECT_EQ(statusOf("get_action_type", {second}), refused);
}

TEST_F(Catalogue, RefusesToReadOrModifyAnEntryAsAnotherKind) {
    unsigned int const wiper = create("wiper_action", {"wiper"});
    unsigned int const timer = create("timer_trigger", {"timer", 0U});
    EXPECT_EQ(statusOf("modify_washer_action", {wiper, "washer"}), refused);
    EXPECT_EQ(statusOf("get_washer_action", {wiper}), refused);
    EXPECT_EQ(statusOf("modify_onvif_trigger", {timer, "", "", "", "", Texts{}, Texts{}}), refused);
    EXPECT_EQ(resultsOf("get_wiper_action", {wiper}), (Values{"wiper"}));
    EXPECT_EQ(resultsOf("get_timer_trigger", {timer}), (Values{"timer", 0U}));
}

TEST_F(Catalogue, TellsAssociationsFromBothSides) {
    unsigned int const wiper = create("wiper_action", {"wiper"});
    unsigned int const relay = create("relay_action", {"relay", "1", 0U, Flag{0}, 0U, 0U, 0U});
    unsigned int const timer = create("timer_trigger", {"timer", 0U});
    unsigned int const onvif = create("onvif_trigger", {"onvif", "a", "", "", Texts{}, Texts{}});
    for (auto const &[trigger, action] : {std::pair{timer, wiper}, {timer, relay}, {onvif, relay}}) {
        ASSERT_EQ(statusOf("create_association", {trigger, action}), done);
    }
    EXPECT_EQ(resultsOf("get_trigger_associations", {timer}), (Values{Numbers{wiper, relay}, Numbers{7, 9}}));
    EXPECT_EQ(resultsOf("get_trigger_associations", {onvif}), (Values{Numbers{relay}, Numbers{9}}));
    EXPECT_EQ(resultsOf("get_action_associations", {wiper}), (Values{Numbers{timer}, Numbers{1}}));
    EXPECT_EQ(resultsOf("get_action_associations", {relay}), (Values{Numbers{timer, onvif}, Numbers{1, 0}}));

    ASSERT_EQ(statusOf("delete_association", {timer, relay}), done);
    EXPECT_EQ(statusOf("delete_association", {timer, relay}), refused);
    EXPECT_EQ(resultsOf("get_action_associations", {relay}), (Values{Numbers{onvif}, Numbers{0}}));
}

TEST_F(Catalogue, DeletesAssociationsWithEitherEnd) {
    unsigned int const wiper = create("wiper_action", {"wiper"});
    unsigned int const washer = create("washer_action", {"washer"});
    unsigned int const timer = create("timer_trigger", {"timer", 0U});
    unsigned int const other = create("timer_trigger", {"other", 0U});
    for (auto const &[trigger, action] : {std::pair{timer, wiper}, {timer, washer}, {other, washer}}) {
        ASSERT_EQ(statusOf("create_association", {trigger, action}), done);
    }
    ASSERT_EQ(statusOf("delete_action", {wiper}), done);
    EXPECT_EQ(resultsOf("get_trigger_associations", {timer}), (Values{Numbers{washer}, Numbers{8}}));
    EXPECT_EQ(statusOf("get_action_associations", {wiper}), refused);

    ASSERT_EQ(statusOf("delete_trigger", {timer}), done);
    EXPECT_EQ(resultsOf("get_action_associations", {washer}), (Values{Numbers{other}, Numbers{1}}));
}

TEST_F(Catalogue, RefusesAssociationsWithWhatDoesNotExist) {
    unsigned int const wiper = create("wiper_action", {"wiper"});
    unsigned int const timer = create("timer_trigger", {"timer", 0U});
    EXPECT_EQ(statusOf("create_association", {timer, wiper + 1}), refused);
    EXPECT_EQ(statusOf("create_association", {timer + 1, wiper}), refused);
    EXPECT_EQ(statusOf("create_association", {0U, 0U}), refused);
    EXPECT_EQ(resultsOf("get_trigger_associations", {timer}), (Values{Numbers{}, Numbers{}}));
}

TEST_F(Catalogue, GivesBackListsOfAnyLengthThatItHasAccepted) {
    unsigned int const wiper = create("wiper_action", {"wiper"});
    // Three lists of 21,844 numbers are, with the lists and what is around them, just above 65,536 values.
    for (std::size_t const length : {std::size_t{21'844}, std::size_t{60'000}}) {
        Numbers weekdays(length, 127);
        Numbers starts(length);
        std::iota(starts.begin(), starts.end(), 10'000);
        Values const filters{weekdays, starts, Numbers(length, 0)};
        ASSERT_EQ(statusOf("set_action_filters", {wiper, filters[0], filters[1], filters[2]}), done);
        EXPECT_TRUE(resultsOf("get_action_filters", {wiper}) == filters) << length;
    }
}

TEST_F(Catalogue, OutlivesTheServiceInItsStore) {
    unsigned int const gone = create("wiper_action", {"gone"});
    unsigned int const relay =
        create("relay_action", {"relay \"\xc3\xa4\"\n", "1", 4294967295U, Flag{1}, 1U, 2U, 3U});
    unsigned int const timer = create("timer_trigger", {"timer", 4294967295U});
    Values const filters{Numbers{62, 64}, Numbers{0, 3600}, Numbers{86399, 7200}};
    ASSERT_EQ(statusOf("set_action_filters", {relay, filters[0], filters[1], filters[2]}), done);
    ASSERT_EQ(statusOf("create_association", {timer, relay}), done);
    ASSERT_EQ(statusOf("delete_action", {gone}), done);

    // Once ended as it should be, once killed: what was answered is kept either way.
    for (bool const killed : {false, true}) {
        killed ? service_.kill() : service_.stop();
        service_.start();
        EXPECT_EQ(resultsOf("get_actions"), (Values{Numbers{relay}, Numbers{9}}));
        EXPECT_EQ(resultsOf("get_relay_action", {relay}),
                  (Values{"relay \"\xc3\xa4\"\n", "1", 4294967295U, Flag{1}, 1U, 2U, 3U}));
        EXPECT_EQ(resultsOf("get_timer_trigger", {timer}), (Values{"timer", 4294967295U}));
        EXPECT_EQ(resultsOf("get_action_filters", {relay}), filters);
        EXPECT_EQ(resultsOf("get_trigger_associations", {timer}), (Values{Numbers{relay}, Numbers{9}}));
    }
    unsigned int const next = create("wiper_action", {"next"});
    EXPECT_NE(next, gone);
    EXPECT_NE(next, relay);
}

}  // namespace

}  // namespace end_to_end
