// SPDX-License-Identifier: Apache-2.0
#include "simulator/refusal_log.h"

#include <utility>

namespace simulator {

RefusalLog::RefusalLog(Log const &log, std::function<Time()> real_time)
    : log_(log), real_time_(std::move(real_time)) {}

void RefusalLog::tell(std::string const &command, std::string const &why) {
    constexpr unsigned int most_a_second = 20;
    Time const now = real_time_();
    if (now - since_ >= std::chrono::seconds(1)) {
        if (refusals_ > most_a_second) {
            log_.warning(std::to_string(refusals_ - most_a_second) + " more commands were refused");
        }
        since_ = now;
        refusals_ = 0;
    }
    if (++refusals_ <= most_a_second) {
        log_.warning(command + " refused: " + why);
    }
}

}  // namespace simulator
