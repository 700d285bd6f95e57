// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_CORE_PRIVATE_EXACT_NUMBER_H
#define KORVO_CORE_PRIVATE_EXACT_NUMBER_H

#include <charconv>
#include <cmath>
#include <optional>
#include <string>

namespace platform {

/// The number that JSON's digits stand for, exactly: the JSON parser's own result, `estimate`, may be a few digits off at
/// the end, and numbers come back as they were sent. One too close to zero to be told from it is 0; nothing for one that is
/// too large.
inline std::optional<double> exactNumber(std::string const &digits, double estimate) {
    double number = 0;
    auto const converted = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (converted.ec != std::errc::result_out_of_range) {
        return number;
    }
    if (std::fabs(estimate) < 1) {
        return 0.0;
    }
    return std::nullopt;
}

}  // namespace platform

#endif
