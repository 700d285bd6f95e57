// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_FUNCTIONS_H
#define KORVO_LUA_FUNCTIONS_H

// The functions of the module: which C function each calls, and what that takes and gives.

#include <lua.hpp>
#include "lua/conventions.h"
#include "operations/operation.h"

namespace korvo::lua {

using AnyFunction = void (*)();

/// A value of a call that something happens to: its place among the values, and its convention.
struct Slot {
    Convention convention;
    unsigned char place;
};

/// What functions of one signature share.
struct Shape {
    /// Calls the function, which has this signature, with values[1] and so on; values[0] receives what it returns.
    void (*call)(AnyFunction function, Value *values);
    /// First the arguments of the script, then its results, then what must be released after the call.
    Slot const *slots;
    unsigned char arguments;
    unsigned char results;
    unsigned char released;
    unsigned char values;
    bool returns_status;
    bool makes_pointers;
    bool has_lists;

    Slot const *argumentSlots() const { return slots; }
    Slot const *resultSlots() const { return slots + arguments; }
    Slot const *releasedSlots() const { return resultSlots() + results; }
};

struct Function {
    AnyFunction function;
    Shape const *shape;
};

/// The most values that a function has: what it returns, and its parameters.
constexpr int most_values = 16;

constexpr int function_count = 493;

/// A function by its place in the order of registration, from 0.
Function const &functionAt(int place);

/// The place of a function of the module. It is searched for, which is nothing for the way of a call that goes well.
int placeOf(Function const &function);

/// The operation that a function is a form of; NULL for others.
operations::Operation const *operationAt(int place);

/// Pushes the name of a function.
void pushFunctionName(lua_State *L, int place);

}  // namespace korvo::lua

#endif
