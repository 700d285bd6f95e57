// SPDX-License-Identifier: Apache-2.0
#include "tool/marshalling.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/value.hpp>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>

#include "tool/failure.h"

namespace tool {
namespace {

namespace json = boost::json;

std::optional<unsigned int> numberIn(json::value const &value) {
    std::uint64_t number = 0;
    if (value.is_uint64()) {
        number = value.get_uint64();
    } else if (value.is_int64() && value.get_int64() >= 0) {
        number = static_cast<std::uint64_t>(value.get_int64());
    } else {
        return {};
    }
    if (number > std::numeric_limits<unsigned int>::max()) {
        return {};
    }
    return static_cast<unsigned int>(number);
}

[[noreturn]] void refuse(Member const &member) {
    throw Failure(Exit::usage, std::string("\"") + member.name + "\" is to be " + typeOf(member.kind));
}

/// C texts end at their first zero byte.
char *cText(Member const &member, std::string &text) {
    if (text.find('\0') != std::string::npos) {
        throw Failure(Exit::usage, std::string("\"") + member.name + "\" holds the character U+0000",
                      "leave it out");
    }
    return text.data();
}

}  // namespace

char const *typeOf(Kind kind) {
    switch (kind) {
        case Kind::number:
            return "a whole number from 0 to 4294967295";
        case Kind::flag:
            return "true or false";
        case Kind::text:
            return "a text";
        case Kind::texts:
            return "a list of texts";
        case Kind::numbers:
            break;
    }
    return "a list of whole numbers from 0 to 4294967295";
}

Inputs::Inputs(Operation const &operation, json::object const &members) {
    for (auto const &member : members) {
        bool const known = std::any_of(operation.inputs.begin(), operation.inputs.end(),
                                       [&](Member const &input) { return member.key() == input.name; });
        if (!known && member.key() != "command") {
            throw Failure(
                Exit::usage,
                std::string(operation.method) + " has no input \"" + std::string(member.key()) + "\"",
                std::string("see: korvo-action-engine describe ") + operation.method);
        }
    }
    for (Member const &input : operation.inputs) {
        auto const *const value = members.if_contains(input.name);
        if (value == nullptr) {
            throw Failure(Exit::usage,
                          std::string(operation.method) + " lacks its input \"" + input.name + "\", " +
                              typeOf(input.kind),
                          std::string("see: korvo-action-engine describe ") + operation.method);
        }
        slots_.push_back(slotFor(input, *value));
    }
    slots_.emplace_back();
}

Slot Inputs::slotFor(Member const &member, json::value const &value) {
    Slot slot;
    auto const number = numberIn(value);
    if (member.kind == Kind::number && number) {
        slot.number = *number;
    } else if (member.kind == Kind::flag && value.is_bool()) {
        slot.flag = value.get_bool() ? 1 : 0;
    } else if (member.kind == Kind::text && value.is_string()) {
        slot.text = cText(member, texts_.emplace_back(value.get_string()));
    } else if (member.kind == Kind::texts && value.is_array()) {
        auto &list = text_lists_.emplace_back();
        for (auto const &element : value.get_array()) {
            if (!element.is_string()) {
                refuse(member);
            }
            list.push_back(cText(member, texts_.emplace_back(element.get_string())));
        }
        list.push_back(nullptr);
        slot.texts = list.data();
    } else if (member.kind == Kind::numbers && value.is_array()) {
        auto &list = number_lists_.emplace_back();
        for (auto const &element : value.get_array()) {
            auto const entry = numberIn(element);
            if (!entry) {
                refuse(member);
            }
            list.push_back(&numbers_.emplace_back(*entry));
        }
        list.push_back(nullptr);
        slot.numbers = list.data();
    } else {
        refuse(member);
    }
    return slot;
}

Results::~Results() {
    for (Slot const &slot : slots_) {
        std::free(slot.text);
        korvo_core_free_string_array(slot.texts);
        korvo_core_free_uint_array(slot.numbers);
    }
}

json::object Results::members() const {
    json::object members;
    for (std::size_t place = 0; place < operation_->results.size(); ++place) {
        Member const &member = operation_->results[place];
        Slot const &slot = slots_[place];
        json::value value;
        switch (member.kind) {
            case Kind::number:
                value = slot.number;
                break;
            case Kind::flag:
                value = slot.flag != 0;
                break;
            case Kind::text:
                value = slot.text == nullptr ? "" : slot.text;
                break;
            case Kind::texts: {
                auto &list = value.emplace_array();
                for (char **entry = slot.texts; entry != nullptr && *entry != nullptr; ++entry) {
                    list.emplace_back(*entry);
                }
                break;
            }
            case Kind::numbers: {
                auto &list = value.emplace_array();
                for (unsigned int **entry = slot.numbers; entry != nullptr && *entry != nullptr; ++entry) {
                    list.emplace_back(**entry);
                }
                break;
            }
        }
        members.emplace(member.name, std::move(value));
    }
    return members;
}

}  // namespace tool
