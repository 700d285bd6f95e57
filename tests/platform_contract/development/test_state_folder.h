// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_TESTS_PLATFORM_TEST_STATE_FOLDER_H
#define KORVO_TESTS_PLATFORM_TEST_STATE_FOLDER_H

#include <gtest/gtest.h>

#include <string>

#include "processes/environment_variable.h"
#include "processes/temporary_folder.h"

using processes::EnvironmentVariable;

/// Makes settings and configuration look at the environment and at their files again, as in a new process.
void forgetSettings();

/// A new folder for the settings of one test, named in KORVO_STATE_DIR while it lives and removed afterwards.
class TestStateFolder {
  public:
    TestStateFolder();
    ~TestStateFolder();

    TestStateFolder(TestStateFolder const &) = delete;
    TestStateFolder &operator=(TestStateFolder const &) = delete;

    std::string path() const { return parent_ / "state"; }
    std::string settings() const { return path() + "/settings.json"; }
    std::string configuration() const { return path() + "/configuration.json"; }

  private:
    processes::TemporaryFolder parent_;
    EnvironmentVariable variable_;
};

/// The contents of a file; empty when there is none.
std::string readFile(std::string const &path);

/// Writes a file as people do, making its folder.
void writeFile(std::string const &path, std::string const &text);

/// A test with a state folder of its own, which does not exist yet.
class SettingsTest : public testing::Test {
  protected:
    TestStateFolder folder_;
};

#endif
