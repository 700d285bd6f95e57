// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PROCESSES_KILL_H
#define KORVO_TESTS_PROCESSES_KILL_H

#include <sys/types.h>

namespace processes {

/// SIGKILL for a child that nobody has waited for yet, or for this process. Where a build counts what the tests run, the
/// process writes its counts first.
void kill(pid_t process);

}  // namespace processes

#endif
