// SPDX-License-Identifier: Apache-2.0
#include "simulator/captures/recording.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "recorded.h"
#include "support.h"

namespace simulator::tests {

namespace {

Recording readText(std::string const &text) {
    std::istringstream stream(text);
    return readRecording(stream);
}

std::string refusal(std::string const &text) {
    try {
        (void)readText(text);
    } catch (CaptureError const &error) {
        return error.what();
    }
    return "";
}

std::string refusalOfFile(std::string const &path) {
    try {
        (void)readCapture(path);
    } catch (CaptureError const &error) {
        return error.what();
    }
    return "";
}

constexpr char const *good =
    R"({"time":"2026-11-23T07:59:00.250+01:00","peer":"a","request":"7","direction":"to service","text":"x"})"
    "\n";

}  // namespace

TEST(Recordings, AreReadLineByLine) {
    Recording const recording = readText(good);
    ASSERT_EQ(recording.messages.size(), 1U);
    Recording::Message const &message = recording.messages.front();
    EXPECT_EQ(message.line, 1U);
    EXPECT_EQ(message.time, Wall(std::chrono::milliseconds(1795417140250)));
    EXPECT_EQ(message.peer, "a");
    EXPECT_EQ(message.request, "7");
    EXPECT_EQ(message.direction, Capture::Direction::to_service);
    EXPECT_EQ(message.text, "x");
    EXPECT_EQ(readText(std::string(good, std::string(good).size() - 1)).messages.size(), 1U)
        << "the end of the last line may be missing";
}

TEST(Recordings, PairAnswersWithTheirCommandsByTheRequest) {
    Captured captured;
    captured.command("one").command("two");
    captured.line("a", "2", "from service", "second").line("a", "1", "from service", "first");
    captured.line("a", "2", "from service", "second again").line("b", "1", "from service", "stray");
    Recording const recording = readText(captured.event("event").text());
    ASSERT_EQ(recording.exchanges.size(), 2U);
    EXPECT_EQ(recording.exchanges[0].answers, (std::vector<std::size_t>{3}));
    EXPECT_EQ(recording.exchanges[1].answers, (std::vector<std::size_t>{2, 4}));
    EXPECT_EQ(recording.strays, 1U);
}

TEST(Recordings, PairAnswersByTheirOrderWhereNoRequestIsTold) {
    std::string const get = R"({"command":"Get_actions"})";
    std::string const list = R"({"command":"Get_triggers"})";
    Captured captured;
    for (std::string const &text : {get, list, get}) {
        captured.line("a", Captured::none, "to service", text);
    }
    for (std::string const &text : {list, get, get, get}) {
        captured.line("a", Captured::none, "from service", text);
    }
    Recording const recording = readText(captured.text());
    ASSERT_EQ(recording.exchanges.size(), 3U);
    EXPECT_EQ(recording.exchanges[0].answers, (std::vector<std::size_t>{4}));
    EXPECT_EQ(recording.exchanges[1].answers, (std::vector<std::size_t>{3}));
    EXPECT_EQ(recording.exchanges[2].answers, (std::vector<std::size_t>{5}));
    EXPECT_EQ(recording.strays, 1U);
}

TEST(Recordings, ThatCannotBeReadSayWhereAndWhy) {
    struct Case {
        char const *text;
        char const *why;
    };
    constexpr Case cases[] = {
        {"", "it holds no message"},
        {"\n", "line 1 is no JSON: incomplete JSON"},
        {"{\"time\":\"2026-", "line 1 is no JSON: incomplete JSON"},
        {"\xff", "line 1 is no JSON: syntax error"},
        {"[]", "line 1 is no JSON object"},
        {"{}", "line 1 has no \"time\""},
        {R"({"time":7})", "line 1 has no text as \"time\""},
        {R"({"time":"2026-02-30T00:00:00Z","peer":"a","direction":"to service","text":""})",
         "line 1 has as \"time\" \"2026-02-30T00:00:00Z\", which is no time that the clock shows, written "
         "like "
         "2026-11-23T07:59:00, with Z or +01:00 behind it or without"},
        {R"({"time":"2026-11-23T07:59:00.5Z"})",
         "line 1 has as \"time\" \"2026-11-23T07:59:00.5Z\", which is no time that the clock shows, written "
         "like "
         "2026-11-23T07:59:00, with Z or +01:00 behind it or without"},
        {R"({"time":"2026-11-23T07:59:00Z"})", "line 1 has no \"peer\""},
        {R"({"time":"2026-11-23T07:59:00Z","peer":"","direction":"to service","text":""})",
         "line 1 has an empty \"peer\""},
        {R"({"time":"2026-11-23T07:59:00Z","peer":"a","request":7,"direction":"to service","text":""})",
         "line 1 has no text as \"request\""},
        {R"({"time":"2026-11-23T07:59:00Z","peer":"a","direction":"sideways","text":""})",
         "line 1 has as \"direction\" \"sideways\", which is neither \"to service\" nor \"from service\""},
        {R"({"time":"2026-11-23T07:59:00Z","peer":null,"direction":"to service","text":""})",
         "line 1 is a message to the service and has no peer that sent it"},
        {R"({"time":"2026-11-23T07:59:00Z","peer":"a","direction":"to service"})", "line 1 has no \"text\""},
        {R"({"time":"2026-11-23T07:59:00Z","peer":"a","direction":"to service","text":"\u0000"})",
         "line 1 has the character U+0000 in its \"text\""},
    };
    for (Case const &one : cases) {
        EXPECT_EQ(refusal(one.text), one.why) << one.text;
    }
    EXPECT_EQ(refusal(std::string(good) + good + "{}\n" + good), "line 3 has no \"time\"");
    EXPECT_EQ(refusal(good + std::string((8U << 20U) + 1, 'x')), "line 2 is longer than 8388608 bytes");
    EXPECT_EQ(refusal(std::string(100'000, '[')), "line 1 is no JSON: too deep");
}

TEST(Recordings, AreReadFromPlainFilesOfABoundedLength) {
    TemporaryFolder const folder;
    std::string const path = folder / "c";
    EXPECT_EQ(refusalOfFile(path), "cannot read the capture \"" + path + "\": No such file or directory");
    EXPECT_EQ(refusalOfFile(folder.path()),
              "cannot read the capture \"" + folder.path() + "\": it is no plain file");
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(refusalOfFile(folder / "pipe"),
              "cannot read the capture \"" + folder / "pipe" + "\": it is no plain file");
    writeFile(path, "{}\n");
    EXPECT_EQ(refusalOfFile(path), "cannot read the capture \"" + path + "\": line 1 has no \"time\"");
    std::filesystem::resize_file(path, (256U << 20U) + 1);
    EXPECT_EQ(refusalOfFile(path),
              "cannot read the capture \"" + path + "\": it is longer than 268435456 bytes");
}

}  // namespace simulator::tests
