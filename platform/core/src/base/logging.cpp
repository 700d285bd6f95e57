// SPDX-License-Identifier: Apache-2.0
#include "base/logging.h"

#include <syslog.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>

#include "base/handles.h"
#include "base/log_output.h"
#include "base/log_record.h"
#include "base/text.h"

namespace platform {

namespace {

constexpr korvo_core_log_priority default_level = KORVO_CORE_LOG_PRIORITY_NOTICE;

/// Immutable after construction, so threads and forked children use it without a lock.
class Logger {
  public:
    explicit Logger(std::string_view name)
        : name_(name),
          level_(log_record::priorityFrom(std::getenv("KORVO_LOG_LEVEL"), default_level)),
          to_syslog_(orEmpty(std::getenv("KORVO_LOG_TARGET")) == "syslog") {}

    bool isActive(korvo_core_log_priority priority) const { return log_record::isWanted(priority, level_); }

    void write(korvo_core_log_priority priority, std::string_view text) const {
        if (to_syslog_) {
            int const level = priority <= KORVO_CORE_LOG_PRIORITY_DEBUG   ? static_cast<int>(priority)
                              : priority == KORVO_CORE_LOG_PRIORITY_AUDIT ? LOG_NOTICE
                                                                          : LOG_DEBUG;
            syslog(level, "%s: %s", name_.c_str(), log_record::oneLine(text).c_str());
            return;
        }
        log_output::write(name_, log_record::line(priority, name_, text));
    }

  private:
    std::string name_;
    korvo_core_log_priority level_;
    bool to_syslog_;
};

// Both live as long as the process: other objects log while they are destroyed.
HandleTable<Logger> &loggers() {
    static auto *const table = new HandleTable<Logger>;
    return *table;
}

Logger const &defaultLogger() {
    static auto const *const logger = new Logger("-");
    return *logger;
}

void writeFormatted(void *handle, korvo_core_log_priority priority, char const *format, va_list arguments)
    KORVO_CORE_PRINTF(3, 0);

void writeFormatted(void *handle, korvo_core_log_priority priority, char const *format, va_list arguments) {
    // A callback that logs may be reading errno of its own work.
    int const kept_errno = errno;
    std::shared_ptr<Logger> const named = handle != nullptr ? loggers().find(handle).object : nullptr;
    Logger const &logger = named != nullptr ? *named : defaultLogger();
    if (logger.isActive(priority)) {
        logger.write(priority, log_record::format(format, arguments));
    }
    errno = kept_errno;
}

void writeOwn(void *handle, korvo_core_log_priority priority, char const *format, va_list arguments) noexcept
    KORVO_CORE_PRINTF(3, 0);

void writeOwn(void *handle, korvo_core_log_priority priority, char const *format,
              va_list arguments) noexcept {
    try {
        writeFormatted(handle, priority, format, arguments);
    } catch (...) {
        // A line that cannot be written must not fail the work that it tells of.
    }
}

}  // namespace

void Log::error(char const *format, ...) const noexcept {
    va_list arguments;
    va_start(arguments, format);
    writeOwn(handle_, KORVO_CORE_LOG_PRIORITY_ERR, format, arguments);
    va_end(arguments);
}

void Log::warning(char const *format, ...) const noexcept {
    va_list arguments;
    va_start(arguments, format);
    writeOwn(handle_, KORVO_CORE_LOG_PRIORITY_WARNING, format, arguments);
    va_end(arguments);
}

void Log::info(char const *format, ...) const noexcept {
    va_list arguments;
    va_start(arguments, format);
    writeOwn(handle_, KORVO_CORE_LOG_PRIORITY_INFO, format, arguments);
    va_end(arguments);
}

std::string errorText(int number) {
    return std::generic_category().message(number);
}

ErrorText::ErrorText(int number) noexcept : text_(strerror_r(number, buffer_.data(), buffer_.size())) {}

}  // namespace platform

using namespace platform;

korvo_core_status korvo_core_logging_init(char const *name, void **logging) {
    if (logging == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    try {
        *logging = loggers().add(std::make_shared<Logger>(orEmpty(name)));
        return KORVO_CORE_STATUS_NO_ERROR;
    } catch (...) {
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    }
}

korvo_core_status korvo_core_logging_deinit(void *logging) {
    auto const found = loggers().remove(logging);
    if (found.inherited) {
        return KORVO_CORE_STATUS_MULTI_THREAD_ACCESS;
    }
    return found.object != nullptr ? KORVO_CORE_STATUS_NO_ERROR : KORVO_CORE_STATUS_INVALID_PARAMS;
}

korvo_core_status korvo_core_logging_is_priority_active(void *logging, korvo_core_log_priority priority,
                                                        int *active) {
    if (active == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    std::shared_ptr<Logger> const named = loggers().find(logging).object;
    if (logging != nullptr && named == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    *active = (named != nullptr ? *named : defaultLogger()).isActive(priority) ? 1 : 0;
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_logging_log(void *logging, korvo_core_log_priority priority, char const *format,
                                         ...) {
    if (format == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    va_list arguments;
    va_start(arguments, format);
    writeOwn(logging, priority, format, arguments);
    va_end(arguments);
    return KORVO_CORE_STATUS_NO_ERROR;
}

void korvo_core_logging_logv(void *logging, korvo_core_log_priority priority, char const *format,
                             va_list arguments) {
    if (format != nullptr) {
        writeOwn(logging, priority, format, arguments);
    }
}
