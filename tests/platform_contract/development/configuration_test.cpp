// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>

#include "development/setting_functions.h"
#include "development/test_state_folder.h"

namespace {

constexpr korvo_core_status done = KORVO_CORE_STATUS_NO_ERROR;
constexpr korvo_core_status unusable = KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT;

using Configuration = SettingsTest;

template <typename Setting>
typename Setting::Value configured(char const *key) {
    typename Setting::Value value{};
    EXPECT_EQ(Setting::getConfigured(key, value), done) << key;
    return value;
}

}  // namespace

TEST_F(Configuration, MayBeMissing) {
    EXPECT_EQ(korvo_core_configuration_init(), done);
    int number = 0;
    EXPECT_EQ(IntSetting::getConfigured("key", number), KORVO_CORE_STATUS_SETTING_NOT_PRESENT);
    EXPECT_EQ(korvo_core_configuration_deinit(), done);
    EXPECT_FALSE(std::filesystem::exists(folder_.path()));
}

TEST_F(Configuration, ThatIsDocumentedWorks) {
    writeFile(folder_.configuration(), readFile(KORVO_CONFIGURATION_SAMPLE));
    ASSERT_EQ(korvo_core_configuration_init(), done);
    EXPECT_EQ(configured<StringSetting>("camera.model"), "Korvo Dome 4K");
    EXPECT_EQ(configured<JsonSetting>("camera.presets"),
              R"({"home":{"pan":0,"tilt":-1.25E1},"gate":{"pan":9.025E1,"tilt":3}})");
    EXPECT_EQ(configured<IntSetting>("lens.zoom_steps"), 30);
    EXPECT_EQ(configured<BoolSetting>("lens.has_wiper"), 1);
    EXPECT_EQ(configured<DoubleSetting>("lens.focal_length"), 4.3);
    EXPECT_EQ(configured<ListOfStringsSetting>("streams.names"),
              (std::vector<std::string>{"main", "preview"}));
    EXPECT_EQ(configured<ListOfIntsSetting>("streams.bit_rates"), (std::vector<int>{8000, 512}));
    EXPECT_EQ(configured<ListOfBoolsSetting>("relays.normally_open"), (std::vector<unsigned char>{1, 0, 1}));
    EXPECT_EQ(configured<ListOfDoublesSetting>("image.gains"), (std::vector<double>{1, 1.5, 0.75}));
    EXPECT_EQ(korvo_core_configuration_deinit(), done);
}

TEST_F(Configuration, IsReadAgainWhenItChanges) {
    writeFile(folder_.configuration(), R"({"format": 1, "values": {"k": {"type": "int", "value": 1}}})");
    EXPECT_EQ(configured<IntSetting>("k"), 1);
    writeFile(folder_.configuration() + ".mine",
              R"({"format": 1, "values": {"k": {"type": "int", "value": 2}}})");
    std::filesystem::rename(folder_.configuration() + ".mine", folder_.configuration());
    EXPECT_EQ(configured<IntSetting>("k"), 2);
    // In place, as editors do it.
    writeFile(folder_.configuration(), R"({"format": 1, "values": {"k": {"type": "int", "value": 31}}})");
    EXPECT_EQ(configured<IntSetting>("k"), 31);
}

TEST_F(Configuration, ThatIsDamagedStaysAndFails) {
    std::string const damaged = R"({"format": 1, "values": {"k": {"type": "int", "value": "1"}}})";
    writeFile(folder_.configuration(), damaged);
    testing::internal::CaptureStderr();
    EXPECT_EQ(korvo_core_configuration_init(), unusable);
    int number = 0;
    EXPECT_EQ(IntSetting::getConfigured("k", number), unusable);
    korvo_core_settings_type type = KORVO_CORE_SETTING_TYPE_UNKNOWN;
    EXPECT_EQ(korvo_core_configuration_get_type("k", &type), unusable);
    EXPECT_EQ(korvo_core_configuration_does_key_exist("k"), 0);
    EXPECT_EQ(korvo_core_configuration_get_all_keys(), nullptr);
    std::string const log = testing::internal::GetCapturedStderr();
    EXPECT_NE(
        log.find(
            "the configuration " + folder_.configuration() +
            " is damaged: \"value\" of key \"k\" is no whole number of 32 bits (its type is int); mend it"),
        std::string::npos)
        << log;
    EXPECT_EQ(readFile(folder_.configuration()), damaged);
    writeFile(folder_.configuration(), R"({"format": 1, "values": {"k": {"type": "int", "value": 1}}})");
    EXPECT_EQ(configured<IntSetting>("k"), 1);
}
