// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TOOL_PROGRESS_H
#define KORVO_TOOL_PROGRESS_H

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

namespace tool {

/// A bar on standard error where that is a terminal, once something takes longer than a second.
class Progress {
  public:
    Progress(std::string label, std::size_t total);
    ~Progress();
    Progress(Progress const &) = delete;
    Progress &operator=(Progress const &) = delete;

    void step();

  private:
    using Clock = std::chrono::steady_clock;

    std::string label_;
    std::size_t total_;
    std::size_t done_ = 0;
    bool wanted_;
    bool shown_ = false;
    Clock::time_point next_;
};

}  // namespace tool

#endif
