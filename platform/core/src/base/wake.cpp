// SPDX-License-Identifier: Apache-2.0
#include "base/wake.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace platform {

process::Descriptor makeWake() {
    auto wake = process::Descriptor::madeBy([] { return eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK); });
    if (!wake) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    return wake;
}

void signalWake(process::Descriptor const &wake) noexcept {
    if (wake) {
        std::uint64_t const one = 1;
        // Fails only when the counter is full, and then it is readable anyway.
        (void)!write(wake.get(), &one, sizeof one);
    }
}

void drainWake(process::Descriptor const &wake) noexcept {
    std::uint64_t count = 0;
    (void)!read(wake.get(), &count, sizeof count);
}

}  // namespace platform
