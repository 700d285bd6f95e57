// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_BENCH_WORKERS_H
#define KORVO_BENCH_WORKERS_H

#include <sys/types.h>

#include <functional>
#include <vector>

/// Processes that work when they are told to, all at once, as long as the object lives.
class Workers {
  public:
    using Work = std::function<void()>;

    /// Starts the processes. Each makes itself ready with `prepare` and then does the work that it returned whenever
    /// it is told. Throws std::runtime_error.
    Workers(int count, std::function<Work()> const &prepare);
    ~Workers();

    Workers(Workers const &) = delete;
    Workers &operator=(Workers const &) = delete;

    std::vector<pid_t> const &processes() const { return processes_; }

    /// Tells all to work, and waits until all have done so; throws std::runtime_error when one has ended.
    void work() const;

  private:
    std::vector<pid_t> processes_;
    /// One socket for each.
    std::vector<int> sockets_;
};

#endif
