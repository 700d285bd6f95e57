// SPDX-License-Identifier: Apache-2.0
#include "simulator/captures/replay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "recorded.h"
#include "simulator/captures/tape.h"
#include "simulator/refused.h"
#include "support.h"

namespace simulator::tests {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr Replay::Time start{std::chrono::hours(1)};

Replay replayOf(Captured const &captured) {
    std::istringstream stream(captured.text());
    return Replay(readRecording(stream), start);
}

/// What a command is answered, or why it is refused.
std::string answered(Replay &replay, std::string const &command) {
    Replay::Reply const reply = replay.answer(command, start);
    std::string told = reply.refusal;
    for (Replay::Answer const &answer : reply.answers) {
        told.append(told.empty() ? "" : " | ").append(answer.text);
    }
    return told;
}

std::string typeOf(int id) {
    return R"({"command":"Get_action_type","action_id":)" + std::to_string(id) + "}";
}

}  // namespace

TEST(Replays, AnswerEachCommandWithTheNextOfItsMethodAndParameters) {
    Captured captured;
    captured.command(typeOf(1)).answer("one").command(typeOf(2)).answer("two");
    captured.command(typeOf(1)).answer("one again");
    captured.command(R"({"command":"Get_actions"})").answer("list");
    Replay replay = replayOf(captured);
    EXPECT_EQ(answered(replay, typeOf(2)), "two");
    EXPECT_EQ(answered(replay, typeOf(1)), "one");
    EXPECT_EQ(answered(replay, R"({"action_id":1.0,"command":"Get_action_type"})"), "one again");
    EXPECT_EQ(answered(replay, typeOf(1)),
              R"(the capture holds this command no further time (3 times in all) | )"
              R"({"command":"Get_action_type","status":9})");
    EXPECT_EQ(answered(replay, typeOf(3)), R"(the capture does not hold this command with this action_id | )"
                                           R"({"command":"Get_action_type","status":9})");
    EXPECT_EQ(answered(replay, R"({"command":"Get_triggers"})"),
              R"(the capture does not hold this command | {"command":"Get_triggers","status":9})");
    Replay::Counts const counts = replay.counts();
    EXPECT_EQ(counts.answered, 3U);
    EXPECT_EQ(counts.refused, 3U);
    EXPECT_EQ(counts.left, 1U);
}

TEST(Replays, TakeOtherParametersWhereTheIdentifiersAreTheSame) {
    auto const create = [](char const *name) {
        return std::string(R"({"command":"Create_wiper_action","action_name":")") + name + "\"}";
    };
    Captured captured;
    captured.command(create("at 7:59")).answer("first").command(create("at 8:00")).answer("second");
    Replay replay = replayOf(captured);
    EXPECT_EQ(answered(replay, create("at 8:00")), "second") << "the same parameters decide";
    Replay::Reply const other = replay.answer(create("at 9:00"), start);
    ASSERT_EQ(other.answers.size(), 1U);
    EXPECT_EQ(other.answers.front().text, "first");
    EXPECT_EQ(
        other.note,
        "\"Create_wiper_action\" is answered as in line 1 of the capture, where it has other parameters");
}

TEST(Replays, GiveWhatWasNoJsonAndWhatWasNotAnswered) {
    Captured captured;
    captured.command("nonsense").answer(R"({"command":"","status":1})");
    captured.command(typeOf(1)).answer(R"({"command":"Get_act)").answer(R"({"command":"Get_act)");
    captured.command(typeOf(2));
    Replay replay = replayOf(captured);
    EXPECT_EQ(answered(replay, "nonsense"), R"({"command":"","status":1})");
    EXPECT_EQ(answered(replay, typeOf(1)), R"({"command":"Get_act | {"command":"Get_act)");
    EXPECT_EQ(answered(replay, typeOf(2)), "");
    EXPECT_EQ(answered(replay, "other nonsense"),
              R"(the capture does not hold this command with such parameters | {"command":"","status":9})");
}

TEST(Replays, TakeAsLongAsAnAnswerTook) {
    Captured captured;
    captured.command(typeOf(1)).after(milliseconds(99)).answer("soon");
    captured.command(typeOf(2)).after(milliseconds(100)).answer("late");
    captured.command(typeOf(3)).after(milliseconds(-5000)).answer("before");
    Replay replay = replayOf(captured);
    EXPECT_EQ(replay.answer(typeOf(1), start).answers.front().delay, milliseconds(0));
    EXPECT_EQ(replay.answer(typeOf(2), start).answers.front().delay, milliseconds(100));
    EXPECT_EQ(replay.answer(typeOf(3), start).answers.front().delay, milliseconds(0))
        << "the clock was set back";
}

TEST(Replays, SendEventsAsLongAfterTheCommandBeforeThem) {
    Captured captured;
    captured.command(typeOf(1)).answer("one");
    captured.after(seconds(5)).event("five").after(seconds(1)).event("six");
    captured.command(typeOf(2)).answer("two").event("behind");
    Replay replay = replayOf(captured);
    EXPECT_EQ(replay.nextDeadline(), std::nullopt) << "its command was not asked for";
    Replay::Time const asked = start + seconds(100);
    EXPECT_THAT(replay.answer(typeOf(1), asked).events, IsEmpty());
    EXPECT_EQ(replay.nextDeadline(), asked + seconds(5));
    EXPECT_EQ(replay.takeDue(asked + seconds(5) - milliseconds(1)), std::nullopt);
    EXPECT_EQ(replay.takeDue(asked + seconds(5)), "five");
    EXPECT_EQ(replay.takeDue(asked + seconds(5)), std::nullopt);
    EXPECT_THAT(replay.answer(typeOf(2), asked + milliseconds(5500)).events, ElementsAre("six"))
        << "the client went on sooner";
    EXPECT_EQ(replay.takeDue(asked + milliseconds(5500)), "behind");
    EXPECT_EQ(replay.nextDeadline(), std::nullopt);
}

TEST(Replays, SendEventsBetweenACommandAndItsAnswerBeforeThat) {
    Captured captured;
    captured.event("at the beginning").after(seconds(2)).event("later");
    captured.command(typeOf(1)).event("between").after(milliseconds(20)).event("too").answer("one");
    captured.event("behind");
    Replay replay = replayOf(captured);
    EXPECT_EQ(replay.takeDue(start), "at the beginning");
    EXPECT_EQ(replay.nextDeadline(), start + seconds(2));
    EXPECT_THAT(replay.answer(typeOf(1), start).events, ElementsAre("later", "between", "too"));
    EXPECT_EQ(replay.nextDeadline(), start + milliseconds(20));
}

TEST(Replays, SkipWhatIsNotAskedForAndGoBackForNothing) {
    Captured captured;
    captured.command(typeOf(1)).answer("one").event("after one");
    captured.command(typeOf(2)).answer("two").event("after two");
    Replay replay = replayOf(captured);
    EXPECT_THAT(replay.answer(typeOf(2), start).events, ElementsAre("after one"));
    EXPECT_THAT(replay.answer(typeOf(1), start).events, IsEmpty());
    EXPECT_EQ(replay.takeDue(start), "after two");
}

TEST(Replays, TellWhatTheCaptureHides) {
    Captured captured;
    std::string const get = R"({"command":"Get_ftp_action","action_id":1})";
    captured.command(get).answer(R"({"command":"Get_ftp_action","status":0,"password":null})");
    captured.command(get).line("a", "2", "from service", Captured::none);
    captured.line("a", "3", "to service", Captured::none).line("a", "9", "from service", "stray");
    Replay replay = replayOf(captured);
    EXPECT_THAT(
        replay.remarks(),
        ElementsAre("passwords are hidden in 1 answers of the capture; they are answered as empty texts",
                    "2 messages are hidden in the capture as a whole, since they may hold passwords, and are "
                    "left out",
                    "1 answers in the capture are to commands from before it began, and are left out"));
    EXPECT_EQ(answered(replay, get), R"({"command":"Get_ftp_action","status":0,"password":""})");
    EXPECT_EQ(answered(replay, get),
              R"(its answer is hidden in the capture, in line 4 | {"command":"Get_ftp_action","status":9})");
}

TEST(Replays, AreStartedAndStoppedWhileTheServiceRuns) {
    TemporaryFolder const folder;
    RecordedLog log;
    Tape tape(log.log());
    std::vector<std::string> sent;
    Tape::Outlets const outlets{
        [&](std::string const &event) { sent.push_back("event " + event); },
        [&](Replay::Answer const &answer) { sent.push_back("answer " + answer.text); }};
    EXPECT_FALSE(tape.replays());
    EXPECT_FALSE(tape.answer(typeOf(1), start, outlets));
    EXPECT_THROW(tape.startReplay(folder / "none", start), CaptureError);
    EXPECT_THROW((void)tape.stopReplay(), Refused);
    Captured captured;
    captured.command(typeOf(1)).event("between").answer("one").event("behind").after(seconds(1)).event("end");
    writeFile(folder / "c", captured.text());
    tape.startReplay(folder / "c", start);
    EXPECT_THROW(tape.startReplay(folder / "c", start), Refused);
    EXPECT_TRUE(tape.replays());
    EXPECT_TRUE(tape.answer(typeOf(1), start, outlets));
    EXPECT_TRUE(tape.answer(typeOf(1), start, outlets));
    tape.sendDue(start, outlets.publish);
    EXPECT_EQ(tape.nextDeadline(), start + seconds(1));
    EXPECT_THAT(sent, ElementsAre("event between", "answer one",
                                  R"(answer {"command":"Get_action_type","status":9})", "event behind"));
    EXPECT_TRUE(log.holds(
        "4 \"Get_action_type\" refused: the capture holds this command no further time (once in all)"));
    EXPECT_EQ(tape.stopReplay().answered, 1U);
    EXPECT_EQ(tape.nextDeadline(), std::nullopt);
    EXPECT_FALSE(tape.replays());
}

TEST(Tapes, CaptureIntoNewFilesOnlyWhereTheyAreTold) {
    TemporaryFolder const folder;
    RecordedLog log;
    Tape tape(log.log());
    Capture::Message const message{"a", "7", Capture::Direction::to_service, "x"};
    tape.note(Wall(), message);
    EXPECT_THROW((void)tape.stopCapture(), Refused);
    tape.startCapture(folder / "c", Capture::Secrets::hidden, Capture::Existing::refused);
    EXPECT_THROW(tape.startCapture(folder / "d", Capture::Secrets::hidden, Capture::Existing::refused),
                 Refused);
    tape.note(Wall(), message);
    EXPECT_EQ(tape.stopCapture(), 1U);
    EXPECT_EQ(readCapture(folder / "c").messages.size(), 1U);
    EXPECT_THROW(tape.startCapture(folder / "c", Capture::Secrets::hidden, Capture::Existing::refused),
                 std::runtime_error);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"c"}));
}

}  // namespace simulator::tests
