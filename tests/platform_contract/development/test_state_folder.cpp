// SPDX-License-Identifier: Apache-2.0
#include "development/test_state_folder.h"

#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "korvo_core.h"

Variable::Variable(char const *name, std::optional<std::string> const &value) : name_(name) {
    if (char const *const before = getenv(name)) {
        before_ = before;
    }
    (void)(value ? setenv(name, value->c_str(), 1) : unsetenv(name));
}

Variable::~Variable() {
    (void)(before_ ? setenv(name_, before_->c_str(), 1) : unsetenv(name_));
}

void forgetSettings() {
    EXPECT_EQ(korvo_core_settings_deinit(), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_core_configuration_deinit(), KORVO_CORE_STATUS_NO_ERROR);
}

TestStateFolder::TestStateFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "korvo-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    parent_ = name;
    variable_.emplace("KORVO_STATE_DIR", path());
    forgetSettings();
}

TestStateFolder::~TestStateFolder() {
    forgetSettings();
    std::error_code ignored;
    std::filesystem::remove_all(parent_, ignored);
}

std::string readFile(std::string const &path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

void writeFile(std::string const &path, std::string const &text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    ASSERT_TRUE(file.good()) << path;
}
