// SPDX-License-Identifier: Apache-2.0
#include "lua/functions.h"

#include <iterator>

#include "korvo_api_action_engine.h"
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

using Status = Parameter<Convention::returned_status>;
using Handle = Parameter<Convention::opaque>;
using Target = Parameter<Convention::text>;
using Timeout = Parameter<Convention::integer>;
using Block = Parameter<Convention::flag>;
using NewRequestId = Parameter<Convention::out_request_id>;
using RequestId = Parameter<Convention::request_id>;
using Context = Parameter<Convention::opaque>;

#define INPUT(kind, member) , Parameter<inputOf(operations::Kind::kind)>
#define OUTPUT(kind, member) , Parameter<outputOf(operations::Kind::kind)>
#define KIND(kind, member) , operations::Kind::kind
#define CALLBACK(RESULTS) CallbackParameter<operations::Kind::none RESULTS(KIND)>
#define FORM(op, form, ...) \
    KORVO_LUA_FUNCTION(korvo_api_action_engine_##op##_##form, Wrapped<Status, __VA_ARGS__>)

#define SEND(op, INPUTS, RESULTS) FORM(op, send, Handle, Target INPUTS(INPUT) RESULTS(OUTPUT))
#define SEND_WITH_TIMEOUT(op, INPUTS, RESULTS) \
    FORM(op, send_with_timeout, Handle, Target, Timeout INPUTS(INPUT) RESULTS(OUTPUT))
#define NON_BLOCKING_SEND(op, INPUTS) FORM(op, non_blocking_send, Handle, Target, NewRequestId INPUTS(INPUT))
#define RECEIVE(op, RESULTS) FORM(op, receive, Handle, Block, Target, RequestId RESULTS(OUTPUT))
#define RECEIVE_WITH_TIMEOUT(op, RESULTS) \
    FORM(op, receive_with_timeout, Handle, Target, Timeout, RequestId RESULTS(OUTPUT))
#define SEND_ASYNC(op, INPUTS, RESULTS) \
    FORM(op, send_async, Handle, Target INPUTS(INPUT), CALLBACK(RESULTS), Context)
#define CANCEL_ASYNC(op, RESULTS) FORM(op, cancel_async, Handle, CALLBACK(RESULTS), Context)

char const *const forms[] = {"_send",        "_send_with_timeout",    "_non_blocking_send",
                             "_receive",     "_receive_with_timeout", "_send_async",
                             "_cancel_async"};
constexpr int form_count = std::size(forms);

#define OPERATION(op, Method, INPUTS, RESULTS)                                                           \
    {SEND(op, INPUTS, RESULTS), SEND_WITH_TIMEOUT(op, INPUTS, RESULTS), NON_BLOCKING_SEND(op, INPUTS),   \
     RECEIVE(op, RESULTS),      RECEIVE_WITH_TIMEOUT(op, RESULTS),      SEND_ASYNC(op, INPUTS, RESULTS), \
     CANCEL_ASYNC(op, RESULTS)},
Function const operation_functions[][form_count] = {
#include "operations/operations.def"
};

// The version handshake has no forms with a time-out, and its inputs are the library's.
#define NO_INPUTS(X)
#define OPERATION(op, Method, INPUTS, RESULTS)
#define VERSION_QUERY(op, Method, INPUTS, RESULTS)                                        \
    SEND(op, NO_INPUTS, RESULTS), NON_BLOCKING_SEND(op, NO_INPUTS), RECEIVE(op, RESULTS), \
        SEND_ASYNC(op, NO_INPUTS, RESULTS), CANCEL_ASYNC(op, RESULTS)
Function const version_functions[] = {
#include "operations/operations.def"
};
constexpr int version_forms[] = {0, 2, 3, 5, 6};

#undef NO_INPUTS
#undef CANCEL_ASYNC
#undef SEND_ASYNC
#undef RECEIVE_WITH_TIMEOUT
#undef RECEIVE
#undef NON_BLOCKING_SEND
#undef SEND_WITH_TIMEOUT
#undef SEND
#undef FORM
#undef CALLBACK
#undef KIND
#undef OUTPUT
#undef INPUT

constexpr int version_count = std::size(version_functions);
constexpr int operation_count = std::size(operation_functions);

constexpr int library_begin = std::size(core_functions);
constexpr int version_begin = library_begin + static_cast<int>(std::size(library_functions));
constexpr int operations_begin = version_begin + version_count;
constexpr int events_begin = operations_begin + operation_count * form_count;

static_assert(std::size(version_forms) == version_count);
static_assert(events_begin + static_cast<int>(std::size(event_functions)) == function_count);

/// What there is to know about a function: the function, and either its name or its row and form.
struct Entry {
    Function const *function;
    char const *name;
    operations::Operation const *operation;
    int form;
};

Entry entryAt(int place) {
    auto const named = [](NamedFunction const &entry) {
        return Entry{&entry.function, entry.name, nullptr, 0};
    };
    if (place < library_begin) {
        return named(core_functions[place]);
    }
    if (place < version_begin) {
        return named(library_functions[place - library_begin]);
    }
    if (place < operations_begin) {
        int const at = place - version_begin;
        return {&version_functions[at], nullptr, &operations::version_query, version_forms[at]};
    }
    if (place < events_begin) {
        int const at = place - operations_begin;
        int const form = at % form_count;
        return {&operation_functions[at / form_count][form], nullptr, &operations::all[at / form_count],
                form};
    }
    return named(event_functions[place - events_begin]);
}

/// Names are wanted for the registration, for errors and for callbacks only.
Entry entryOf(Function const &function) {
    int place = 0;
    while (entryAt(place).function != &function) {
        ++place;
    }
    return entryAt(place);
}

}  // namespace

Function const &functionAt(int place) {
    return *entryAt(place).function;
}

operations::Operation const *operationOf(Function const &function) {
    return entryOf(function).operation;
}

void pushFunctionName(lua_State *L, Function const &function) {
    Entry const entry = entryOf(function);
    if (entry.operation == nullptr) {
        lua_pushstring(L, entry.name);
    } else {
        lua_pushfstring(L, "korvo_api_action_engine_%s%s", entry.operation->name, forms[entry.form]);
    }
}

}  // namespace korvo::lua
