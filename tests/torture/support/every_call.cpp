// SPDX-License-Identifier: Apache-2.0
#include "support/every_call.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <string>
#include <thread>

#include "support/rounds.h"
#include "support/workspace.h"

namespace torture {

namespace {

/// More lines than one failure has to tell, with what it does to those who are connected.
constexpr long most_lines = 12;

}  // namespace

void PrintTo(CallThatFails const &call, std::ostream *out) {
    *out << call.function;
}

std::size_t failEveryCall(CallThatFails const &call, std::function<void(FailingCall &)> const &work) {
    std::thread([&work] {
        FailingCall none("", 0, 1);
        work(none);
    }).join();
    std::size_t failures = 0;
    for (int const error : call.errors) {
        bool has_failed = true;
        for (std::size_t nth = 1; has_failed && !::testing::Test::HasFailure(); ++nth) {
            auto &log = end_to_end::ErrorOutput::ofThisProgram();
            std::size_t const mark = log.mark();
            std::string const what = std::string(call.function) + ", " +
                                     (error == one_byte ? "one byte" : std::strerror(error)) + ", call " +
                                     std::to_string(nth);
            doOnce(what, [&] {
                FailingCall failing(call.function, error, nth);
                work(failing);
                has_failed = failing.hasFailed();
                return has_failed;
            });
            failures += has_failed ? 1U : 0U;
            std::string const lines = log.since(mark);
            EXPECT_LE(std::count(lines.begin(), lines.end(), '\n'), most_lines) << what << ":\n" << lines;
        }
        if (!isLong()) {
            break;
        }
    }
    return failures;
}

}  // namespace torture
