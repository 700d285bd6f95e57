// SPDX-License-Identifier: Apache-2.0
#include "host/script_test.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <vector>

#include "fake_platform/fake_platform.h"
#include "host/libraries.h"
#include "host/state.h"

namespace {

/// Pushes the table of tests that a file returns.
void loadCases(State &state, std::string const &path) {
    openFakeLibrary(state);
    openHostLibrary(state);
    std::string const error = state.run("package.path = '" KORVO_LUA_SUPPORT "/?.lua;" KORVO_LUA_MODULE_FOLDER
                                        "/?.lua'\nreturn dofile('" +
                                        path + "')");
    if (!error.empty()) {
        throw std::runtime_error(error);
    }
}

class ScriptTest : public testing::Test {
  public:
    ScriptTest(std::string path, std::string name) : path_(std::move(path)), name_(std::move(name)) {}

    void TestBody() override {
        State state;
        loadCases(state, path_);
        lua_getglobal(state, "debug");
        lua_getfield(state, -1, "traceback");
        lua_getfield(state, -3, name_.c_str());
        if (lua_pcall(state, 0, 0, -2) != 0) {
            char const *const message = lua_tostring(state, -1);
            FAIL() << (message != nullptr ? message : "an error that is no text");
        }
    }
    void TearDown() override { fake_platform::reset(); }

  private:
    std::string path_;
    std::string name_;
};

std::vector<std::string> namesIn(std::string const &path) {
    State state;
    loadCases(state, path);
    std::vector<std::string> names;
    lua_pushnil(state);
    while (lua_next(state, -2) != 0) {
        lua_pop(state, 1);
        names.emplace_back(lua_tostring(state, -1));
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace

void registerScriptTests() {
    std::vector<std::filesystem::path> files;
    for (auto const &entry : std::filesystem::directory_iterator(KORVO_LUA_CASES)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (std::filesystem::path const &file : files) {
        std::string const path = file.string();
        for (std::string const &name : namesIn(path)) {
            testing::RegisterTest(file.stem().c_str(), name.c_str(), nullptr, nullptr, path.c_str(), 1,
                                  [=]() -> testing::Test * { return new ScriptTest(path, name); });
        }
    }
    if (files.empty()) {
        throw std::runtime_error("there are no files in " KORVO_LUA_CASES);
    }
}
