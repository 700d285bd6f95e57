// SPDX-License-Identifier: Apache-2.0
#include "lua/functions.h"

#include <iterator>

#include "korvo_api_action_engine.h"
#include "lua/call_forms.h"
#include "lua/wrapped.h"
#include "operations/operations.h"

namespace korvo::lua {
namespace {

/// A function that is no form of an operation.
struct NamedFunction {
    Function function;
    char const *name;
};

korvo_core_status adapted_korvo_core_ipc_initiator_init(void *logging, char const *name, void **messaging) {
    return korvo_core_ipc_initiator_init(logging, name, messaging, /*flag*/ 1);
}

// A script's text is data: a per cent sign in it is one.
korvo_core_status adapted_korvo_core_logging_log(void *logging, korvo_core_log_priority priority,
                                                 char const *text) {
    if (text == nullptr) {
        return KORVO_CORE_STATUS_INVALID_PARAMS;
    }
    return korvo_core_logging_log(logging, priority, "%s", text);
}

#define CONVENTION(convention, name) , Convention::convention
#define NAMED_FUNCTION(name, function, result, PARAMETERS) \
    {KORVO_LUA_FUNCTION(function, WrappedAs<Convention::result PARAMETERS(CONVENTION)>), #name},

#define CORE_FUNCTION(name, result, PARAMETERS) NAMED_FUNCTION(name, name, result, PARAMETERS)
#define ADAPTED_CORE_FUNCTION(name, result, PARAMETERS) \
    NAMED_FUNCTION(name, adapted_##name, result, PARAMETERS)
NamedFunction const core_functions[] = {
#include "lua/core_functions.def"
};

#define LIBRARY_FUNCTION(name, result, PARAMETERS) NAMED_FUNCTION(name, name, result, PARAMETERS)
NamedFunction const library_functions[] = {
#include "lua/library_functions.def"
};

#define EVENT_FUNCTION(name, result, PARAMETERS) NAMED_FUNCTION(name, name, result, PARAMETERS)
NamedFunction const event_functions[] = {
#include "lua/library_functions.def"
};

#undef NAMED_FUNCTION
#undef CONVENTION

// The forms of the operations. Their names are put together from the row and the form.

#define OWN(convention, name) , Parameter<Convention::convention>
#define IN(kind, member) , Parameter<inputOf(operations::Kind::kind)>
#define OUT(kind, member) , Parameter<outputOf(operations::Kind::kind)>
#define KIND(kind, member) , operations::Kind::kind
#define CALLBACK(RESULTS) , CallbackParameter<operations::Kind::none RESULTS(KIND)>
#define FORM(form, op, INPUTS, RESULTS)                                                  \
    KORVO_LUA_FUNCTION(korvo_api_action_engine_##op##_##form,                            \
                       Wrapped<Parameter<Convention::returned_status> KORVO_FORM_##form( \
                           OWN, IN, OUT, CALLBACK, INPUTS, RESULTS)>),
#define FORM_NAME(form, op, INPUTS, RESULTS) "_" #form,

char const *const form_names[] = {KORVO_CALL_FORMS(FORM_NAME, , , )};
char const *const version_form_names[] = {KORVO_VERSION_FORMS(FORM_NAME, , , )};
constexpr int form_count = std::size(form_names);

#define OPERATION(op, Method, INPUTS, RESULTS) {KORVO_CALL_FORMS(FORM, op, INPUTS, RESULTS)},
Function const operation_functions[][form_count] = {
#include "operations/operations.def"
};

#define OPERATION(op, Method, INPUTS, RESULTS)
#define VERSION_QUERY(op, Method, INPUTS, RESULTS) KORVO_VERSION_FORMS(FORM, op, INPUTS, RESULTS)
Function const version_functions[] = {
#include "operations/operations.def"
};

#undef FORM_NAME
#undef FORM
#undef CALLBACK
#undef KIND
#undef OUT
#undef IN
#undef OWN

constexpr int version_count = std::size(version_functions);
constexpr int operation_count = std::size(operation_functions);

constexpr int library_begin = std::size(core_functions);
constexpr int version_begin = library_begin + static_cast<int>(std::size(library_functions));
constexpr int operations_begin = version_begin + version_count;
constexpr int events_begin = operations_begin + operation_count * form_count;

static_assert(std::size(version_form_names) == version_count);
static_assert(events_begin + static_cast<int>(std::size(event_functions)) == function_count);

/// What there is to know about a function: the function, and either its name or its row and form.
struct Entry {
    Function const *function;
    char const *name;
    operations::Operation const *operation;
    char const *form;
};

Entry entryAt(int place) {
    auto const named = [](NamedFunction const &entry) {
        return Entry{&entry.function, entry.name, nullptr, nullptr};
    };
    if (place < library_begin) {
        return named(core_functions[place]);
    }
    if (place < version_begin) {
        return named(library_functions[place - library_begin]);
    }
    if (place < operations_begin) {
        int const at = place - version_begin;
        return {&version_functions[at], nullptr, &operations::version_query, version_form_names[at]};
    }
    if (place < events_begin) {
        int const at = place - operations_begin;
        int const form = at % form_count;
        return {&operation_functions[at / form_count][form], nullptr, &operations::all[at / form_count],
                form_names[form]};
    }
    return named(event_functions[place - events_begin]);
}

}  // namespace

Function const &functionAt(int place) {
    return *entryAt(place).function;
}

int placeOf(Function const &function) {
    int place = 0;
    while (&functionAt(place) != &function) {
        ++place;
    }
    return place;
}

operations::Operation const *operationAt(int place) {
    return entryAt(place).operation;
}

void pushFunctionName(lua_State *L, int place) {
    Entry const entry = entryAt(place);
    if (entry.operation == nullptr) {
        lua_pushstring(L, entry.name);
    } else {
        lua_pushfstring(L, "korvo_api_action_engine_%s%s", entry.operation->name, entry.form);
    }
}

}  // namespace korvo::lua
