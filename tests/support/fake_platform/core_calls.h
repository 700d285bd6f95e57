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
#include <variant>
#include <vector>

#include "fake_platform.h"

namespace fake_platform {

/// An argument, a return value or an out-value. Numbers, enumerations and flags are numbers; std::monostate is NULL.
struct Value {
    using List = std::vector<Value>;

    Value() = default;
    Value(double number) : content(number) {}
    Value(char const *text) : content(std::string(text)) {}
    Value(std::string text) : content(std::move(text)) {}
    Value(List list) : content(std::move(list)) {}

    static Value ofPointer(void const *pointer) {
        Value value;
        if (pointer != nullptr) {
            value.content = pointer;
        }
        return value;
    }

    std::variant<std::monostate, double, std::string, void const *, List> content;
};

inline bool operator==(Value const &left, Value const &right) {
    return left.content == right.content;
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
