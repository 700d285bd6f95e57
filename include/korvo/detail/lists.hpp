// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_DETAIL_LISTS_HPP
#define KORVO_DETAIL_LISTS_HPP

// Texts and lists between C++ and the plain functions: who frees what stands here and nowhere else.

#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

#include "korvo/result.hpp"
#include "korvo_core.h"

namespace korvo::detail {

// ---- Results ----

/// A text that a plain function handed out.
struct OwnedText {
    char *pointer = nullptr;

    OwnedText() = default;
    explicit OwnedText(char *text) noexcept : pointer(text) {}
    ~OwnedText() { std::free(pointer); }
    OwnedText(OwnedText const &) = delete;
    OwnedText &operator=(OwnedText const &) = delete;
};

struct OwnedTexts {
    char **pointer = nullptr;

    OwnedTexts() = default;
    ~OwnedTexts() {
        if (pointer != nullptr) {
            korvo_core_free_string_array(pointer);
        }
    }
    OwnedTexts(OwnedTexts const &) = delete;
    OwnedTexts &operator=(OwnedTexts const &) = delete;
};

struct OwnedNumbers {
    unsigned int **pointer = nullptr;

    OwnedNumbers() = default;
    ~OwnedNumbers() {
        if (pointer != nullptr) {
            korvo_core_free_uint_array(pointer);
        }
    }
    OwnedNumbers(OwnedNumbers const &) = delete;
    OwnedNumbers &operator=(OwnedNumbers const &) = delete;
};

/// Lists that belong together came with different lengths.
struct ListsDiffer {};

inline std::string text(char const *value) {
    return value != nullptr ? std::string(value) : std::string();
}

template <typename T>
std::size_t length(T *const *list) noexcept {
    std::size_t count = 0;
    while (list != nullptr && list[count] != nullptr) {
        ++count;
    }
    return count;
}

inline std::vector<std::string> texts(char *const *list) {
    return std::vector<std::string>(list, list + length(list));
}

/// Elements of one list each, as the plain functions give them.
inline char const *element(char *const *list, std::size_t place) noexcept {
    return list[place];
}
inline unsigned int element(unsigned int *const *list, std::size_t place) noexcept {
    return *list[place];
}

/// Parallel lists as one list: the n-th entry is made of the n-th elements.
template <typename Make, typename First, typename... Others>
auto entries(Make make, First first, Others... others) {
    std::size_t const count = length(first);
    if (((length(others) != count) || ...)) {
        throw ListsDiffer();
    }
    std::vector<decltype(make(element(first, 0), element(others, 0)...))> list;
    list.reserve(count);
    for (std::size_t place = 0; place < count; ++place) {
        list.push_back(make(element(first, place), element(others, place)...));
    }
    return list;
}

// ---- Inputs ----

/// A list as the plain functions take it: pointers to elements that stay where they are, and a NULL behind them. The
/// plain functions read such a list and change nothing.
class TextList {
  public:
    explicit TextList(std::vector<std::string> const &texts) {
        pointers_.reserve(texts.size() + 1);
        for (std::string const &one : texts) {
            pointers_.push_back(const_cast<char *>(one.c_str()));
        }
        pointers_.push_back(nullptr);
    }
    template <typename Entry>
    TextList(std::vector<Entry> const &list, std::string Entry::*member) {
        pointers_.reserve(list.size() + 1);
        for (Entry const &entry : list) {
            pointers_.push_back(const_cast<char *>((entry.*member).c_str()));
        }
        pointers_.push_back(nullptr);
    }

    char **pointer() noexcept { return pointers_.data(); }

  private:
    std::vector<char *> pointers_;
};

class NumberList {
  public:
    template <typename Entry>
    NumberList(std::vector<Entry> const &list, unsigned int Entry::*member) {
        pointers_.reserve(list.size() + 1);
        for (Entry const &entry : list) {
            pointers_.push_back(const_cast<unsigned int *>(&(entry.*member)));
        }
        pointers_.push_back(nullptr);
    }

    unsigned int **pointer() noexcept { return pointers_.data(); }

  private:
    std::vector<unsigned int *> pointers_;
};

/// A text with a zero byte inside would arrive as its beginning.
inline bool isWhole(std::string const &value) noexcept {
    return value.find('\0') == std::string::npos;
}
inline bool isWhole(std::vector<std::string> const &values) noexcept {
    for (std::string const &value : values) {
        if (!isWhole(value)) {
            return false;
        }
    }
    return true;
}
template <typename Entry>
bool isWhole(std::vector<Entry> const &list, std::string Entry::*member) noexcept {
    for (Entry const &entry : list) {
        if (!isWhole(entry.*member)) {
            return false;
        }
    }
    return true;
}

}  // namespace korvo::detail

#endif
