// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_LUA_STATE_H
#define KORVO_TESTS_LUA_STATE_H

#include <cstddef>
#include <string>

#include <lua.hpp>

/// A Lua state with the standard libraries, in which require() finds the module. Its own blocks of memory are no leak of
/// the module's: live_blocks does not notice them.
class State {
  public:
    State();
    ~State();
    State(State const &) = delete;
    State &operator=(State const &) = delete;

    lua_State *get() const { return L_; }
    operator lua_State *() const { return L_; }

    /// Runs Lua text; its results are on the stack. Empty, or the error message, which then is not on the stack.
    std::string run(std::string const &text);

    /// The module's table is pushed on the stack.
    void requireModule();

    /// Can the state's memory run out? LuaJIT has an allocator of its own on most machines.
    static bool canFail();
    /// Makes the nth allocation of the state from now on fail, and all after it; 0 ends that.
    void failFrom(std::size_t nth);
    bool hasFailed() const { return memory_.has_failed; }
    /// Bytes that the state holds.
    std::size_t size() const;

  private:
    struct Memory {
        std::size_t until_failure = 0;
        bool fails = false;
        bool has_failed = false;
    };

    static void *allocate(void *memory, void *block, std::size_t old_size, std::size_t new_size);

    Memory memory_;
    lua_State *L_;
};

#endif
