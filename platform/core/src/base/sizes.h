// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_SIZES_H
#define KORVO_PLATFORM_SIZES_H

#include <cstddef>

namespace platform {

constexpr std::size_t kibibyte = 1024;
constexpr std::size_t mebibyte = 1024 * kibibyte;

}  // namespace platform

#endif
