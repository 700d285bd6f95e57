// SPDX-License-Identifier: Apache-2.0
#include "tool/events.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "tool/failure.h"
#include "tool/interruption.h"

namespace tool {

Waiter::Waiter() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (descriptor_ < 0) {
        throw Failure(Exit::other, "no descriptor is left to wait for events with", "close other programs");
    }
}

Waiter::~Waiter() {
    (void)::close(descriptor_);
}

void Waiter::add(std::string text) {
    {
        std::lock_guard<std::mutex> const guard(mutex_);
        texts_.push_back(std::move(text));
    }
    std::uint64_t const one = 1;
    [[maybe_unused]] auto const written = ::write(descriptor_, &one, sizeof one);
}

std::optional<std::string> Waiter::next(std::optional<Clock::time_point> until) {
    for (;;) {
        {
            std::lock_guard<std::mutex> const guard(mutex_);
            if (!texts_.empty()) {
                std::string text = std::move(texts_.front());
                texts_.pop_front();
                return text;
            }
        }
        if (interruption::requested()) {
            return {};
        }
        int wait = -1;
        if (until) {
            auto const left = std::chrono::ceil<std::chrono::milliseconds>(*until - Clock::now()).count();
            if (left <= 0) {
                return {};
            }
            wait = static_cast<int>(std::min<long long>(left, 3'600'000));
        }
        struct pollfd watched[] = {
            {descriptor_, POLLIN, 0}, {interruption::descriptor(), POLLIN, 0}, {STDOUT_FILENO, 0, 0}};
        if (::poll(watched, 3, wait) > 0) {
            if ((watched[2].revents & POLLERR) != 0) {
                throw ReaderGone();
            }
            std::uint64_t count = 0;
            [[maybe_unused]] auto const taken = ::read(descriptor_, &count, sizeof count);
        }
    }
}

}  // namespace tool
