// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_REFUSAL_LOG_H
#define KORVO_SIMULATOR_REFUSAL_LOG_H

#include <chrono>
#include <functional>
#include <string>

#include "simulator/log.h"

namespace simulator {

/// Says why commands are refused, at most twenty times a second: a client that sends nothing but nonsense must not fill
/// the log. For one thread at a time.
class RefusalLog {
  public:
    using Time = std::chrono::steady_clock::time_point;

    explicit RefusalLog(Log const &log, std::function<Time()> real_time = std::chrono::steady_clock::now);

    void tell(std::string const &command, std::string const &why);

  private:
    Log const &log_;
    std::function<Time()> real_time_;
    Time since_{};
    unsigned int refusals_ = 0;
};

}  // namespace simulator

#endif
