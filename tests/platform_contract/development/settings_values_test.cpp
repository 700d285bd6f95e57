// SPDX-License-Identifier: Apache-2.0
// What may be kept, and that it comes back exactly.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "development/setting_functions.h"
#include "development/test_state_folder.h"

namespace {

constexpr korvo_core_status done = KORVO_CORE_STATUS_NO_ERROR;
constexpr korvo_core_status invalid = KORVO_CORE_STATUS_INVALID_PARAMS;

using SettingValues = SettingsTest;

/// Calls `refused`, which must return 1, and gives what it has logged.
template <typename Call>
std::string logOfRefused(Call refused) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(refused(), invalid);
    return testing::internal::GetCapturedStderr();
}

std::uint64_t bitsOf(double number) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

}  // namespace

TEST_F(SettingValues, ThatAreDoublesComeBackBitByBit) {
    double const numbers[] = {0.0,
                              -0.0,
                              0.1,
                              1.0 / 3,
                              1e22,
                              1e23,
                              4.9e-324,
                              2.2250738585072014e-308,
                              1.7976931348623157e308,
                              9007199254740993.0,
                              123456789.125,
                              -8.98846567431158e307,
                              7.0420557077594588669468784357561207962098443483187940792729600000e+59};
    std::vector<double> list;
    for (double const number : numbers) {
        // Over what was there: 0 and -0 are equal and not the same.
        ASSERT_EQ(DoubleSetting::set("number", number), done);
        forgetSettings();
        double found = 1;
        ASSERT_EQ(DoubleSetting::get("number", found), done);
        EXPECT_EQ(bitsOf(found), bitsOf(number)) << number;
        list.push_back(number);
    }
    ASSERT_EQ(ListOfDoublesSetting::set("list", list), done);
    forgetSettings();
    std::vector<double> found;
    ASSERT_EQ(ListOfDoublesSetting::get("list", found), done);
    ASSERT_EQ(found.size(), list.size());
    for (std::size_t index = 0; index < list.size(); ++index) {
        EXPECT_EQ(bitsOf(found[index]), bitsOf(list[index]));
    }
}

TEST_F(SettingValues, ThatAreNoFiniteNumbersAreRefused) {
    for (double const number :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
        std::string const log = logOfRefused([&] { return DoubleSetting::set("gain", number); });
        EXPECT_NE(log.find("korvo_core_settings_set_double_value refused a value for the key \"gain\": "
                           "it is no finite number"),
                  std::string::npos)
            << log;
        std::string const list_log = logOfRefused([&] {
            return ListOfDoublesSetting::setDefault("gains", {1, number});
        });
        EXPECT_NE(list_log.find("\"gains\": element 1: it is no finite number"), std::string::npos)
            << list_log;
    }
    EXPECT_EQ(korvo_core_settings_does_key_exist("gain"), 0);
    EXPECT_EQ(korvo_core_settings_does_key_exist("gains"), 0);
}

TEST_F(SettingValues, ThatAreNoUtf8AreRefused) {
    for (std::string const text :
         {"\x80", "a\xff", "\xc3", "\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82"}) {
        std::string const log = logOfRefused([&] { return StringSetting::set("name", text); });
        EXPECT_NE(log.find("refused a value for the key \"name\": it is no UTF-8"), std::string::npos) << log;
        (void)logOfRefused([&] { return StringSetting::setDefault("name", text); });
        (void)logOfRefused([&] { return ListOfStringsSetting::set("names", {"good", text}); });
        (void)logOfRefused([&] { return JsonSetting::set("json", '"' + text + '"'); });
    }
    EXPECT_EQ(korvo_core_settings_does_key_exist("name"), 0);
    EXPECT_EQ(korvo_core_settings_does_key_exist("names"), 0);
    EXPECT_EQ(korvo_core_settings_does_key_exist("json"), 0);
}

TEST_F(SettingValues, StandUnderAnyKeyThatIsUtf8) {
    for (std::string const key :
         {"", " ", "a.b/c", "\"quoted\"\\", "../../etc", "\xd0\xba\xd0\xbb\xd1\x8e\xd1\x87", "line\nend"}) {
        ASSERT_EQ(IntSetting::set(key.c_str(), 7), done) << key;
        forgetSettings();
        int number = 0;
        EXPECT_EQ(IntSetting::get(key.c_str(), number), done) << key;
        EXPECT_EQ(number, 7);
    }
    std::string const log = logOfRefused([] { return IntSetting::set("bad\xff", 7); });
    EXPECT_NE(log.find("the key is no UTF-8"), std::string::npos) << log;
    ASSERT_EQ(IntSetting::set("good", 7), done);
    (void)logOfRefused([] { return IntSetting::copy("good", "bad\xff"); });
}

TEST_F(SettingValues, ThatAreJsonComeBackCharacterByCharacter) {
    for (std::string const text : {"{}", "[]", "0", "-1.50", "1e2", "18446744073709551615",
                                   "12345678901234567890123", "true", "\"text\"", " { \"a\" :\t1.0 }\n",
                                   "[\"\\u00e4\", \"\\/\"]", "{\"a\":{\"b\":[1,2,{\"c\":null}]}}"}) {
        ASSERT_EQ(JsonSetting::set("key", text), done) << text;
        forgetSettings();
        std::string found;
        ASSERT_EQ(JsonSetting::get("key", found), done) << text;
        EXPECT_EQ(found, text);
    }
}

TEST_F(SettingValues, ThatAreNoJsonAreRefused) {
    ASSERT_EQ(JsonSetting::set("key", "1"), done);
    for (std::string const text :
         {"", " ", "{", "{} {}", "nul", "{\"a\":1,}", "[1 2]", "'a'", "{\"a\":1,\"a\":2}",
          "{\"b\":[{\"a\":1,\"a\":2}]}", "1e999", "01", "\"line\nend\"", "NaN"}) {
        std::string const log = logOfRefused([&] { return JsonSetting::set("key", text); });
        EXPECT_NE(
            log.find("korvo_core_settings_set_json_value refused a value for the key \"key\": it is no JSON "
                     "text: "),
            std::string::npos)
            << log;
    }
    std::string found;
    EXPECT_EQ(JsonSetting::get("key", found), done);
    EXPECT_EQ(found, "1");
}

TEST_F(SettingValues, ThatAreJsonMayNest32Deep) {
    std::string const deep = std::string(32, '[') + std::string(32, ']');
    EXPECT_EQ(JsonSetting::set("key", deep), done);
    (void)logOfRefused([&] { return JsonSetting::set("key", '[' + deep + ']'); });
}

TEST_F(SettingValues, ThatAreFlagsAreZeroOrOne) {
    for (unsigned char const flag : std::vector<unsigned char>{2, 128, 255}) {
        ASSERT_EQ(BoolSetting::set("flag", flag), done);
        unsigned char found = 0;
        ASSERT_EQ(BoolSetting::get("flag", found), done);
        EXPECT_EQ(found, 1);
    }
    ASSERT_EQ(ListOfBoolsSetting::set("flags", {0, 2, 255}), done);
    std::vector<unsigned char> found;
    ASSERT_EQ(ListOfBoolsSetting::get("flags", found), done);
    EXPECT_EQ(found, (std::vector<unsigned char>{0, 1, 1}));
}

TEST_F(SettingValues, ThatAreNullAreRefused) {
    EXPECT_EQ(korvo_core_settings_set_string_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_set_default_string_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_set_json_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_set_default_json_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_set_arrayofstring_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_set_default_arrayofstring_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_set_arrayofint_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_set_default_arrayofint_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_set_arrayofbool_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_set_default_arrayofbool_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_set_arrayofdouble_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_set_default_arrayofdouble_value("key", nullptr), invalid);
    EXPECT_EQ(korvo_core_settings_does_key_exist("key"), 0);
}

TEST_F(SettingValues, AreBoundedAllTogether) {
    ASSERT_EQ(StringSetting::set("half", std::string(9 * 1024 * 1024, 'x')), done);
    std::string const log =
        logOfRefused([] { return StringSetting::set("other half", std::string(9 * 1024 * 1024, 'y')); });
    EXPECT_NE(log.find("larger than 16777216 bytes"), std::string::npos) << log;
    forgetSettings();
    std::string found;
    EXPECT_EQ(StringSetting::get("half", found), done);
    EXPECT_EQ(found.size(), 9U * 1024 * 1024);
    EXPECT_EQ(korvo_core_settings_does_key_exist("other half"), 0);
}

TEST_F(SettingValues, MayBeLongLists) {
    std::vector<int> numbers;
    for (int number = 0; number < 20000; ++number) {
        numbers.push_back(number * 3);
    }
    ASSERT_EQ(ListOfIntsSetting::set("numbers", numbers), done);
    forgetSettings();
    std::vector<int> found;
    ASSERT_EQ(ListOfIntsSetting::get("numbers", found), done);
    EXPECT_EQ(found, numbers);
}
