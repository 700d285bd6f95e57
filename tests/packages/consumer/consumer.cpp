// SPDX-License-Identifier: Apache-2.0
// Uses each installed header: the C functions, and the list conversions of the C++ ones.
#include <cstdio>

#include "frame/interfaces.h"
#include "json/lists.h"
#include "korvo_api_action_engine.h"

int main() {
    json::Array array;
    array.Emplace(json::Number(7));
    unsigned int **list = nullptr;
    if (convertJsonArrayToList(array, &list) != KORVO_CORE_STATUS_NO_ERROR || *list[0] != 7) {
        return 1;
    }
    korvo_core_free_uint_array(list);

    void *handle = nullptr;
    unsigned int major = 0;
    unsigned int minor = 0;
    korvo_core_status status =
        korvo_api_action_engine_initiator_init(nullptr, nullptr, &handle, 0, "consumer");
    if (status == KORVO_CORE_STATUS_NO_ERROR) {
        status = korvo_api_action_engine___get_target_version___send(handle, nullptr, &major, &minor);
        (void)korvo_api_action_engine_initiator_deinit(handle);
    }
    std::printf("service %u.%u: %s\n", major, minor, korvo_core_status_to_string(status));
    return status == KORVO_CORE_STATUS_NO_ERROR && major == 1 && minor == 19 ? 0 : 1;
}
