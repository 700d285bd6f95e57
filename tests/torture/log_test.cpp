// SPDX-License-Identifier: Apache-2.0
// The log, while nobody reads it and what it needs fails.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <string>

#include "korvo_core.h"
#include "support/every_call.h"
#include "support/rounds.h"

namespace torture {

namespace {

constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;

/// While one of these lives, standard error is a small pipe.
class SmallPipe {
  public:
    SmallPipe() : kept_(dup(STDERR_FILENO)) {
        EXPECT_EQ(pipe(ends_.data()), 0);
        EXPECT_GT(fcntl(ends_[1], F_SETPIPE_SZ, 4096), 0);
        EXPECT_EQ(fcntl(ends_[0], F_SETFL, O_NONBLOCK), 0);
        EXPECT_EQ(dup2(ends_[1], STDERR_FILENO), STDERR_FILENO);
    }
    ~SmallPipe() {
        (void)dup2(kept_, STDERR_FILENO);
        for (int const descriptor : {kept_, ends_[0], ends_[1]}) {
            (void)close(descriptor);
        }
    }
    SmallPipe(SmallPipe const &) = delete;
    SmallPipe &operator=(SmallPipe const &) = delete;

    /// All that is there.
    std::string read() const {
        std::string text;
        std::array<char, 4096> bytes{};
        for (ssize_t count = 0; (count = ::read(ends_[0], bytes.data(), bytes.size())) > 0;) {
            text.append(bytes.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

  private:
    int kept_;
    std::array<int, 2> ends_{};
};

void log(char const *text) {
    EXPECT_EQ(korvo_core_logging_log(nullptr, KORVO_CORE_LOG_PRIORITY_ERR, "%s", text), done);
}

unsigned long toldIn(std::string const &text) {
    std::string const words = " records before this one were lost or cut";
    unsigned long told = 0;
    for (std::size_t at = 0; (at = text.find(words, at)) != std::string::npos; at += words.size()) {
        told += std::strtoul(text.c_str() + text.rfind(' ', at - 1) + 1, nullptr, 10);
    }
    return told;
}

/// More than the pipe holds; how many of them are lost and not yet told of.
unsigned long fill(SmallPipe const &standard_error) {
    constexpr unsigned long records = 10;
    std::string const large(1000, 'x');
    for (unsigned long number = 0; number < records; ++number) {
        log(large.c_str());
    }
    std::string const text = standard_error.read();
    unsigned long whole = 0;
    for (std::size_t end = 0; (end = text.find("xx\n", end)) != std::string::npos; ++end) {
        ++whole;
    }
    unsigned long const told = toldIn(text);
    EXPECT_LT(whole + told, records);
    return records - whole - told;
}

TEST(LogWithoutMemory, StillKnowsHowMuchWasLost) {
    openLog();
    failEveryAllocation("the log", [](Fault &fault) {
        SmallPipe const standard_error;
        unsigned long const lost = fill(standard_error);
        fault.start();
        log("during");
        fault.stop();
        log("after");
        std::string const text = standard_error.read();
        EXPECT_GE(toldIn(text), lost) << text;
        EXPECT_NE(text.find(": after\n"), std::string::npos) << text;
    });
    failEveryAllocation("opening a log", [](Fault &fault) {
        void *logging = nullptr;
        fault.start();
        korvo_core_status const opened = korvo_core_logging_init("name", &logging);
        fault.stop();
        EXPECT_TRUE(opened == done || (fault.failed() != 0 && opened == KORVO_CORE_STATUS_ALLOC_FAILED))
            << opened;
        EXPECT_EQ(opened == done, logging != nullptr);
        if (opened == done) {
            EXPECT_EQ(korvo_core_logging_deinit(logging), done);
        }
    });
}

TEST(LogWhoseSystemCallsFail, WaitsForNobodyAndLosesNoMoreThanItTells) {
    openLog();
    std::vector<CallThatFails> const calls = {
        {"write", {EINTR}},
#if __WORDSIZE == 64
        {"open", {EMFILE}},
        {"fstat", {EIO}},
#endif
    };
    for (CallThatFails const &call : calls) {
        failEveryCall(call, [](FailingCall &failing) {
            SmallPipe const standard_error;
            log("during");
            std::string const first = standard_error.read();
            failing.stop();
            EXPECT_TRUE(first.find(": during\n") != std::string::npos || failing.hasFailed());
            log("after");
            std::string const second = standard_error.read();
            EXPECT_NE(second.find(": after\n"), std::string::npos) << second;
            // What was written in spite of that is not told as lost.
            EXPECT_EQ(toldIn(second), first.empty() ? 1U : 0U) << second;
        });
    }
#if __WORDSIZE == 64
    // With no descriptor to open a full pipe anew.
    doOnce("a full pipe", [] {
        SmallPipe const standard_error;
        std::string const large(1000, 'x');
        for (int number = 0; number < 10; ++number) {
            log(large.c_str());
        }
        FailingCall failing("open", EMFILE, 1);
        log("during");
        failing.stop();
        EXPECT_EQ(standard_error.read().find(": during\n"), std::string::npos);
        log("after");
        EXPECT_GE(toldIn(standard_error.read()), 1U);
        return failing.hasFailed();
    });
#endif
}

}  // namespace

}  // namespace torture
