// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_LUA_INTERPRETERS_H
#define KORVO_TESTS_LUA_INTERPRETERS_H

#include <string>
#include <utility>
#include <vector>

namespace lua_interpreters {

/// The paths of the interpreters that can load the module of this build.
inline std::vector<std::string> const paths = {KORVO_LUA_INTERPRETERS};

/// "lua51", "luajit": good for the name of a test.
inline std::string nameOf(std::string const &path) {
    std::string name = path.substr(path.rfind('/') + 1);
    if (auto const point = name.find('.'); point != std::string::npos) {
        name.erase(point, 1);
    }
    return name;
}

/// What an interpreter has in its environment to find the modules.
inline std::vector<std::pair<std::string, std::string>> environment() {
    std::vector<std::pair<std::string, std::string>> variables = {
        {"LUA_CPATH", KORVO_LUA_MODULE_FOLDER "/?.so"}, {"LUA_PATH", KORVO_LUA_MODULE_FOLDER "/?.lua"}};
    if (*KORVO_LUA_PRELOAD != '\0') {
        variables.emplace_back("LD_PRELOAD", KORVO_LUA_PRELOAD);
    }
    return variables;
}

}  // namespace lua_interpreters

#endif
