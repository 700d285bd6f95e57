// SPDX-License-Identifier: Apache-2.0
#include "frame/entropy.h"

#include <gtest/gtest.h>
#include <sys/random.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <system_error>

#include "frame/uuid_generator.h"

namespace {

/// What the operating system answers instead of entropy, if anything.
std::function<ssize_t(void *, std::size_t)> system_answer;

std::atomic<unsigned int> calls{0};

/// Answers for the operating system for as long as it lives.
class SystemAnswers {
  public:
    explicit SystemAnswers(std::function<ssize_t(void *, std::size_t)> answer) {
        system_answer = std::move(answer);
        calls = 0;
    }
    ~SystemAnswers() { system_answer = nullptr; }
    SystemAnswers(SystemAnswers const &) = delete;
    SystemAnswers &operator=(SystemAnswers const &) = delete;
};

ssize_t fail(int reason) {
    errno = reason;
    return -1;
}

/// Lets the process open no further file for as long as it lives.
class NoDescriptors {
  public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit none = before_;
        none.rlim_cur = 0;
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
    NoDescriptors(NoDescriptors const &) = delete;
    NoDescriptors &operator=(NoDescriptors const &) = delete;

  private:
    rlimit before_ = {};
};

int reasonOfFailure() {
    std::array<unsigned char, 16> bytes = {};
    try {
        fillWithEntropy(bytes.data(), bytes.size());
    } catch (std::system_error const &error) {
        return error.code().value();
    }
    return 0;
}

}  // namespace

// In place of the C library's, for the code under test.
extern "C" ssize_t getrandom(void *buffer, size_t size, unsigned int flags) {
    ++calls;
    return system_answer ? system_answer(buffer, size) : syscall(SYS_getrandom, buffer, size, flags);
}

TEST(Entropy, FillsAllBytes) {
    std::array<unsigned char, 4096> bytes = {};
    fillWithEntropy(bytes.data(), bytes.size());
    EXPECT_LT(std::count(bytes.begin(), bytes.end(), 0), 200);
    // The last byte too: 64 more rounds leave it zero by chance as good as never.
    bool is_set = false;
    for (int round = 0; round < 64; ++round) {
        bytes.back() = 0;
        fillWithEntropy(bytes.data(), bytes.size());
        is_set = is_set || bytes.back() != 0;
    }
    EXPECT_TRUE(is_set);
}

TEST(Entropy, GoesOnAfterInterruptionsAndShortAnswers) {
    unsigned char next = 1;
    SystemAnswers const answers([&](void *place, std::size_t size) -> ssize_t {
        if (calls % 2 == 1) {
            return fail(EINTR);
        }
        std::size_t const count = std::min<std::size_t>(size, 3);
        std::fill_n(static_cast<unsigned char *>(place), count, next++);
        return static_cast<ssize_t>(count);
    });
    std::array<unsigned char, 7> bytes = {};
    fillWithEntropy(bytes.data(), bytes.size());
    EXPECT_EQ(bytes, (std::array<unsigned char, 7>{1, 1, 1, 2, 2, 2, 3}));
    EXPECT_EQ(calls, 6U);
}

TEST(Entropy, ComesFromTheDeviceWhereThereIsNoCall) {
    SystemAnswers const answers([](void *, std::size_t) { return fail(ENOSYS); });
    std::array<unsigned char, 4096> bytes = {};
    fillWithEntropy(bytes.data(), bytes.size());
    EXPECT_LT(std::count(bytes.begin(), bytes.end(), 0), 200);
}

TEST(Entropy, SaysWhyThereIsNone) {
    {
        SystemAnswers const answers([](void *, std::size_t) { return fail(EPERM); });
        EXPECT_EQ(reasonOfFailure(), EPERM);
    }
    SystemAnswers const answers([](void *, std::size_t) { return fail(ENOSYS); });
    NoDescriptors const none;
    EXPECT_EQ(reasonOfFailure(), EMFILE);
}

TEST(Entropy, SeedsAGeneratorInOneCall) {
    std::size_t asked_for = 0;
    SystemAnswers const answers([&](void *place, std::size_t size) {
        asked_for = size;
        return syscall(SYS_getrandom, place, size, 0);
    });
    UuidGenerator generator;
    for (int round = 0; round < 2000; ++round) {
        std::free(generator.generate());
    }
    EXPECT_EQ(calls, 1U);
    // 624 words of 32 bits: the twister's whole state.
    EXPECT_EQ(asked_for, 2496U);
}

TEST(Entropy, IsNeededForAGenerator) {
    SystemAnswers const answers([](void *, std::size_t) { return fail(EIO); });
    EXPECT_THROW(UuidGenerator(), std::system_error);
}
