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
    return "";
}

std::string nameOf(Address const *peer) {
    return peer == nullptr ? "a service that is not known any more"
                           : "service " + peer->service + ", target \"" + peer->target + "\"";
}

}  // namespace

void FailureLog::tell(Hold &hold, Phase phase, Address const *peer, std::string_view reason,
                      Clock::time_point now) {
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
    std::string line = "a call failed with status 4 while " + std::string(doing(phase)) + ", " + name + ": " +
                       std::string(reason);
    if (!is_first) {
        line += " (" + std::to_string(repetition.total) + " so far, " + std::to_string(repetition.untold) +
                " of them not told)";
    }
    hold.warn(std::move(line));
    repetition.told = now;
    repetition.untold = 0;
}

void FailureLog::tellRest(Hold &hold) {
    for (auto &[key, repetition] : repetitions_) {
        if (repetition.untold != 0) {
            hold.warn("calls failed with status 4 while " + std::string(doing(key.first)) + ", " +
                      key.second + ": " + std::to_string(repetition.untold) + " more since the last line, " +
                      std::to_string(repetition.total) + " in all");
            repetition.untold = 0;
        }
    }
}

}  // namespace platform
