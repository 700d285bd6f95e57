// SPDX-License-Identifier: Apache-2.0
#include "lua/stub/function_rows.h"

#include "lua/call_forms.h"
#include "operations/operations.h"

namespace korvo::lua::stub {
namespace {

using operations::Kind;
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

// ---- The forms of the operations ----

FunctionRow formRow(Operation const &operation, char const *form, Parameters const &parameters) {
    FunctionRow form_row = row(std::string("korvo_api_action_engine_") + operation.name + form, parameters);
    form_row.operation = &operation;
    form_row.form = form;
    return form_row;
}

#define OWN(convention, name) {Convention::convention, #name},
#define IN(kind, member) {inputOf(Kind::kind), #member},
#define OUT(kind, member) {outputOf(Kind::kind), #member},
#define CALLBACK(RESULTS) {Convention::callback, "callback"},
#define FORM(form, op, INPUTS, RESULTS)               \
    formRow(op, "_" #form,                            \
            {{Convention::returned_status, "status"}, \
             KORVO_FORM_##form(OWN, IN, OUT, CALLBACK, INPUTS, RESULTS)}),

std::vector<FunctionRow> versionForms() {
    return {
#define OPERATION(op, Method, INPUTS, RESULTS)
#define VERSION_QUERY(op, Method, INPUTS, RESULTS) \
    KORVO_VERSION_FORMS(FORM, operations::version_query, INPUTS, RESULTS)
#include "operations/operations.def"
    };
}

std::vector<FunctionRow> operationForms() {
    return {
#define OPERATION(op, Method, INPUTS, RESULTS) \
    KORVO_CALL_FORMS(FORM, operations::all[operations::op], INPUTS, RESULTS)
#include "operations/operations.def"
    };
}

#undef FORM
#undef CALLBACK
#undef OUT
#undef IN
#undef OWN

}  // namespace

std::vector<FunctionRow> allFunctions() {
    std::vector<FunctionRow> functions;
    for (auto const part : {coreFunctions, libraryFunctions, versionForms, operationForms, eventFunctions}) {
        for (FunctionRow &function : part()) {
            functions.push_back(std::move(function));
        }
    }
    return functions;
}

std::string callbackName(Operation const &operation) {
    return std::string("korvo_api_action_engine_") + operation.name + "_method_callback_func_ptr";
}

}  // namespace korvo::lua::stub
