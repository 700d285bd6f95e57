// SPDX-License-Identifier: Apache-2.0
#include "simulator/captures/capture.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <fstream>
#include <stdexcept>
#include <string>

#include "no_room.h"
#include "support.h"
#include "time_zone.h"

namespace simulator::tests {

namespace {

constexpr Capture::Existing added_to = Capture::Existing::added_to;

std::string textIn(std::string const &text, Capture::Secrets secrets = Capture::Secrets::hidden) {
    boost::json::value const line = boost::json::parse(
        Capture::line(Wall(), {"peer", "r", Capture::Direction::to_service, text}, secrets));
    return line.at("text").is_null() ? "null" : std::string(line.at("text").as_string());
}

}  // namespace

TEST(Captures, AreOneObjectALine) {
    TimeZone const zone("UTC0");
    TemporaryFolder const folder;
    RecordedLog log;
    std::string const path = folder / "c.jsonl";
    {
        Capture capture(path, Capture::Secrets::hidden, added_to, log.log());
        Wall const time{std::chrono::milliseconds(1795417140'007)};
        capture.note(time, {"a", "7", Capture::Direction::to_service, "{\"command\":\"Get_actions\"}\n"});
        capture.note(time, {"", "", Capture::Direction::from_service, R"({"event":"Action_completed"})"});
        EXPECT_EQ(capture.count(), 2U);
    }
    Capture(path, Capture::Secrets::hidden, added_to, log.log())
        .note(Wall(), {"b", "8", Capture::Direction::to_service, "x"});
    EXPECT_THROW(Capture(path, Capture::Secrets::hidden, Capture::Existing::refused, log.log()),
                 std::runtime_error);
    EXPECT_EQ(
        readFile(path),
        R"({"time":"2026-11-23T06:59:00.007+00:00","peer":"a","request":"7","direction":"to service","text":"{\"command\":\"Get_actions\"}\n"})"
        "\n"
        R"({"time":"2026-11-23T06:59:00.007+00:00","peer":null,"request":null,"direction":"from service","text":"{\"event\":\"Action_completed\"}"})"
        "\n"
        R"({"time":"1970-01-01T00:00:00.000+00:00","peer":"b","request":"8","direction":"to service","text":"x"})"
        "\n");
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_TRUE(log.lines.empty());
}

TEST(Captures, CanBeReadWhateverBytesAMessageHas) {
    EXPECT_EQ(textIn("{\"a\":\"gr\xc3\xbc\xc3"), "{\"a\":\"gr\xc3\xbc\xef\xbf\xbd");
    EXPECT_EQ(textIn("\xff", Capture::Secrets::shown), "\xef\xbf\xbd");
}

TEST(Captures, AreMadeTheirOwnersAlone) {
    TemporaryFolder const folder;
    RecordedLog log;
    std::string const path = folder / "c.jsonl";
    std::ofstream(path) << "";
    ASSERT_EQ(::chmod(path.c_str(), 0644), 0);
    Capture const capture(path, Capture::Secrets::shown, added_to, log.log());
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    ASSERT_EQ(log.lines.size(), 1U);
    EXPECT_NE(log.lines[0].find("it has mode 0600 now"), std::string::npos) << log.lines[0];
}

TEST(Captures, HoldNoPasswordsUnlessTheyShould) {
    EXPECT_EQ(textIn(R"({"command":"c","password":"secret"})"), R"({"command":"c","password":null})");
    EXPECT_EQ(textIn(R"({"a":[{"pass\u0077ord":"secret"}]})"), R"({"a":[{"password":null}]})");
    EXPECT_EQ(textIn(R"({"password":{"password":"secret"}})"), R"({"password":null})");
    EXPECT_EQ(textIn(R"({"command":"c","password":"sec)"), "null");
    EXPECT_EQ(textIn(R"({"command":"c","pass\u0077ord":"sec)"), "null");
    EXPECT_EQ(textIn(R"({"command": "c" )"), R"({"command": "c" )");
    EXPECT_EQ(textIn(R"({"password":"secret"})", Capture::Secrets::shown), R"({"password":"secret"})");
}

TEST(Captures, ThatCannotBeWrittenAreToldOfOnce) {
    RecordedLog log;
    EXPECT_THROW(Capture("/nowhere/c", Capture::Secrets::hidden, added_to, log.log()), std::runtime_error);
    Capture full("/dev/full", Capture::Secrets::hidden, added_to, log.log());
    full.note(Wall(), {"a", "7", Capture::Direction::to_service, "x"});
    full.note(Wall(), {"a", "7", Capture::Direction::to_service, "x"});
    EXPECT_EQ(full.count(), 0U);
    ASSERT_EQ(log.lines.size(), 1U);
    EXPECT_TRUE(log.holds("4 the capture lacks messages: "));
}

TEST(Captures, HoldWholeLinesOnlyWhateverFits) {
    RecordedLog log;
    TemporaryFolder const folder;
    std::string const path = folder / "c";
    Capture::Message const message{"a", "7", Capture::Direction::to_service, "x"};
    Capture capture(path, Capture::Secrets::hidden, added_to, log.log());
    capture.note(Wall(), message);
    std::string const line = readFile(path);
    {
        NoRoom const no_room(line.size() + line.size() / 2);
        capture.note(Wall(), message);
        EXPECT_EQ(readFile(path), line);
        capture.note(Wall(), message);
    }
    capture.note(Wall(), message);
    EXPECT_EQ(readFile(path), line + line);
    EXPECT_EQ(capture.count(), 2U);
    EXPECT_EQ(log.lines, std::vector<std::string>{"4 the capture lacks messages: No space left on device"});
}

}  // namespace simulator::tests
