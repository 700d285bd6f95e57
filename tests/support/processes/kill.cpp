// SPDX-License-Identifier: Apache-2.0
#include "processes/kill.h"

#include <sys/wait.h>

#include <csignal>

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
    (void)becomesTrue([&] { return hasEnded(process); }, milliseconds(5'000));
#endif
    (void)::kill(process, SIGKILL);
}

}  // namespace processes
