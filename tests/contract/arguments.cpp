// SPDX-License-Identifier: Apache-2.0
#include "arguments.h"

#include <cstdlib>
#include <stdexcept>

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

Content copyOf(char const *text) {
    return text != nullptr ? Content(std::string(text)) : Content();
}

Content copyOf(char *const *list) {
    if (list == nullptr) {
        return {};
    }
    Texts texts;
    for (; *list != nullptr; ++list) {
        texts.emplace_back(*list);
    }
    return texts;
}

Content copyOf(unsigned int *const *list) {
    if (list == nullptr) {
        return {};
    }
    Numbers numbers;
    for (; *list != nullptr; ++list) {
        numbers.push_back(**list);
    }
    return numbers;
}

Content copyOf(unsigned int value) {
    return value;
}

Content copyOf(unsigned char value) {
    return value;
}

}  // namespace

Inputs::Inputs(std::vector<Member> const &members) {
    for (Member const &member : members) {
        kinds_.push_back(member.kind);
        arguments_.push_back(argumentFor(member.kind, member.sample));
    }
}

void Inputs::set(std::size_t place, Content const &content) {
    arguments_.at(place) = argumentFor(kinds_.at(place), content);
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

Inputs::Argument Inputs::argumentFor(Kind kind, Content const &content) {
    contents_.push_back(content);
    Content &kept = contents_.back();
    switch (kind) {
        case Kind::flag:
            return std::get<unsigned char>(kept);
        case Kind::text:
            return std::get<std::string>(kept).c_str();
        case Kind::texts: {
            std::vector<char *> &list = text_lists_.emplace_back();
            for (std::string &text : std::get<Texts>(kept)) {
                list.push_back(text.data());
            }
            list.push_back(nullptr);
            return list.data();
        }
        case Kind::numbers: {
            std::vector<unsigned int *> &list = number_lists_.emplace_back();
            for (unsigned int &value : std::get<Numbers>(kept)) {
                list.push_back(&value);
            }
            list.push_back(nullptr);
            return list.data();
        }
        case Kind::number:
            break;
    }
    return std::get<unsigned int>(kept);
}

Outs::Outs(std::vector<Member> const &members, Lists lists) {
    for (Member const &member : members) {
        variables_.push_back(unwritten(member.kind));
        before_.push_back(variables_.back());
        if (lists == Lists::occupied && isList(member.kind)) {
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

Content Outs::content(std::size_t place) const {
    return std::visit([](auto value) { return copyOf(value); }, variables_.at(place));
}

std::vector<Content> Outs::contents() const {
    std::vector<Content> all;
    for (std::size_t place = 0; place < variables_.size(); ++place) {
        all.push_back(content(place));
    }
    return all;
}

Content take(unsigned int value) {
    return value;
}

Content take(unsigned char value) {
    return value;
}

Content take(char *text) {
    Content const copy = copyOf(static_cast<char const *>(text));
    std::free(text);
    return copy;
}

Content take(char **list) {
    return copyOf(static_cast<char *const *>(list));
}

Content take(unsigned int **list) {
    return copyOf(static_cast<unsigned int *const *>(list));
}

void recordCallback(Context &context, char const *target, korvo_core_status status,
                    std::vector<Content> results, int callback) {
    context.calls.push_back({target != nullptr ? std::optional<std::string>(target) : std::nullopt, status,
                             std::move(results), callback});
    if (context.throws) {
        throw 1;
    }
}
