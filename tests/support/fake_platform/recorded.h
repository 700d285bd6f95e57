// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_FAKE_PLATFORM_RECORDED_H
#define KORVO_TESTS_FAKE_PLATFORM_RECORDED_H

// One recorded call for all functions of the core: from their C types to core_calls.h and back.

#include <cstring>
#include <type_traits>

#include "fake_platform/core_calls.h"
#include "fake_platform/lists.h"

namespace fake_platform {

bool recordsCore();

/// Records the call; throws, or gives what is arranged, when something is.
std::optional<CoreAnswer> enterCore(CoreCall const &call);

/// The text for as long as the recordings are kept, for functions whose callers do not free what they get.
char const *kept(std::string const &text);

/// A parameter through which a value goes out. `shown` ones are recorded as the pointers that they are.
template <typename T>
struct Out {
    T *place;
    bool shown;
};

template <typename T>
Out<T> out(T *place) {
    return {place, false};
}

template <typename T>
Out<T> shownOut(T *place) {
    return {place, true};
}

// ---- From C ----

inline Value toValue(char const *text) {
    return text != nullptr ? Value(text) : Value();
}

inline Value toValue(void const *pointer) {
    return Value::ofPointer(pointer);
}

template <typename... Parameters>
Value toValue(void (*function)(Parameters...)) {
    return Value::ofPointer(reinterpret_cast<void const *>(function));
}

template <typename T, typename = std::enable_if_t<std::is_arithmetic_v<T> || std::is_enum_v<T>>>
Value toValue(T number) {
    return static_cast<double>(number);
}

template <typename T>
Value toValue(T **list) {
    if (list == nullptr) {
        return {};
    }
    Value::List values;
    for (; *list != nullptr; ++list) {
        if constexpr (std::is_same_v<T, char>) {
            values.emplace_back(*list);
        } else {
            values.emplace_back(static_cast<double>(**list));
        }
    }
    return values;
}

inline void addArgument(std::vector<Value> &arguments, Value const &value) {
    arguments.push_back(value);
}

template <typename T>
void addArgument(std::vector<Value> &arguments, Out<T> const &parameter) {
    if (parameter.shown) {
        arguments.push_back(Value::ofPointer(parameter.place));
    }
}

template <typename T>
void addArgument(std::vector<Value> &arguments, T const &argument) {
    addArgument(arguments, toValue(argument));
}

// ---- To C ----

inline bool isNull(Value const &value) {
    return value.type == Value::Type::null;
}

template <typename T>
T **listIn(Value const &value) {
    Value::List const &elements = value.list;
    T **const list = makeList<T>(static_cast<unsigned int>(elements.size()), !std::is_same_v<T, char>);
    for (std::size_t place = 0; place < elements.size(); ++place) {
        if constexpr (std::is_same_v<T, char>) {
            list[place] = strdup(elements[place].text.c_str());
        } else {
            *list[place] = static_cast<T>(elements[place].number);
        }
    }
    return list;
}

template <typename T>
struct FromValue {
    static T get(Value const &value) {
        return isNull(value) ? T() : static_cast<T>(static_cast<long long>(value.number));
    }
};

template <>
struct FromValue<double> {
    static double get(Value const &value) { return isNull(value) ? 0 : value.number; }
};

template <>
struct FromValue<char *> {
    static char *get(Value const &value) { return isNull(value) ? nullptr : strdup(value.text.c_str()); }
};

template <>
struct FromValue<char const *> {
    static char const *get(Value const &value) { return isNull(value) ? nullptr : kept(value.text); }
};

template <>
struct FromValue<void *> {
    static void *get(Value const &value) {
        return isNull(value) ? nullptr : const_cast<void *>(value.pointer);
    }
};

template <typename T>
struct FromValue<T **> {
    static T **get(Value const &value) { return isNull(value) ? nullptr : listIn<T>(value); }
};

template <>
struct FromValue<void> {
    static void get(Value const &) {}
};

template <typename T>
void write(CoreAnswer const &answer, std::size_t &next, Out<T> const &parameter) {
    std::size_t const at = next++;
    if (parameter.place != nullptr && at < answer.outs.size() && !isNull(answer.outs[at])) {
        *parameter.place = FromValue<T>::get(answer.outs[at]);
    }
}

template <typename T>
void write(CoreAnswer const &, std::size_t &, T const &) {}

/// What a function does in this mode. In the other modes it succeeds and does nothing.
template <typename Result, typename... Parameters>
Result recorded(char const *function, Parameters... parameters) {
    if (!recordsCore()) {
        return FromValue<Result>::get({});
    }
    CoreCall call{function, {}};
    (addArgument(call.arguments, parameters), ...);
    CoreAnswer const answer = enterCore(call).value_or(CoreAnswer());
    [[maybe_unused]] std::size_t next = 0;
    (write(answer, next, parameters), ...);
    return FromValue<Result>::get(answer.returned);
}

}  // namespace fake_platform

/// The beginning of a function that has a behaviour of its own in the other modes.
#define RECORDED(Result, ...)                                          \
    if (fake_platform::recordsCore()) {                                \
        return fake_platform::recorded<Result>(__func__, __VA_ARGS__); \
    }                                                                  \
    static_assert(true)
#define RECORDED_ALONE(Result)                            \
    if (fake_platform::recordsCore()) {                   \
        return fake_platform::recorded<Result>(__func__); \
    }                                                     \
    static_assert(true)

#endif
