// SPDX-License-Identifier: Apache-2.0
// The fake platform for scripts. Arguments are those of the test's author: they are not checked.

#include "fake_platform/core_calls.h"
#include "fake_platform/fake_platform.h"
#include "host/libraries.h"
#include "host/values.h"

using fake_platform::Call;
using fake_platform::CoreAnswer;
using fake_platform::CoreCall;
using fake_platform::Function;
using fake_platform::Throw;

namespace {

int recordCore(lua_State *) {
    fake_platform::recordCore();
    return 0;
}

int script(lua_State *) {
    fake_platform::script();
    return 0;
}

int reset(lua_State *) {
    fake_platform::reset();
    return 0;
}

/// fake.answer(function, returned, {out, ..., n = count})
int answer(lua_State *L) {
    lua_settop(L, 3);
    CoreAnswer answer;
    answer.returned = valueAt(L, 2);
    if (lua_istable(L, 3)) {
        answer.outs = valueAt(L, 3).list;
    }
    fake_platform::answer(lua_tostring(L, 1), answer);
    return 0;
}

Throw throwAt(lua_State *L, int index) {
    std::string const what = lua_tostring(L, index);
    return what == "standard" ? Throw::standard_exception
           : what == "json"   ? Throw::json_exception
                              : Throw::number;
}

/// fake.throw(function, "standard" | "json" | "number")
int throwFrom(lua_State *L) {
    CoreAnswer answer;
    answer.thrown = throwAt(L, 2);
    fake_platform::answer(lua_tostring(L, 1), answer);
    return 0;
}

/// fake.calls([function]): {{function = name, arguments = {...}}, ...}
int calls(lua_State *L) {
    std::string const wanted = lua_isstring(L, 1) != 0 ? lua_tostring(L, 1) : "";
    lua_newtable(L);
    int count = 0;
    for (CoreCall const &call : fake_platform::coreCalls()) {
        if (!wanted.empty() && call.function != wanted) {
            continue;
        }
        lua_newtable(L);
        lua_pushstring(L, call.function.c_str());
        lua_setfield(L, -2, "called");
        pushValue(L, call.arguments);
        lua_setfield(L, -2, "arguments");
        lua_rawseti(L, -2, ++count);
    }
    return 1;
}

int countReleases(lua_State *) {
    fake_platform::countReleases();
    return 0;
}

int releases(lua_State *L) {
    lua_newtable(L);
    int place = 0;
    for (unsigned int const count : fake_platform::releases()) {
        lua_pushnumber(L, count);
        lua_rawseti(L, -2, ++place);
    }
    return 1;
}

// ---- Operations, in the scripted mode ----

Function functionNamed(std::string const &name) {
    if (name == "open") {
        return Function::initiator_init;
    }
    if (name == "send") {
        return Function::send_command;
    }
    if (name == "subscribe") {
        return Function::event_subscribe;
    }
    return name == "receive" ? Function::receive_response : Function::response_receive_callback;
}

void setText(lua_State *L, char const *field, fake_platform::Text const &text) {
    if (text.has_value()) {
        lua_pushlstring(L, text->data(), text->size());
        lua_setfield(L, -2, field);
    }
}

void setPointer(lua_State *L, char const *field, void const *pointer) {
    lua_pushlightuserdata(L, const_cast<void *>(pointer));
    lua_setfield(L, -2, field);
}

/// fake.messages("send" | "receive" | "register"): what went to the messaging layer
int messages(lua_State *L) {
    lua_newtable(L);
    int place = 0;
    for (Call const &call : fake_platform::calls(functionNamed(lua_tostring(L, 1)))) {
        lua_newtable(L);
        setText(L, "service", call.service);
        setText(L, "target", call.target);
        setText(L, "request_id", call.request_id);
        setText(L, "method", call.method);
        setPointer(L, "object", call.object);
        setPointer(L, "request_id_address", call.request_id_address);
        lua_pushnumber(L, call.number);
        lua_setfield(L, -2, "timeout");
        pushJson(L, call.json);
        lua_setfield(L, -2, "json");
        lua_rawseti(L, -2, ++place);
    }
    return 1;
}

/// fake.respond(operation): lines up the good response with the sample results
int respond(lua_State *L) {
    fake_platform::respond(responseOf(expectation(lua_tostring(L, 1))));
    return 0;
}

/// fake.respond_with(operation, {name = value, ...}): the good response with other texts or numbers in its lists
int respondWith(lua_State *L) {
    json::Object response = responseOf(expectation(lua_tostring(L, 1)));
    lua_pushnil(L);
    while (lua_next(L, 2) != 0) {
        if (lua_istable(L, -1)) {
            json::Array list;
            for (int place = 1; place <= static_cast<int>(lua_objlen(L, -1)); ++place) {
                lua_rawgeti(L, -1, place);
                if (lua_type(L, -1) == LUA_TSTRING) {
                    list.Insert(json::String(lua_tostring(L, -1)));
                } else {
                    list.Insert(json::Number(lua_tonumber(L, -1)));
                }
                lua_pop(L, 1);
            }
            response[lua_tostring(L, -2)] = list;
        }
        lua_pop(L, 1);
    }
    fake_platform::respond(response);
    return 0;
}

/// fake.respond_version(major, minor)
int respondVersion(lua_State *L) {
    json::Object response;
    response["target_major"] = json::Number(lua_tonumber(L, 1));
    response["target_minor"] = json::Number(lua_tonumber(L, 2));
    fake_platform::respond(response);
    return 0;
}

/// fake.fail("open" | "subscribe" | "send" | "receive" | "register", status) or, with a text, throw
int fail(lua_State *L) {
    Function const function = functionNamed(lua_tostring(L, 1));
    if (lua_type(L, 2) == LUA_TNUMBER) {
        fake_platform::arrange(function, static_cast<korvo_core_status>(lua_tointeger(L, 2)));
    } else {
        fake_platform::arrange(function, throwAt(L, 2));
    }
    return 0;
}

/// fake.complete(identifier, name, success): delivers the event that an action of camera-1 has ended
int complete(lua_State *L) {
    json::Object event;
    event["event"] = json::String("Action_completed");
    event["action_id"] = json::Number(lua_tonumber(L, 1));
    event["action_name"] = json::String(lua_tostring(L, 2));
    event["success"] = json::Boolean(lua_toboolean(L, 3) != 0);
    fake_platform::deliverEvent("camera-1", event);
    return 0;
}

int commandFor(lua_State *L) {
    pushJson(L, commandOf(expectation(lua_tostring(L, 1))));
    return 1;
}

void pushMembers(lua_State *L, std::vector<Member> const &members) {
    static char const *const kinds[] = {"number", "flag", "text", "texts", "numbers"};
    lua_newtable(L);
    int place = 0;
    for (Member const &member : members) {
        lua_newtable(L);
        lua_pushstring(L, kinds[static_cast<std::size_t>(member.kind)]);
        lua_setfield(L, -2, "kind");
        lua_pushstring(L, member.name);
        lua_setfield(L, -2, "name");
        pushContent(L, member.sample);
        lua_setfield(L, -2, "sample");
        lua_rawseti(L, -2, ++place);
    }
}

/// fake.operations(): {{name = name, method = name, inputs = {{kind = kind, name = name, sample = value}, ...}, results = ...}, ...}
int operations(lua_State *L) {
    lua_newtable(L);
    int place = 0;
    for (Expectation const &row : expectations()) {
        lua_newtable(L);
        lua_pushstring(L, row.operation);
        lua_setfield(L, -2, "name");
        lua_pushstring(L, row.method);
        lua_setfield(L, -2, "method");
        pushMembers(L, row.inputs);
        lua_setfield(L, -2, "inputs");
        pushMembers(L, row.results);
        lua_setfield(L, -2, "results");
        lua_rawseti(L, -2, ++place);
    }
    return 1;
}

}  // namespace

void openFakeLibrary(lua_State *L) {
    luaL_Reg const functions[] = {{"record_core", recordCore},
                                  {"script", script},
                                  {"reset", reset},
                                  {"answer", answer},
                                  {"throw", throwFrom},
                                  {"calls", calls},
                                  {"count_releases", countReleases},
                                  {"releases", releases},
                                  {"messages", messages},
                                  {"respond", respond},
                                  {"respond_with", respondWith},
                                  {"respond_version", respondVersion},
                                  {"fail", fail},
                                  {"complete", complete},
                                  {"command_for", commandFor},
                                  {"operations", operations},
                                  {nullptr, nullptr}};
    luaL_register(L, "fake", functions);
    lua_pop(L, 1);
}
