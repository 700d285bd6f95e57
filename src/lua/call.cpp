// SPDX-License-Identifier: Apache-2.0
// The calling convention, one for all functions: count the arguments, check them in their order, convert them in their
// order, call the C function, push what it returns and then its out-values.
//
// Lua raises errors by a long jump (LuaJIT by unwinding). So there is no object with a destructor in this file, nothing
// is caught around a call into Lua, and where a call has something to free, everything that Lua may fail in runs in a
// protected call.

#include "lua/call.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "lua/functions.h"
#include "lua/lists.h"
#include "lua/pointer_types.h"

namespace korvo::lua {
namespace {

/// A call on its way. It is released outside of the protected call, so it is all that there is to release.
struct Call {
    explicit Call(Function const &the_function) : function(the_function) {}

    Function const &function;
    int level = 1;  // of the script's function, for the position in error messages
    bool called = false;
    Value values[most_values];
};

struct ExpectedArgument {
    char const *text;
    PointerTypeId type;
};

ExpectedArgument expectedArgument(Convention convention) {
    switch (convention) {
#define INPUT(name, Type, member, expected) \
    case Convention::name:                  \
        return {expected, PointerTypeId::_p_void};
#define POINTER_INPUT(name, Type, expected, type) \
    case Convention::name:                        \
        return {expected, PointerTypeId::type};
#include "lua/conventions.def"
        default:
            return {"", PointerTypeId::_p_void};
    }
}

// ---- Errors ----

/// Raises the message on top of the stack, with the position in the script before it.
[[noreturn]] void raise(lua_State *L, Call const &call) {
    luaL_where(L, call.level);  // [message position]
    lua_insert(L, -2);          // [position message]
    lua_concat(L, 2);
    lua_error(L);
    __builtin_unreachable();
}

[[noreturn]] void raiseCount(lua_State *L, Call const &call) {
    int const given = lua_gettop(L);
    int const expected = call.function.shape->arguments;
    pushFunctionName(L, placeOf(call.function));
    lua_pushfstring(L, "Error in %s expected %d..%d args, got %d", lua_tostring(L, -1), expected, expected,
                    given);
    raise(L, call);
}

[[noreturn]] void raiseArgument(lua_State *L, Call const &call, int position, char const *expected) {
    char const *const given = typeText(L, position);
    pushFunctionName(L, placeOf(call.function));
    lua_pushfstring(L, "Error in %s (arg %d), expected '%s' got '%s'", lua_tostring(L, -1), position,
                    expected, given);
    raise(L, call);
}

[[noreturn]] void raiseNegative(lua_State *L, Call const &call) {
    lua_pushliteral(L, "number must not be negative");
    raise(L, call);
}

[[noreturn]] void raiseNoPointer(lua_State *L, Call const &call, int position) {
    pushFunctionName(L, placeOf(call.function));
    lua_pushfstring(L, "Error in %s, expected a %s at argument number %d\n", lua_tostring(L, -1), "void*",
                    position);
    raise(L, call);
}

// ---- Checks ----

// On purpose: a number is a text, as everywhere in Lua; 1 and 0 are no flags; any userdata passes for a `void *`.
bool accepts(lua_State *L, Convention convention, int position) {
    int const type = lua_type(L, position);
    switch (convention) {
        case Convention::text:
            return type == LUA_TSTRING || type == LUA_TNIL || type == LUA_TNUMBER;
        case Convention::number:
        case Convention::integer:
        case Convention::real:
        case Convention::status:
        case Convention::priority:
            return type == LUA_TNUMBER || (type == LUA_TSTRING && lua_isnumber(L, position) != 0);
        case Convention::flag:
            return type == LUA_TBOOLEAN;
#define LIST_INPUT(name, Type, member, expected) case Convention::name:
#include "lua/conventions.def"
            return type == LUA_TTABLE;
        default:
            return type == LUA_TNIL || type == LUA_TUSERDATA || type == LUA_TLIGHTUSERDATA;
    }
}

[[noreturn]] void raiseType(lua_State *L, Call const &call, Convention convention, int position) {
    if (convention == Convention::callback) {
        lua_pushfstring(L, "korvo_api_action_engine_%s_method_callback_func_ptr",
                        operationAt(placeOf(call.function))->name);
        raiseArgument(L, call, position, lua_tostring(L, -1));
    }
    raiseArgument(L, call, position, expectedArgument(convention).text);
}

void checkArguments(lua_State *L, Call const &call) {
    Shape const &shape = *call.function.shape;
    if (lua_gettop(L) != shape.arguments) {
        raiseCount(L, call);
    }
    Slot const *slot = shape.argumentSlots();
    for (int position = 1; position <= shape.arguments; ++position, ++slot) {
        if (!accepts(L, slot->convention, position)) {
            raiseType(L, call, slot->convention, position);
        }
    }
}

// ---- Arguments to values ----

unsigned int numberAt(lua_State *L, Call const &call, int position) {
    double const number = lua_tonumber(L, position);
    if (!(number >= 0)) {
        raiseNegative(L, call);
    }
    return json::ToUnsigned(number);
}

void *opaqueAt(lua_State *L, Call const &call, int position) {
    if (lua_isnil(L, position)) {
        return nullptr;
    }
    if (lua_touserdata(L, position) == nullptr) {
        raiseNoPointer(L, call, position);
    }
    return pointerOfUserdata(L, position);
}

void *typedPointerAt(lua_State *L, Call const &call, Convention convention, int position) {
    if (lua_isnil(L, position)) {
        return nullptr;
    }
    PointerType const &expected = convention == Convention::callback
                                      ? callbackType(*operationAt(placeOf(call.function)))
                                      : pointerType(expectedArgument(convention).type);
    if (!isSameType(typeOfUserdata(L, position), &expected)) {
        raiseArgument(L, call, position, expected.text);
    }
    return pointerOfUserdata(L, position);
}

void convertArgument(lua_State *L, Call const &call, Convention convention, int position, Value &value) {
    switch (convention) {
        case Convention::text:
            value.text = lua_tostring(L, position);
            break;
        case Convention::number:
            value.number = numberAt(L, call, position);
            break;
        case Convention::integer:
            value.integer = toInt(lua_tonumber(L, position));
            break;
        case Convention::real:
            value.real = lua_tonumber(L, position);
            break;
        case Convention::status:
        case Convention::priority:
            value.number = json::ToUnsigned(lua_tonumber(L, position));
            break;
        case Convention::flag:
            value.flag = lua_toboolean(L, position) != 0 ? 1 : 0;
            break;
#define LIST_INPUT(name, Type, member, expected) \
    case Convention::name:                       \
        readList(L, position, &value.member);    \
        break;
#include "lua/conventions.def"
        case Convention::opaque:
        case Convention::request_id:
            value.pointer = opaqueAt(L, call, position);
            break;
        default:
            value.pointer = typedPointerAt(L, call, convention, position);
    }
}

void convertArguments(lua_State *L, Call &call) {
    Slot const *slot = call.function.shape->argumentSlots();
    for (int position = 1; position <= call.function.shape->arguments; ++position, ++slot) {
        convertArgument(L, call, slot->convention, position, call.values[slot->place]);
    }
}

// ---- Values to results ----

PointerTypeId typeOfResult(Convention convention) {
    switch (convention) {
#define POINTER_RESULT(name, Type, type) \
    case Convention::name:               \
        return PointerTypeId::type;
#include "lua/conventions.def"
        default:
            return PointerTypeId::_p_void;
    }
}

/// Pushes an empty typed pointer for each pointer that will come back: after the call, memory must not run out, since
/// nobody else would know the pointer.
void pushEmptyPointers(lua_State *L, Shape const &shape) {
    Slot const *slot = shape.resultSlots();
    for (int count = 0; count < shape.results; ++count, ++slot) {
        if (becomesPointer(slot->convention)) {
            *static_cast<TypedPointer *>(lua_newuserdata(L, sizeof(TypedPointer))) = {
                &pointerType(typeOfResult(slot->convention)), 0, nullptr};
        }
    }
}

void pushFilledPointer(lua_State *L, int empty, void *pointer) {
    if (pointer == nullptr) {
        lua_pushnil(L);
        return;
    }
    static_cast<TypedPointer *>(lua_touserdata(L, empty))->pointer = pointer;
    lua_pushvalue(L, empty);
}

void pushResult(lua_State *L, Convention convention, Value const &value, int *empty_pointer) {
    switch (convention) {
        case Convention::returned_status:
        case Convention::out_number:
            lua_pushnumber(L, value.number);
            break;
        case Convention::out_settings_type:
            lua_pushnumber(L, value.settings_type);
            break;
        case Convention::out_integer:
            lua_pushnumber(L, value.integer);
            break;
        case Convention::out_real:
            lua_pushnumber(L, value.real);
            break;
        case Convention::returned_flag:
        case Convention::out_flag:
            lua_pushboolean(L, value.flag);
            break;
        case Convention::returned_constant_text:
            lua_pushstring(L, value.text);
            break;
        case Convention::returned_text:
        case Convention::out_text:
            lua_pushstring(L, value.out_text);
            break;
#define LIST_OUTPUT(name, Type, member) \
    case Convention::name:              \
        pushList(L, value.member);      \
        break;
#define LIST_RESULT LIST_OUTPUT
#include "lua/conventions.def"
        case Convention::out_request_id:
            pushFilledPointer(L, (*empty_pointer)++, value.out_text);
            break;
        default:
            pushFilledPointer(L, (*empty_pointer)++, value.pointer);
    }
}

// ---- The call ----

/// The core may throw; no exception reaches Lua.
void callFunction(Call &call) {
    Shape const &shape = *call.function.shape;
    try {
        shape.call(call.function.function, call.values);
    } catch (...) {
        if (shape.returns_status) {
            call.values[0].number = KORVO_CORE_STATUS_IPC_FAILED;
        }
    }
}

/// With the checked arguments on the stack.
void makeCall(lua_State *L, Call &call) {
    convertArguments(L, call);
    if (call.function.shape->makes_pointers) {
        pushEmptyPointers(L, *call.function.shape);
    }
    callFunction(call);
    call.called = true;
}

/// Returns how many results it has pushed.
int pushResults(lua_State *L, Call const &call) {
    Shape const &shape = *call.function.shape;
    int empty_pointer = shape.arguments + 1;
    Slot const *slot = shape.resultSlots();
    for (int count = 0; count < shape.results; ++count, ++slot) {
        pushResult(L, slot->convention, call.values[slot->place], &empty_pointer);
    }
    return shape.results;
}

void release(Convention convention, Value const &value) {
    switch (convention) {
        case Convention::returned_text:
        case Convention::out_text:
            std::free(value.out_text);
            break;
#define LIST_INPUT(name, Type, member, expected) LIST_OUTPUT(name, Type, member)
#define LIST_OUTPUT(name, Type, member) \
    case Convention::name:              \
        releaseList(value.member);      \
        break;
#define LIST_RESULT LIST_OUTPUT
#include "lua/conventions.def"
        default:
            break;
    }
}

void releaseValues(Call const &call) {
    Slot const *slot = call.function.shape->releasedSlots();
    for (int count = 0; count < call.function.shape->released; ++count, ++slot) {
        release(slot->convention, call.values[slot->place]);
    }
}

/// Called with the arguments, if the call is still to be made, and a pointer to it.
int runProtected(lua_State *L) {
    Call &call = *static_cast<Call *>(lua_touserdata(L, -1));
    lua_pop(L, 1);
    if (!call.called) {
        makeCall(L, call);
    }
    return pushResults(L, call);
}

/// Does what is left of a call, with so many arguments on the stack, and releases its values whatever happens.
int finishProtected(lua_State *L, Call &call, int arguments) {
    // The protected call stands between the function and the script.
    ++call.level;
    lua_pushvalue(L, lua_upvalueindex(2));
    lua_insert(L, 1);
    lua_pushlightuserdata(L, &call);
    int const outcome = lua_pcall(L, arguments + 1, LUA_MULTRET, 0);
    releaseValues(call);
    if (outcome != 0) {
        lua_error(L);
    }
    return call.function.shape->results;
}

/// Texts of usual size move to a place that needs no release, which spares them the protected call. False when they do
/// not fit.
bool moveTexts(Call &call, char *room, std::size_t size) {
    Shape const &shape = *call.function.shape;
    char *moved[most_values];
    for (int count = 0; count < shape.released; ++count) {
        char const *const text = call.values[shape.releasedSlots()[count].place].out_text;
        moved[count] = nullptr;
        if (text != nullptr) {
            std::size_t const length = std::strlen(text) + 1;
            if (length > size) {
                return false;
            }
            moved[count] = static_cast<char *>(std::memcpy(room, text, length));
            room += length;
            size -= length;
        }
    }
    for (int count = 0; count < shape.released; ++count) {
        char *&text = call.values[shape.releasedSlots()[count].place].out_text;
        std::free(text);
        text = moved[count];
    }
    return true;
}

/// A call without lists. Not inlined, so that calls with lists, which may call themselves from a metamethod, take less
/// of the stack.
[[gnu::noinline]] int finishWithoutLists(lua_State *L, Call &call) {
    makeCall(L, call);
    char texts[1024];
    if (call.function.shape->released != 0 && !moveTexts(call, texts, sizeof texts)) {
        lua_settop(L, 0);
        return finishProtected(L, call, 0);
    }
    return pushResults(L, call);
}

/// What Lua calls for every function of the module. Upvalues: the function; runProtected, for functions
/// that have something to release.
int callFromLua(lua_State *L) {
    Call call(*static_cast<Function const *>(lua_touserdata(L, lua_upvalueindex(1))));
    checkArguments(L, call);

    // Out-values that the C function leaves alone come back as NULL, 0 or false.
    Shape const &shape = *call.function.shape;
    std::fill_n(call.values, shape.values, Value{});
    return shape.has_lists ? finishProtected(L, call, shape.arguments) : finishWithoutLists(L, call);
}

}  // namespace

void registerFunctions(lua_State *L) {
    lua_pushcfunction(L, runProtected);
    for (int place = 0; place < function_count; ++place) {
        Function const &function = functionAt(place);
        pushFunctionName(L, place);  // [table runProtected name]
        lua_pushlightuserdata(L, const_cast<Function *>(&function));
        int upvalues = 1;
        if (function.shape->released != 0) {
            lua_pushvalue(L, -3);
            ++upvalues;
        }
        lua_pushcclosure(L, callFromLua, upvalues);  // [table runProtected name function]
        lua_rawset(L, -4);
    }
    lua_pop(L, 1);
}

}  // namespace korvo::lua
