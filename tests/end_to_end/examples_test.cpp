// SPDX-License-Identifier: Apache-2.0
// The example programs, as a user runs them.
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <thread>

#include "processes/child.h"
#include "support/operation.h"
#include "support/service.h"

namespace end_to_end {

namespace {

/// The folder of the programs: those in C, or the same in C++, compiled with other definitions.
Finished runExample(std::string const &name, std::vector<std::string> arguments = {}) {
    return run({std::string(KORVO_EXAMPLES_FOLDER) + "/" + name, std::move(arguments), {}});
}

TEST(ListActions, SaysSoWhenThereAreNone) {
    Service const service;
    Finished const finished = runExample("list_actions");
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out, "The service has no actions.\n");
}

TEST(ListActions, NamesTheTypeOfEachAction) {
    Service const service;
    Client client;
    ASSERT_EQ(operation("create_ptz_tour_action").send(client.handle(), nullptr, {"tour", "1"}).status,
              KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(operation("create_wiper_action").send(client.handle(), nullptr, {"wipe"}).status,
              KORVO_CORE_STATUS_NO_ERROR);
    Finished const finished = runExample("list_actions");
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out, "action 1: PTZ tour\naction 2: wiper\n");
}

TEST(AsynchronousList, ListsActionsWithTheirTypes) {
    Service const service;
    Client client;
    ASSERT_EQ(operation("create_ptz_scan_action").send(client.handle(), nullptr, {"scan", "1"}).status,
              KORVO_CORE_STATUS_NO_ERROR);
    Finished const finished = runExample("asynchronous_list");
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out, "action 1 of type 6\n1 actions\n");
}

TEST(VersionCheck, TellsBothVersions) {
    Service const service({"--target-version", "2.3"});
    Finished const finished = runExample("version_check");
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out, "This client speaks version 1.19, the service 2.3\n");
}

TEST(TimedSnapshots, SavesPicturesAndCleansUp) {
    Service const service;
    Finished const finished = runExample("timed_snapshots", {"2"});
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(count(finished.out, "Action_completed: action 1 \"timed snapshot\" succeeded"), 2U)
        << finished.out;
    EXPECT_TRUE(std::filesystem::exists(service.snapshots() / "timed.jpg"));
    Client client;
    EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).results,
              (Values{Numbers{}, Numbers{}}));
    EXPECT_EQ(operation("get_triggers").send(client.handle(), nullptr, {}).results,
              (Values{Numbers{}, Numbers{}}));
}

TEST(TimedSnapshots, FailsWhenTheServiceDoesNotSaveAny) {
    Service const service({"--fail", "Create_snapshot_action=9"});
    Finished const finished = runExample("timed_snapshots", {"1"});
    EXPECT_TRUE(finished.exit == exited(1)) << finished.out;
    EXPECT_NE(finished.errors.find("create_snapshot_action"), std::string::npos) << finished.errors;
}

TEST(OnvifEmailAlarm, HasAMailSentAndCleansUp) {
    Service const service;
    // Again and again, since cleaning up must never come before the mail.
    constexpr unsigned int runs = 5;
    for (unsigned int n = 1; n <= runs; ++n) {
        Finished const finished = runExample("onvif_email_alarm");
        EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
        std::string const number = std::to_string(n);
        EXPECT_EQ(finished.out,
                  "\"Motion at the door\" goes to guard@example.org through mail.example.org\n"
                  "Trigger " +
                      number + " has fired; the service has run action " + number + "\n");
    }
    unsigned int mails = 0;
    for (auto const &entry : std::filesystem::directory_iterator(service.outbox())) {
        mails += entry.path().extension() == ".eml" ? 1U : 0U;
    }
    EXPECT_EQ(mails, runs);
    Client client;
    EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).results,
              (Values{Numbers{}, Numbers{}}));
    EXPECT_EQ(operation("get_triggers").send(client.handle(), nullptr, {}).results,
              (Values{Numbers{}, Numbers{}}));
}

TEST(RelayOfficeHours, SetsShowsAndRemovesFilters) {
    Service const service;
    Finished const finished = runExample("relay_office_hours");
    EXPECT_TRUE(finished.exit == exited(0)) << finished.errors;
    EXPECT_EQ(finished.out,
              "The relay may switch:\n"
              "  weekdays 62, from 8 to 12 o'clock\n"
              "  weekdays 62, from 13 to 17 o'clock\n"
              "And without filters:\n"
              "  at any time\n");
    Client client;
    EXPECT_EQ(operation("get_actions").send(client.handle(), nullptr, {}).results,
              (Values{Numbers{}, Numbers{}}));
}

/// The daemon among the examples, which asks once a second.
class WatchDaemon : public ::testing::Test {
  protected:
    Child daemon_{{std::string(KORVO_EXAMPLES_FOLDER) + "/watch_daemon", {"1"}, {}}};

    void expectToEndAt(int signal) {
        daemon_.signal(signal);
        milliseconds const taken = timeOf([&] { EXPECT_EQ(daemon_.wait(), exited(0)); });
        EXPECT_LT(taken, at_once);
        EXPECT_EQ(count(daemon_.out().text(), "stopped by signal " + std::to_string(signal) + "\n"), 1U)
            << daemon_.out().text();
    }
};

TEST_F(WatchDaemon, WaitsForTheServiceAndPrintsWhatItDoes) {
    ASSERT_TRUE(daemon_.out().waitFor("no answer: "));
    Service const service;
    ASSERT_TRUE(daemon_.out().waitFor("0 actions\n"));
    Client client;
    Values const action = operation("create_wiper_action").send(client.handle(), nullptr, {"wipe"}).results;
    Values const trigger =
        operation("create_timer_trigger").send(client.handle(), nullptr, {"every second", 1U}).results;
    ASSERT_EQ(operation("create_association")
                  .send(client.handle(), nullptr, {trigger.front(), action.front()})
                  .status,
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_TRUE(daemon_.out().waitFor("1 actions\n"));
    EXPECT_TRUE(daemon_.out().waitFor("action 1 \"wipe\" succeeded\n"));
    expectToEndAt(SIGTERM);
}

TEST_F(WatchDaemon, EndsAtOnceWhileACallWaits) {
    Service service;
    ASSERT_TRUE(daemon_.out().waitFor("0 actions\n"));
    service.pause();
    // The next question waits now, or is about to be asked: both have to end.
    std::this_thread::sleep_for(milliseconds(1'500));
    expectToEndAt(SIGINT);
    service.resume();
}

class WithoutService : public ::testing::TestWithParam<char const *> {};

INSTANTIATE_TEST_SUITE_P(, WithoutService,
                         ::testing::Values("list_actions", "asynchronous_list", "version_check",
                                           "timed_snapshots", "onvif_email_alarm", "relay_office_hours"),
                         [](auto const &tested) { return std::string(tested.param); });

TEST_P(WithoutService, AnExampleExplainsWhatIsWrongAndFails) {
    Finished const finished = runExample(GetParam());
    EXPECT_TRUE(finished.exit == exited(1)) << finished.out;
    EXPECT_NE(finished.errors.find("status 10"), std::string::npos) << finished.errors;
}

}  // namespace

}  // namespace end_to_end
