// SPDX-License-Identifier: Apache-2.0
#include "korvo_core.h"

char const *korvo_core_status_to_string(korvo_core_status status) {
    switch (status) {
        case KORVO_CORE_STATUS_NO_ERROR:
            return "no error";
        case KORVO_CORE_STATUS_INVALID_PARAMS:
            return "invalid parameters";
        case KORVO_CORE_STATUS_ALLOC_FAILED:
            return "allocation failed";
        case KORVO_CORE_STATUS_MULTI_THREAD_ACCESS:
            return "multi-thread access";
        case KORVO_CORE_STATUS_IPC_FAILED:
            return "messaging failed";
        case KORVO_CORE_STATUS_INCORRECT_SETTING_TYPE:
            return "incorrect setting type";
        case KORVO_CORE_STATUS_SETTING_NOT_PRESENT:
            return "setting not present";
        case KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT:
            return "internal exception caught";
        case KORVO_CORE_STATUS_UNSUPPORTED_FUNCTION:
            return "unsupported function";
        case KORVO_CORE_STATUS_REMOTE_FUNCTION_FAILURE:
            return "remote function failure";
        case KORVO_CORE_STATUS_DISABLED_TARGET:
            return "disabled target";
    }
    return "unknown status";
}
