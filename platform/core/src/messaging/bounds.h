// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_MESSAGING_BOUNDS_H
#define KORVO_PLATFORM_MESSAGING_BOUNDS_H

// Every bound of the messaging, in one place. docs/development-platform.md tells what happens at each.

#include <chrono>
#include <cstddef>

#include "base/sizes.h"

namespace platform::limits {

/// Payload of one frame: all its texts and their length fields.
constexpr std::size_t frame_payload = 1 * mebibyte;
/// What a connection reads at once, and the size to which its buffer returns after a large frame.
constexpr std::size_t read_buffer = 32 * kibibyte;

/// Requests an initiator keeps track of, answered or not.
constexpr std::size_t tracked_requests = 65536;
/// Responses kept for a later receive.
constexpr std::size_t kept_responses = 1024;
constexpr std::size_t kept_response_bytes = 8 * mebibyte;
/// Responses and events that wait for an initiator's callbacks.
constexpr std::size_t waiting_responses = 16384;
constexpr std::size_t waiting_response_bytes = 32 * mebibyte;
constexpr std::size_t waiting_events = 1024;
constexpr std::size_t waiting_event_bytes = 8 * mebibyte;
/// Commands that an initiator has taken and the socket has not; beyond that, sending fails at once.
constexpr std::size_t unsent_command_bytes = 8 * mebibyte;
/// Answers to asynchronous commands that may be outstanding on a connection, or callbacks that may wait, while the next
/// such command still leaves on its sender's own thread.
constexpr std::size_t commands_sent_at_once = 2;
/// How often the writing thread looks for what callbacks have sent, while they send.
constexpr std::chrono::milliseconds watching{1};
/// From here on the sender of such a command writes by itself instead of leaving it to the writing thread.
constexpr std::size_t gathered_command_bytes = 16 * kibibyte;

/// Bytes for one peer that a service holds back: beyond the first, events for that peer are dropped; beyond
/// the second, the peer is disconnected.
constexpr std::size_t outgoing_event_bytes = 1 * mebibyte;
constexpr std::size_t outgoing_bytes = 8 * mebibyte;
/// From here on the thread that publishes an event sends by itself instead of leaving it to the service's
/// thread.
constexpr std::size_t outgoing_gathered_bytes = 16 * kibibyte;
/// What a service holds for all peers together, of frames that have not come as a whole and of bytes that wait for a socket;
/// beyond that the peer with the most of it is disconnected.
constexpr std::size_t service_bytes = 64 * mebibyte;
/// Commands that wait for a polling service; beyond that it reads no more until some are taken.
constexpr std::size_t waiting_commands = 1024;
constexpr std::size_t waiting_command_bytes = 16 * mebibyte;
/// Initiators that are connected to a service at one time.
constexpr std::size_t peers = 512;
/// Connections that a service takes in before it looks at those it has again. Some of them may have ended,
/// and a burst of new ones must hold nobody up.
constexpr unsigned int accepted_at_once = 16;

/// How long closing an initiator tries to send what it has taken.
constexpr std::chrono::milliseconds last_sending{40};
/// Failed calls that are alike are told of once within this time, and how many kinds are told apart.
constexpr std::chrono::milliseconds failure_pause{1000};
constexpr std::size_t told_failures = 64;
/// How long a response waits at most for others of the same batch.
constexpr std::chrono::microseconds gathering{500};
/// Pause before a subscription is made again on a connection that did not live longer than this, and after a failure;
/// the longest that it grows to while failures follow each other.
constexpr std::chrono::milliseconds reconnect_pause{1000};
constexpr std::chrono::milliseconds longest_reconnect_pause{30'000};
/// How long the messaging thread rests when memory is too short for its work.
constexpr std::chrono::milliseconds failure_rest{10};

}  // namespace platform::limits

#endif
