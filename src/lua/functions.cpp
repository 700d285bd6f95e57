// SPDX-License-Identifier: Apache-2.0
#include "lua/functions.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string>

#include "korvo_api_action_engine.h"
#include "lua/form_parameters.h"
#include "lua/wrapped.h"
#include "operations/operations.h"

namespace korvo::lua {
namespace {

korvo_core_status adapted_korvo_core_ipc_initiator_init(void *logging, char const *name, void **messaging) {
    return korvo_core_ipc_initiator_init(logging, name, messaging, /*flag*/ 1);
}

// A script's text is data: a per cent sign in it is one. What no text means is the core's matter, as everywhere.
korvo_core_status adapted_korvo_core_logging_log(void *logging, korvo_core_log_priority priority,
                                                 char const *text) {
    return korvo_core_logging_log(logging, priority, text != nullptr ? "%s" : nullptr, text);
}

}  // namespace

// ---- The functions ----

#define PASSING(passing, name) , Passing::passing
#define FUNCTION(name, function, result, PARAMETERS) \
    KORVO_LUA_FUNCTION(function, WrappedAs<Passing::result PARAMETERS(PASSING)>),
#define NAMED(name, result, PARAMETERS) FUNCTION(name, name, result, PARAMETERS)
#define ADAPTED(name, result, PARAMETERS) FUNCTION(name, adapted_##name, result, PARAMETERS)

#define OWN(passing, name) , Parameter<Passing::passing>
#define IN(kind, member) , Parameter<inputOf(operations::Kind::kind)>
#define OUT(kind, member) , Parameter<outputOf(operations::Kind::kind)>
#define KIND(kind, member) , operations::Kind::kind
#define CALLBACK(RESULTS) , CallbackParameter<operations::Kind::none RESULTS(KIND)>
#define FORM(form, op, INPUTS, RESULTS)                                                                      \
    KORVO_LUA_FUNCTION(korvo_api_action_engine_##op##_##form,                                                \
                       Wrapped<Parameter<Passing::returned_status> KORVO_FORM_##form(OWN, IN, OUT, CALLBACK, \
                                                                                     INPUTS, RESULTS)>),

Function const functions[function_count] = {
#define CORE_FUNCTION NAMED
#define ADAPTED_CORE_FUNCTION ADAPTED
#include "lua/core_functions.def"
#define LIBRARY_FUNCTION NAMED
#include "lua/library_functions.def"
#define OPERATION(op, Method, INPUTS, RESULTS)
#define VERSION_QUERY(op, Method, INPUTS, RESULTS) KORVO_VERSION_FORMS(FORM, op, INPUTS, RESULTS)
#include "operations/operations.def"
#define OPERATION(op, Method, INPUTS, RESULTS) KORVO_CALL_FORMS(FORM, op, INPUTS, RESULTS)
#include "operations/operations.def"
#define EVENT_FUNCTION NAMED
#include "lua/library_functions.def"
};

#undef FORM
#undef CALLBACK
#undef KIND
#undef OUT
#undef IN
#undef OWN
#undef ADAPTED
#undef NAMED
#undef FUNCTION
#undef PASSING

// ---- Their names ----

namespace {

// The names of forms are put together from the operation's row and the form.
#define NAME(name, result, PARAMETERS) #name,
char const *const core_names[] = {
#define CORE_FUNCTION NAME
#include "lua/core_functions.def"
};
char const *const library_names[] = {
#define LIBRARY_FUNCTION NAME
#include "lua/library_functions.def"
};
char const *const event_names[] = {
#define EVENT_FUNCTION NAME
#include "lua/library_functions.def"
};
#undef NAME

#define FORM_NAME(form, op, INPUTS, RESULTS) "_" #form,
constexpr char const *form_names[] = {KORVO_CALL_FORMS(FORM_NAME, , , )};
char const *const version_form_names[] = {KORVO_VERSION_FORMS(FORM_NAME, , , )};
#undef FORM_NAME

constexpr int form_count = std::size(form_names);

// Where each part begins among the functions.
constexpr int library_begin = std::size(core_names);
constexpr int version_begin = library_begin + static_cast<int>(std::size(library_names));
constexpr int operations_begin = version_begin + static_cast<int>(std::size(version_form_names));
constexpr int events_begin = operations_begin + static_cast<int>(std::size(operations::all)) * form_count;
static_assert(events_begin + static_cast<int>(std::size(event_names)) == function_count);

/// Either a whole name, or an operation and a form.
struct Name {
    char const *whole;
    operations::Operation const *operation;
    char const *form;
};

constexpr std::size_t lengthOf(char const *text) {
    return std::char_traits<char>::length(text);
}

/// Room for the name of every form, with its zero byte.
constexpr std::size_t longestName() {
    std::size_t operation = lengthOf(operations::version_query.name);
    for (operations::Operation const &other : operations::all) {
        operation = std::max(operation, lengthOf(other.name));
    }
    std::size_t form = 0;
    for (char const *const other : form_names) {
        form = std::max(form, lengthOf(other));
    }
    return sizeof "korvo_api_action_engine_" + operation + form;
}
constexpr std::size_t longest_name = longestName();

Name nameAt(int place) {
    if (place < library_begin) {
        return {core_names[place], nullptr, nullptr};
    }
    if (place < version_begin) {
        return {library_names[place - library_begin], nullptr, nullptr};
    }
    if (place < operations_begin) {
        return {nullptr, &operations::version_query, version_form_names[place - version_begin]};
    }
    if (place < events_begin) {
        int const at = place - operations_begin;
        return {nullptr, &operations::all[at / form_count], form_names[at % form_count]};
    }
    return {event_names[place - events_begin], nullptr, nullptr};
}

}  // namespace

operations::Operation const *operationAt(int place) {
    return nameAt(place).operation;
}

// Not by lua_pushfstring(), which makes a string of Lua's of each part: garbage for each of hundreds of names.
void pushFunctionName(lua_State *L, int place) {
    Name const name = nameAt(place);
    if (name.operation == nullptr) {
        lua_pushstring(L, name.whole);
        return;
    }
    char whole[longest_name];
    int const length =
        std::snprintf(whole, sizeof whole, "korvo_api_action_engine_%s%s", name.operation->name, name.form);
    lua_pushlstring(L, whole, static_cast<std::size_t>(length));
}

}  // namespace korvo::lua
