// SPDX-License-Identifier: Apache-2.0
#include "messaging/failure_log.h"

#include "messaging/bounds.h"

namespace platform {

namespace {

char const *doing(Phase phase) {
    switch (phase) {
        case Phase::connect:
            return "connecting";
        case Phase::send:
            return "sending";
        case Phase::wait:
            return "waiting";
        case Phase::read:
            return "reading";
    }
    return "";  // GCOV_EXCL_LINE: there is no other phase
}

std::string nameOf(Address const *peer) {
    return peer == nullptr ? "a service that is not known any more"
                           : "service " + peer->service + ", target \"" + peer->target + "\"";
}

}  // namespace

void FailureLog::tell(Hold &hold, Phase phase, Address const *peer, std::string_view reason,
                      Clock::time_point now) noexcept try {
    if (repetitions_.size() >= limits::told_failures) {
        tellRest(hold);
        repetitions_.clear();
    }
    std::string const name = nameOf(peer);
    Repetition &repetition = repetitions_[{phase, name}];
    bool const is_first = repetition.total == 0;
    ++repetition.total;
    if (!is_first && now - repetition.told < limits::failure_pause) {
        ++repetition.untold;
        return;
    }
    int const length = static_cast<int>(reason.size());
    if (is_first) {
        hold.warn("a call failed with status 4 while %s, %s: %.*s", doing(phase), name.c_str(), length,
                  reason.data());
    } else {
        hold.warn("a call failed with status 4 while %s, %s: %.*s (%llu so far, %llu of them not told)",
                  doing(phase), name.c_str(), length, reason.data(), repetition.total, repetition.untold);
    }
    repetition.told = now;
    repetition.untold = 0;
} catch (std::bad_alloc const &) {
    // Not told; the call itself has its status.
}

void FailureLog::tellRest(Hold &hold) noexcept {
    for (auto &[key, repetition] : repetitions_) {
        if (repetition.untold != 0) {
            hold.warn("calls failed with status 4 while %s, %s: %llu more since the last line, %llu in all",
                      doing(key.first), key.second.c_str(), repetition.untold, repetition.total);
            repetition.untold = 0;
        }
    }
}

}  // namespace platform
