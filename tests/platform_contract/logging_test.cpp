// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdarg>

#include "korvo_core.h"
#include "support/ends.h"

namespace {

void logList(void *logging, char const *format, ...) KORVO_CORE_PRINTF(2, 3);

void logList(void *logging, char const *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    korvo_core_logging_logv(logging, KORVO_CORE_LOG_PRIORITY_DEBUG, format, arguments);
    va_end(arguments);
}

}  // namespace

TEST(LoggingContract, TakesRecordsOfEveryPriority) {
    Logging const logging;
    for (unsigned int priority = 0; priority <= 9; ++priority) {
        EXPECT_EQ(korvo_core_logging_log(logging.handle(), static_cast<korvo_core_log_priority>(priority),
                                         "%s %d", "record", 1),
                  KORVO_CORE_STATUS_NO_ERROR);
    }
    logList(logging.handle(), "%s %d", "record", 2);
}

TEST(LoggingContract, SaysWhetherAPriorityIsActive) {
    Logging const logging;
    int active = -1;
    EXPECT_EQ(korvo_core_logging_is_priority_active(logging.handle(), KORVO_CORE_LOG_PRIORITY_ERR, &active),
              KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_TRUE(active == 0 || active == 1) << active;
}

TEST(LoggingContract, TakesRecordsWithoutAHandle) {
    EXPECT_EQ(korvo_core_logging_log(nullptr, KORVO_CORE_LOG_PRIORITY_DEBUG, "%s", "record"),
              KORVO_CORE_STATUS_NO_ERROR);
    logList(nullptr, "%s", "record");
}

TEST(LoggingContract, RefusesARecordWithoutAText) {
    Logging const logging;
    // Through a pointer, since the compiler knows what the function needs.
    korvo_core_status (*const log)(void *, korvo_core_log_priority, char const *, ...) =
        korvo_core_logging_log;
    EXPECT_EQ(log(logging.handle(), KORVO_CORE_LOG_PRIORITY_ERR, nullptr), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(log(nullptr, KORVO_CORE_LOG_PRIORITY_ERR, nullptr), KORVO_CORE_STATUS_INVALID_PARAMS);
}

TEST(LoggingContract, NeedsAPlaceForTheHandle) {
    EXPECT_EQ(korvo_core_logging_init("name", nullptr), KORVO_CORE_STATUS_INVALID_PARAMS);
}
