// SPDX-License-Identifier: Apache-2.0
// Every operation of the service, in every form, over the real messaging.
#include <gtest/gtest.h>

#include <deque>
#include <set>
#include <string>

#include "support/operation.h"
#include "support/samples.h"
#include "support/service.h"
#include "support/workspace.h"

namespace end_to_end {

namespace {

/// A kind of action or trigger, by the names of its operations.
struct EntryKind {
    char const *name;
    char const *family;
    unsigned int type;
};

constexpr EntryKind kinds[] = {
    {"email_action", "action", 0},          {"ftp_action", "action", 1},
    {"snapshot_action", "action", 2},       {"ptz_pattern_action", "action", 3},
    {"ptz_preset_action", "action", 4},     {"ptz_tour_action", "action", 5},
    {"ptz_scan_action", "action", 6},       {"wiper_action", "action", 7},
    {"washer_action", "action", 8},         {"relay_action", "action", 9},
    {"onvif_trigger", "trigger", 0},        {"timer_trigger", "trigger", 1},
    {"stable_onvif_trigger", "trigger", 2},
};

class EveryWay : public ::testing::TestWithParam<Way> {
  protected:
    Answer call(std::string const &name, Values const &inputs = {}) {
        called_.insert(name);
        return end_to_end::call(operation(name), GetParam(), client_, nullptr, inputs);
    }

    void expectDone(std::string const &name, Values const &inputs, Values const &results) {
        Answer const answer = call(name, inputs);
        EXPECT_EQ(answer.status, KORVO_CORE_STATUS_NO_ERROR) << name;
        EXPECT_TRUE(answer.results == results) << name << " gives other results";
    }

    void expectRefused(std::string const &name, Values const &inputs) {
        EXPECT_EQ(call(name, inputs).status, KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE) << name;
    }

    unsigned int create(std::string const &kind, Values const &settings) {
        Answer const answer = call("create_" + kind, settings);
        EXPECT_EQ(answer.status, KORVO_CORE_STATUS_NO_ERROR) << kind;
        return answer.results.empty() ? 0 : std::get<Number>(answer.results[0]);
    }

    void createModifyAndDelete(EntryKind const &kind, Flavour flavour) {
        SCOPED_TRACE(std::string(kind.name) + ", " + nameOf(flavour));
        std::string const name = kind.name;
        auto const &inputs = operation("create_" + name).inputs();
        Values const first = sampleOf(inputs, flavour, 1);
        Values const second = sampleOf(inputs, flavour, 2);

        unsigned int const id = create(name, first);
        expectDone("get_" + name, {id}, readBack(first));
        expectDone(std::string("get_") + kind.family + "_type", {id}, {kind.type});
        expectDone("modify_" + name, id + second, {});
        expectDone("get_" + name, {id}, readBack(second));
        expectDone(std::string("delete_") + kind.family, {id}, {});
        expectRefused("get_" + name, {id});
    }

    // All kinds of texts and numbers are to come back, also as filters that mean nothing.
    Service service_{{"--lenient"}};
    Client client_;
    std::set<std::string> called_;
};

INSTANTIATE_TEST_SUITE_P(, EveryWay, ::testing::ValuesIn(all_ways),
                         [](auto const &tested) { return nameOf(tested.param); });

TEST_P(EveryWay, ReachesEveryOperationAndReadsBackWhatWasCreated) {
    for (EntryKind const &kind : kinds) {
        for (Flavour const flavour : all_flavours) {
            createModifyAndDelete(kind, flavour);
        }
    }

    unsigned int const wiper = create("wiper_action", {"wipe"});
    unsigned int const preset = create("ptz_preset_action", {"look", "door"});
    unsigned int const timer = create("timer_trigger", {"never", 0U});
    expectDone("get_actions", {}, {Numbers{wiper, preset}, Numbers{7, 4}});
    expectDone("get_action_counts", {}, {2U, Numbers{4, 7}, Numbers{1, 1}});
    expectDone("get_triggers", {}, {Numbers{timer}, Numbers{1}});
    expectDone("get_trigger_counts", {}, {1U, Numbers{1}, Numbers{1}});

    for (Flavour const flavour : all_flavours) {
        Values const filters = sampleOf({Kind::numbers, Kind::numbers, Kind::numbers}, flavour, 1);
        expectDone("set_action_filters", wiper + filters, {});
        expectDone("get_action_filters", {wiper}, filters);
    }

    expectDone("create_association", {timer, preset}, {});
    expectDone("create_association", {timer, wiper}, {});
    expectDone("get_trigger_associations", {timer}, {Numbers{wiper, preset}, Numbers{7, 4}});
    expectDone("get_action_associations", {preset}, {Numbers{timer}, Numbers{1}});
    expectDone("delete_association", {timer, wiper}, {});
    expectDone("get_action_associations", {wiper}, {Numbers{}, Numbers{}});

    for (Flavour const flavour : all_flavours) {
        expectDone("onvif_event", sampleOf(operation("onvif_event").inputs(), flavour, 1), {});
    }

    std::set<std::string> all;
    for (auto const &[name, known] : operations()) {
        all.insert(name);
    }
    EXPECT_EQ(called_, all);
}

TEST_P(EveryWay, PassesTheServicesRefusalOn) {
    constexpr unsigned int unknown = 4294967295U;
    for (char const *const name :
         {"get_action_type", "delete_action", "get_action_filters", "get_trigger_type", "delete_trigger",
          "get_trigger_associations", "get_action_associations"}) {
        expectRefused(name, {unknown});
    }
    expectRefused("set_action_filters", unknown + Values{Numbers{}, Numbers{}, Numbers{}});
    expectRefused("create_association", {unknown, unknown});
    expectRefused("delete_association", {unknown, unknown});
    for (EntryKind const &kind : kinds) {
        std::string const name = kind.name;
        expectRefused("get_" + name, {unknown});
        expectRefused("modify_" + name,
                      unknown + sampleOf(operation("create_" + name).inputs(), Flavour::plain, 1));
    }
}

TEST(EveryCancel, WithdrawsNoRegistrationThatStandsAlone) {
    Service const service;
    static std::deque<PendingAnswer> contexts(operations().size());
    static PendingAnswer stranger;
    Client client;
    auto context = contexts.begin();
    for (auto const &[name, called] : operations()) {
        Values const inputs = sampleOf(called->inputs(), Flavour::plain, 1);
        ASSERT_EQ(called->sendAsync(client.handle(), nullptr, inputs, *context), KORVO_CORE_STATUS_NO_ERROR)
            << name;
        EXPECT_EQ(called->cancelAsync(client.handle(), stranger), KORVO_CORE_STATUS_NO_ERROR) << name;
        EXPECT_EQ(called->cancelAsync(client.handle(), *context), KORVO_CORE_STATUS_NO_ERROR) << name;
        EXPECT_TRUE(context->wait().has_value()) << name;
        EXPECT_EQ(context->count(), 1U) << name;
        ++context;
    }
    EXPECT_EQ(stranger.count(), 0U);
}

/// The version query, which has no form with a time-out.
class VersionQuery : public ::testing::TestWithParam<Way> {};

INSTANTIATE_TEST_SUITE_P(, VersionQuery,
                         ::testing::Values(Way::send, Way::two_steps_blocking, Way::two_steps_polling,
                                           Way::asynchronous),
                         [](auto const &tested) { return nameOf(tested.param); });

TEST_P(VersionQuery, IsSilentWhenBothSidesAgree) {
    Service const service;
    Client client;
    auto const mark = ErrorOutput::ofThisProgram().mark();
    Answer const answer = call(versionQuery(), GetParam(), client, nullptr, {});
    EXPECT_EQ(answer.status, KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_TRUE(answer.results == (Values{1U, 19U}));
    EXPECT_EQ(ErrorOutput::ofThisProgram().since(mark).find("queried Target"), std::string::npos);
}

TEST_P(VersionQuery, LogsAnotherVersionOnceAndSucceeds) {
    Service const service({"--target-version", "1.20"});
    Client client;
    auto const mark = ErrorOutput::ofThisProgram().mark();
    // Polling asks for the version a second time, to know that the first answer is there.
    std::size_t const queries = GetParam() == Way::two_steps_polling ? 2 : 1;
    Answer const answer = call(versionQuery(), GetParam(), client, nullptr, {});
    EXPECT_EQ(answer.status, KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_TRUE(answer.results == (Values{1U, 20U}));
    std::string const log = ErrorOutput::ofThisProgram().since(mark);
    EXPECT_EQ(count(log, "Action_engine Initiator (version 1:19) queried Target (version 1:20)"), queries)
        << log;
    EXPECT_EQ(count(log, "queried Target"), queries) << log;
}

TEST(VersionQueryCancel, WithdrawsNoRegistrationThatStandsAlone) {
    static PendingAnswer context;
    Service const service;
    Client client;
    ASSERT_EQ(versionQuery().sendAsync(client.handle(), nullptr, {}, context), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(versionQuery().cancelAsync(client.handle(), context), KORVO_CORE_STATUS_NO_ERROR);
    auto const answer = context.wait();
    ASSERT_TRUE(answer.has_value());
    EXPECT_TRUE(answer->results == (Values{1U, 19U}));
}

}  // namespace

}  // namespace end_to_end
