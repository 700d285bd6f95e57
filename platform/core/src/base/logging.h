// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_LOGGING_H
#define KORVO_PLATFORM_LOGGING_H

#include <array>
#include <string>

#include "korvo_core.h"

namespace platform {

/// Where the core writes its own lines: the logging handle that a messaging handle was opened with. Writing
/// to a handle that was closed meanwhile goes to the default logger. Never throws and takes no lock while it
/// writes.
class Log {
  public:
    explicit Log(void *handle) : handle_(handle) {}

    void error(char const *format, ...) const noexcept KORVO_CORE_PRINTF(2, 3);
    void warning(char const *format, ...) const noexcept KORVO_CORE_PRINTF(2, 3);
    void info(char const *format, ...) const noexcept KORVO_CORE_PRINTF(2, 3);

  private:
    void *handle_;
};

/// The text of errno value `number`.
std::string errorText(int number);

/// The same where nothing may be allocated.
class ErrorText {
  public:
    explicit ErrorText(int number) noexcept;
    char const *get() const { return text_; }

  private:
    std::array<char, 64> buffer_{};
    char const *text_;
};

}  // namespace platform

#endif
