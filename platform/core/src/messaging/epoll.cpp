// SPDX-License-Identifier: Apache-2.0
#include "messaging/epoll.h"

#include <cerrno>
#include <system_error>

namespace platform {

void Epoll::open() {
    auto epoll = process::Descriptor::madeBy([] { return epoll_create1(EPOLL_CLOEXEC); });
    if (!epoll) {
        throw std::system_error(errno, std::generic_category(), "epoll");
    }
    epoll_ = std::move(epoll);
}

bool Epoll::add(int descriptor, std::uint64_t tag, unsigned int events) noexcept {
    return control(EPOLL_CTL_ADD, descriptor, tag, events);
}

bool Epoll::change(int descriptor, std::uint64_t tag, unsigned int events) noexcept {
    return control(EPOLL_CTL_MOD, descriptor, tag, events);
}

bool Epoll::remove(int descriptor) noexcept {
    return control(EPOLL_CTL_DEL, descriptor, 0, 0);
}

bool Epoll::control(int operation, int descriptor, std::uint64_t tag, unsigned int events) noexcept {
    if (!epoll_) {
        return false;
    }
    epoll_event event = {};
    event.events = events;
    event.data.u64 = tag;
    return epoll_ctl(epoll_.get(), operation, descriptor, &event) == 0;
}

}  // namespace platform
