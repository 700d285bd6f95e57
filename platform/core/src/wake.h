// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_WAKE_H
#define KORVO_PLATFORM_WAKE_H

#include "process.h"

namespace platform {

/// A descriptor that becomes readable when it is signalled; throws std::system_error.
process::Descriptor make_wake();

void signal_wake(process::Descriptor const &wake) noexcept;

/// Makes it unreadable again.
void drain_wake(process::Descriptor const &wake) noexcept;

}  // namespace platform

#endif
