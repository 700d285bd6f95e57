/* SPDX-License-Identifier: Apache-2.0 */
/* Linked into each program and library that is built to count what tests run: a process writes its counts when it returns
 * from main(), and with this also when it leaves by _exit() and when a test kills it, which then sends SIGRTMAX in place of
 * SIGKILL (processes/kill.h). Each library has counts of its own, and so a handler of its own, which goes on to the one
 * before. */
#define _GNU_SOURCE
#include <signal.h>
#include <stddef.h>
#include <sys/syscall.h>
#include <unistd.h>

void __gcov_dump(void);

static struct sigaction before;

static void write_counts(int number) {
    __gcov_dump();
    if (before.sa_handler != SIG_DFL) {
        before.sa_handler(number);
    } else if (number == SIGRTMAX) {
        (void)kill(getpid(), SIGKILL);
    }
}

void _exit(int code) {
    struct sigaction now;
    if (sigaction(SIGRTMAX, NULL, &now) == 0 && now.sa_handler != SIG_DFL) {
        now.sa_handler(0);
    }
    for (;;) {
        (void)syscall(SYS_exit_group, code);
    }
}

__attribute__((constructor)) static void install(void) {
    struct sigaction action = {0};
    action.sa_handler = write_counts;
    (void)sigfillset(&action.sa_mask);
    (void)sigaction(SIGRTMAX, &action, &before);
}

/* Of a library that is unloaded before those that were loaded after it. */
__attribute__((destructor)) static void remove_again(void) {
    struct sigaction now;
    if (sigaction(SIGRTMAX, NULL, &now) == 0 && now.sa_handler == write_counts) {
        (void)sigaction(SIGRTMAX, &before, NULL);
    }
}
