// SPDX-License-Identifier: Apache-2.0
#include <exception>
#include <string>

#include "simulator/handlers/handlers.h"

namespace simulator::handlers {

namespace {

std::string text(Version version) {
    return std::to_string(version.major) + "." + std::to_string(version.minor);
}

/// One line for each version that is not ours; of so many at most, since a client may name any.
void tellOfOther(Call &call, Version initiator) noexcept {
    constexpr std::size_t most_told = 16;
    try {
        if (call.told_versions.size() < most_told &&
            call.told_versions.emplace(initiator.major, initiator.minor).second) {
            call.remarks.warnings.push_back("a client speaks interface version " + text(initiator) +
                                            ", this service " + text(call.version) +
                                            "; it is served like all others");
        }
    } catch (std::exception const &) {
        // The answer is what counts.
    }
}

}  // namespace

// The initiator's own version changes nothing: it compares the two itself.
void getTargetVersion(Call &call) {
    call.response.number("target_major", call.version.major);
    call.response.number("target_minor", call.version.minor);
    Version const initiator{call.input<std::uint32_t>(0), call.input<std::uint32_t>(1)};
    if (initiator.major != call.version.major || initiator.minor != call.version.minor) {
        tellOfOther(call, initiator);
    }
}

}  // namespace simulator::handlers
