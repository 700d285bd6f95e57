// SPDX-License-Identifier: Apache-2.0
#include "development/child_process.h"

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "korvo_core.h"
#include "processes/kill.h"

namespace {

constexpr int patience_ms = 20000;

void serve(std::function<void()> const &ready) {
    void *target = nullptr;
    if (korvo_core_ipc_target_init(nullptr, "sample", "", "service-process", &target) !=
        KORVO_CORE_STATUS_NO_ERROR) {
        return;
    }
    ready();
    for (;;) {
        char *source = nullptr;
        char *request_id = nullptr;
        char *command = nullptr;
        if (korvo_core_ipc_target_command_receive(target, 4294967295U, &source, &request_id, &command) !=
            KORVO_CORE_STATUS_NO_ERROR) {
            return;
        }
        if (std::strcmp(command, "silent") != 0) {
            (void)korvo_core_ipc_target_response_send(target, source, request_id, command);
        }
        std::free(source);
        std::free(request_id);
        std::free(command);
    }
}

}  // namespace

ChildProcess::ChildProcess(std::function<void(std::function<void()> const &ready)> const &work) {
    int ends[2];
    if (pipe(ends) != 0) {
        return;
    }
    id_ = fork();
    if (id_ == 0) {
        (void)close(ends[0]);
        work([&] {
            (void)!write(ends[1], "r", 1);
            (void)close(ends[1]);
        });
        _exit(0);
    }
    (void)close(ends[1]);
    pollfd readable = {ends[0], POLLIN, 0};
    char byte = 0;
    is_ready_ = poll(&readable, 1, patience_ms) == 1 && read(ends[0], &byte, 1) == 1;
    (void)close(ends[0]);
}

ChildProcess::~ChildProcess() {
    kill();
}

void ChildProcess::signal(int number) const {
    if (id_ > 0) {
        (void)::kill(id_, number);
    }
}

void ChildProcess::kill() {
    if (id_ > 0) {
        processes::kill(id_);
        (void)waitpid(id_, nullptr, 0);
        id_ = -1;
    }
}

int resultInChild(std::function<int()> const &check) {
    pid_t const child = fork();
    if (child == 0) {
        (void)alarm(patience_ms / 1000);
        _exit(check());
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || !WIFEXITED(status)) {
        return -1;
    }
    return WEXITSTATUS(status);
}

ServiceProcess::ServiceProcess() : ChildProcess(serve) {}
