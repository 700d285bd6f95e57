// SPDX-License-Identifier: Apache-2.0
// What holds for each of the nine types alike.
#include <gtest/gtest.h>

#include "development/child_process.h"
#include "development/setting_functions.h"
#include "development/test_state_folder.h"

// Three different values of each type, and how a person writes the first one in a file.

std::vector<std::string> StringSetting::samples() {
    return {"plain text", "", "zwei\nZeilen: \"\\ \xc3\xa4\xe2\x82\xac\xf0\x9f\x93\xb7\x01"};
}

char const *StringSetting::written() {
    return R"("plain text")";
}

std::vector<std::string> JsonSetting::samples() {
    return {R"({"pan":90.25,"names":["a","b"]})", "[ 1,\n 2 ]", "null"};
}

char const *JsonSetting::written() {
    return R"({"pan":90.25,"names":["a","b"]})";
}

std::vector<int> IntSetting::samples() {
    return {-5, 2147483647, -2147483647 - 1};
}

char const *IntSetting::written() {
    return "-5";
}

std::vector<unsigned char> BoolSetting::samples() {
    return {1, 0, 1};
}

char const *BoolSetting::written() {
    return "true";
}

std::vector<double> DoubleSetting::samples() {
    return {0.1, 5e-324, -1.7976931348623157e308};
}

char const *DoubleSetting::written() {
    return "0.1";
}

std::vector<std::vector<std::string>> ListOfStringsSetting::samples() {
    return {{"one", "", "three"}, {}, {"\xc3\xa4"}};
}

char const *ListOfStringsSetting::written() {
    return R"(["one", "", "three"])";
}

std::vector<std::vector<int>> ListOfIntsSetting::samples() {
    return {{3, -1, 0}, {}, {2147483647, -2147483647 - 1}};
}

char const *ListOfIntsSetting::written() {
    return "[3, -1, 0]";
}

std::vector<std::vector<unsigned char>> ListOfBoolsSetting::samples() {
    return {{1, 0, 1}, {}, {0}};
}

char const *ListOfBoolsSetting::written() {
    return "[true, false, true]";
}

std::vector<std::vector<double>> ListOfDoublesSetting::samples() {
    return {{0.5, 3, -0.001}, {}, {1e300}};
}

char const *ListOfDoublesSetting::written() {
    return "[0.5, 3, -1e-3]";
}

namespace {

constexpr korvo_core_status done = KORVO_CORE_STATUS_NO_ERROR;
constexpr korvo_core_status invalid = KORVO_CORE_STATUS_INVALID_PARAMS;
constexpr korvo_core_status other_type = KORVO_CORE_STATUS_INCORRECT_SETTING_TYPE;
constexpr korvo_core_status absent = KORVO_CORE_STATUS_SETTING_NOT_PRESENT;

template <typename Setting>
class EverySettingType : public SettingsTest {
  protected:
    using Value = typename Setting::Value;

    static Value sample(std::size_t number) { return Setting::samples()[number]; }

    /// The value of a key; a test fails when there is none.
    static Value valueOf(char const *key) {
        Value value{};
        EXPECT_EQ(Setting::get(key, value), done) << key;
        return value;
    }

    static Value defaultOf(char const *key) {
        Value value{};
        EXPECT_EQ(Setting::getDefault(key, value), done) << key;
        return value;
    }

    static bool hasDefault(char const *key) {
        Value value{};
        return Setting::getDefault(key, value) == done;
    }

    /// Stores something under a key that is not of this type.
    static void makeOther(char const *key) {
        if (Setting::type == IntSetting::type) {
            ASSERT_EQ(StringSetting::set(key, "other"), done);
        } else {
            ASSERT_EQ(IntSetting::set(key, 123), done);
        }
    }

    static void expectOtherUnchanged(char const *key) {
        if (Setting::type == IntSetting::type) {
            std::string text;
            EXPECT_EQ(StringSetting::get(key, text), done);
            EXPECT_EQ(text, "other");
            EXPECT_EQ(StringSetting::getDefault(key, text), absent);
        } else {
            int number = 0;
            EXPECT_EQ(IntSetting::get(key, number), done);
            EXPECT_EQ(number, 123);
            EXPECT_EQ(IntSetting::getDefault(key, number), absent);
        }
    }
};

struct NamesOfTypes {
    template <typename Setting>
    // NOLINTNEXTLINE(readability-identifier-naming): GoogleTest asks by this name.
    static std::string GetName(int) {
        return Setting::type_name;
    }
};

using AllTypes =
    testing::Types<StringSetting, JsonSetting, IntSetting, BoolSetting, DoubleSetting, ListOfStringsSetting,
                   ListOfIntsSetting, ListOfBoolsSetting, ListOfDoublesSetting>;
TYPED_TEST_SUITE(EverySettingType, AllTypes, NamesOfTypes);

}  // namespace

TYPED_TEST(EverySettingType, ComesBackAsItWasSet) {
    for (auto const &value : TypeParam::samples()) {
        ASSERT_EQ(TypeParam::set("key", value), done);
        EXPECT_EQ(this->valueOf("key"), value);
        // Read from the file again.
        forgetSettings();
        EXPECT_EQ(this->valueOf("key"), value);
    }
}

TYPED_TEST(EverySettingType, TellsItsType) {
    ASSERT_EQ(TypeParam::set("by value", this->sample(0)), done);
    ASSERT_EQ(TypeParam::setDefault("by default", this->sample(0)), done);
    for (char const *const key : {"by value", "by default"}) {
        korvo_core_settings_type type = KORVO_CORE_SETTING_TYPE_UNKNOWN;
        EXPECT_EQ(korvo_core_settings_get_type(key, &type), done);
        EXPECT_EQ(type, TypeParam::type) << key;
    }
}

TYPED_TEST(EverySettingType, IsItsDefaultUntilItIsSet) {
    ASSERT_EQ(TypeParam::setDefault("key", this->sample(0)), done);
    EXPECT_EQ(this->valueOf("key"), this->sample(0));
    EXPECT_EQ(this->defaultOf("key"), this->sample(0));
    ASSERT_EQ(TypeParam::set("key", this->sample(1)), done);
    EXPECT_EQ(this->valueOf("key"), this->sample(1));
    EXPECT_EQ(this->defaultOf("key"), this->sample(0));
    ASSERT_EQ(TypeParam::setDefault("key", this->sample(2)), done);
    EXPECT_EQ(this->valueOf("key"), this->sample(1));
    forgetSettings();
    EXPECT_EQ(this->valueOf("key"), this->sample(1));
    EXPECT_EQ(this->defaultOf("key"), this->sample(2));
}

TYPED_TEST(EverySettingType, HasNoDefaultBecauseItHasAValue) {
    ASSERT_EQ(TypeParam::set("key", this->sample(0)), done);
    typename TypeParam::Value value{};
    EXPECT_EQ(TypeParam::getDefault("key", value), absent);
}

TYPED_TEST(EverySettingType, IsAbsentUntilItIsSet) {
    typename TypeParam::Value value{};
    EXPECT_EQ(TypeParam::get("key", value), absent);
    EXPECT_EQ(TypeParam::getDefault("key", value), absent);
    EXPECT_EQ(TypeParam::copy("key", "to"), absent);
    EXPECT_EQ(korvo_core_settings_does_key_exist("to"), 0);
}

TYPED_TEST(EverySettingType, DoesNotMixWithOtherTypes) {
    this->makeOther("other");
    ASSERT_EQ(TypeParam::set("mine", this->sample(0)), done);
    typename TypeParam::Value value{};
    EXPECT_EQ(TypeParam::get("other", value), other_type);
    EXPECT_EQ(TypeParam::getDefault("other", value), other_type);
    EXPECT_EQ(TypeParam::set("other", this->sample(0)), other_type);
    EXPECT_EQ(TypeParam::setDefault("other", this->sample(0)), other_type);
    EXPECT_EQ(TypeParam::copy("other", "new"), other_type);
    EXPECT_EQ(TypeParam::copy("mine", "other"), other_type);
    EXPECT_EQ(TypeParam::copy("other", "other"), other_type);
    this->expectOtherUnchanged("other");
    EXPECT_EQ(korvo_core_settings_does_key_exist("new"), 0);
}

TYPED_TEST(EverySettingType, IsCopiedWithItsDefault) {
    ASSERT_EQ(TypeParam::set("from", this->sample(0)), done);
    ASSERT_EQ(TypeParam::setDefault("from", this->sample(1)), done);
    ASSERT_EQ(TypeParam::copy("from", "to"), done);
    EXPECT_EQ(this->valueOf("to"), this->sample(0));
    EXPECT_EQ(this->defaultOf("to"), this->sample(1));
    // Two keys, not two names of one.
    ASSERT_EQ(TypeParam::set("from", this->sample(1)), done);
    EXPECT_EQ(this->valueOf("to"), this->sample(0));
    ASSERT_EQ(TypeParam::copy("from", "from"), done);
    EXPECT_EQ(this->valueOf("from"), this->sample(1));
    EXPECT_EQ(this->defaultOf("from"), this->sample(1));
}

TYPED_TEST(EverySettingType, ReplacesAllThatACopyFinds) {
    ASSERT_EQ(TypeParam::set("from", this->sample(0)), done);
    ASSERT_EQ(TypeParam::set("to", this->sample(1)), done);
    ASSERT_EQ(TypeParam::setDefault("to", this->sample(1)), done);
    ASSERT_EQ(TypeParam::copy("from", "to"), done);
    EXPECT_EQ(this->valueOf("to"), this->sample(0));
    EXPECT_FALSE(this->hasDefault("to"));
}

TYPED_TEST(EverySettingType, LeavesNothingWhenItIsDeleted) {
    ASSERT_EQ(TypeParam::set("key", this->sample(0)), done);
    ASSERT_EQ(TypeParam::setDefault("key", this->sample(1)), done);
    ASSERT_EQ(korvo_core_settings_delete_key("key"), done);
    typename TypeParam::Value value{};
    EXPECT_EQ(TypeParam::get("key", value), absent);
    EXPECT_EQ(TypeParam::getDefault("key", value), absent);
    EXPECT_EQ(korvo_core_settings_does_key_exist("key"), 0);
    EXPECT_EQ(korvo_core_settings_delete_key("key"), absent);
    // The type is free too.
    this->makeOther("key");
}

TYPED_TEST(EverySettingType, RefusesToWorkWithoutArguments) {
    ASSERT_EQ(TypeParam::set("key", this->sample(0)), done);
    typename TypeParam::Value value{};
    EXPECT_EQ(TypeParam::get(nullptr, value), invalid);
    EXPECT_EQ(TypeParam::getDefault(nullptr, value), invalid);
    EXPECT_EQ(TypeParam::getConfigured(nullptr, value), invalid);
    EXPECT_EQ(TypeParam::set(nullptr, this->sample(0)), invalid);
    EXPECT_EQ(TypeParam::setDefault(nullptr, this->sample(0)), invalid);
    EXPECT_EQ(TypeParam::copy(nullptr, "to"), invalid);
    EXPECT_EQ(TypeParam::copy("key", nullptr), invalid);
    for (korvo_core_status const status : TypeParam::withNothingToWriteTo("key")) {
        EXPECT_EQ(status, invalid);
    }
}

TYPED_TEST(EverySettingType, IsSharedWithOtherProcesses) {
    auto const first = this->sample(0);
    auto const second = this->sample(1);
    ASSERT_EQ(TypeParam::set("key", first), done);
    EXPECT_EQ(resultInChild([&] {
                  typename TypeParam::Value value{};
                  if (TypeParam::get("key", value) != done || value != first) {
                      return 1;
                  }
                  return TypeParam::set("key", second) == done ? 0 : 2;
              }),
              0);
    EXPECT_EQ(this->valueOf("key"), second);
}

TYPED_TEST(EverySettingType, IsReadFromTheConfigurationToo) {
    std::string const type = TypeParam::type_name;
    std::string const value = TypeParam::written();
    writeFile(this->folder_.configuration(), R"({"format": 1, "values": {
        "key": {"type": ")" + type + R"(", "value": )" +
                                                 value + R"(},
        "fallback": {"type": ")" + type + R"(", "default": )" +
                                                 value + "}}}");
    for (char const *const key : {"key", "fallback"}) {
        typename TypeParam::Value configured{};
        EXPECT_EQ(TypeParam::getConfigured(key, configured), done) << key;
        if constexpr (std::is_same_v<TypeParam, JsonSetting>) {
            // Written out anew, with numbers as the writer likes them.
            EXPECT_EQ(configured, R"({"pan":9.025E1,"names":["a","b"]})");
        } else {
            EXPECT_EQ(configured, this->sample(0)) << key;
        }
        korvo_core_settings_type found = KORVO_CORE_SETTING_TYPE_UNKNOWN;
        EXPECT_EQ(korvo_core_configuration_get_type(key, &found), done);
        EXPECT_EQ(found, TypeParam::type);
    }
    typename TypeParam::Value none{};
    EXPECT_EQ(TypeParam::getConfigured("other", none), absent);
    // Settings and configuration are two things.
    EXPECT_EQ(TypeParam::get("key", none), absent);
}

TYPED_TEST(EverySettingType, IsNotReadFromTheConfigurationAsAnother) {
    bool const is_int = TypeParam::type == IntSetting::type;
    writeFile(this->folder_.configuration(),
              std::string(R"({"format": 1, "values": {"key": {"type": )") +
                  (is_int ? R"("string", "value": "5")" : R"("int", "value": 5)") + "}}}");
    typename TypeParam::Value value{};
    EXPECT_EQ(TypeParam::getConfigured("key", value), other_type);
}
