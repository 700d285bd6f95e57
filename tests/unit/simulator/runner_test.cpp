// SPDX-License-Identifier: Apache-2.0
#include "simulator/runners/runner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "simulator/runners/ptz_head.h"
#include "support.h"

namespace simulator::runners::tests {

namespace {

using simulator::tests::readFile;
using simulator::tests::RecordedLog;
using simulator::tests::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RunnerTest : public testing::Test {
  protected:
    bool run(protocol::ActionType type, Values settings) {
        bool success = false;
        runner.run(Job{7, &action_kinds[type], std::move(settings), "Trigger 1 fired.\n"},
                   [&success](RunResult const &result) { success = result.success; });
        return success;
    }
    /// The only line of the log.
    std::string line() { return log.lines.size() == 1 ? log.lines[0] : "not one line"; }

    TemporaryFolder snapshots;
    TemporaryFolder outbox;
    RecordedLog log;
    Wall wall{std::chrono::seconds(1795417140)};
    Runner runner{
        {snapshots.path(), outbox.path()}, [this] { return wall; }, [this] { return now; }, log.log()};
    Clock::Time now{};
};

}  // namespace

TEST_F(RunnerTest, ASnapshotIsAFileInItsFolder) {
    EXPECT_TRUE(run(protocol::save_snapshot, {std::string("door"), std::string("door.jpg")}));
    EXPECT_THAT(snapshots.names(), ElementsAre("door.jpg"));
    EXPECT_EQ(readFile(snapshots / "door.jpg").substr(0, 3), "\xff\xd8\xff");
    EXPECT_EQ(line(), "5 snapshot action 7 \"door\": picture saved as \"door.jpg\"");
}

TEST_F(RunnerTest, ASnapshotWithAHostileNameFailsAndSaysWhy) {
    EXPECT_FALSE(run(protocol::save_snapshot, {std::string("door"), std::string("../door.jpg")}));
    EXPECT_THAT(snapshots.names(), IsEmpty());
    EXPECT_EQ(line(),
              "4 snapshot action 7 \"door\" failed: the file name \"../door.jpg\" is refused: it has a "
              "\"/\", and files go "
              "into the folder itself only");
}

TEST_F(RunnerTest, EachPtzKindMovesTheHeadAndLogsThePosition) {
    struct Case {
        protocol::ActionType type;
        char const *kind;
    };
    for (Case const &one : {Case{protocol::ptz_pattern, "pattern"}, Case{protocol::ptz_preset, "preset"},
                            Case{protocol::ptz_scan, "scan"}, Case{protocol::ptz_tour, "tour"}}) {
        log.lines.clear();
        EXPECT_TRUE(run(one.type, {std::string("n"), std::string("12")}));
        Position const expected = positionOf(one.kind, "12");
        EXPECT_EQ(runner.headTarget().pan, expected.pan);
        EXPECT_EQ(runner.headTarget().tilt, expected.tilt);
        EXPECT_EQ(runner.headTarget().zoom, expected.zoom);
        EXPECT_EQ(line(), std::string("5 PTZ ") + one.kind + " action 7 \"n\": " + one.kind +
                              " \"12\", head moves to " + describe(expected));
        log.lines.clear();
        EXPECT_FALSE(run(one.type, {std::string("n"), std::string()}));
        EXPECT_THAT(line(), HasSubstr(std::string("it names no ") + one.kind));
    }
}

TEST_F(RunnerTest, WiperWasherAndRelayAreLogged) {
    EXPECT_TRUE(run(protocol::run_wiper, {std::string("n")}));
    EXPECT_TRUE(run(protocol::run_washer, {std::string("n")}));
    EXPECT_TRUE(
        run(protocol::switch_relay, {std::string("n"), std::string("gate"), 2U, true, 3U, 500U, 250U}));
    EXPECT_THAT(
        log.lines,
        ElementsAre(
            "5 wiper action 7 \"n\": the wiper ran", "5 washer action 7 \"n\": the washer ran",
            "5 relay action 7 \"n\": relay \"gate\" switched (mode 2, normally closed, 3 cycles, 500 ms on, "
            "250 ms off)"));
}

TEST_F(RunnerTest, AMailIsAFileInTheOutbox) {
    Values const settings = {
        std::string("n"),       std::string("smtp"), Texts{"to@x"}, Texts{}, std::string("from@x"),
        std::string("subject"), std::string("body"), true,          true};
    EXPECT_TRUE(run(protocol::send_email, settings));
    EXPECT_TRUE(run(protocol::send_email, settings));
    ASSERT_EQ(outbox.names().size(), 2U);
    std::string const name = outbox.names()[0];
    EXPECT_THAT(name, testing::MatchesRegex("mail-7-[0-9]+T[0-9]+.[0-9]+Z-1.eml"));
    EXPECT_THAT(readFile(outbox / name), HasSubstr("Trigger 1 fired."));
    EXPECT_THAT(readFile(outbox / name), HasSubstr("Content-Type: image/jpeg"));
}

TEST_F(RunnerTest, AMailToNobodyFails) {
    EXPECT_FALSE(
        run(protocol::send_email, {std::string("n"), std::string("smtp"), Texts{}, Texts{},
                                   std::string("from@x"), std::string("s"), std::string("b"), false, false}));
    EXPECT_THAT(outbox.names(), IsEmpty());
    EXPECT_EQ(line(), "4 e-mail action 7 \"n\" failed: the mail has no recipient");
}

TEST_F(RunnerTest, AnUploadIsAPictureInTheOutboxAndItsPasswordInNoLog) {
    EXPECT_TRUE(
        run(protocol::ftp_upload, {std::string("n"), std::string("server"), std::string("user"),
                                   std::string("secret"), std::string("/in"), std::string("../../x.jpg")}));
    ASSERT_EQ(outbox.names().size(), 1U);
    EXPECT_EQ(readFile(outbox / outbox.names()[0]).substr(0, 3), "\xff\xd8\xff");
    EXPECT_THAT(line(), HasSubstr("picture for \"../../x.jpg\" in \"/in\" on \"server\" (as \"user\")"));
    EXPECT_FALSE(log.holds("secret"));
}

TEST_F(RunnerTest, AnUploadWithoutServerOrFileFails) {
    EXPECT_FALSE(run(protocol::ftp_upload, {std::string("n"), std::string(), std::string(), std::string(),
                                            std::string(), std::string("a")}));
    EXPECT_FALSE(run(protocol::ftp_upload, {std::string("n"), std::string("s"), std::string(), std::string(),
                                            std::string(), std::string()}));
    EXPECT_THAT(outbox.names(), IsEmpty());
}

TEST(PtzHead, PositionsAreWithinReachAndDifferByNameAndKind) {
    for (int n = 0; n < 1000; ++n) {
        Position const position = positionOf("preset", std::to_string(n));
        EXPECT_GE(position.pan, -180);
        EXPECT_LT(position.pan, 180);
        EXPECT_GE(position.tilt, -90);
        EXPECT_LT(position.tilt, 90);
        EXPECT_GE(position.zoom, 1);
        EXPECT_LT(position.zoom, 30);
    }
    EXPECT_NE(positionOf("preset", "1").pan, positionOf("preset", "2").pan);
    EXPECT_NE(positionOf("preset", "1").pan, positionOf("tour", "1").pan);
    EXPECT_EQ(positionOf("preset", "1").pan, positionOf("preset", "1").pan);
    EXPECT_EQ(describe({-12.5, 3, 4.2}), "pan -12.5, tilt 3.0, zoom 4.2x");
}

}  // namespace simulator::runners::tests
