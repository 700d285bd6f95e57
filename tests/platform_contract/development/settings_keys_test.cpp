// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "development/setting_functions.h"
#include "development/test_state_folder.h"

namespace {

constexpr korvo_core_status done = KORVO_CORE_STATUS_NO_ERROR;

using Keys = std::vector<std::string>;

Keys taken(char **list) {
    Keys keys;
    EXPECT_NE(list, nullptr);
    for (char **key = list; key != nullptr && *key != nullptr; ++key) {
        keys.emplace_back(*key);
    }
    korvo_core_free_string_array(list);
    return keys;
}

Keys startingWith(char const *prefix) {
    return taken(korvo_core_settings_get_keys_starting_with(prefix));
}

using SettingKeys = SettingsTest;
using ConfigurationKeys = SettingsTest;

}  // namespace

TEST_F(SettingKeys, AreNoneAtFirst) {
    EXPECT_EQ(taken(korvo_core_settings_get_all_keys()), Keys());
    EXPECT_EQ(startingWith("a"), Keys());
    EXPECT_EQ(startingWith(""), Keys());
}

TEST_F(SettingKeys, AreListedInOrderWithThoseThatHaveOnlyADefault) {
    ASSERT_EQ(IntSetting::set("b", 1), done);
    ASSERT_EQ(StringSetting::setDefault("a", "x"), done);
    ASSERT_EQ(BoolSetting::set("\xc3\xa4", 1), done);
    ASSERT_EQ(BoolSetting::set("B", 1), done);
    EXPECT_EQ(taken(korvo_core_settings_get_all_keys()), (Keys{"B", "a", "b", "\xc3\xa4"}));
    ASSERT_EQ(korvo_core_settings_delete_key("a"), done);
    EXPECT_EQ(taken(korvo_core_settings_get_all_keys()), (Keys{"B", "b", "\xc3\xa4"}));
}

TEST_F(SettingKeys, AreFoundByTheirBeginning) {
    for (char const *const key : {"lens", "lens.zoom", "lens.focus", "lense", "len", "mens.zoom"}) {
        ASSERT_EQ(IntSetting::set(key, 1), done);
    }
    EXPECT_EQ(startingWith("lens."), (Keys{"lens.focus", "lens.zoom"}));
    EXPECT_EQ(startingWith("lens"), (Keys{"lens", "lens.focus", "lens.zoom", "lense"}));
    EXPECT_EQ(startingWith("lens.zoom"), (Keys{"lens.zoom"}));
    EXPECT_EQ(startingWith("lens.zoom."), Keys());
    EXPECT_EQ(startingWith("zoom"), Keys());
    EXPECT_EQ(startingWith("\xff"), Keys());
    EXPECT_EQ(startingWith(""), (Keys{"len", "lens", "lens.focus", "lens.zoom", "lense", "mens.zoom"}));
}

TEST_F(SettingKeys, WithoutATextAreNone) {
    korvo_core_settings_type type = KORVO_CORE_SETTING_TYPE_UNKNOWN;
    EXPECT_EQ(korvo_core_settings_get_keys_starting_with(nullptr), nullptr);
    EXPECT_EQ(korvo_core_settings_does_key_exist(nullptr), 0);
    EXPECT_EQ(korvo_core_settings_get_type(nullptr, &type), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_settings_get_type("key", nullptr), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_settings_delete_key(nullptr), KORVO_CORE_STATUS_INVALID_PARAMS);
}

TEST_F(SettingKeys, ExistWithAValueOrADefault) {
    EXPECT_EQ(korvo_core_settings_does_key_exist("key"), 0);
    ASSERT_EQ(IntSetting::setDefault("key", 1), done);
    EXPECT_EQ(korvo_core_settings_does_key_exist("key"), 1);
    ASSERT_EQ(IntSetting::set("other", 1), done);
    EXPECT_EQ(korvo_core_settings_does_key_exist("other"), 1);
    EXPECT_EQ(korvo_core_settings_does_key_exist("oth"), 0);
}

TEST_F(SettingKeys, ThatAreAbsentHaveNoType) {
    korvo_core_settings_type type = KORVO_CORE_SETTING_TYPE_ARRAYOFINT;
    EXPECT_EQ(korvo_core_settings_get_type("key", &type), KORVO_CORE_STATUS_SETTING_NOT_PRESENT);
    EXPECT_EQ(type, KORVO_CORE_SETTING_TYPE_ARRAYOFINT);
    EXPECT_EQ(korvo_core_configuration_get_type("key", &type), KORVO_CORE_STATUS_SETTING_NOT_PRESENT);
    EXPECT_EQ(type, KORVO_CORE_SETTING_TYPE_ARRAYOFINT);
}

TEST_F(ConfigurationKeys, AreListedInOrder) {
    EXPECT_EQ(taken(korvo_core_configuration_get_all_keys()), Keys());
    writeFile(folder_.configuration(), R"({"format": 1, "values": {
        "b": {"type": "int", "value": 1}, "a": {"type": "bool", "default": false}}})");
    EXPECT_EQ(taken(korvo_core_configuration_get_all_keys()), (Keys{"a", "b"}));
    EXPECT_EQ(korvo_core_configuration_does_key_exist("a"), 1);
    EXPECT_EQ(korvo_core_configuration_does_key_exist("c"), 0);
    EXPECT_EQ(korvo_core_configuration_does_key_exist(nullptr), 0);
}

TEST_F(ConfigurationKeys, WithoutAPlaceForTheTypeAreRefused) {
    korvo_core_settings_type type = KORVO_CORE_SETTING_TYPE_UNKNOWN;
    EXPECT_EQ(korvo_core_configuration_get_type(nullptr, &type), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_configuration_get_type("key", nullptr), KORVO_CORE_STATUS_INVALID_PARAMS);
}
