// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_LOG_RECORD_H
#define KORVO_PLATFORM_LOG_RECORD_H

#include <cstdarg>
#include <string>
#include <string_view>

#include "korvo_core.h"

namespace platform::log_record {

/// The formatted text, at most 16 KiB of it.
std::string format(char const *format, va_list arguments) KORVO_CORE_PRINTF(1, 0);

/// `text` without what would begin a new record, command a terminal or show a text as another one: line ends, controls,
/// marks of direction and bytes that are no UTF-8 become escapes such as "\n", "\x1b" and "\u202e".
std::string oneLine(std::string_view text);

/// "emerg" to "debug", "audit", "notset", or "priority N" for other values.
std::string priorityName(korvo_core_log_priority priority);

/// Reads what KORVO_LOG_LEVEL holds: a name as above or a number from 0 to 7. NULL, an empty text and
/// everything else give `otherwise`.
korvo_core_log_priority priorityFrom(char const *text, korvo_core_log_priority otherwise);

/// Whether a record of `priority` is written when `level` is the last one wanted. Audit records always are;
/// one without a priority, or with an unknown one, counts as debug.
bool isWanted(korvo_core_log_priority priority, korvo_core_log_priority level);

/// One line, its end included: local time, priority, process[name], text.
std::string line(korvo_core_log_priority priority, std::string_view name, std::string_view text);

}  // namespace platform::log_record

#endif
