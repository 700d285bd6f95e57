// SPDX-License-Identifier: Apache-2.0
#include "simulator/loop.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <limits>
#include <system_error>

namespace simulator {

Loop::Loop() {
    sigset_t ends;
    (void)sigemptyset(&ends);
    (void)sigaddset(&ends, SIGINT);
    (void)sigaddset(&ends, SIGTERM);
    (void)pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    signals_ = signalfd(-1, &ends, SFD_NONBLOCK | SFD_CLOEXEC);
    wake_ = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (signals_ < 0 || wake_ < 0) {
        std::error_code const reason(errno, std::generic_category());
        ::close(signals_);
        ::close(wake_);
        throw std::system_error(reason, "cannot wait for signals");
    }
}

Loop::~Loop() {
    ::close(signals_);
    ::close(wake_);
}

bool Loop::wait(std::optional<Clock::time_point> until) noexcept {
    // In milliseconds, and no longer than a number of them goes: who waits looks at its work and comes back. Not ppoll(),
    // whose checked form in the C library reads a time of 64 bits as one of 32 where a long has as many.
    int time = -1;
    if (until) {
        using std::chrono::milliseconds;
        auto const left = std::max(*until - Clock::now(), Clock::duration::zero());
        auto const most = milliseconds(std::numeric_limits<int>::max());
        time = left > most ? std::numeric_limits<int>::max()
                           : static_cast<int>(std::chrono::ceil<milliseconds>(left).count());
    }
    pollfd watched[] = {{signals_, POLLIN, 0}, {wake_, POLLIN, 0}};
    if (poll(watched, 2, time) <= 0) {
        // Over time, or interrupted: whoever waits looks at its work and comes back.
        return true;
    }
    if (watched[1].revents != 0) {
        std::uint64_t calls = 0;
        (void)!::read(wake_, &calls, sizeof calls);
    }
    return watched[0].revents == 0;
}

void Loop::wake() noexcept {
    std::uint64_t const once = 1;
    // It fails only when there are so many calls already that one more makes no difference.
    (void)!::write(wake_, &once, sizeof once);
}

}  // namespace simulator
