// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_LOOP_H
#define KORVO_SIMULATOR_LOOP_H

#include <chrono>
#include <optional>

namespace simulator {

/// What a thread waits for between two pieces of work: a moment, a call from another thread, or the signal that ends the
/// program. Waiting and waking take no memory, so that they work when there is none left.
class Loop {
  public:
    using Clock = std::chrono::steady_clock;

    /// SIGINT and SIGTERM are blocked from here on, for this thread and those that it starts: they end wait(), whenever
    /// they come. Throws std::system_error.
    Loop();
    ~Loop();

    Loop(Loop const &) = delete;
    Loop &operator=(Loop const &) = delete;

    /// Waits until then (without a moment: as long as it takes), or until wake() has been called since the last wait().
    /// False when the program is to end.
    bool wait(std::optional<Clock::time_point> until) noexcept;

    /// On any thread.
    void wake() noexcept;

  private:
    int signals_ = -1;
    int wake_ = -1;
};

}  // namespace simulator

#endif
