// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PLATFORM_SETTING_FUNCTIONS_H
#define KORVO_TESTS_PLATFORM_SETTING_FUNCTIONS_H

// The functions of each of the nine types under one face: C++ values in and out. The wrappers check what holds
// for every call: results are untouched unless 0 is returned, lists end where their count says.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "korvo_core.h"

namespace setting_functions {

/// What results hold before a call, to see that they still do.
template <typename C>
C untouched() {
    if constexpr (std::is_pointer_v<C>) {
        static std::remove_pointer_t<C> nowhere;
        return &nowhere;
    } else {
        return static_cast<C>(77);
    }
}

template <typename C, typename T>
korvo_core_status getScalar(korvo_core_status (*function)(char const *, C *), char const *key, T &value) {
    C result = untouched<C>();
    korvo_core_status const status = function(key, &result);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        EXPECT_EQ(result, untouched<C>());
        return status;
    }
    if constexpr (std::is_pointer_v<C>) {
        value = result;
        std::free(result);
    } else {
        value = result;
    }
    return status;
}

inline std::string element(char const *text) {
    return text;
}

template <typename C>
C element(C const *block) {
    return *block;
}

inline void freeList(char **list) {
    korvo_core_free_string_array(list);
}

inline void freeList(int **list) {
    korvo_core_free_int_array(list);
}

inline void freeList(unsigned char **list) {
    korvo_core_free_bool_array(list);
}

inline void freeList(double **list) {
    korvo_core_free_double_array(list);
}

template <typename C, typename T>
korvo_core_status getList(korvo_core_status (*function)(char const *, C ***, unsigned int *), char const *key,
                          std::vector<T> &value) {
    C **list = untouched<C **>();
    unsigned int count = 77;
    korvo_core_status const status = function(key, &list, &count);
    if (status != KORVO_CORE_STATUS_NO_ERROR) {
        EXPECT_EQ(list, untouched<C **>());
        EXPECT_EQ(count, 77U);
        return status;
    }
    value.clear();
    for (C **place = list; *place != nullptr; ++place) {
        value.push_back(element(*place));
    }
    EXPECT_EQ(value.size(), count);
    freeList(list);
    return status;
}

/// A list for a call, which borrows it.
template <typename C>
struct BorrowedList {
    template <typename T>
    explicit BorrowedList(std::vector<T> const &values) : elements(values.begin(), values.end()) {
        for (auto &value : elements) {
            slots.push_back(&value);
        }
        slots.push_back(nullptr);
    }

    std::vector<C> elements;
    std::vector<C *> slots;
};

template <>
struct BorrowedList<char> {
    explicit BorrowedList(std::vector<std::string> const &values) : elements(values) {
        for (auto &value : elements) {
            slots.push_back(value.data());
        }
        slots.push_back(nullptr);
    }

    std::vector<std::string> elements;
    std::vector<char *> slots;
};

template <typename T>
auto input(T const &value) {
    if constexpr (std::is_same_v<T, std::string>) {
        return value.c_str();
    } else {
        return value;
    }
}

}  // namespace setting_functions

#define SCALAR_SETTING(Name, name, TYPE, Kept)                                                               \
    struct Name##Setting {                                                                                   \
        using Value = Kept;                                                                                  \
        static constexpr korvo_core_settings_type type = KORVO_CORE_SETTING_TYPE_##TYPE;                     \
        static constexpr char const *type_name = #name;                                                      \
        static korvo_core_status get(char const *key, Value &value) {                                        \
            return setting_functions::getScalar(korvo_core_settings_get_##name##_value, key, value);         \
        }                                                                                                    \
        static korvo_core_status getDefault(char const *key, Value &value) {                                 \
            return setting_functions::getScalar(korvo_core_settings_get_default_##name##_value, key, value); \
        }                                                                                                    \
        static korvo_core_status getConfigured(char const *key, Value &value) {                              \
            return setting_functions::getScalar(korvo_core_configuration_get_##name##_value, key, value);    \
        }                                                                                                    \
        static korvo_core_status set(char const *key, Value const &value) {                                  \
            return korvo_core_settings_set_##name##_value(key, setting_functions::input(value));             \
        }                                                                                                    \
        static korvo_core_status setDefault(char const *key, Value const &value) {                           \
            return korvo_core_settings_set_default_##name##_value(key, setting_functions::input(value));     \
        }                                                                                                    \
        static korvo_core_status copy(char const *from, char const *to) {                                    \
            return korvo_core_settings_copy_##name##_key(from, to);                                          \
        }                                                                                                    \
        static std::vector<korvo_core_status> withNothingToWriteTo(char const *key) {                        \
            return {korvo_core_settings_get_##name##_value(key, nullptr),                                    \
                    korvo_core_settings_get_default_##name##_value(key, nullptr),                            \
                    korvo_core_configuration_get_##name##_value(key, nullptr)};                              \
        }                                                                                                    \
        static std::vector<Value> samples();                                                                 \
        static char const *written();                                                                        \
    }

#define LIST_SETTING(Name, name, TYPE, C, Kept)                                                            \
    struct Name##Setting {                                                                                 \
        using Value = std::vector<Kept>;                                                                   \
        static constexpr korvo_core_settings_type type = KORVO_CORE_SETTING_TYPE_##TYPE;                   \
        static constexpr char const *type_name = #name;                                                    \
        static korvo_core_status get(char const *key, Value &value) {                                      \
            return setting_functions::getList(korvo_core_settings_get_##name##_value, key, value);         \
        }                                                                                                  \
        static korvo_core_status getDefault(char const *key, Value &value) {                               \
            return setting_functions::getList(korvo_core_settings_get_default_##name##_value, key, value); \
        }                                                                                                  \
        static korvo_core_status getConfigured(char const *key, Value &value) {                            \
            return setting_functions::getList(korvo_core_configuration_get_##name##_value, key, value);    \
        }                                                                                                  \
        static korvo_core_status set(char const *key, Value const &value) {                                \
            return korvo_core_settings_set_##name##_value(                                                 \
                key, setting_functions::BorrowedList<C>(value).slots.data());                              \
        }                                                                                                  \
        static korvo_core_status setDefault(char const *key, Value const &value) {                         \
            return korvo_core_settings_set_default_##name##_value(                                         \
                key, setting_functions::BorrowedList<C>(value).slots.data());                              \
        }                                                                                                  \
        static korvo_core_status copy(char const *from, char const *to) {                                  \
            return korvo_core_settings_copy_##name##_key(from, to);                                        \
        }                                                                                                  \
        static std::vector<korvo_core_status> withNothingToWriteTo(char const *key) {                      \
            C **list = nullptr;                                                                            \
            unsigned int count = 0;                                                                        \
            return {korvo_core_settings_get_##name##_value(key, nullptr, &count),                          \
                    korvo_core_settings_get_##name##_value(key, &list, nullptr),                           \
                    korvo_core_settings_get_default_##name##_value(key, nullptr, &count),                  \
                    korvo_core_settings_get_default_##name##_value(key, &list, nullptr),                   \
                    korvo_core_configuration_get_##name##_value(key, nullptr, &count),                     \
                    korvo_core_configuration_get_##name##_value(key, &list, nullptr)};                     \
        }                                                                                                  \
        static std::vector<Value> samples();                                                               \
        static char const *written();                                                                      \
    }

SCALAR_SETTING(String, string, STRING, std::string);
SCALAR_SETTING(Json, json, JSON, std::string);
SCALAR_SETTING(Int, int, INT, int);
SCALAR_SETTING(Bool, bool, BOOL, unsigned char);
SCALAR_SETTING(Double, double, DOUBLE, double);
LIST_SETTING(ListOfStrings, arrayofstring, ARRAYOFSTRING, char, std::string);
LIST_SETTING(ListOfInts, arrayofint, ARRAYOFINT, int, int);
LIST_SETTING(ListOfBools, arrayofbool, ARRAYOFBOOL, unsigned char, unsigned char);
LIST_SETTING(ListOfDoubles, arrayofdouble, ARRAYOFDOUBLE, double, double);

#undef SCALAR_SETTING
#undef LIST_SETTING

#endif
