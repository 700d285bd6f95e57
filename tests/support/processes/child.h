// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PROCESSES_CHILD_H
#define KORVO_TESTS_PROCESSES_CHILD_H

#include <sys/types.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "processes/limits.h"
#include "processes/text_stream.h"

namespace processes {

/// A program to run. Variables are set in the child beside the environment of this process.
struct Command {
    std::string program;
    std::vector<std::string> arguments;
    std::vector<std::pair<std::string, std::string>> environment;
    /// The kernel ends the child when the thread that started it ends: for what would run forever.
    bool ends_with_us = false;
    /// Belongs to the machine that runs the tests, and not to what was built, which an emulator may have to run.
    bool is_of_this_machine = false;
};

/// How a process ended: by itself with a code, or by a signal.
struct Exit {
    int code = -1;
    int signal = 0;
};

inline bool operator==(Exit const &left, Exit const &right) {
    return left.code == right.code && left.signal == right.signal;
}

std::ostream &operator<<(std::ostream &out, Exit const &exit);

constexpr Exit exited(int code) {
    return {code, 0};
}
constexpr Exit killedBy(int signal) {
    return {-1, signal};
}

/// A child process, with what it writes. Killed at the end of its life if it still runs. The test fails when a sanitizer
/// has found something in it.
class Child {
  public:
    explicit Child(Command const &command);
    ~Child();

    Child(Child const &) = delete;
    Child &operator=(Child const &) = delete;

    TextStream const &out() const { return *out_; }
    TextStream const &errors() const { return *errors_; }

    pid_t pid() const { return pid_; }
    bool running() const;
    /// Nothing happens when the child has ended.
    void signal(int number);
    /// Nothing when the child still runs at the limit. Its output is complete afterwards.
    std::optional<Exit> wait(milliseconds limit = patience);

  private:
    pid_t pid_ = -1;
    std::unique_ptr<TextStream> out_;
    std::unique_ptr<TextStream> errors_;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::optional<Exit> exit_;
    std::thread waiter_;
};

/// What became of a program that was run to its end.
struct Finished {
    std::optional<Exit> exit;
    std::string out;
    std::string errors;
};

/// The open descriptors and the threads of a process.
struct Resources {
    std::size_t descriptors = 0;
    std::size_t threads = 0;
};
Resources resourcesOf(pid_t process);

Finished run(Command const &command, milliseconds limit = patience);

}  // namespace processes

#endif
