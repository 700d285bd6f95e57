// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_CLIENT_HANDLE_H
#define KORVO_TESTS_CLIENT_HANDLE_H

#include <stdexcept>
#include <string>

#include "korvo_api_action_engine.h"

/// A handle of the client library with a logging handle of its own, on whichever platform the program is linked with.
class ClientHandle {
  public:
    /// With messaging of its own; or with a messaging handle to share, which is closed before the client goes.
    /// Throws std::runtime_error.
    explicit ClientHandle(char const *name, bool subscribes_events = false, void *messaging = nullptr) {
        orThrow(korvo_core_logging_init(name, &logging_), "no logging");
        try {
            orThrow(korvo_api_action_engine_initiator_init(messaging, logging_, &handle_,
                                                           subscribes_events ? 1 : 0, name),
                    "no client handle");
        } catch (...) {
            (void)korvo_core_logging_deinit(logging_);
            throw;
        }
    }

    ~ClientHandle() {
        (void)close();
        (void)closeLogging();
    }

    ClientHandle(ClientHandle const &) = delete;
    ClientHandle &operator=(ClientHandle const &) = delete;

    void *handle() const { return handle_; }
    void *logging() const { return logging_; }

    /// Each closes once; what is closed already stays so.
    korvo_core_status close() { return closeOnce(handle_, korvo_api_action_engine_initiator_deinit); }
    korvo_core_status closeLogging() { return closeOnce(logging_, korvo_core_logging_deinit); }

  private:
    static void orThrow(korvo_core_status status, char const *what) {
        if (status != KORVO_CORE_STATUS_NO_ERROR) {
            throw std::runtime_error(std::string(what) + ": " + korvo_core_status_to_string(status));
        }
    }

    static korvo_core_status closeOnce(void *&handle, korvo_core_status (*deinit)(void *)) {
        if (handle == nullptr) {
            return KORVO_CORE_STATUS_NO_ERROR;
        }
        korvo_core_status const status = deinit(handle);
        handle = nullptr;
        return status;
    }

    void *logging_ = nullptr;
    void *handle_ = nullptr;
};

#endif
