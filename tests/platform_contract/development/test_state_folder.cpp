// SPDX-License-Identifier: Apache-2.0
#include "development/test_state_folder.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "korvo_core.h"

void forgetSettings() {
    EXPECT_EQ(korvo_core_settings_deinit(), KORVO_CORE_STATUS_NO_ERROR);
    EXPECT_EQ(korvo_core_configuration_deinit(), KORVO_CORE_STATUS_NO_ERROR);
}

TestStateFolder::TestStateFolder() : variable_("KORVO_STATE_DIR", path()) {
    forgetSettings();
}

TestStateFolder::~TestStateFolder() {
    forgetSettings();
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
