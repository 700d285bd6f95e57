// SPDX-License-Identifier: Apache-2.0
#include "typed_calls/arguments.h"

#include <cstdlib>
#include <stdexcept>
#include <string>

namespace typed_calls {

namespace {

constexpr unsigned int unwritten_number = 0xBADC0DEU;
constexpr unsigned char unwritten_flag = 0xBA;
char unwritten_text[] = "unwritten";
char *unwritten_texts[] = {unwritten_text, nullptr};
unsigned int unwritten_number_element = unwritten_number;
unsigned int *unwritten_numbers[] = {&unwritten_number_element, nullptr};

Outs::Variable unwritten(Kind kind) {
    switch (kind) {
        case Kind::flag:
            return unwritten_flag;
        case Kind::text:
            return static_cast<char *>(unwritten_text);
        case Kind::texts:
            return static_cast<char **>(nullptr);
        case Kind::numbers:
            return static_cast<unsigned int **>(nullptr);
        case Kind::number:
            break;
    }
    return unwritten_number;
}

Value copyOf(char const *text) {
    return text != nullptr ? Value(Text(text)) : Value();
}

Value copyOf(char *const *list) {
    if (list == nullptr) {
        return {};
    }
    Texts texts;
    for (; *list != nullptr; ++list) {
        texts.emplace_back(*list);
    }
    return texts;
}

Value copyOf(unsigned int *const *list) {
    if (list == nullptr) {
        return {};
    }
    Numbers numbers;
    for (; *list != nullptr; ++list) {
        numbers.push_back(**list);
    }
    return numbers;
}

Value copyOf(unsigned int value) {
    return value;
}

Value copyOf(unsigned char value) {
    return value;
}

}  // namespace

Kind kindOf(Value const &value) {
    if (std::holds_alternative<Number>(value)) {
        return Kind::number;
    }
    if (std::holds_alternative<Flag>(value)) {
        return Kind::flag;
    }
    if (std::holds_alternative<Text>(value)) {
        return Kind::text;
    }
    if (std::holds_alternative<Texts>(value)) {
        return Kind::texts;
    }
    if (std::holds_alternative<Numbers>(value)) {
        return Kind::numbers;
    }
    throw std::logic_error("NULL is of no kind");
}

Inputs::Inputs(Values const &values) {
    for (Value const &value : values) {
        kinds_.push_back(kindOf(value));
        arguments_.push_back(argumentFor(kinds_.back(), value));
    }
}

void Inputs::set(std::size_t place, Value const &value) {
    arguments_.at(place) = argumentFor(kinds_.at(place), value);
}

void Inputs::setFlag(std::size_t place, unsigned char value) {
    arguments_.at(place) = value;
}

void Inputs::setNull(std::size_t place) {
    switch (kinds_.at(place)) {
        case Kind::text:
            arguments_.at(place) = static_cast<char const *>(nullptr);
            return;
        case Kind::texts:
            arguments_.at(place) = static_cast<char **>(nullptr);
            return;
        case Kind::numbers:
            arguments_.at(place) = static_cast<unsigned int **>(nullptr);
            return;
        case Kind::number:
        case Kind::flag:
            break;
    }
    throw std::logic_error("only texts and lists can be NULL");
}

Inputs::Argument Inputs::argumentFor(Kind kind, Value const &value) {
    values_.push_back(value);
    Value &kept = values_.back();
    switch (kind) {
        case Kind::flag:
            return std::get<unsigned char>(kept);
        case Kind::text:
            return std::get<std::string>(kept).c_str();
        case Kind::texts: {
            std::vector<char *> &list = text_lists_.emplace_back();
            for (std::string &element : std::get<Texts>(kept)) {
                list.push_back(element.data());
            }
            list.push_back(nullptr);
            return list.data();
        }
        case Kind::numbers: {
            std::vector<unsigned int *> &list = number_lists_.emplace_back();
            for (unsigned int &element : std::get<Numbers>(kept)) {
                list.push_back(&element);
            }
            list.push_back(nullptr);
            return list.data();
        }
        case Kind::number:
            break;
    }
    return std::get<unsigned int>(kept);
}

Outs::Outs(std::vector<Kind> const &kinds, Lists lists) {
    for (Kind const kind : kinds) {
        variables_.push_back(unwritten(kind));
        before_.push_back(variables_.back());
        if (lists == Lists::occupied && (kind == Kind::texts || kind == Kind::numbers)) {
            occupy(variables_.size() - 1);
        }
    }
}

Outs::~Outs() {
    for (std::size_t place = 0; place < variables_.size(); ++place) {
        if (!written(place)) {
            continue;
        }
        Variable const &variable = variables_[place];
        if (auto const *text = std::get_if<char *>(&variable)) {
            std::free(*text);
        } else if (auto const *texts = std::get_if<char **>(&variable)) {
            korvo_core_free_string_array(*texts);
        } else if (auto const *numbers = std::get_if<unsigned int **>(&variable)) {
            korvo_core_free_uint_array(*numbers);
        }
    }
}

void Outs::occupy(std::size_t place) {
    if (std::holds_alternative<char **>(variables_.at(place))) {
        variables_.at(place) = static_cast<char **>(unwritten_texts);
    } else if (std::holds_alternative<unsigned int **>(variables_.at(place))) {
        variables_.at(place) = static_cast<unsigned int **>(unwritten_numbers);
    } else {
        throw std::logic_error("only list variables can be occupied");
    }
    before_.at(place) = variables_.at(place);
}

bool Outs::written(std::size_t place) const {
    return variables_.at(place) != before_.at(place);
}

bool Outs::untouched() const {
    return variables_ == before_;
}

Value Outs::value(std::size_t place) const {
    return std::visit([](auto value) { return copyOf(value); }, variables_.at(place));
}

Values Outs::values() const {
    Values all;
    for (std::size_t place = 0; place < variables_.size(); ++place) {
        all.push_back(value(place));
    }
    return all;
}

Value take(unsigned int value) {
    return value;
}

Value take(unsigned char value) {
    return value;
}

Value take(char *text) {
    Value const copy = copyOf(static_cast<char const *>(text));
    std::free(text);
    return copy;
}

Value take(char **list) {
    return copyOf(static_cast<char *const *>(list));
}

Value take(unsigned int **list) {
    return copyOf(static_cast<unsigned int *const *>(list));
}

}  // namespace typed_calls
