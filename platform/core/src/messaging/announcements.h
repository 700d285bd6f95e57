// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_ANNOUNCEMENTS_H
#define KORVO_PLATFORM_ANNOUNCEMENTS_H

#include <cstdint>

// How the core tells an asynchronous request from a synchronous one. Registering a response callback for an
// object announces that the calling thread's next command for that object is asynchronous: its response goes
// to the callback instead of being kept for a receive. Every thread has announcements of its own.

namespace platform::announcements {

/// Notes that this thread's next command for `owner` on the initiator is asynchronous. Of more than a few
/// unused announcements the oldest are forgotten.
void make(std::uint64_t initiator, void const *owner);

/// Uses up the announcement, if there is one.
bool take(std::uint64_t initiator, void const *owner) noexcept;

}  // namespace platform::announcements

#endif
