// SPDX-License-Identifier: Apache-2.0
#include "frame/mutex.h"

#include <gtest/gtest.h>

#include <boost/thread/exceptions.hpp>
#include <string>
#include <thread>
#include <vector>

namespace {

// Locks in ways that the thread-safety analysis would rightly refuse.
std::string messageOfLocking(Mutex &mutex) KORVO_NO_ANALYSIS {
    try {
        mutex.lock();
    } catch (boost::lock_error const &error) {
        return error.what();
    }
    mutex.unlock();
    return "locked";
}

}  // namespace

TEST(FrameMutex, RefusesTheThreadThatHoldsIt) {
    Mutex mutex;
    {
        MutexLock const lock(mutex);
        std::string const expected = "boost: mutex lock failed in pthread_mutex_lock";
        // Boost appends what the error number means.
        EXPECT_EQ(messageOfLocking(mutex).substr(0, expected.size()), expected);
        // It is still held, and refuses as often as it is asked.
        EXPECT_EQ(messageOfLocking(mutex).substr(0, expected.size()), expected);
    }
    EXPECT_EQ(messageOfLocking(mutex), "locked");
}

TEST(FrameMutex, IsFreeAfterAnException) {
    Mutex mutex;
    try {
        MutexLock const lock(mutex);
        throw 1;
    } catch (int) {
        EXPECT_EQ(messageOfLocking(mutex), "locked");
    }
}

TEST(FrameMutex, RemembersEachMutexByItself) {
    Mutex one;
    Mutex other;
    MutexLock const lock(one);
    EXPECT_EQ(messageOfLocking(other), "locked");
    EXPECT_NE(messageOfLocking(one), "locked");
}

TEST(FrameMutex, KnowsWhetherTheCallingThreadHoldsIt) {
    Mutex mutex;
    EXPECT_FALSE(mutex.isHeldByThisThread());
    {
        MutexLock const lock(mutex);
        EXPECT_TRUE(mutex.isHeldByThisThread());
        bool held_elsewhere = true;
        std::thread([&] { held_elsewhere = mutex.isHeldByThisThread(); }).join();
        EXPECT_FALSE(held_elsewhere);
    }
    EXPECT_FALSE(mutex.isHeldByThisThread());
}

TEST(FrameMutex, LetsOneThreadInAtATime) {
    Mutex mutex;
    unsigned int counter = 0;
    constexpr unsigned int rounds = 20000;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (unsigned int round = 0; round < rounds; ++round) {
                MutexLock const lock(mutex);
                ++counter;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counter, 4 * rounds);
}

TEST(FrameMutex, PassesFromThreadToThread) {
    // A thread that held it and let it go is not taken for its owner any more.
    Mutex mutex;
    std::string message;
    { MutexLock const lock(mutex); }
    std::thread([&] { message = messageOfLocking(mutex); }).join();
    EXPECT_EQ(message, "locked");
    EXPECT_EQ(messageOfLocking(mutex), "locked");
}
