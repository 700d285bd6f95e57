// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_SETTING_VALUE_H
#define KORVO_PLATFORM_SETTING_VALUE_H

#include <boost/json/value.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "korvo_core.h"

namespace platform {

/// A JSON text, kept character by character.
struct JsonText {
    JsonText() = default;
    explicit JsonText(std::string written) : text(std::move(written)) {}
    std::string text;
};

/// The value of a setting. The alternatives stand in the order of korvo_core_settings_type.
using Value = std::variant<std::string, JsonText, int, bool, double, std::vector<std::string>,
                           std::vector<int>, std::vector<bool>, std::vector<double>>;

inline korvo_core_settings_type typeOf(Value const &value) {
    return static_cast<korvo_core_settings_type>(value.index());
}

/// The name of a type in files and messages, as in the names of the C functions.
std::string_view nameOf(korvo_core_settings_type type);
std::optional<korvo_core_settings_type> typeNamed(std::string_view name);

/// Why a value cannot be kept, in a few words; empty when it can.
std::string whyRefused(Value const &value);

/// How a value is written in a file.
boost::json::value toJson(Value const &value);

/// The value of a type that a file holds. Throws std::invalid_argument with what is wrong with it.
Value fromJson(korvo_core_settings_type type, boost::json::value const &written);

}  // namespace platform

#endif
