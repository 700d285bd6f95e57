// SPDX-License-Identifier: Apache-2.0
// Standard error that nobody reads.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <string>
#include <utility>

#include "korvo_core.h"

namespace {

/// Standard error is this descriptor while one of these lives.
class StandardError {
  public:
    explicit StandardError(int descriptor) : kept_(dup(STDERR_FILENO)) {
        (void)dup2(descriptor, STDERR_FILENO);
    }
    ~StandardError() {
        (void)dup2(kept_, STDERR_FILENO);
        (void)close(kept_);
    }
    StandardError(StandardError const &) = delete;
    StandardError &operator=(StandardError const &) = delete;

  private:
    int kept_;
};

/// Both ends of a pipe, or of a connection.
class Ends {
  public:
    explicit Ends(bool socket) {
        EXPECT_EQ(socket ? socketpair(AF_UNIX, SOCK_STREAM, 0, ends_.data()) : pipe(ends_.data()), 0);
    }
    ~Ends() {
        (void)close(ends_[0]);
        (void)close(ends_[1]);
    }
    Ends(Ends const &) = delete;
    Ends &operator=(Ends const &) = delete;

    int writing() const { return ends_[1]; }
    void closeReading() { (void)close(std::exchange(ends_[0], -1)); }
    /// All that is there.
    std::string read() const {
        std::string text;
        std::array<char, 4096> bytes;
        (void)fcntl(ends_[0], F_SETFL, O_NONBLOCK);
        for (ssize_t count = 0; (count = ::read(ends_[0], bytes.data(), bytes.size())) > 0;) {
            text.append(bytes.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

  private:
    std::array<int, 2> ends_{};
};

void log(std::string const &text) {
    EXPECT_EQ(korvo_core_logging_log(nullptr, KORVO_CORE_LOG_PRIORITY_ERR, "%s", text.c_str()),
              KORVO_CORE_STATUS_NO_ERROR);
}

}  // namespace

class LogOutput : public testing::TestWithParam<bool> {};

TEST_P(LogOutput, IsLostWhereItsReaderIsGone) {
    Ends ends(GetParam());
    ends.closeReading();
    {
        StandardError const standard_error(ends.writing());
        log("nobody reads this");
        log("nor this");
    }
    sigset_t pending;
    ASSERT_EQ(sigpending(&pending), 0);
    EXPECT_EQ(sigismember(&pending, SIGPIPE), 0);
    Ends const others(GetParam());
    {
        StandardError const standard_error(others.writing());
        log("somebody reads this");
    }
    EXPECT_NE(others.read().find("2 records before this one were lost"), std::string::npos);
}

TEST_P(LogOutput, NeverWaitsForItsReaderAndTellsHowMuchWasLost) {
    Ends const ends(GetParam());
    // More than any pipe or socket holds. With a write that waits this would never end.
    constexpr unsigned int records = 3000;
    {
        StandardError const redirected(ends.writing());
        for (unsigned int n = 0; n < records; ++n) {
            log("record " + std::to_string(n) + " " + std::string(1000, 'x'));
        }
    }
    EXPECT_EQ(fcntl(ends.writing(), F_GETFL) & O_NONBLOCK, 0) << "others who share it would not wait either";
    std::string const kept = ends.read();
    EXPECT_NE(kept.find("record 0 "), std::string::npos);
    {
        StandardError const redirected(ends.writing());
        log("read again");
    }
    std::string const after = ends.read();
    // Some of them may have been told of in between, where there was room for a short line.
    std::string const all = kept + after;
    std::string const told = " records before this one were lost or cut";
    unsigned long lost = 0;
    for (std::size_t at = 0; (at = all.find(told, at)) != std::string::npos; at += told.size()) {
        lost += std::stoul(all.substr(all.rfind(' ', at - 1) + 1));
    }
    EXPECT_NE(after.find(told), std::string::npos) << after;
    unsigned int whole = 0;
    for (std::size_t end = 0; (end = kept.find("xx\n", end)) != std::string::npos; ++end) {
        ++whole;
    }
    EXPECT_EQ(lost, records - whole);
    EXPECT_NE(after.find(": read again\n"), std::string::npos) << after;
}

INSTANTIATE_TEST_SUITE_P(Kinds, LogOutput, testing::Bool(), [](testing::TestParamInfo<bool> const &kind) {
    return std::string(kind.param ? "ASocket" : "APipe");
});
