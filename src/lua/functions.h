// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_FUNCTIONS_H
#define KORVO_LUA_FUNCTIONS_H

// The functions of the module: which C function each calls, and what that takes and gives.

#include <lua.hpp>
#include "lua/passing.h"
#include "lua/results.h"
#include "lua/value.h"
#include "operations/operation.h"

namespace korvo::lua {

using AnyFunction = void (*)();

/// The most values that a function has: what it returns, and its parameters.
constexpr int most_values = 16;

/// The most texts that come back from a function.
constexpr int most_texts = 6;

/// What functions of one signature share. The values of a call are the arguments in the script's order, and then the
/// results.
struct Shape {
    /// Calls the function, which has this signature.
    void (*call)(AnyFunction function, Value *values);
    /// Pushes the results.
    void (*push)(lua_State *L, Value const *results, Prepared prepared);
    /// How each of the values passes.
    Passing const *passings;
    unsigned char arguments;
    unsigned char results;
    bool returns_status;
    bool makes_pointers;
    bool has_lists;
    /// A bit for each value that is a text which comes back and is freed.
    unsigned short texts;
};

struct Function {
    AnyFunction function;
    Shape const *shape;
};

constexpr int function_count = 493;

/// The functions in the order of registration.
extern Function const functions[function_count];

/// The place of a function among them.
inline int placeOf(Function const &function) {
    return static_cast<int>(&function - functions);
}

/// The operation that a function is a form of; NULL for others.
operations::Operation const *operationAt(int place);

/// Pushes the name of a function.
void pushFunctionName(lua_State *L, int place);

}  // namespace korvo::lua

#endif
