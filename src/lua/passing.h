// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_PASSING_H
#define KORVO_LUA_PASSING_H

// How what the C functions take and give passes between Lua and C, as data.

#include "lua/pointer_types.h"
#include "operations/operation.h"

namespace korvo::lua {

enum class Passing : unsigned char {
    callback,
    returned_nothing,
#define INPUT(name, Type, member, expected, lua) name,
#define POINTER_INPUT(name, Type, expected, type) name,
#define OUTPUT(name, Type, member, lua) name,
#define POINTER_OUTPUT(name, Type, member, type) name,
#define RESULT(name, Type, member, lua) name,
#define POINTER_RESULT(name, Type, member, type) name,
#include "lua/passing.def"
};

struct PassingTraits {
    enum class Role : unsigned char { input, result, nothing };
    enum class Shape : unsigned char {
        plain,
        text,           // comes back, and is freed after the call
        list,           // is a table in Lua, and is released after the call
        typed_pointer,  // of `type`, or nil
        callback,       // a typed pointer whose type depends on the operation
    };

    Role role;
    Shape shape;
    PointerTypeId type;
    /// What an error message calls an input.
    char const *expected;
};

namespace traits {

using Role = PassingTraits::Role;
using Shape = PassingTraits::Shape;

constexpr PointerTypeId no_type = PointerTypeId::_p_void;

inline constexpr PassingTraits all[] = {
    {Role::input, Shape::callback, no_type, ""},
    {Role::nothing, Shape::plain, no_type, ""},
#define INPUT(name, Type, member, expected, lua) {Role::input, Shape::plain, no_type, expected},
#define LIST_INPUT(name, Type, member, expected, lua) {Role::input, Shape::list, no_type, expected},
#define POINTER_INPUT(name, Type, expected, type) \
    {Role::input, Shape::typed_pointer, PointerTypeId::type, expected},
#define OUTPUT(name, Type, member, lua) {Role::result, Shape::plain, no_type, ""},
#define TEXT_OUTPUT(name, Type, member, lua) {Role::result, Shape::text, no_type, ""},
#define LIST_OUTPUT(name, Type, member, lua) {Role::result, Shape::list, no_type, ""},
#define POINTER_OUTPUT(name, Type, member, type) \
    {Role::result, Shape::typed_pointer, PointerTypeId::type, ""},
#define RESULT OUTPUT
#define TEXT_RESULT TEXT_OUTPUT
#define LIST_RESULT LIST_OUTPUT
#define POINTER_RESULT POINTER_OUTPUT
#include "lua/passing.def"
};

}  // namespace traits

constexpr PassingTraits const &traitsOf(Passing passing) {
    return traits::all[static_cast<unsigned char>(passing)];
}

/// Given by the script.
constexpr bool isInput(Passing passing) {
    return traitsOf(passing).role == PassingTraits::Role::input;
}

/// Given to the script.
constexpr bool isResult(Passing passing) {
    return traitsOf(passing).role == PassingTraits::Role::result;
}

/// A list, given by the script or to it.
constexpr bool isList(Passing passing) {
    return traitsOf(passing).shape == PassingTraits::Shape::list;
}

/// A text of the caller's, given to the script.
constexpr bool isText(Passing passing) {
    return traitsOf(passing).shape == PassingTraits::Shape::text;
}

/// Given to the script as a typed pointer.
constexpr bool becomesPointer(Passing passing) {
    return isResult(passing) && traitsOf(passing).shape == PassingTraits::Shape::typed_pointer;
}

namespace traits {

struct PassingsOfKind {
    Passing input;
    Passing output;
};

/// In the order of operations::Kind.
inline constexpr PassingsOfKind of_kinds[] = {
    {Passing::returned_nothing, Passing::returned_nothing},
    {Passing::number, Passing::out_number},
    {Passing::flag, Passing::out_flag},
    {Passing::text, Passing::out_text},
    {Passing::texts, Passing::out_texts},
    {Passing::numbers, Passing::out_numbers},
};
static_assert(static_cast<int>(operations::Kind::none) == 0 &&
              static_cast<int>(operations::Kind::number) == 1 &&
              static_cast<int>(operations::Kind::flag) == 2 &&
              static_cast<int>(operations::Kind::text) == 3 &&
              static_cast<int>(operations::Kind::texts) == 4 &&
              static_cast<int>(operations::Kind::numbers) == 5);

}  // namespace traits

/// How an operation's inputs and results pass.
constexpr Passing inputOf(operations::Kind kind) {
    return traits::of_kinds[static_cast<unsigned char>(kind)].input;
}

constexpr Passing outputOf(operations::Kind kind) {
    return traits::of_kinds[static_cast<unsigned char>(kind)].output;
}

}  // namespace korvo::lua

#endif
