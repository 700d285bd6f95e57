// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_EVENTS_H
#define KORVO_TOOL_EVENTS_H

#include <chrono>
#include <deque>
#include <mutex>
#include <optional>
#include <string>

namespace tool {

/// What another thread hands to the main one, which waits for it, for an interruption, for the end of the reader of
/// standard output, or for a moment.
class Waiter {
  public:
    using Clock = std::chrono::steady_clock;

    Waiter();
    ~Waiter();
    Waiter(Waiter const &) = delete;
    Waiter &operator=(Waiter const &) = delete;

    void add(std::string text);
    /// Nothing at an interruption or at the moment; throws ReaderGone where nobody reads any more.
    std::optional<std::string> next(std::optional<Clock::time_point> until);

  private:
    int descriptor_;
    std::mutex mutex_;
    std::deque<std::string> texts_;
};

}  // namespace tool

#endif
