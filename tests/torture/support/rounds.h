// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_TORTURE_ROUNDS_H
#define KORVO_TESTS_TORTURE_ROUNDS_H

// Work that is done again and again while one more allocation succeeds each time.
//
// A round that fails the test, crashes or hangs is named with the number of its allocation, and
// KORVO_TORTURE_ONLY="<nth> <count>" with --gtest_filter repeats it alone. KORVO_TORTURE=long looks at every allocation
// in every pattern; without it the rarer patterns look at a part of them.

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "live_blocks/live_blocks.h"
#include "support/long_form.h"

namespace torture {

/// Whose allocations have failed, one or several: the client library's own, or those in a function of the platform that it
/// has called. Where the C library has no memory to start a thread, the system refuses that. `unknown` where the stack
/// cannot be read.
struct Culprits {
    bool client = false;
    bool platform = false;
    bool thread_start = false;
    bool unknown = false;
};

/// Those of the round so far.
Culprits culprits();

/// What fails in a round.
class Fault {
  public:
    Fault(std::size_t nth, std::size_t count) : nth_(nth), count_(count) {}

    /// From here on allocations are counted, and fail, until stop().
    void start() { failing_.emplace(nth_, count_); }
    void stop() {
        if (failing_) {
            failing_->stop();
        }
    }
    std::size_t failed() const { return failing_ ? failing_->failed() : 0; }
    bool isForEver() const { return count_ == live_blocks::for_ever; }

    /// Whether all has failed that is going to.
    bool isOver() const { return failed() >= count_; }

  private:
    std::size_t nth_;
    std::size_t count_;
    std::optional<live_blocks::FailingAllocations> failing_;
};

/// Blocks that a round may leave: sizes, each as often as it stands there.
using Leavings = std::vector<std::size_t>;

/// Does `round` for the first allocation, the second and so on, until one in which nothing failed; and so with one
/// failure, two and three in a row, and one without end. Each round is a thread of its own; what it has allocated must be
/// free at its end, but for `leavings`. In the short form only each `stride`th round is done.
void failEveryAllocation(std::string const &what, std::function<void(Fault &)> const &round,
                         Leavings const &leavings = {}, std::size_t stride = 1);

/// The same with rounds that are processes of their own: `round` starts one whose allocations fail like that, and gives whether
/// any did.
void failEveryAllocationOfAProcess(std::string const &what,
                                   std::function<bool(std::size_t nth, std::size_t count)> const &round,
                                   std::size_t stride = 1);

/// Does `work` once, in a thread of its own that is watched like a round above, and must leave nothing. It gives whether
/// anything failed.
void doOnce(std::string const &what, std::function<bool()> const &work);

/// Has the log write what is at least so important. The logger without a name stays once it has been used, so this is done
/// before anything fails.
void openLog(char const *level = "warning");

/// Starts as many threads at once as any work does. The C library keeps the stacks of threads that have ended, and with them what
/// a library that was loaded late has for each thread; only the next thread on a stack frees that.
void useAllStacks();

}  // namespace torture

#endif
