// SPDX-License-Identifier: Apache-2.0
#include "frame/interfaces.h"

#include <cstdarg>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

void logError(void *logging_handle, char const *format, ...) KORVO_CORE_PRINTF(2, 3);

void logError(void *logging_handle, char const *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    korvo_core_logging_logv(logging_handle, KORVO_CORE_LOG_PRIORITY_ERR, format, arguments);
    va_end(arguments);
}

}  // namespace

korvoInterfaces::korvoInterfaces(void *logging_handle, unsigned int major, unsigned int minor) try
    : logging_handle_(logging_handle), major_version_(major), minor_version_(minor) {
} catch (std::exception const &error) {
    // The generator of identifiers. What is thrown on reaches the caller as a mere status.
    logError(logging_handle, "korvoInterfaces: cannot make request identifiers: %s", error.what());
}

korvoInterfaces::~korvoInterfaces() {
    logging_handle_ = nullptr;
}

char *korvoInterfaces::generateUUID() {
    return uuid_generator_.generate();
}

void korvoInterfaces::IPC_LOG_ERR(char const *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    korvo_core_logging_logv(logging_handle_, KORVO_CORE_LOG_PRIORITY_ERR, format, arguments);
    va_end(arguments);
}

void korvoInterfaces::IPC_LOG_WARNING(char const *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    korvo_core_logging_logv(logging_handle_, KORVO_CORE_LOG_PRIORITY_WARNING, format, arguments);
    va_end(arguments);
}

korvoInitiatorInterfaces::korvoInitiatorInterfaces(void *messaging_handle, void *logging_handle,
                                                   unsigned int major, unsigned int minor,
                                                   char const *initiator_name, unsigned int count)
    : korvoInterfaces(logging_handle, major, minor),
      messaging_handle_(messaging_handle),
      owns_messaging_handle_(false),
      commands_(logging_handle, count),
      responses_(logging_handle, count) {
    if (messaging_handle_ != nullptr) {
        return;
    }
    owns_messaging_handle_ = true;
    korvo_core_status const status =
        korvo_core_ipc_initiator_init(logging_handle, initiator_name, &messaging_handle_, 1);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        std::string const failure =
            "korvoInitiatorInterfaces: failed call to initiator init (" + std::to_string(status) + ")";
        IPC_LOG_ERR("%s", failure.c_str());
        messaging_handle_ = nullptr;
        throw std::runtime_error(failure);
    }
}

korvoInitiatorInterfaces::~korvoInitiatorInterfaces() {
    closeOwnedMessaging();
    messaging_handle_ = nullptr;
}

void korvoInitiatorInterfaces::subclassResponseDispatch(char const *, char *, char *, json::Object &) {}

void korvoInitiatorInterfaces::subclassEventDispatch(char const *, char const *, json::Object &) {}

// Of objects without asynchronous forms, and the one class that there is has them. GCOV_EXCL_START
bool korvoInitiatorInterfaces::isAsynchronous(char const *, char const *) {
    return false;
}
// GCOV_EXCL_STOP

void korvoInitiatorInterfaces::closeOwnedMessaging() noexcept {
    if (!owns_messaging_handle_) {
        return;
    }
    owns_messaging_handle_ = false;
    try {
        korvo_core_status const status = korvo_core_ipc_deinit(messaging_handle_);
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            IPC_LOG_ERR("%s: failed call to initiator deinit (%d)", "~korvoInitiatorInterfaces",
                        static_cast<int>(status));
        }
    } catch (...) {
        // A platform library may throw, a destructor may not, and there is nobody left to tell.
    }
    // The field stays: other threads may still be on their way back from a call that the closing has ended.
}
