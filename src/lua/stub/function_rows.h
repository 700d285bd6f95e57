// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_LUA_STUB_FUNCTION_ROWS_H
#define KORVO_LUA_STUB_FUNCTION_ROWS_H

// The functions of the module with the names of what they take and give.

#include <string>
#include <vector>

#include "lua/passing.h"
#include "operations/operation.h"

namespace korvo::lua::stub {

struct Parameter {
    Passing passing;
    std::string name;
};

struct FunctionRow {
    std::string name;
    std::vector<Parameter> inputs;
    std::vector<Parameter> results;
    operations::Operation const *operation;  // NULL for what is no form of an operation
    std::string form;                        // "_send", where there is an operation
};

/// All functions, in the order of registration.
std::vector<FunctionRow> allFunctions();

/// The typedef of an operation's callback.
std::string callbackName(operations::Operation const &operation);

}  // namespace korvo::lua::stub

#endif
