// SPDX-License-Identifier: Apache-2.0
#include "settings/setting_value.h"

#include <algorithm>
#include <array>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <cmath>
#include <stdexcept>

#include "settings/bounds.h"
#include "settings/exact_json.h"

namespace platform {

namespace {

namespace bj = boost::json;

constexpr std::array<std::string_view, std::variant_size_v<Value>> type_names = {
    "string", "json", "int", "bool", "double", "arrayofstring", "arrayofint", "arrayofbool", "arrayofdouble"};

// Each of the three conversions below has one function for each kind of element, and one for all lists.

std::string refusal(std::string const &text) {
    return exact_json::isUtf8(text) ? "" : "it is no UTF-8";
}

std::string refusal(JsonText const &json) {
    bj::value ignored;
    std::string const fault = exact_json::read(json.text, limits::json_depth, ignored);
    return fault.empty() ? "" : "it is no JSON text: " + fault;
}

std::string refusal(int) {
    return {};
}

std::string refusal(bool) {
    return {};
}

std::string refusal(double number) {
    return std::isfinite(number) ? "" : "it is no finite number";
}

template <typename T>
std::string refusal(std::vector<T> const &list) {
    std::size_t index = 0;
    for (T const &element : list) {
        if (std::string const why = refusal(element); !why.empty()) {
            return "element " + std::to_string(index) + ": " + why;
        }
        ++index;
    }
    return {};
}

bj::value written(std::string const &text) {
    return bj::value(bj::string_view(text));
}

bj::value written(JsonText const &json) {
    return written(json.text);
}

bj::value written(int number) {
    return bj::value(number);
}

bj::value written(bool flag) {
    return bj::value(flag);
}

bj::value written(double number) {
    return bj::value(number);
}

template <typename T>
bj::value written(std::vector<T> const &list) {
    bj::array array;
    array.reserve(list.size());
    for (T const &element : list) {
        array.push_back(written(element));
    }
    return array;
}

void readBack(bj::value const &value, std::string &text) {
    if (!value.is_string()) {
        throw std::invalid_argument("is no text");
    }
    text.assign(value.get_string().data(), value.get_string().size());
    if (text.find('\0') != std::string::npos) {
        throw std::invalid_argument("holds a NUL character, where C texts end");
    }
}

/// A text is taken for the JSON text that it holds, anything else for itself: people write the latter.
void readBack(bj::value const &value, JsonText &json) {
    if (!value.is_string()) {
        json.text = bj::serialize(value);
        return;
    }
    readBack(value, json.text);
    if (std::string const why = refusal(json); !why.empty()) {
        throw std::invalid_argument("is a text and does not hold JSON: " + why);
    }
}

void readBack(bj::value const &value, int &number) {
    bj::error_code failure;
    number = value.to_number<int>(failure);
    if (failure) {
        throw std::invalid_argument("is no whole number of 32 bits");
    }
}

void readBack(bj::value const &value, bool &flag) {
    if (!value.is_bool()) {
        throw std::invalid_argument("is neither true nor false");
    }
    flag = value.get_bool();
}

void readBack(bj::value const &value, double &number) {
    bj::error_code failure;
    number = value.to_number<double>(failure);
    if (failure) {
        throw std::invalid_argument("is no number");
    }
}

template <typename T>
void readBack(bj::value const &value, std::vector<T> &list) {
    if (!value.is_array()) {
        throw std::invalid_argument("is no list");
    }
    for (bj::value const &element : value.get_array()) {
        T read{};
        readBack(element, read);
        list.push_back(std::move(read));
    }
}

/// An empty value of the type with number `index`.
template <std::size_t index = 0>
Value emptyValue(std::size_t wanted) {
    if constexpr (index + 1 < std::variant_size_v<Value>) {
        if (wanted != index) {
            return emptyValue<index + 1>(wanted);
        }
    }
    return Value(std::in_place_index<index>, std::variant_alternative_t<index, Value>{});
}

}  // namespace

std::string_view nameOf(korvo_core_settings_type type) {
    return type < type_names.size() ? type_names[type] : "unknown";
}

std::optional<korvo_core_settings_type> typeNamed(std::string_view name) {
    auto const found = std::find(type_names.begin(), type_names.end(), name);
    if (found == type_names.end()) {
        return std::nullopt;
    }
    return static_cast<korvo_core_settings_type>(found - type_names.begin());
}

std::string whyRefused(Value const &value) {
    return std::visit([](auto const &kept) { return refusal(kept); }, value);
}

bj::value toJson(Value const &value) {
    return std::visit([](auto const &kept) { return written(kept); }, value);
}

Value fromJson(korvo_core_settings_type type, bj::value const &written) {
    Value value = emptyValue(type);
    std::visit([&](auto &kept) { readBack(written, kept); }, value);
    return value;
}

}  // namespace platform
