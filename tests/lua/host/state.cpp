// SPDX-License-Identifier: Apache-2.0
#include "host/state.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "host/flavour.h"
#include "live_blocks/live_blocks.h"

bool State::canFail() {
    return std::strcmp(flavour(), "lua51") == 0;
}

void *State::allocate(void *memory, void *block, std::size_t, std::size_t new_size) {
    Memory &state = *static_cast<Memory *>(memory);
    live_blocks::Unnoticed const unnoticed;
    if (new_size == 0) {
        std::free(block);
        return nullptr;
    }
    if (state.until_failure > 0 && --state.until_failure == 0) {
        state.fails = true;
    }
    if (state.fails) {
        state.has_failed = true;
        return nullptr;
    }
    return std::realloc(block, new_size);
}

State::State() : L_(canFail() ? lua_newstate(allocate, &memory_) : luaL_newstate()) {
    if (L_ == nullptr) {
        throw std::runtime_error("there is no memory for a Lua state");
    }
    luaL_openlibs(L_);
    lua_getglobal(L_, "package");
    lua_pushliteral(L_, KORVO_LUA_MODULE_FOLDER "/?.so");
    lua_setfield(L_, -2, "cpath");
    lua_pop(L_, 1);
}

State::~State() {
    failFrom(0);
    lua_close(L_);
}

std::string State::run(std::string const &text) {
    int const height = lua_gettop(L_);
    if (luaL_loadbuffer(L_, text.data(), text.size(), "=script") != 0 ||
        lua_pcall(L_, 0, LUA_MULTRET, 0) != 0) {
        char const *const message = lua_tostring(L_, -1);
        std::string const error = message != nullptr ? message : "an error that is no text";
        lua_settop(L_, height);
        return error;
    }
    return "";
}

void State::requireModule() {
    std::string const error = run("return require 'korvo_api_action_engine'");
    if (!error.empty()) {
        throw std::runtime_error(error);
    }
}

void State::failFrom(std::size_t nth) {
    memory_ = {};
    memory_.until_failure = nth;
}

std::size_t State::size() const {
    return static_cast<std::size_t>(lua_gc(L_, LUA_GCCOUNT, 0)) * 1024 +
           static_cast<std::size_t>(lua_gc(L_, LUA_GCCOUNTB, 0));
}
