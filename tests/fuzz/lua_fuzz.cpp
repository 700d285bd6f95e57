// SPDX-License-Identifier: Apache-2.0
// Any call from Lua of any function of the module ends in results or in an error of the module's; lua_calls.lua has the rest.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "fuzz_input.h"
#include "lua/host/libraries.h"
#include "lua/host/state.h"

namespace {

/// With the function that takes an input on its stack.
class Calls {
  public:
    Calls() {
        state_.requireModule();
        openFakeLibrary(state_);
        openHostLibrary(state_);
        lua_settop(state_, 0);
        std::string const error =
            state_.run("package.path = '" KORVO_LUA_SUPPORT "/?.lua'\nreturn dofile('" KORVO_LUA_CALLS "')");
        if (!error.empty()) {
            end(error.c_str());
        }
    }

    void tryInput(std::uint8_t const *data, std::size_t size) {
        lua_pushvalue(state_, 1);
        lua_pushlstring(state_, reinterpret_cast<char const *>(data), size);
        if (lua_pcall(state_, 1, 0, 0) != 0) {
            end(lua_tostring(state_, -1));
        }
    }

  private:
    [[noreturn]] static void end(char const *error) {
        (void)std::fprintf(stderr, "%s\n", error != nullptr ? error : "an error that is no text");
        std::abort();
    }

    State state_;
};

}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const *data, std::size_t size) {
    static Calls calls;
    calls.tryInput(data, size);
    return 0;
}
