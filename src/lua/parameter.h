// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_PARAMETER_H
#define KORVO_LUA_PARAMETER_H

// What the C functions take and give, as types: the C type of a parameter or return value, how it comes out of and goes
// into a Value, and how a result is pushed.

#include <type_traits>

#include "korvo_api_action_engine.h"
#include "lua/passing.h"
#include "lua/results.h"
#include "lua/value.h"
#include "operations/operation.h"

namespace korvo::lua {

using ResponseCallback = void (*)(char **service, char **target, char **request_id, char **response,
                                  void *context);
using MessageCallback = void (*)(char **first, char **second, char **third, void *context);

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

template <Passing>
struct Parameter;

#define PARAMETER(name) \
    template <>         \
    struct Parameter<Passing::name> : std::integral_constant<Passing, Passing::name>

#define INPUT(name, Type, member, expected, lua)   \
    PARAMETER(name) {                              \
        using C = Type;                            \
        static C pass(Value &value) {              \
            return convertMember<C>(value.member); \
        }                                          \
    };
#define POINTER_INPUT(name, Type, expected, type) INPUT(name, Type, pointer, expected, )

#define PUSH(push_value)                                                                      \
    static void push(lua_State *L, Value const &value, [[maybe_unused]] Prepared &prepared) { \
        push_value;                                                                           \
    }

// What the C function leaves alone comes back as NULL, 0 or false.
#define OUTPUT_PUSHED(name, Type, member, push_value) \
    PARAMETER(name) {                                 \
        using C = Type *;                             \
        static C pass(Value &value) {                 \
            value = {};                               \
            return &value.member;                     \
        }                                             \
        PUSH(push_value)                              \
    };
#define RESULT_PUSHED(name, Type, member, push_value) \
    PARAMETER(name) {                                 \
        using C = Type;                               \
        static void store(Value &value, C result) {   \
            value.member = result;                    \
        }                                             \
        PUSH(push_value)                              \
    };
#define OUTPUT(name, Type, member, lua) OUTPUT_PUSHED(name, Type, member, pushValue(L, value.member))
#define TEXT_OUTPUT(name, Type, member, lua) \
    OUTPUT_PUSHED(name, Type, member, pushText(L, value.member, prepared))
#define POINTER_OUTPUT(name, Type, member, type) \
    OUTPUT_PUSHED(name, Type, member, pushPointer(L, value.member, prepared))
#define RESULT(name, Type, member, lua) RESULT_PUSHED(name, Type, member, pushValue(L, value.member))
#define TEXT_RESULT(name, Type, member, lua) \
    RESULT_PUSHED(name, Type, member, pushText(L, value.member, prepared))
#define POINTER_RESULT(name, Type, member, type) \
    RESULT_PUSHED(name, Type, member, pushPointer(L, value.member, prepared))
#include "lua/passing.def"
#undef RESULT_PUSHED
#undef OUTPUT_PUSHED
#undef PUSH

PARAMETER(returned_nothing) {
    using C = void;
};
#undef PARAMETER

/// The callback of an operation with results of these kinds, which begin with Kind::none.
template <operations::Kind, operations::Kind... results>
struct CallbackParameter : std::integral_constant<Passing, Passing::callback> {
    using C = void (*)(char *target, korvo_core_status status, operations::ResultOf<results>... values,
                       void *context);
    static C pass(Value &value) { return reinterpret_cast<C>(value.pointer); }
};

}  // namespace korvo::lua

#endif
