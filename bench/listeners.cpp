// SPDX-License-Identifier: Apache-2.0
#include "listeners.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <stdexcept>

#include "program.h"

Listeners::Listeners(int count, std::function<void(int, Tell const &)> const &listen) {
    int pipe_ends[2];
    require(pipe2(pipe_ends, O_CLOEXEC), "pipe");
    told_ = pipe_ends[0];
    int const telling = pipe_ends[1];
    for (int number = 0; number < count; ++number) {
        pid_t const process = fork();
        if (process == 0) {
            // Also where this process ends without its destructors.
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            try {
                listen(number, [telling] { require(write(telling, "", 1) == 1 ? 0 : -1, "telling"); });
                _exit(0);
            } catch (...) {
                _exit(1);
            }
        }
        if (process < 0) {
            throw std::runtime_error("fork failed");
        }
        processes_.push_back(process);
    }
    close(telling);
}

Listeners::~Listeners() {
    for (pid_t const process : processes_) {
        kill(process, SIGTERM);
        waitpid(process, nullptr, 0);
    }
    close(told_);
}

void Listeners::waitForAll() const {
    char bytes[64];
    for (std::size_t heard = 0; heard < processes_.size();) {
        pollfd ready = {told_, POLLIN, 0};
        ssize_t const count = poll(&ready, 1, 10'000) == 1
                                  ? read(told_, bytes, std::min(sizeof bytes, processes_.size() - heard))
                                  : 0;
        if (count <= 0) {
            throw std::runtime_error("a listener has ended or waits for what does not come");
        }
        heard += static_cast<std::size_t>(count);
    }
}
