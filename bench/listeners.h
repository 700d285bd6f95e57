// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_LISTENERS_H
#define KORVO_BENCH_LISTENERS_H

#include <sys/types.h>

#include <functional>
#include <vector>

/// Processes that listen to this one, as long as the object lives.
class Listeners {
  public:
    /// What a listener calls to tell that it has come so far.
    using Tell = std::function<void()>;

    /// Starts the processes. Each runs `listen` with its number and ends with it. Throws std::runtime_error.
    Listeners(int count, std::function<void(int, Tell const &)> const &listen);
    ~Listeners();

    Listeners(Listeners const &) = delete;
    Listeners &operator=(Listeners const &) = delete;

    std::vector<pid_t> const &processes() const { return processes_; }

    /// Waits until as many have told as there are; throws std::runtime_error when that takes 10 seconds.
    void waitForAll() const;

  private:
    std::vector<pid_t> processes_;
    int told_;
};

#endif
