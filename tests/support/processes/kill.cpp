// SPDX-License-Identifier: Apache-2.0
#include "processes/kill.h"

#include <sys/wait.h>

#include <csignal>
#include <thread>

#include "processes/limits.h"

namespace processes {

#if defined(KORVO_COVERAGE)

namespace {

bool hasEnded(pid_t process) {
    siginfo_t ended = {};
    return waitid(P_PID, static_cast<id_t>(process), &ended, WEXITED | WNOWAIT | WNOHANG) != 0 ||
           ended.si_pid == process;
}

}  // namespace

#endif

void kill(pid_t process) {
#if defined(KORVO_COVERAGE)
    (void)::kill(process, SIGRTMAX);
    // One that is stopped takes no other signal.
    (void)::kill(process, SIGCONT);
    // What cannot write them, since it is just busy with memory or with another signal, is killed without.
    for (auto const end = Clock::now() + milliseconds(5'000); !hasEnded(process) && Clock::now() < end;) {
        std::this_thread::sleep_for(milliseconds(1));
    }
#endif
    (void)::kill(process, SIGKILL);
}

}  // namespace processes
