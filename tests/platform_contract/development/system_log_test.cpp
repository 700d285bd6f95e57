// SPDX-License-Identifier: Apache-2.0
// Records for the system log, which is replaced here.
#include <gtest/gtest.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "korvo_core.h"
#include "processes/environment_variable.h"

namespace {

using Record = std::pair<int, std::string>;

std::vector<Record> &records() {
    static std::vector<Record> kept;
    return kept;
}

void keep(int priority, char const *format, va_list arguments) KORVO_CORE_PRINTF(2, 0);

void keep(int priority, char const *format, va_list arguments) {
    std::array<char, 200> text{};
    (void)std::vsnprintf(text.data(), text.size(), format, arguments);
    records().emplace_back(priority, text.data());
}

}  // namespace

// Both names that the C library has for it. Its header would make a macro or an inline function of them.
extern "C" {

void syslog(int priority, char const *format, ...) KORVO_CORE_PRINTF(2, 3);
void __syslog_chk(int priority, int flag, char const *format, ...) KORVO_CORE_PRINTF(3, 4);

void syslog(int priority, char const *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    keep(priority, format, arguments);
    va_end(arguments);
}

void __syslog_chk(int priority, int, char const *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    keep(priority, format, arguments);
    va_end(arguments);
}

}  // extern "C"

TEST(SystemLog, GetsEachRecordInOneLineWithItsPriority) {
    processes::EnvironmentVariable const target("KORVO_LOG_TARGET", "syslog");
    processes::EnvironmentVariable const level("KORVO_LOG_LEVEL", "debug");
    records().clear();
    void *logging = nullptr;
    ASSERT_EQ(korvo_core_logging_init("camera", &logging), KORVO_CORE_STATUS_NO_ERROR);
    testing::internal::CaptureStderr();
    for (unsigned int priority = 0; priority <= 9; ++priority) {
        EXPECT_EQ(korvo_core_logging_log(logging, static_cast<korvo_core_log_priority>(priority),
                                         "one\n%u %%s", priority),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    // The system log has no priority for audits, nor for what has none.
    EXPECT_EQ(records(), (std::vector<Record>{{0, "camera: one\\n0 %s"},
                                              {1, "camera: one\\n1 %s"},
                                              {2, "camera: one\\n2 %s"},
                                              {3, "camera: one\\n3 %s"},
                                              {4, "camera: one\\n4 %s"},
                                              {5, "camera: one\\n5 %s"},
                                              {6, "camera: one\\n6 %s"},
                                              {7, "camera: one\\n7 %s"},
                                              {5, "camera: one\\n8 %s"},
                                              {7, "camera: one\\n9 %s"}}));
    EXPECT_EQ(korvo_core_logging_deinit(logging), KORVO_CORE_STATUS_NO_ERROR);
}

TEST(SystemLog, GetsNothingBelowTheLevel) {
    processes::EnvironmentVariable const target("KORVO_LOG_TARGET", "syslog");
    processes::EnvironmentVariable const level("KORVO_LOG_LEVEL", "err");
    records().clear();
    void *logging = nullptr;
    ASSERT_EQ(korvo_core_logging_init("camera", &logging), KORVO_CORE_STATUS_NO_ERROR);
    (void)korvo_core_logging_log(logging, KORVO_CORE_LOG_PRIORITY_WARNING, "left out");
    (void)korvo_core_logging_log(logging, KORVO_CORE_LOG_PRIORITY_ERR, "kept");
    EXPECT_EQ(records(), (std::vector<Record>{{3, "camera: kept"}}));
    EXPECT_EQ(korvo_core_logging_deinit(logging), KORVO_CORE_STATUS_NO_ERROR);
}
