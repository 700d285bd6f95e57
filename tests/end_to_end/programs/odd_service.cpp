// SPDX-License-Identifier: Apache-2.0
// A service that answers in an odd way: odd_service MODE. The modes are those of the table below. It writes "ready"
// when it listens and "took METHOD" for each command.
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

#include "korvo_core.h"

namespace {

/// What is sent for a command of this method.
using Answer = std::string (*)(std::string const &method);

std::string good(std::string const &method) {
    return R"({"command":")" + method + R"(","status":0,"action_type":6})";
}

std::map<std::string, Answer> const answers = {
    {"good", good},
    {"half",
     [](std::string const &method) { return R"({"command":")" + method + R"(","status":0,"action_ty)"; }},
    {"empty", [](std::string const &) { return std::string(); }},
    {"no-json", [](std::string const &) { return std::string("status: fine"); }},
    {"array", [](std::string const &) { return std::string("[0,6]"); }},
    {"scalar", [](std::string const &) { return std::string("0"); }},
    {"trailing", [](std::string const &method) { return good(method) + "}"; }},
    {"too-deep",
     [](std::string const &method) {
         return R"({"command":")" + method + R"(","status":0,"action_type":)" + std::string(5000, '[') +
                std::string(5000, ']') + "}";
     }},
    {"bad-utf-8",
     [](std::string const &method) {
         return R"({"command":")" + method + "\",\"status\":0,\"action_type\":6,\"x\":\"\xff\xfe\"}";
     }},
    {"no-status",
     [](std::string const &method) { return R"({"command":")" + method + R"(","action_type":6})"; }},
    {"text-status",
     [](std::string const &method) {
         return R"({"command":")" + method + R"(","status":"0","action_type":6})";
     }},
    {"status-77", [](std::string const &method) { return R"({"command":")" + method + R"(","status":77})"; }},
};

std::string methodOf(std::string const &command) {
    std::string const name = "\"command\":\"";
    auto const begin = command.find(name) + name.size();
    return command.substr(begin, command.find('"', begin) - begin);
}

void answer(void *messaging, std::string const &mode, char const *source, char const *request_id,
            std::string const &method) {
    auto const send = [&](char const *id, std::string const &response) {
        (void)korvo_core_ipc_target_response_send(messaging, source, id, response.c_str());
    };
    auto const known = answers.find(mode);
    if (mode == "silent") {
        return;
    }
    if (mode == "wrong-id") {
        send("00000000-0000-4000-8000-000000000000", good(method));
    } else if (mode == "other-method") {
        send(request_id, good("Get_trigger_type"));
    } else if (mode == "twice") {
        send(request_id, good(method));
        send(request_id, good(method));
    } else if (mode == "events") {
        for (char const *const event :
             {"", "{", "[]", "7", R"({"event":7})", R"({"event":"Somebody_rang"})",
              R"({"event":"Action_completed"})",
              R"({"event":"Action_completed","action_id":"1","action_name":"mistyped","success":true})",
              R"({"event":"Action_completed","action_id":1,"action_name":"incomplete"})",
              R"({"event":"Action_completed","action_id":5,"action_name":"good","success":true})"}) {
            (void)korvo_core_ipc_target_event_send(messaging, event);
        }
        send(request_id, good(method));
    } else if (known != answers.end()) {
        send(request_id, known->second(method));
    }
}

}  // namespace

int main(int argc, char **argv) {
    std::string const mode = argc > 1 ? argv[1] : "good";
    void *logging = nullptr;
    void *messaging = nullptr;
    if (korvo_core_logging_init("odd_service", &logging) != KORVO_CORE_STATUS_NO_ERROR ||
        korvo_core_ipc_target_init(logging, "action_engine", nullptr, "odd_service", &messaging) !=
            KORVO_CORE_STATUS_NO_ERROR) {
        std::cerr << "odd_service: cannot listen\n";
        return EXIT_FAILURE;
    }
    std::cout << "ready" << std::endl;
    for (;;) {
        char *source = nullptr;
        char *request_id = nullptr;
        char *command = nullptr;
        if (korvo_core_ipc_target_command_receive(messaging, 1000, &source, &request_id, &command) !=
            KORVO_CORE_STATUS_NO_ERROR) {
            continue;
        }
        std::string const method = methodOf(command);
        std::cout << "took " << method << std::endl;
        answer(messaging, mode, source, request_id, method);
        std::free(source);
        std::free(request_id);
        std::free(command);
    }
}
