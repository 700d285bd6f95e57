// SPDX-License-Identifier: Apache-2.0
#include "messaging/epoll.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <set>
#include <utility>

#include "base/wake.h"

using platform::Epoll;
using platform::process::Descriptor;

namespace {

using Ready = std::set<std::pair<std::uint64_t, unsigned int>>;

/// Number and events of what is ready now.
Ready readyIn(Epoll const &epoll) {
    epoll_event events[8];
    int const count = epoll_wait(epoll.descriptor(), events, 8, /*timeout*/ 0);
    Ready ready;
    for (int index = 0; index < count; ++index) {
        // Copies, since the kernel's structure is packed.
        ready.emplace(std::uint64_t{events[index].data.u64}, unsigned{events[index].events});
    }
    return ready;
}

}  // namespace

TEST(EpollTest, TellsWhatIsReadyByItsNumber) {
    Descriptor const first = platform::makeWake();
    Descriptor const second = platform::makeWake();
    Epoll epoll;
    epoll.open();
    EXPECT_TRUE(epoll.add(first.get(), 7, EPOLLIN));
    EXPECT_TRUE(epoll.add(second.get(), 1ULL << 40, EPOLLIN));
    EXPECT_EQ(readyIn(epoll), Ready{});
    platform::signalWake(second);
    EXPECT_EQ(readyIn(epoll), (Ready{{1ULL << 40, EPOLLIN}}));
    platform::signalWake(first);
    EXPECT_EQ(readyIn(epoll), (Ready{{7, EPOLLIN}, {1ULL << 40, EPOLLIN}}));
}

TEST(EpollTest, ChangesWhatItWaitsFor) {
    Descriptor const wake = platform::makeWake();
    platform::signalWake(wake);
    Epoll epoll;
    epoll.open();
    EXPECT_TRUE(epoll.add(wake.get(), 1, 0));
    EXPECT_EQ(readyIn(epoll), Ready{});
    EXPECT_TRUE(epoll.change(wake.get(), 2, EPOLLIN | EPOLLOUT));
    EXPECT_EQ(readyIn(epoll), (Ready{{2, EPOLLIN | EPOLLOUT}}));
    EXPECT_TRUE(epoll.change(wake.get(), 2, EPOLLOUT));
    EXPECT_EQ(readyIn(epoll), (Ready{{2, EPOLLOUT}}));
}

TEST(EpollTest, ForgetsWhatIsRemoved) {
    Descriptor const wake = platform::makeWake();
    platform::signalWake(wake);
    Epoll epoll;
    epoll.open();
    EXPECT_TRUE(epoll.add(wake.get(), 1, EPOLLIN));
    EXPECT_TRUE(epoll.remove(wake.get()));
    EXPECT_EQ(readyIn(epoll), Ready{});
    EXPECT_TRUE(epoll.add(wake.get(), 3, EPOLLIN));
    EXPECT_EQ(readyIn(epoll), (Ready{{3, EPOLLIN}}));
}

TEST(EpollTest, SaysWhatItCannotDo) {
    Descriptor const wake = platform::makeWake();
    Epoll epoll;
    EXPECT_FALSE(epoll.isOpen());
    EXPECT_FALSE(epoll.add(wake.get(), 1, EPOLLIN));
    epoll.open();
    EXPECT_TRUE(epoll.isOpen());
    EXPECT_FALSE(epoll.change(wake.get(), 1, EPOLLIN));
    EXPECT_FALSE(epoll.remove(wake.get()));
    EXPECT_TRUE(epoll.add(wake.get(), 1, EPOLLIN));
    EXPECT_FALSE(epoll.add(wake.get(), 1, EPOLLIN));
    epoll.close();
    EXPECT_FALSE(epoll.isOpen());
    EXPECT_FALSE(epoll.remove(wake.get()));
}
