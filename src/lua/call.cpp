// SPDX-License-Identifier: Apache-2.0
// The calling convention, one for all functions: count the arguments, read them in their order, call the C function, push
// what it returns and then its out-values.
//
// Lua raises errors by a long jump (LuaJIT by unwinding). So there is no object with a destructor in this file, nothing
// is caught around a call into Lua, and where a call has something to free, everything that Lua may fail in runs in a
// protected call.

#include "lua/call.h"

#include <cstdlib>
#include <cstring>

#include "lua/functions.h"
#include "lua/lists.h"
#include "lua/numbers.h"
#include "lua/pointer_types.h"

namespace korvo::lua {
namespace {

/// What became of reading an argument. A wrong type is told before all else that may be wrong.
enum class Reading : unsigned char { done, wrong_type, negative, no_pointer, wrong_pointer };

/// A call on its way. It is released outside of the protected call, so it is all that there is to release.
struct Call {
    explicit Call(Function const &the_function) : function(the_function), shape(*the_function.shape) {}

    Function const &function;
    Shape const &shape;
    /// Of the script's function, for the position in error messages.
    int level = 1;
    bool called = false;
    /// The first argument whose type is right and whose value is not; 0 for none.
    int refused = 0;
    Reading reason = Reading::done;
    /// A bit for each value that is a text which has come back and must be freed.
    unsigned int texts = 0;
    std::size_t lengths[most_texts];
    Value values[most_values];
};

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
    int const expected = call.shape.arguments;
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

[[noreturn]] void raiseNoPointer(lua_State *L, Call const &call, int position) {
    pushFunctionName(L, placeOf(call.function));
    lua_pushfstring(L, "Error in %s, expected a %s at argument number %d\n", lua_tostring(L, -1), "void*",
                    position);
    raise(L, call);
}

[[noreturn]] void raiseType(lua_State *L, Call const &call, int position) {
    Passing const passing = call.shape.passings[position - 1];
    if (passing == Passing::callback) {
        lua_pushfstring(L, "korvo_api_action_engine_%s_method_callback_func_ptr",
                        operationAt(placeOf(call.function))->name);
        raiseArgument(L, call, position, lua_tostring(L, -1));
    }
    raiseArgument(L, call, position, traitsOf(passing).expected);
}

/// The type of a typed pointer that an argument has to be.
PointerType const &expectedPointer(Call const &call, int position) {
    Passing const passing = call.shape.passings[position - 1];
    return passing == Passing::callback ? callbackType(*operationAt(placeOf(call.function)))
                                        : pointerType(traitsOf(passing).type);
}

[[noreturn]] void raiseRefused(lua_State *L, Call const &call) {
    switch (call.reason) {
        case Reading::negative:
            lua_pushliteral(L, "number must not be negative");
            raise(L, call);
        case Reading::no_pointer:
            raiseNoPointer(L, call, call.refused);
        default:
            raiseArgument(L, call, call.refused, expectedPointer(call, call.refused).text);
    }
}

// ---- Arguments to values ----

/// A number, or a text that is one.
bool readNumber(lua_State *L, int position, double &number) {
    number = lua_tonumber(L, position);
    return number != 0 || lua_isnumber(L, position) != 0;
}

// On purpose: any userdata passes for a `void *`.
Reading readOpaque(lua_State *L, int position, Value &value) {
    if (lua_touserdata(L, position) != nullptr) {
        value.pointer = pointerOfUserdata(L, position);
        return Reading::done;
    }
    value.pointer = nullptr;
    int const type = lua_type(L, position);
    if (type == LUA_TNIL) {
        return Reading::done;
    }
    return type == LUA_TLIGHTUSERDATA ? Reading::no_pointer : Reading::wrong_type;
}

Reading readTypedPointer(lua_State *L, Call const &call, int position, Value &value) {
    value.pointer = nullptr;
    int const type = lua_type(L, position);
    if (type == LUA_TNIL) {
        return Reading::done;
    }
    if (type != LUA_TUSERDATA && type != LUA_TLIGHTUSERDATA) {
        return Reading::wrong_type;
    }
    if (!isSameType(typeOfUserdata(L, position), &expectedPointer(call, position))) {
        return Reading::wrong_pointer;
    }
    value.pointer = pointerOfUserdata(L, position);
    return Reading::done;
}

/// Of a list only the type is looked at: its elements have metamethods, and memory for them may run out.
// On purpose: a number is a text, as everywhere in Lua; 1 and 0 are no flags.
Reading readArgument(lua_State *L, Call const &call, Passing passing, int position, Value &value) {
    double number = 0;
    switch (passing) {
        case Passing::text:
            value.text = lua_tostring(L, position);
            return value.text != nullptr || lua_isnil(L, position) ? Reading::done : Reading::wrong_type;
        case Passing::number:
            if (!readNumber(L, position, number)) {
                return Reading::wrong_type;
            }
            value.number = json::ToUnsigned(number);
            return number >= 0 ? Reading::done : Reading::negative;
        case Passing::status:
        case Passing::priority:
            if (!readNumber(L, position, number)) {
                return Reading::wrong_type;
            }
            value.number = json::ToUnsigned(number);
            return Reading::done;
        case Passing::integer:
            if (!readNumber(L, position, number)) {
                return Reading::wrong_type;
            }
            value.integer = toInt(number);
            return Reading::done;
        case Passing::real:
            return readNumber(L, position, value.real) ? Reading::done : Reading::wrong_type;
        case Passing::flag:
            value.flag = lua_toboolean(L, position) != 0 ? 1 : 0;
            return lua_isboolean(L, position) ? Reading::done : Reading::wrong_type;
        case Passing::opaque:
        case Passing::request_id:
            return readOpaque(L, position, value);
        default:
            break;
    }
    if (isList(passing)) {
        value = {};
        return lua_istable(L, position) ? Reading::done : Reading::wrong_type;
    }
    return readTypedPointer(L, call, position, value);
}

/// Raises a wrong type at once, since that is told first; keeps in mind what else is wrong.
[[gnu::noinline]] void refuse(lua_State *L, Call &call, int position, Reading reason) {
    if (reason == Reading::wrong_type) {
        raiseType(L, call, position);
    }
    if (call.refused == 0) {
        call.refused = position;
        call.reason = reason;
    }
}

void readArguments(lua_State *L, Call &call) {
    int const count = call.shape.arguments;
    if (lua_gettop(L) != count) {
        raiseCount(L, call);
    }
    Passing const *const passings = call.shape.passings;
    for (int position = 1; position <= count; ++position) {
        Reading const reading =
            readArgument(L, call, passings[position - 1], position, call.values[position - 1]);
        if (reading != Reading::done) {
            refuse(L, call, position, reading);
        }
    }
}

// ---- Lists ----

/// Calls action(list) with the list that a value is, if it is one.
template <typename Action>
void onList(Passing passing, Value &value, Action const &action) {
    switch (passing) {
#define LIST_INPUT(name, Type, member, expected, lua) LIST_OUTPUT(name, Type, member, lua)
#define LIST_OUTPUT(name, Type, member, lua) \
    case Passing::name:                      \
        action(value.member);                \
        break;
#define LIST_RESULT LIST_OUTPUT
#include "lua/passing.def"
        default:
            break;
    }
}

/// An argument that is refused is refused in its turn: the lists in front of it have been read.
void readLists(lua_State *L, Call &call) {
    for (int position = 1; position <= call.shape.arguments; ++position) {
        if (position == call.refused) {
            raiseRefused(L, call);
        }
        onList(call.shape.passings[position - 1], call.values[position - 1],
               [&](auto **&list) { readList(L, position, &list); });
    }
}

// ---- The call ----

/// Pushes an empty typed pointer for each pointer that will come back: after the call, memory must not run out, since
/// nobody else would know the pointer.
void pushEmptyPointers(lua_State *L, Shape const &shape) {
    for (int place = shape.arguments; place < shape.arguments + shape.results; ++place) {
        if (becomesPointer(shape.passings[place])) {
            *static_cast<TypedPointer *>(lua_newuserdata(L, sizeof(TypedPointer))) = {
                &pointerType(traitsOf(shape.passings[place]).type), 0, nullptr};
        }
    }
}

/// The core may throw; no exception reaches Lua.
void callFunction(Call &call) {
    try {
        call.shape.call(call.function.function, call.values);
    } catch (...) {
        if (call.shape.returns_status) {
            call.values[call.shape.arguments].number = KORVO_CORE_STATUS_IPC_FAILED;
        }
    }
}

/// Room for texts that come back, where they need no release.
struct Room {
    char *place;
    std::size_t size;
};

/// Measures the texts that have come back, and moves those that fit into the room; the others are freed in the end.
void takeTexts(Call &call, Room room) {
    std::size_t *length = call.lengths;
    for (unsigned int left = call.shape.texts; left != 0; left &= left - 1, ++length) {
        int const place = __builtin_ctz(left);
        char *&text = call.values[place].out_text;
        *length = text != nullptr ? std::strlen(text) : 0;
        if (*length >= room.size) {
            call.texts |= 1U << place;
        } else if (text != nullptr) {
            std::memcpy(room.place, text, *length);
            std::free(text);
            text = room.place;
            room.place += *length;
            room.size -= *length;
        }
    }
}

/// With the arguments on the stack, all of them read.
void makeCall(lua_State *L, Call &call, Room room) {
    if (call.shape.makes_pointers) {
        pushEmptyPointers(L, call.shape);
    }
    callFunction(call);
    call.called = true;
    takeTexts(call, room);
}

/// Returns how many results it has pushed.
int pushResults(lua_State *L, Call const &call) {
    int const arguments = call.shape.arguments;
    call.shape.push(L, call.values + arguments, {call.lengths, arguments + 1});
    return call.shape.results;
}

/// Frees what the call has: lists that have been read, and once it has been called, what came back.
void releaseValues(Call &call) {
    int const count = call.shape.arguments + (call.called ? call.shape.results : 0);
    for (int place = 0; place < count; ++place) {
        onList(call.shape.passings[place], call.values[place], [](auto **list) { releaseList(list); });
        if ((call.texts >> place & 1) != 0) {
            std::free(call.values[place].out_text);
        }
    }
}

/// Called with the arguments, if the call is still to be made, and a pointer to it.
int runProtected(lua_State *L) {
    Call &call = *static_cast<Call *>(lua_touserdata(L, -1));
    lua_pop(L, 1);
    if (!call.called) {
        readLists(L, call);
        makeCall(L, call, {nullptr, 0});
    }
    return pushResults(L, call);
}

/// Under its address the state's registry keeps runProtected(): for a new one for each call there might be no memory.
constexpr char run_protected_key = 0;

/// Does what is left of a call, with so many arguments on the stack, and releases its values whatever happens.
int finishProtected(lua_State *L, Call &call, int arguments) {
    // The protected call stands between the function and the script.
    ++call.level;
    lua_pushlightuserdata(L, const_cast<char *>(&run_protected_key));
    lua_rawget(L, LUA_REGISTRYINDEX);
    lua_insert(L, 1);
    lua_pushlightuserdata(L, &call);
    int const outcome = lua_pcall(L, arguments + 1, LUA_MULTRET, 0);
    releaseValues(call);
    if (outcome != 0) {
        lua_error(L);
    }
    return call.shape.results;
}

/// Texts of usual size move to the stack first, which spares them the protected call. Not inlined, so that calls with
/// lists, which may call themselves from a metamethod, take less of the stack.
[[gnu::noinline]] int finishWithTexts(lua_State *L, Call &call) {
    char room[1024];
    makeCall(L, call, {room, sizeof room});
    if (call.texts != 0) {
        lua_settop(L, 0);
        return finishProtected(L, call, 0);
    }
    return pushResults(L, call);
}

/// What Lua calls for every function of the module. Its upvalue is the function.
int callFromLua(lua_State *L) {
    Call call(*static_cast<Function const *>(lua_touserdata(L, lua_upvalueindex(1))));
    readArguments(L, call);
    if (call.shape.has_lists) {
        return finishProtected(L, call, call.shape.arguments);
    }
    if (call.refused != 0) {
        raiseRefused(L, call);
    }
    if (call.shape.texts != 0) {
        return finishWithTexts(L, call);
    }
    makeCall(L, call, {nullptr, 0});
    return pushResults(L, call);
}

}  // namespace

void registerFunctions(lua_State *L) {
    lua_pushlightuserdata(L, const_cast<char *>(&run_protected_key));
    lua_pushcfunction(L, runProtected);
    lua_rawset(L, LUA_REGISTRYINDEX);
    for (Function const &function : functions) {
        pushFunctionName(L, placeOf(function));  // [table name]
        lua_pushlightuserdata(L, const_cast<Function *>(&function));
        lua_pushcclosure(L, callFromLua, 1);  // [table name function]
        lua_rawset(L, -3);
    }
}

}  // namespace korvo::lua
