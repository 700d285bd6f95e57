// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_ENTROPY_H
#define KORVO_FRAME_ENTROPY_H

#include <cstddef>

/// Fills the bytes from the operating system's entropy. Early after the system's start, before it has gathered any, it
/// waits until there is some. Throws std::system_error when there is none to be had.
void fillWithEntropy(void *bytes, std::size_t count);

#endif
