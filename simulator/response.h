// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_RESPONSE_H
#define KORVO_SIMULATOR_RESPONSE_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "simulator/json_writer.h"

namespace simulator {

/// In bytes. A message of the core is at most 1 MiB, with what the core adds to a response.
inline constexpr std::size_t longest_response = 1'000'000;

/// Writes what begins every response.
inline void writeEnvelope(JsonWriter &response, std::string_view method, std::uint32_t status) {
    response.text("command", method);
    response.number("status", status);
}

}  // namespace simulator

#endif
