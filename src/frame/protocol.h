// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_FRAME_PROTOCOL_H
#define KORVO_FRAME_PROTOCOL_H

/// What this client says of itself and of the service on every call.
namespace protocol {

constexpr char service[] = "action_engine";

/// The interface version that this library speaks.
constexpr unsigned int major_version = 1;
constexpr unsigned int minor_version = 19;

/// The bound that the shared messaging code gets for its bookkeeping.
constexpr unsigned int bookkeeping_count = 10;

}  // namespace protocol

#endif
