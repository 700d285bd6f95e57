// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <cstring>

#include "json/lists.h"

korvo_core_status convertJsonToValue(json::UnknownElement const &element, char **text) {
    if (text == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    json::detail::ConstFinder<json::String> finder;
    element.Accept(finder);
    if (finder.found == nullptr) {
        return KORVO_CORE_STATUS_IPC_FAILED;
    }
    char *const copy = strdup(finder.found->value().c_str());
    if (copy == nullptr) {
        return KORVO_CORE_STATUS_ALLOC_FAILED;
    }
    *text = copy;
    return KORVO_CORE_STATUS_NO_ERROR;
}
