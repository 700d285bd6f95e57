// SPDX-License-Identifier: Apache-2.0
#include "base/log_record.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "korvo_core.h"

namespace log_record = platform::log_record;

namespace {

/// What a logger with the given KORVO_LOG_LEVEL writes of one record.
std::string written(char const *level, korvo_core_log_priority priority, char const *text) {
    (void)(level != nullptr ? setenv("KORVO_LOG_LEVEL", level, 1) : unsetenv("KORVO_LOG_LEVEL"));
    void *logging = nullptr;
    EXPECT_EQ(korvo_core_logging_init("part", &logging), KORVO_CORE_STATUS_NO_ERROR);
    (void)unsetenv("KORVO_LOG_LEVEL");
    testing::internal::CaptureStderr();
    EXPECT_EQ(korvo_core_logging_log(logging, priority, "%s", text), KORVO_CORE_STATUS_NO_ERROR);
    std::string const lines = testing::internal::GetCapturedStderr();
    int active = -1;
    EXPECT_EQ(korvo_core_logging_is_priority_active(logging, priority, &active), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(active, lines.empty() ? 0 : 1);
    EXPECT_EQ(korvo_core_logging_deinit(logging), KORVO_CORE_STATUS_NO_ERROR);
    return lines;
}

}  // namespace

TEST(LogRecord, IsOneLineWithTimePriorityProcessAndText) {
    std::string const line = written(nullptr, KORVO_CORE_LOG_PRIORITY_WARNING, "it is late");
    // 2026-11-20T20:18:22.123+0000 warning program[part]: it is late
    ASSERT_GT(line.size(), 29U) << line;
    for (std::size_t place : {4U, 7U}) {
        EXPECT_EQ(line[place], '-') << line;
    }
    EXPECT_EQ(line[10], 'T') << line;
    EXPECT_EQ(line[19], '.') << line;
    EXPECT_EQ(line[28], ' ') << line;
    EXPECT_NE(line.find(" warning korvo-development-platform-test[part]: it is late\n"), std::string::npos)
        << line;
    EXPECT_EQ(line.find('\n'), line.size() - 1) << line;
}

TEST(LogRecord, EscapesWhatWouldBreakTheLineOrCommandATerminal) {
    EXPECT_EQ(log_record::oneLine("a\nb\r\x1b[2J\x7f\xc3\xa4"), "a\\nb\\x0d\\x1b[2J\\x7f\xc3\xa4");
    // Controls of eight bits, marks of direction, a byte order mark, and bytes that are no UTF-8.
    EXPECT_EQ(log_record::oneLine("\xc2\x9b"
                                  "31m\xe2\x80\xae\xef\xbb\xbf"),
              "\\u009b31m\\u202e\\ufeff");
    EXPECT_EQ(log_record::oneLine("\x9b\xc3\xed\xa0\x80\xf5"), "\\x9b\\xc3\\xed\\xa0\\x80\\xf5");
    EXPECT_EQ(log_record::oneLine("\xe2\x82\xac \xf0\x9f\x93\xb7"), "\xe2\x82\xac \xf0\x9f\x93\xb7");
    std::string const line = written(nullptr, KORVO_CORE_LOG_PRIORITY_ERR, "first\nsecond");
    EXPECT_NE(line.find("first\\nsecond\n"), std::string::npos) << line;
}

TEST(LogRecord, HasAtMost16Kibibytes) {
    std::string const line = written(nullptr, KORVO_CORE_LOG_PRIORITY_ERR, std::string(100000, 'x').c_str());
    EXPECT_NE(line.find(std::string(16384, 'x')), std::string::npos);
    EXPECT_EQ(line.find(std::string(16385, 'x')), std::string::npos);
}

TEST(LogLevel, IsNoticeByDefault) {
    EXPECT_NE(written(nullptr, KORVO_CORE_LOG_PRIORITY_NOTICE, "x"), "");
    EXPECT_EQ(written(nullptr, KORVO_CORE_LOG_PRIORITY_INFO, "x"), "");
}

TEST(LogLevel, IsANameOrANumber) {
    EXPECT_NE(written("debug", KORVO_CORE_LOG_PRIORITY_DEBUG, "x"), "");
    EXPECT_NE(written("7", KORVO_CORE_LOG_PRIORITY_DEBUG, "x"), "");
    EXPECT_NE(written("ERR", KORVO_CORE_LOG_PRIORITY_ERR, "x"), "");
    EXPECT_EQ(written("err", KORVO_CORE_LOG_PRIORITY_WARNING, "x"), "");
    EXPECT_EQ(written("3", KORVO_CORE_LOG_PRIORITY_WARNING, "x"), "");
    EXPECT_EQ(written("nonsense", KORVO_CORE_LOG_PRIORITY_INFO, "x"), "");
}

TEST(LogLevel, NeverHidesAuditRecords) {
    EXPECT_NE(written("emerg", KORVO_CORE_LOG_PRIORITY_AUDIT, "x"), "");
}

TEST(LogLevel, TakesRecordsWithoutAPriorityForDebug) {
    EXPECT_EQ(written("info", KORVO_CORE_LOG_PRIORITY_NOTSET, "x"), "");
    EXPECT_NE(written("debug", KORVO_CORE_LOG_PRIORITY_NOTSET, "x"), "");
    EXPECT_EQ(written("info", static_cast<korvo_core_log_priority>(77), "x"), "");
}

TEST(LogLevel, IsToldOfLoggersThatAreOpenAndToWhoHasAPlaceForIt) {
    void *logging = nullptr;
    ASSERT_EQ(korvo_core_logging_init("part", &logging), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_core_logging_is_priority_active(logging, KORVO_CORE_LOG_PRIORITY_ERR, nullptr),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    ASSERT_EQ(korvo_core_logging_deinit(logging), KORVO_CORE_STATUS_NO_ERROR);
    int active = 77;
    EXPECT_EQ(korvo_core_logging_is_priority_active(logging, KORVO_CORE_LOG_PRIORITY_ERR, &active),
              KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(active, 77);
}

TEST(LogLevel, OfAClosedLoggerIsThatOfTheDefaultOne) {
    void *logging = nullptr;
    ASSERT_EQ(korvo_core_logging_init("part", &logging), KORVO_CORE_STATUS_NO_ERROR);
    ASSERT_EQ(korvo_core_logging_deinit(logging), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_core_logging_deinit(logging), KORVO_CORE_STATUS_INVALID_PARAMS);
    testing::internal::CaptureStderr();
    EXPECT_EQ(korvo_core_logging_log(logging, KORVO_CORE_LOG_PRIORITY_ERR, "late"),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("[-]: late\n"), std::string::npos);
}
