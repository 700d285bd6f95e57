// SPDX-License-Identifier: Apache-2.0
#include "logging.h"

#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <system_error>

#include "handles.h"
#include "log_record.h"
#include "text.h"

namespace platform {

namespace {

constexpr korvo_core_log_priority default_level = KORVO_CORE_LOG_PRIORITY_NOTICE;

/// Immutable after construction, so threads and forked children use it without a lock.
class Logger {
  public:
    explicit Logger(std::string_view name)
        : name_(name),
          level_(log_record::priority_from(std::getenv("KORVO_LOG_LEVEL"), default_level)),
          to_syslog_(or_empty(std::getenv("KORVO_LOG_TARGET")) == "syslog") {}

    bool is_active(korvo_core_log_priority priority) const { return log_record::is_wanted(priority, level_); }

    void write(korvo_core_log_priority priority, std::string_view text) const {
        if (to_syslog_) {
            int const level = priority <= KORVO_CORE_LOG_PRIORITY_DEBUG   ? static_cast<int>(priority)
                              : priority == KORVO_CORE_LOG_PRIORITY_AUDIT ? LOG_NOTICE
                                                                          : LOG_DEBUG;
            syslog(level, "%s: %s", name_.c_str(), log_record::one_line(text).c_str());
            return;
        }
        // One write a record, so that records of several threads and processes do not mix.
        std::string const record = log_record::line(priority, name_, text);
        std::string_view rest = record;
        while (!rest.empty()) {
            ssize_t const written = ::write(STDERR_FILENO, rest.data(), rest.size());
            if (written < 0 && errno != EINTR) {
                return;
            }
            rest.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
        }
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

Logger const &default_logger() {
    static auto const *const logger = new Logger("-");
    return *logger;
}

void write_formatted(void *handle, korvo_core_log_priority priority, char const *format, va_list arguments)
    KORVO_CORE_PRINTF(3, 0);

void write_formatted(void *handle, korvo_core_log_priority priority, char const *format, va_list arguments) {
    // A callback that logs may be reading errno of its own work.
    int const kept_errno = errno;
    std::shared_ptr<Logger> const named = handle != nullptr ? loggers().find(handle).object : nullptr;
    Logger const &logger = named != nullptr ? *named : default_logger();
    if (logger.is_active(priority)) {
        logger.write(priority, log_record::format(format, arguments));
    }
    errno = kept_errno;
}

void write_own(void *handle, korvo_core_log_priority priority, char const *format, va_list arguments) noexcept
    KORVO_CORE_PRINTF(3, 0);

void write_own(void *handle, korvo_core_log_priority priority, char const *format,
               va_list arguments) noexcept {
    try {
        write_formatted(handle, priority, format, arguments);
    } catch (...) {
        // A line that cannot be written must not fail the work that it tells of.
    }
}

}  // namespace

void Log::error(char const *format, ...) const noexcept {
    va_list arguments;
    va_start(arguments, format);
    write_own(handle_, KORVO_CORE_LOG_PRIORITY_ERR, format, arguments);
    va_end(arguments);
}

void Log::warning(char const *format, ...) const noexcept {
    va_list arguments;
    va_start(arguments, format);
    write_own(handle_, KORVO_CORE_LOG_PRIORITY_WARNING, format, arguments);
    va_end(arguments);
}

void Log::info(char const *format, ...) const noexcept {
    va_list arguments;
    va_start(arguments, format);
    write_own(handle_, KORVO_CORE_LOG_PRIORITY_INFO, format, arguments);
    va_end(arguments);
}

std::string error_text(int number) {
    return std::generic_category().message(number);
}

}  // namespace platform

using namespace platform;

korvo_core_status korvo_core_logging_init(char const *name, void **logging) {
    if (logging == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    try {
        *logging = loggers().add(std::make_shared<Logger>(or_empty(name)));
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
    *active = (named != nullptr ? *named : default_logger()).is_active(priority) ? 1 : 0;
    return KORVO_CORE_STATUS_NO_ERROR;
}

korvo_core_status korvo_core_logging_log(void *logging, korvo_core_log_priority priority, char const *format,
                                         ...) {
    if (format == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    va_list arguments;
    va_start(arguments, format);
    write_own(logging, priority, format, arguments);
    va_end(arguments);
    return KORVO_CORE_STATUS_NO_ERROR;
}

void korvo_core_logging_logv(void *logging, korvo_core_log_priority priority, char const *format,
                             va_list arguments) {
    if (format != nullptr) {
        write_own(logging, priority, format, arguments);
    }
}
