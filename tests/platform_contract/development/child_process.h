// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PLATFORM_CHILD_PROCESS_H
#define KORVO_TESTS_PLATFORM_CHILD_PROCESS_H

#include <sys/types.h>

#include <functional>

/// A forked process, killed and waited for at the end.
class ChildProcess {
  public:
    /// Runs `work` in the child and returns when the child has called the function that `work` gets.
    explicit ChildProcess(std::function<void(std::function<void()> const &ready)> const &work);
    ~ChildProcess();

    ChildProcess(ChildProcess const &) = delete;
    ChildProcess &operator=(ChildProcess const &) = delete;

    bool isReady() const { return is_ready_; }
    pid_t id() const { return id_; }

    void signal(int number) const;
    void kill();

  private:
    pid_t id_ = -1;
    bool is_ready_ = false;
};

/// Runs `check` in a forked process and gives its result there; -1 when it crashed or hung.
int resultInChild(std::function<int()> const &check);

/// A service "sample" in a process of its own. It echoes each command as the response, except "silent", which it never
/// answers.
class ServiceProcess : public ChildProcess {
  public:
    ServiceProcess();
};

#endif
