// SPDX-License-Identifier: Apache-2.0
#include "messaging/announcements.h"

#include <algorithm>
#include <array>

#include "messaging/bounds.h"

namespace platform::announcements {

namespace {

struct Announcement {
    std::uint64_t initiator;
    void const *owner;

    bool operator==(Announcement const &other) const {
        return initiator == other.initiator && owner == other.owner;
    }
};

/// Oldest first.
struct Announced {
    std::array<Announcement, limits::announcements> items;
    std::size_t count;
};

// Plain data, so that it needs no clean-up when a thread ends.
thread_local Announced announced = {};

}  // namespace

void make(std::uint64_t initiator, void const *owner) {
    (void)take(initiator, owner);
    auto const begin = announced.items.begin();
    if (announced.count == announced.items.size()) {
        std::move(begin + 1, announced.items.end(), begin);
        --announced.count;
    }
    announced.items[announced.count++] = {initiator, owner};
}

bool take(std::uint64_t initiator, void const *owner) noexcept {
    auto const end = announced.items.begin() + static_cast<std::ptrdiff_t>(announced.count);
    auto const place = std::find(announced.items.begin(), end, Announcement{initiator, owner});
    if (place == end) {
        return false;
    }
    std::move(place + 1, end, place);
    --announced.count;
    return true;
}

}  // namespace platform::announcements
