// SPDX-License-Identifier: Apache-2.0
#include "workers.h"

#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>

#include "program.h"
#include "socket_transfer.h"

namespace {

[[noreturn]] void workWhenTold(int socket, std::function<Workers::Work()> const &prepare) {
    // Also where the parent ends without its destructors.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        Workers::Work const work = prepare();
        std::string word(1, '\0');
        while (receiveAll(socket, word)) {
            work();
            (void)sendAll(socket, word);
        }
        _exit(0);
    } catch (std::exception const &failure) {
        std::fprintf(stderr, "a worker: %s\n", failure.what());
        _exit(1);
    }
}

}  // namespace

Workers::Workers(int count, std::function<Work()> const &prepare) {
    for (int number = 0; number < count; ++number) {
        int ends[2];
        require(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), "socketpair");
        pid_t const process = fork();
        if (process == 0) {
            close(ends[0]);
            workWhenTold(ends[1], prepare);
        }
        close(ends[1]);
        require(process < 0 ? -1 : 0, "fork");
        processes_.push_back(process);
        sockets_.push_back(ends[0]);
    }
}

Workers::~Workers() {
    for (pid_t const process : processes_) {
        kill(process, SIGTERM);
        waitpid(process, nullptr, 0);
    }
    for (int const socket : sockets_) {
        close(socket);
    }
}

void Workers::work() const {
    for (int const socket : sockets_) {
        require(sendAll(socket, "w") ? 0 : -1, "telling a worker");
    }
    std::string word(1, '\0');
    for (int const socket : sockets_) {
        if (!receiveAll(socket, word)) {
            throw std::runtime_error("a worker has ended");
        }
    }
}
