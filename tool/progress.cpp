// SPDX-License-Identifier: Apache-2.0
#include "tool/progress.h"

#include <unistd.h>

#include <iostream>

namespace tool {
namespace {

constexpr std::size_t width = 40;
constexpr char const *to_line_start = "\r\x1b[K";

}  // namespace

Progress::Progress(std::string label, std::size_t total)
    : label_(std::move(label)),
      total_(total),
      wanted_(::isatty(STDERR_FILENO) == 1),
      next_(Clock::now() + std::chrono::seconds(1)) {}

Progress::~Progress() {
    if (shown_) {
        std::cerr << to_line_start << std::flush;
    }
}

void Progress::step() {
    ++done_;
    if (!wanted_ || Clock::now() < next_) {
        return;
    }
    next_ = Clock::now() + std::chrono::milliseconds(100);
    shown_ = true;
    std::size_t const filled = total_ == 0 ? width : width * done_ / total_;
    std::cerr << to_line_start << label_ << " [" << std::string(filled, '#')
              << std::string(width - filled, ' ') << "] " << done_ << "/" << total_ << std::flush;
}

}  // namespace tool
