// SPDX-License-Identifier: Apache-2.0
// What only a person at a terminal sees.
#include <gtest/gtest.h>

#include <string>

#include "support/service.h"
#include "tool_program.h"

namespace tool_tests {

namespace {

using end_to_end::Service;

constexpr char begin_of_line[] = "\r\x1b[K";

TEST(Progress, IsShownOnATerminalWhereSomethingTakesLongerThanASecond) {
    Service service({"--delay", "Get_wiper_action=1200"});
    (void)results({"create-wiper-action", "--action-name", "first"});
    (void)results({"create-wiper-action", "--action-name", "second"});
    ShellOutcome const outcome = shell("script -qec 'korvo-action-engine list' /dev/null");
    EXPECT_EQ(outcome.code, 0) << outcome.out;
    auto const bar = outcome.out.find(std::string(begin_of_line) + "reading the catalogue [");
    ASSERT_NE(bar, std::string::npos) << outcome.out;
    // It is gone before the results come.
    auto const table = outcome.out.find(std::string(begin_of_line) + "ACTION  ");
    ASSERT_NE(table, std::string::npos) << outcome.out;
    EXPECT_LT(bar, table);
    EXPECT_EQ(outcome.out.find("reading the catalogue [", table), std::string::npos) << outcome.out;
}

TEST(Progress, IsNotShownInAPipe) {
    Service service({"--delay", "Get_wiper_action=1200"});
    (void)results({"create-wiper-action", "--action-name", "first"});
    ShellOutcome const outcome = shell("korvo-action-engine list 2>&1 | cat");
    EXPECT_EQ(outcome.out.find("ACTION  "), 0U) << outcome.out;
    EXPECT_EQ(outcome.out.find('\x1b'), std::string::npos) << outcome.out;
}

}  // namespace

}  // namespace tool_tests
