// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_CONVENTIONS_H
#define KORVO_LUA_CONVENTIONS_H

// What the C functions of the module take and give, as types for the code that calls them (Parameter) and as data for
// the code that checks, converts and pushes (Convention).

#include <type_traits>

#include "korvo_api_action_engine.h"
#include "operations/operation.h"

namespace korvo::lua {

using ResponseCallback = void (*)(char **service, char **target, char **request_id, char **response,
                                  void *context);
using MessageCallback = void (*)(char **first, char **second, char **third, void *context);

enum class Convention : unsigned char {
    // Inputs.
    callback,
#define INPUT(name, Type, member, expected) name,
#define POINTER_INPUT(name, Type, expected, type) name,
#include "lua/conventions.def"
    last_input,
    // Results.
    returned_nothing,
#define OUTPUT(name, Type, member) name,
#define RESULT(name, Type, member) name,
#define POINTER_RESULT(name, Type, type) name,
#include "lua/conventions.def"
};

/// Given by the script.
constexpr bool isInput(Convention convention) {
    return convention < Convention::last_input;
}

/// Given to the script.
constexpr bool isResult(Convention convention) {
    return convention > Convention::returned_nothing;
}

/// Given to the script as a typed pointer.
constexpr bool becomesPointer(Convention convention) {
    switch (convention) {
        case Convention::out_handle:
        case Convention::out_request_id:
#define POINTER_RESULT(name, Type, type) case Convention::name:
#include "lua/conventions.def"
            return true;
        default:
            return false;
    }
}

/// One parameter or return value on its way.
union Value {
    double real;  // the widest, so that `{}` is zero as a whole
    unsigned int number;
    int integer;
    unsigned char flag;
    korvo_core_settings_type settings_type;
    void *pointer;  // also of callbacks
    char const *text;
    char *out_text;
    unsigned char **flags;
    unsigned int **numbers;
    int **integers;
    double **reals;
    char **texts;
};

template <typename Type, typename Member>
Type convertMember(Member member) {
    if constexpr (std::is_same_v<Type, Member>) {
        return member;
    } else if constexpr (std::is_function_v<std::remove_pointer_t<Type>>) {
        return reinterpret_cast<Type>(member);
    } else {
        return static_cast<Type>(member);
    }
}

/// A parameter or return value: its C type, and how it comes out of and goes into a Value.
template <Convention>
struct Parameter;

#define PARAMETER(name) \
    template <>         \
    struct Parameter<Convention::name> : std::integral_constant<Convention, Convention::name>
#define INPUT(name, Type, member, expected)        \
    PARAMETER(name) {                              \
        using C = Type;                            \
        static C pass(Value &value) {              \
            return convertMember<C>(value.member); \
        }                                          \
    };
#define POINTER_INPUT(name, Type, expected, type) INPUT(name, Type, pointer, expected)
#define OUTPUT(name, Type, member)    \
    PARAMETER(name) {                 \
        using C = Type *;             \
        static C pass(Value &value) { \
            return &value.member;     \
        }                             \
    };
#define RESULT(name, Type, member)                  \
    PARAMETER(name) {                               \
        using C = Type;                             \
        static void store(Value &value, C result) { \
            value.member = result;                  \
        }                                           \
    };
#define POINTER_RESULT(name, Type, type) RESULT(name, Type, pointer)
#include "lua/conventions.def"

PARAMETER(returned_nothing) {
    using C = void;
};
#undef PARAMETER

/// The callback of an operation with results of these kinds, which begin with Kind::none.
template <operations::Kind, operations::Kind... results>
struct CallbackParameter : std::integral_constant<Convention, Convention::callback> {
    using C = void (*)(char *target, korvo_core_status status, operations::ResultOf<results>... values,
                       void *context);
    static C pass(Value &value) { return reinterpret_cast<C>(value.pointer); }
};

/// The conventions of an operation's inputs and results.
constexpr Convention inputOf(operations::Kind kind) {
    switch (kind) {
        case operations::Kind::number:
            return Convention::number;
        case operations::Kind::flag:
            return Convention::flag;
        case operations::Kind::text:
            return Convention::text;
        case operations::Kind::texts:
            return Convention::texts;
        case operations::Kind::numbers:
            return Convention::numbers;
        case operations::Kind::none:
            break;
    }
    return Convention::returned_nothing;
}

constexpr Convention outputOf(operations::Kind kind) {
    switch (kind) {
        case operations::Kind::number:
            return Convention::out_number;
        case operations::Kind::flag:
            return Convention::out_flag;
        case operations::Kind::text:
            return Convention::out_text;
        case operations::Kind::texts:
            return Convention::out_texts;
        case operations::Kind::numbers:
            return Convention::out_numbers;
        case operations::Kind::none:
            break;
    }
    return Convention::returned_nothing;
}

/// A list, given by the script or to it.
constexpr bool isList(Convention convention) {
    switch (convention) {
#define LIST_INPUT(name, Type, member, expected) case Convention::name:
#define LIST_OUTPUT(name, Type, member) case Convention::name:
#define LIST_RESULT(name, Type, member) case Convention::name:
#include "lua/conventions.def"
        return true;
        default:
            return false;
    }
}

/// A text of the caller's, given to the script.
constexpr bool isText(Convention convention) {
    return convention == Convention::out_text || convention == Convention::returned_text;
}

/// Freed after the call.
constexpr bool mustBeReleased(Convention convention) {
    return isList(convention) || isText(convention);
}

}  // namespace korvo::lua

#endif
