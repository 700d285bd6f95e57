// SPDX-License-Identifier: Apache-2.0
// Says which platform libraries a process has got, and what comes of calls through them.
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <iostream>

#include "korvo_api_action_engine.h"

namespace {

void sayWhere(char const *function) {
    Dl_info info = {};
    void *const address = dlsym(RTLD_DEFAULT, function);
    std::cout << function << " from " << (dladdr(address, &info) != 0 ? info.dli_fname : "nowhere") << "\n";
}

}  // namespace

int main() {
    sayWhere("korvo_core_ipc_initiator_init");
    sayWhere("korvo_core_ipc_initiator_event_subscribe");
    sayWhere("korvo_api_action_engine_initiator_init");
    sayWhere("_Z18convertJsonToValueRKN4json14UnknownElementEPPc");

    void *logging = nullptr;
    void *handle = nullptr;
    std::cout << "logging " << korvo_core_logging_init("probe", &logging) << "\n";
    korvo_core_status const made =
        korvo_api_action_engine_initiator_init(nullptr, logging, &handle, 1, "probe");
    std::cout << "init " << made << "\n";
    if (made != KORVO_CORE_STATUS_NO_ERROR) {
        return EXIT_SUCCESS;
    }
    unsigned int total = 0;
    unsigned int **types = nullptr;
    unsigned int **counts = nullptr;
    std::cout << "counts "
              << korvo_api_action_engine_get_action_counts_send(handle, nullptr, &total, &types, &counts)
              << "\n";
    korvo_core_free_uint_array(types);
    korvo_core_free_uint_array(counts);

    char word[] = "to@example";
    char *texts[] = {word, nullptr};
    char *none[] = {nullptr};
    unsigned int action_id = 0;
    std::cout << "create "
              << korvo_api_action_engine_create_email_action_send(handle, nullptr, "", "", texts, none, "",
                                                                  "", "", 0, 0, &action_id)
              << "\n";
    char *text[5] = {};
    char **to = nullptr;
    char **cc = nullptr;
    unsigned char flags[2] = {};
    std::cout << "get "
              << korvo_api_action_engine_get_email_action_send(handle, nullptr, action_id, &text[0], &text[1],
                                                               &to, &cc, &text[2], &text[3], &text[4],
                                                               &flags[0], &flags[1])
              << "\n";
    for (char *one : text) {
        std::free(one);
    }
    korvo_core_free_string_array(to);
    korvo_core_free_string_array(cc);
    (void)korvo_api_action_engine_initiator_deinit(handle);
    (void)korvo_core_logging_deinit(logging);
    return EXIT_SUCCESS;
}
