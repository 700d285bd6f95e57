// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_SETTINGS_BOUNDS_H
#define KORVO_PLATFORM_SETTINGS_BOUNDS_H

// Every bound of settings and configuration. docs/development-platform.md tells what happens at each.

#include "base/sizes.h"

namespace platform::limits {

/// Size of the settings file and of the configuration.
constexpr std::size_t settings_file = 16 * mebibyte;
/// Nesting of a setting that is a JSON text.
constexpr std::size_t json_depth = 32;

}  // namespace platform::limits

#endif
