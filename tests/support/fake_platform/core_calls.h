// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_FAKE_PLATFORM_CORE_CALLS_H
#define KORVO_TESTS_FAKE_PLATFORM_CORE_CALLS_H

// The third mode of the fake platform, for callers of the core's C functions: each of these functions records its call
// and gives the answer that the test has arranged for it. Nothing is carried anywhere and nothing is kept. Lists alone
// are really made and released, since callers fill and read them.
//
// fake_platform::script() and reset() end the mode. All functions here may be called from any thread.

#include <string>
#include <utility>
#include <vector>

#include "fake_platform/fake_platform.h"

namespace fake_platform {

/// An argument, a return value or an out-value. Numbers, enumerations and flags are numbers.
struct Value {
    enum class Type { null, number, text, pointer, list };
    using List = std::vector<Value>;

    Value() = default;
    Value(double value) : type(Type::number), number(value) {}
    Value(char const *value) : type(Type::text), text(value) {}
    Value(std::string value) : type(Type::text), text(std::move(value)) {}
    Value(List value) : type(Type::list), list(std::move(value)) {}

    static Value ofPointer(void const *pointer) {
        Value value;
        value.type = pointer != nullptr ? Type::pointer : Type::null;
        value.pointer = pointer;
        return value;
    }

    Type type = Type::null;
    // The one of the type; the others are empty.
    double number = 0;
    std::string text;
    void const *pointer = nullptr;
    List list;
};

inline bool operator==(Value const &left, Value const &right) {
    return left.type == right.type && left.number == right.number && left.text == right.text &&
           left.pointer == right.pointer && left.list == right.list;
}

/// A call of a function of the core. Out-pointers are left out, but for those that its callers hand through from
/// callers of their own (void **, and the versions' places), which are pointers here.
struct CoreCall {
    std::string function;
    std::vector<Value> arguments;
};

/// What a function does: it throws, or writes its out-values in their order and returns. A NULL among the out-values
/// is not written; those beyond the end are not written either.
struct CoreAnswer {
    Value returned;
    std::vector<Value> outs;
    Throw thrown = Throw::nothing;
};

/// Forgets everything and starts this mode. Functions return 0, NULL or nothing until the test arranges an answer, and
/// allocate lists.
FAKE_PLATFORM_EXPORT void recordCore();

/// Arranges the answer of every call from now on of a function, by its C name.
FAKE_PLATFORM_EXPORT void answer(std::string const &function, CoreAnswer const &answer);

FAKE_PLATFORM_EXPORT std::vector<CoreCall> coreCalls();

/// From here on, until the mode ends, no list is really released, so that a list may be released more than once.
FAKE_PLATFORM_EXPORT void countReleases();

/// How often each list was released that was made since countReleases(), in the order of their making.
FAKE_PLATFORM_EXPORT std::vector<unsigned int> releases();

}  // namespace fake_platform

#endif
