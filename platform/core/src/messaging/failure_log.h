// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_FAILURE_LOG_H
#define KORVO_PLATFORM_FAILURE_LOG_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "base/deadline.h"
#include "base/notes.h"
#include "messaging/requests.h"

namespace platform {

/// What a call was doing when it failed with status 4.
enum class Phase { connect, send, wait, read };

/// Tells of each call that ends with status 4 why, in which phase and with whom; of those that follow within a second of
/// one alike, their number. What memory is too short for is not told. It has no lock of its own.
class FailureLog {
  public:
    /// `peer` is NULL where nobody knows it any more.
    void tell(Hold &hold, Phase phase, Address const *peer, std::string_view reason,
              Clock::time_point now = Clock::now()) noexcept;

    /// Tells of those that have only been counted.
    void tellRest(Hold &hold) noexcept;

  private:
    struct Repetition {
        Clock::time_point told{};
        unsigned long long total = 0;
        unsigned long long untold = 0;
    };

    /// By phase and peer.
    std::map<std::pair<Phase, std::string>, Repetition> repetitions_;
};

}  // namespace platform

#endif
