// SPDX-License-Identifier: Apache-2.0
#include "lua/stub/function_rows.h"

#include <utility>

#include "lua/form_parameters.h"
#include "operations/operations.h"

namespace korvo::lua::stub {
namespace {

using operations::Operation;

// The rows are plain tables, so that the compiler has nothing to run: what is returned and the parameters in C order. A
// name of NULL ends them.
struct NamedPassing {
    Passing passing;
    char const *name;
};

#define PASSING(passing, name) {Passing::passing, #name},
#define END \
    { Passing::returned_nothing, nullptr }

// ---- Functions that are no form of an operation ----

struct NamedFunction {
    char const *name;
    NamedPassing const *parameters;
};

#define PARAMETERS_OF(name, result, PARAMETERS) \
    constexpr NamedPassing name##_parameters[] = {{Passing::result, ""}, PARAMETERS(PASSING) END};
#define CORE_FUNCTION PARAMETERS_OF
#include "lua/core_functions.def"
#define LIBRARY_FUNCTION PARAMETERS_OF
#define EVENT_FUNCTION PARAMETERS_OF
#include "lua/library_functions.def"
#undef PARAMETERS_OF

#define ROW(name, result, PARAMETERS) {#name, name##_parameters},
constexpr NamedFunction core_functions[] = {
#define CORE_FUNCTION ROW
#include "lua/core_functions.def"
};
constexpr NamedFunction library_functions[] = {
#define LIBRARY_FUNCTION ROW
#include "lua/library_functions.def"
};
constexpr NamedFunction event_functions[] = {
#define EVENT_FUNCTION ROW
#include "lua/library_functions.def"
};
#undef ROW

// ---- The forms of the operations ----

struct Form {
    Operation const *operation;
    char const *form;
    NamedPassing const *parameters;
};

#define IN(kind, member) {inputOf(operations::Kind::kind), #member},
#define OUT(kind, member) {outputOf(operations::Kind::kind), #member},
#define CALLBACK(RESULTS) PASSING(callback, callback)
#define FORM(form, op, INPUTS, RESULTS)                                                         \
    constexpr NamedPassing op##_##form[] = {PASSING(returned_status, status) KORVO_FORM_##form( \
        PASSING, IN, OUT, CALLBACK, INPUTS, RESULTS) END};
#define OPERATION(op, Method, INPUTS, RESULTS) KORVO_CALL_FORMS(FORM, op, INPUTS, RESULTS)
#define VERSION_QUERY(op, Method, INPUTS, RESULTS) KORVO_VERSION_FORMS(FORM, op, INPUTS, RESULTS)
#include "operations/operations.def"
#undef FORM
#undef CALLBACK
#undef OUT
#undef IN

#define FORM(form, op, INPUTS, RESULTS) {&operations::version_query, "_" #form, op##_##form},
constexpr Form version_forms[] = {
#define OPERATION(op, Method, INPUTS, RESULTS)
#define VERSION_QUERY(op, Method, INPUTS, RESULTS) KORVO_VERSION_FORMS(FORM, op, INPUTS, RESULTS)
#include "operations/operations.def"
};
#undef FORM
#define FORM(form, op, INPUTS, RESULTS) {&operations::all[operations::op], "_" #form, op##_##form},
constexpr Form operation_forms[] = {
#define OPERATION(op, Method, INPUTS, RESULTS) KORVO_CALL_FORMS(FORM, op, INPUTS, RESULTS)
#include "operations/operations.def"
};
#undef FORM
#undef END
#undef PASSING

// ---- Rows for people ----

std::string nameOfReturned(Passing passing) {
    switch (passing) {
        case Passing::returned_status:
            return "status";
        case Passing::returned_flag:
            return "yes";
        case Passing::returned_constant_text:
        case Passing::returned_text:
            return "text";
        default:
            return "list";
    }
}

/// As Lua sees them: inputs and results apart.
FunctionRow row(std::string name, NamedPassing const *parameters) {
    FunctionRow row = {std::move(name), {}, {}, nullptr, {}};
    for (NamedPassing const *parameter = parameters; parameter->name != nullptr; ++parameter) {
        if (isInput(parameter->passing)) {
            row.inputs.push_back({parameter->passing, parameter->name});
        } else if (isResult(parameter->passing)) {
            bool const is_returned = parameter == parameters;
            row.results.push_back(
                {parameter->passing, is_returned ? nameOfReturned(parameter->passing) : parameter->name});
        }
    }
    return row;
}

template <typename Rows>
void append(std::vector<FunctionRow> &functions, Rows const &rows) {
    for (NamedFunction const &function : rows) {
        functions.push_back(row(function.name, function.parameters));
    }
}

template <typename Forms>
void appendForms(std::vector<FunctionRow> &functions, Forms const &forms) {
    for (Form const &form : forms) {
        functions.push_back(
            row(std::string("korvo_api_action_engine_") + form.operation->name + form.form, form.parameters));
        functions.back().operation = form.operation;
        functions.back().form = form.form;
    }
}

}  // namespace

std::vector<FunctionRow> allFunctions() {
    std::vector<FunctionRow> functions;
    append(functions, core_functions);
    append(functions, library_functions);
    appendForms(functions, version_forms);
    appendForms(functions, operation_forms);
    append(functions, event_functions);
    return functions;
}

std::string callbackName(Operation const &operation) {
    return std::string("korvo_api_action_engine_") + operation.name + "_method_callback_func_ptr";
}

}  // namespace korvo::lua::stub
