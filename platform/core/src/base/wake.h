// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_WAKE_H
#define KORVO_PLATFORM_WAKE_H

#include "base/process.h"

namespace platform {

/// A descriptor that becomes readable when it is signalled; throws std::system_error.
process::Descriptor makeWake();

void signalWake(process::Descriptor const &wake) noexcept;

/// Makes it unreadable again.
void drainWake(process::Descriptor const &wake) noexcept;

}  // namespace platform

#endif
