// SPDX-License-Identifier: Apache-2.0
// Settings of every format so far, opened by this version. tests/upgrade/README.md tells what is in them.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <string>

#include "development/test_state_folder.h"
#include "korvo_core.h"

namespace {

constexpr korvo_core_status done = KORVO_CORE_STATUS_NO_ERROR;

using SettingsUpgrade = SettingsTest;

}  // namespace

TEST_F(SettingsUpgrade, OfFormat1AreReadChangedAndReadAgain) {
    writeFile(folder_.settings(), readFile(KORVO_UPGRADE_FOLDER "/settings-1.json"));
    for (int round = 0; round < 2; ++round) {
        unsigned int version = 0;
        unsigned int previous = 0;
        EXPECT_EQ(korvo_core_settings_get_versions(&version, &previous), done);
        EXPECT_EQ(version, 3U);
        EXPECT_EQ(previous, 2U);
        int number = 0;
        EXPECT_EQ(korvo_core_settings_get_int_value("number", &number), done);
        EXPECT_EQ(number, -5);
        EXPECT_EQ(korvo_core_settings_get_default_int_value("only default", &number), done);
        EXPECT_EQ(number, 9);
        unsigned char flag = 0;
        EXPECT_EQ(korvo_core_settings_get_bool_value("flag", &flag), done);
        EXPECT_EQ(flag, 1);
        double real = 0;
        EXPECT_EQ(korvo_core_settings_get_double_value("real", &real), done);
        EXPECT_EQ(real, 0.1);
        for (auto const &[key, expected] : {std::pair("text",
                                                      "gr\xc3\xbc\xc3\x9f"
                                                      "e \"x\"")}) {
            char *text = nullptr;
            ASSERT_EQ(korvo_core_settings_get_string_value(key, &text), done);
            EXPECT_STREQ(text, expected);
            std::free(text);
        }
        char *json = nullptr;
        ASSERT_EQ(korvo_core_settings_get_json_value("json", &json), done);
        EXPECT_STREQ(json, "{\"a\": [1, -0.5]}");
        std::free(json);
        // The file is written anew, by this version.
        EXPECT_EQ(korvo_core_settings_set_int_value("new", round), done);
        forgetSettings();
    }
    unsigned char is_new = 1;
    EXPECT_EQ(korvo_core_settings_is_new_file(&is_new), done);
    EXPECT_EQ(is_new, 0);
}
