// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_PLATFORM_SETTING_KINDS_H
#define KORVO_PLATFORM_SETTING_KINDS_H

// How values look to callers in C: the nine types, and the way in and out of each.

#include "base/list_memory.h"
#include "base/text.h"
#include "settings/setting_value.h"

// X(name in functions, name in korvo_core_settings_type, C type of an input, C type of a result)
#define KORVO_SCALAR_SETTINGS(X)                \
    X(string, STRING, char const *, char *)     \
    X(json, JSON, char const *, char *)         \
    X(int, INT, int, int)                       \
    X(bool, BOOL, unsigned char, unsigned char) \
    X(double, DOUBLE, double, double)

// X(name in functions, name in korvo_core_settings_type, C type of an element)
#define KORVO_LIST_SETTINGS(X)                 \
    X(arrayofstring, ARRAYOFSTRING, char)      \
    X(arrayofint, ARRAYOFINT, int)             \
    X(arrayofbool, ARRAYOFBOOL, unsigned char) \
    X(arrayofdouble, ARRAYOFDOUBLE, double)

namespace platform {

/// How values of a type are kept.
template <korvo_core_settings_type type>
using Kept = std::variant_alternative_t<type, Value>;

// ---- In ----

inline char const *elementOf(char *text) {
    return text;
}

template <typename C>
C elementOf(C *element) {
    return *element;
}

template <typename C, typename T>
void take(C input, T &kept) {
    kept = static_cast<T>(input);
}

template <typename C, typename T>
void take(C **list, std::vector<T> &kept) {
    for (C **element = list; *element != nullptr; ++element) {
        kept.push_back(static_cast<T>(elementOf(*element)));
    }
}

/// A value of a type from what a caller in C has given, which is not NULL.
template <korvo_core_settings_type type, typename Input>
Value taken(Input input) {
    Kept<type> kept{};
    take(input, kept);
    return Value(std::in_place_index<type>, std::move(kept));
}

// ---- Out ----

inline char *given(std::string const &text) {
    return Text(text).release();
}

inline char *given(JsonText const &json) {
    return given(json.text);
}

inline int given(int number) {
    return number;
}

inline unsigned char given(bool flag) {
    return flag ? 1 : 0;
}

inline double given(double number) {
    return number;
}

inline char *blockOf(std::string const &text) {
    return given(text);
}

/// An element in a block of its own.
template <typename T>
auto *blockOf(T const &element) {
    using C = decltype(given(element));
    auto *const block = static_cast<C *>(std::malloc(sizeof(C)));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    *block = given(element);
    return block;
}

template <typename T, typename C>
void give(T const &kept, C *output) {
    *output = given(kept);
}

template <typename T, typename C>
void give(std::vector<T> const &kept, C ***list, unsigned int *count) {
    auto const size = static_cast<unsigned int>(kept.size());
    ListOwner<C> made(allocSlots<C>(size));
    if (made == nullptr) {
        throw std::bad_alloc();
    }
    for (unsigned int index = 0; index < size; ++index) {
        T const &element = kept[index];
        made.get()[index] = blockOf(element);
    }
    *list = made.release();
    *count = size;
}

}  // namespace platform

#endif
