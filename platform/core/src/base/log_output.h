// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_LOG_OUTPUT_H
#define KORVO_PLATFORM_LOG_OUTPUT_H

#include <string_view>

namespace platform::log_output {

/// Writes a record to standard error in one piece, and never waits for whoever reads it: what a pipe or a terminal does
/// not take at once is lost. The next record that is taken follows a line of its own, under `name`, that tells how many
/// were lost. Throws std::bad_alloc, only when it tells that.
void write(std::string_view name, std::string_view record);

}  // namespace platform::log_output

#endif
