// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_GUARDED_CALL_H
#define KORVO_PLATFORM_GUARDED_CALL_H

// The one place where exceptions become statuses.

#include <filesystem>
#include <new>
#include <system_error>

#include "base/logging.h"

namespace platform {

/// Runs the work of a function of the C interface; nothing that it throws reaches the caller. `function` is named
/// in the log. Memory that ran out is 2; what the system refuses is 4, but 7 where it is about a file; everything
/// else is 7.
template <typename Call>
korvo_core_status guardedCall(char const *function, Call call) {
    try {
        return call();
    } catch (std::bad_alloc const &) {
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    } catch (std::filesystem::filesystem_error const &error) {
        // Before std::system_error, which it is one of.
        Log(nullptr).error("%s failed: %s", function, error.what());
        return KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT;
    } catch (std::system_error const &error) {
        Log(nullptr).error("%s failed: %s", function, error.what());
        return KORVO_CORE_STATUS_IPC_FAILED;
    } catch (std::exception const &error) {
        Log(nullptr).error("%s failed: %s", function, error.what());
        return KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT;
    } catch (...) {
        Log(nullptr).error("%s failed: something that is no exception was thrown", function);
        return KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT;
    }
}

}  // namespace platform

#endif
