// SPDX-License-Identifier: Apache-2.0
#include "lua/stub/function_rows.h"

#include "operations/operations.h"

namespace korvo::lua::stub {
namespace {

using operations::Kind;
using operations::Member;
using operations::Operation;
using Parameters = std::vector<Parameter>;

/// Parameters in C order, what is returned first, as Lua sees them: inputs and results apart.
FunctionRow row(std::string name, Parameters const &parameters) {
    FunctionRow row = {std::move(name), {}, {}, nullptr, {}};
    for (Parameter const &parameter : parameters) {
        if (isInput(parameter.convention)) {
            row.inputs.push_back(parameter);
        } else if (parameter.convention != Convention::returned_nothing) {
            row.results.push_back(parameter);
        }
    }
    return row;
}

char const *nameOfReturned(Convention convention) {
    switch (convention) {
        case Convention::returned_status:
            return "status";
        case Convention::returned_flag:
            return "yes";
        case Convention::returned_constant_text:
        case Convention::returned_text:
            return "text";
        default:
            return "list";
    }
}

#define PARAMETER(convention, name) {Convention::convention, #name},
#define ROW(name, result, PARAMETERS) \
    row(#name, {{Convention::result, nameOfReturned(Convention::result)}, PARAMETERS(PARAMETER)}),

std::vector<FunctionRow> coreFunctions() {
    return {
#define CORE_FUNCTION ROW
#include "lua/core_functions.def"
    };
}

std::vector<FunctionRow> libraryFunctions() {
    return {
#define LIBRARY_FUNCTION ROW
#include "lua/library_functions.def"
    };
}

std::vector<FunctionRow> eventFunctions() {
    return {
#define EVENT_FUNCTION ROW
#include "lua/library_functions.def"
    };
}

#undef ROW
#undef PARAMETER

// ---- The forms of an operation ----

void append(Parameters &parameters, Member const *members, Convention (*conventionOf)(Kind)) {
    for (; members->kind != Kind::none; ++members) {
        parameters.push_back({conventionOf(members->kind), members->name});
    }
}

Parameter const status = {Convention::returned_status, "status"};
Parameter const handle = {Convention::opaque, "handle"};
Parameter const target = {Convention::text, "target"};
Parameter const timeout = {Convention::integer, "timeout"};
Parameter const block = {Convention::flag, "block"};
Parameter const request_id = {Convention::request_id, "request_id"};
Parameter const new_request_id = {Convention::out_request_id, "request_id"};
Parameter const callback = {Convention::callback, "callback"};
Parameter const context = {Convention::opaque, "context"};

struct Form {
    char const *name;
    Parameters before;
    bool has_inputs;
    Parameters after;
    bool has_results;
    bool of_version_query;
};

std::vector<Form> const forms = {
    {"_send", {status, handle, target}, true, {}, true, true},
    {"_send_with_timeout", {status, handle, target, timeout}, true, {}, true, false},
    {"_non_blocking_send", {status, handle, target}, true, {new_request_id}, false, true},
    {"_receive", {status, handle, block, target, request_id}, false, {}, true, true},
    {"_receive_with_timeout", {status, handle, target, timeout, request_id}, false, {}, true, false},
    {"_send_async", {status, handle, target}, true, {callback, context}, false, true},
    {"_cancel_async", {status, handle, callback, context}, false, {}, false, true},
};

void appendForms(std::vector<FunctionRow> &functions, Operation const &operation) {
    bool const is_version_query = &operation == &operations::version_query;
    for (Form const &form : forms) {
        if (is_version_query && !form.of_version_query) {
            continue;
        }
        Parameters parameters = form.before;
        // The inputs of the version query are the library's.
        if (form.has_inputs && !is_version_query) {
            append(parameters, operation.inputs, inputOf);
        }
        parameters.insert(parameters.end(), form.after.begin(), form.after.end());
        if (form.has_results) {
            append(parameters, operation.results, outputOf);
        }
        functions.push_back(
            row(std::string("korvo_api_action_engine_") + operation.name + form.name, parameters));
        functions.back().operation = &operation;
        functions.back().form = form.name;
    }
}

}  // namespace

std::vector<FunctionRow> allFunctions() {
    std::vector<FunctionRow> functions = coreFunctions();
    for (FunctionRow &function : libraryFunctions()) {
        functions.push_back(std::move(function));
    }
    appendForms(functions, operations::version_query);
    for (Operation const &operation : operations::all) {
        appendForms(functions, operation);
    }
    for (FunctionRow &function : eventFunctions()) {
        functions.push_back(std::move(function));
    }
    return functions;
}

std::string callbackName(Operation const &operation) {
    return std::string("korvo_api_action_engine_") + operation.name + "_method_callback_func_ptr";
}

}  // namespace korvo::lua::stub
