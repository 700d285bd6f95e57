// SPDX-License-Identifier: Apache-2.0
// initiator_init and initiator_deinit with a running service: their time, and the system calls of init.

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <stdexcept>
#include <vector>

#include "korvo_api_action_engine.h"
#include "program.h"
#include "service_process.h"
#include "side_by_side.h"

namespace {

void *begin() {
    void *handle = nullptr;
    require(korvo_api_action_engine_initiator_init(nullptr, nullptr, &handle, 0, "bench"), "initiator_init");
    return handle;
}

void end(void *handle) {
    require(korvo_api_action_engine_initiator_deinit(handle), "initiator_deinit");
}

void measureTimes(Run &run) {
    std::vector<double> begins;
    std::vector<double> ends;
    end(begin());
    for (int round = 0; round < run.rounds(401); ++round) {
        double const start = microsecondsOf(CLOCK_MONOTONIC);
        void *const handle = begin();
        double const middle = microsecondsOf(CLOCK_MONOTONIC);
        end(handle);
        begins.push_back(middle - start);
        ends.push_back(microsecondsOf(CLOCK_MONOTONIC) - middle);
    }
    run.results.value("initiator_init", "time", "us", spreadOf(begins));
    run.results.value("initiator_deinit", "time", "us", spreadOf(ends));
}

struct SystemCalls {
    int all;
    int for_entropy;
};

/// A system call that nothing else here makes, so that it can mark where counting begins and ends.
constexpr long mark = SYS_getppid;

/// In the process that is traced. Not its first handle is counted, for which libraries look around once.
[[noreturn]] void beginWhileTraced() {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
        _exit(1);
    }
    end(begin());
    (void)raise(SIGSTOP);
    (void)syscall(mark);
    void *const handle = begin();
    (void)syscall(mark);
    end(handle);
    _exit(0);
}

/// Lets the process run to its next system call and returns which one it is.
long nextSystemCall(pid_t process) {
    for (;;) {
        int status = 0;
        require(ptrace(PTRACE_SYSCALL, process, nullptr, nullptr), "ptrace");
        require(waitpid(process, &status, 0) == process ? 0 : -1, "waitpid");
        if (!WIFSTOPPED(status)) {
            throw std::runtime_error("the process that is traced has ended");
        }
        __ptrace_syscall_info info{};
        require(ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof info, &info) > 0 ? 0 : -1, "ptrace");
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
            return static_cast<long>(info.entry.nr);
        }
    }
}

SystemCalls countSystemCalls() {
    pid_t const process = fork();
    if (process == 0) {
        beginWhileTraced();
    }
    int status = 0;
    require(waitpid(process, &status, 0) == process && WIFSTOPPED(status) ? 0 : -1, "waitpid");
    require(ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL), "ptrace");
    SystemCalls calls{0, 0};
    while (nextSystemCall(process) != mark) {
    }
    for (long number = nextSystemCall(process); number != mark; number = nextSystemCall(process)) {
        ++calls.all;
        if (number == SYS_getrandom) {
            ++calls.for_entropy;
        }
    }
    require(ptrace(PTRACE_DETACH, process, nullptr, nullptr), "ptrace");
    require(waitpid(process, &status, 0) == process ? 0 : -1, "waitpid");
    return calls;
}

void measureStartUp(Run &run) {
    useOneCore();
    ServiceProcess const service(KORVO_SIMULATOR);
    measureTimes(run);
    SystemCalls const calls = countSystemCalls();
    auto const count = [&run](char const *which, int number) {
        double const value = number;
        run.results.value("initiator_init", which, "calls", {value, value, value});
    };
    count("system calls", calls.all);
    count("system calls for entropy", calls.for_entropy);
}

}  // namespace

int main(int argc, char **argv) {
    return runBenchmark(argc, argv, measureStartUp);
}
