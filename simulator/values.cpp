// SPDX-License-Identifier: Apache-2.0
#include "simulator/values.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>
#include <limits>
#include <optional>
#include <stdexcept>

#include "simulator/log.h"
#include "simulator/refused.h"

namespace simulator {

namespace {

namespace json = boost::json;
using operations::Kind;

/// Numbers may be written in any form as long as they are whole: a client's numbers are doubles.
std::optional<std::uint32_t> wholeNumber(json::value const &value) {
    constexpr std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
    if (std::int64_t const *const number = value.if_int64()) {
        if (*number >= 0 && *number <= std::int64_t{most}) {
            return static_cast<std::uint32_t>(*number);
        }
    } else if (double const *const real = value.if_double()) {
        if (*real >= 0 && *real <= double{most}) {
            auto const whole = static_cast<std::uint32_t>(*real);
            if (static_cast<double>(whole) == *real) {
                return whole;
            }
        }
    }
    // What is left as an unsigned 64-bit number is beyond the range of a signed one.
    return std::nullopt;
}

std::optional<std::string> plainText(json::value const &value) {
    json::string const *const text = value.if_string();
    return text == nullptr ? std::nullopt
                           : std::optional<std::string>(std::in_place, text->data(), text->size());
}

template <typename Element, typename Read>
std::optional<Value> readList(json::value const &value, Read read_element) {
    json::array const *const array = value.if_array();
    if (array == nullptr) {
        return std::nullopt;
    }
    std::vector<Element> list;
    list.reserve(array->size());
    for (json::value const &element : *array) {
        std::optional<Element> read = read_element(element);
        if (!read) {
            return std::nullopt;
        }
        list.push_back(std::move(*read));
    }
    return list;
}

template <typename T>
std::optional<Value> asValue(std::optional<T> read) {
    return read ? std::optional<Value>(std::move(*read)) : std::nullopt;
}

std::optional<Value> readValue(Kind kind, json::value const &value) {
    switch (kind) {
        case Kind::number:
            return asValue(wholeNumber(value));
        case Kind::flag:
            return value.is_bool() ? std::optional<Value>(value.get_bool()) : std::nullopt;
        case Kind::text:
            return asValue(plainText(value));
        case Kind::texts:
            return readList<std::string>(value, plainText);
        case Kind::numbers:
            return readList<std::uint32_t>(value, wholeNumber);
        case Kind::none:  // GCOV_EXCL_LINE: a row ends there
            break;        // GCOV_EXCL_LINE
    }
    return std::nullopt;  // GCOV_EXCL_LINE
}

char const *expectation(Kind kind) {
    switch (kind) {
        case Kind::number:
            return "a whole number from 0 to 4294967295";
        case Kind::flag:
            return "true or false";
        case Kind::text:
            return "a string";
        case Kind::texts:
            return "an array of strings";
        case Kind::numbers:
            return "an array of whole numbers from 0 to 4294967295";
        case Kind::none:  // GCOV_EXCL_LINE: a row ends there
            break;        // GCOV_EXCL_LINE
    }
    return "nothing";  // GCOV_EXCL_LINE
}

}  // namespace

void readMembers(json::object const &object, operations::Member const *row, Values &values) {
    values.clear();
    for (operations::Member const *member = row; member->kind != Kind::none; ++member) {
        json::value const *const found = object.if_contains(member->name);
        if (found == nullptr) {
            throw malformed(std::string("the member \"") + member->name + "\" is missing");
        }
        std::optional<Value> value = readValue(member->kind, *found);
        if (!value) {
            throw malformed(std::string("the member \"") + member->name + "\" must be " +
                            expectation(member->kind));
        }
        values.push_back(std::move(*value));
    }
}

void writeMembers(JsonWriter &writer, operations::Member const *row, Values const &values) {
    for (std::size_t n = 0; row[n].kind != Kind::none; ++n) {
        char const *const name = row[n].name;
        Value const &value = values[n];
        switch (row[n].kind) {
            case Kind::number:
                writer.number(name, std::get<std::uint32_t>(value));
                break;
            case Kind::flag:
                writer.flag(name, std::get<bool>(value));
                break;
            case Kind::text:
                writer.text(name, std::get<std::string>(value));
                break;
            case Kind::texts:
                writer.list(name, std::get<Texts>(value));
                break;
            case Kind::numbers:
                writer.list(name, std::get<Numbers>(value));
                break;
            case Kind::none:  // GCOV_EXCL_LINE: a row ends there
                break;        // GCOV_EXCL_LINE
        }
    }
}

boost::json::object objectOf(operations::Member const *row, Values const &values, Telling telling) {
    constexpr std::size_t longest_text = 200;
    constexpr std::size_t longest_list = 20;
    auto const shown = [telling](std::string const &text) {
        return telling == Telling::shortened && text.size() > longest_text
                   ? beginningOf(text, longest_text) + "..."
                   : text;
    };
    auto const listed = [telling](auto const &list, auto show) {
        json::array array;
        for (auto const &element : list) {
            if (telling == Telling::shortened && array.size() == longest_list) {
                break;
            }
            array.push_back(json::value(show(element)));
        }
        return array;
    };
    json::object object;
    for (std::size_t n = 0; row[n].kind != Kind::none; ++n) {
        json::value &member = object[row[n].name];
        if (telling != Telling::all && row[n].name == secret_member) {
            continue;
        }
        if (auto const *const text = std::get_if<std::string>(&values[n])) {
            member = shown(*text);
        } else if (auto const *const texts = std::get_if<Texts>(&values[n])) {
            member = listed(*texts, shown);
        } else if (auto const *const numbers = std::get_if<Numbers>(&values[n])) {
            member = listed(*numbers, [](std::uint32_t number) { return number; });
        } else if (auto const *const flag = std::get_if<bool>(&values[n])) {
            member = *flag;
        } else {
            member = std::get<std::uint32_t>(values[n]);
        }
    }
    return object;
}

std::size_t memberIndex(operations::Member const *row, std::string_view name) {
    std::size_t n = 0;
    while (row[n].kind != Kind::none) {
        if (name == row[n].name) {
            return n;
        }
        ++n;
    }
    throw std::logic_error("no member " + std::string(name) + " in this row of the operation table");
}

}  // namespace simulator
