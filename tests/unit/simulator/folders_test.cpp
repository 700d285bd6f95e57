// SPDX-License-Identifier: Apache-2.0
#include "simulator/folders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>

#include "support.h"

namespace simulator::tests {

namespace {

/// Sets variables of the environment, or unsets them for an empty text, and puts the old ones back at its end.
class Environment {
  public:
    explicit Environment(std::map<std::string, std::string> const &values) {
        for (auto const &[name, value] : values) {
            char const *const old = std::getenv(name.c_str());
            previous_[name] = old == nullptr ? "" : old;
            set(name, value);
        }
    }
    ~Environment() {
        for (auto const &[name, value] : previous_) {
            set(name, value);
        }
    }
    Environment(Environment const &) = delete;
    Environment &operator=(Environment const &) = delete;

  private:
    static void set(std::string const &name, std::string const &value) {
        if (value.empty()) {
            ::unsetenv(name.c_str());
        } else {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
    }
    std::map<std::string, std::string> previous_;
};

}  // namespace

TEST(StateFolder, IsTheOneOfThePlatformOrOfTheUser) {
    {
        Environment const all({{"KORVO_STATE_DIR", "/k"}, {"XDG_STATE_HOME", "/x"}, {"HOME", "/h"}});
        EXPECT_EQ(stateFolder(), "/k/action-engine-simulator");
    }
    {
        Environment const user({{"KORVO_STATE_DIR", ""}, {"XDG_STATE_HOME", "/x"}, {"HOME", "/h"}});
        EXPECT_EQ(stateFolder(), "/x/korvo/action-engine-simulator");
    }
    {
        Environment const home({{"KORVO_STATE_DIR", ""}, {"XDG_STATE_HOME", ""}, {"HOME", "/h"}});
        EXPECT_EQ(stateFolder(), "/h/.local/state/korvo/action-engine-simulator");
    }
    Environment const nothing({{"KORVO_STATE_DIR", ""}, {"XDG_STATE_HOME", ""}, {"HOME", ""}});
    EXPECT_THROW(stateFolder(), std::runtime_error);
}

TEST(MakeFolder, MakesWhatIsMissingForItsOwnerOnly) {
    TemporaryFolder const folder;
    makeFolder(folder / "a/b");
    makeFolder(folder / "a/b");
    struct stat status {};
    for (char const *const made : {"a", "a/b"}) {
        ASSERT_EQ(::stat((folder / made).c_str(), &status), 0);
        EXPECT_TRUE(S_ISDIR(status.st_mode));
        EXPECT_EQ(status.st_mode & 0777U, 0700U);
    }
}

TEST(MakeFolder, SaysWhenSomethingElseHasThatName) {
    TemporaryFolder const folder;
    writeFile(folder / "file", "");
    for (std::string const &path : {folder / "file", folder / "file/below"}) {
        try {
            makeFolder(path);
            ADD_FAILURE() << path;
        } catch (std::runtime_error const &error) {
            EXPECT_THAT(error.what(), testing::HasSubstr("cannot make the folder \"" + path + "\": "));
        }
    }
}

}  // namespace simulator::tests
