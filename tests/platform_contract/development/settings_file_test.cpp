// SPDX-License-Identifier: Apache-2.0
// The settings file: where it is, how it begins, what happens when it is damaged or cannot be used.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "development/child_process.h"
#include "development/setting_functions.h"
#include "development/test_state_folder.h"

namespace {

constexpr korvo_core_status done = KORVO_CORE_STATUS_NO_ERROR;
constexpr korvo_core_status absent = KORVO_CORE_STATUS_SETTING_NOT_PRESENT;
constexpr korvo_core_status unusable = KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT;

using SettingsFile = SettingsTest;
using SettingsVersion = SettingsTest;
using DamagedSettings = SettingsTest;

unsigned int modeOf(std::string const &path) {
    struct stat found = {};
    return stat(path.c_str(), &found) == 0 ? found.st_mode & 07777U : 0;
}

/// Takes from this thread what lets root write where the mode of a folder forbids it.
bool giveUpPrivileges() {
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
    return syscall(SYS_capset, &header, none) == 0;
}

ino_t numberOf(std::string const &path) {
    struct stat found = {};
    return stat(path.c_str(), &found) == 0 ? found.st_ino : 0;
}

std::string settingsPath() {
    char *const path = korvo_core_debug_get_setting_path();
    std::string const text = path != nullptr ? path : "(none)";
    std::free(path);
    return text;
}

int intOf(char const *key) {
    int number = -1;
    EXPECT_EQ(IntSetting::get(key, number), done) << key;
    return number;
}

int isNew() {
    unsigned char flag = 77;
    EXPECT_EQ(korvo_core_settings_is_new_file(&flag), done);
    return flag;
}

/// Every function that reads or writes the settings file, each with arguments that would do.
std::vector<korvo_core_status> statusesOfAll() {
    int number = 0;
    unsigned int first = 0;
    unsigned int second = 0;
    unsigned char flag = 0;
    korvo_core_settings_type type = KORVO_CORE_SETTING_TYPE_UNKNOWN;
    return {korvo_core_settings_init(),
            IntSetting::get("key", number),
            IntSetting::getDefault("key", number),
            IntSetting::set("key", 1),
            IntSetting::setDefault("key", 1),
            IntSetting::copy("key", "to"),
            korvo_core_settings_get_type("key", &type),
            korvo_core_settings_delete_key("key"),
            korvo_core_settings_get_and_set_version(&first, 1),
            korvo_core_settings_get_versions(&first, &second),
            korvo_core_settings_is_new_file(&flag)};
}

}  // namespace

TEST_F(SettingsFile, IsNotWrittenWhereOthersCanWrite) {
    ASSERT_EQ(IntSetting::set("key", 1), done);
    for (mode_t const open_mode : {0770U, 0707U}) {
        ASSERT_EQ(chmod(folder_.path().c_str(), open_mode), 0);
        EXPECT_EQ(IntSetting::set("key", 2), unusable) << open_mode;
        EXPECT_EQ(intOf("key"), 1);
    }
    ASSERT_EQ(chmod(folder_.path().c_str(), 0700), 0);
    EXPECT_EQ(IntSetting::set("key", 2), done);
}

TEST_F(SettingsFile, OfAnotherUserIsNotUsed) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root gives files away";
    }
    ASSERT_EQ(IntSetting::set("key", 1), done);
    ASSERT_EQ(chown(folder_.settings().c_str(), 65534, 65534), 0);
    forgetSettings();
    int number = 0;
    EXPECT_EQ(IntSetting::get("key", number), unusable);
    ASSERT_EQ(chown(folder_.settings().c_str(), 0, 0), 0);
    ASSERT_EQ(chown(folder_.path().c_str(), 65534, 65534), 0);
    EXPECT_EQ(IntSetting::set("key", 2), unusable);
    ASSERT_EQ(chown(folder_.path().c_str(), 0, 0), 0);
    EXPECT_EQ(IntSetting::set("key", 2), done);
}

TEST_F(SettingsFile, IsNeverWrittenIntoAFileThatSomebodyElseHasMade) {
    ASSERT_EQ(IntSetting::set("key", 1), done);
    int const planted =
        open((folder_.settings() + ".new").c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    ASSERT_GE(planted, 0);
    EXPECT_EQ(IntSetting::set("key", 2), done);
    char byte = 0;
    EXPECT_EQ(pread(planted, &byte, 1, 0), 0);
    EXPECT_EQ(close(planted), 0);
    EXPECT_EQ(modeOf(folder_.settings()), 0600U);
}

TEST_F(SettingsFile, IsMadeByInitForTheUserAlone) {
    EXPECT_FALSE(std::filesystem::exists(folder_.path()));
    ASSERT_EQ(korvo_core_settings_init(), done);
    EXPECT_EQ(modeOf(folder_.path()), 0700U);
    EXPECT_EQ(modeOf(folder_.settings()), 0600U);
    EXPECT_EQ(
        readFile(folder_.settings()),
        "{\n  \"format\": 1,\n  \"version\": 0,\n  \"previous_version\": 0,\n  \"values\": {\n  }\n}\n");
    EXPECT_EQ(korvo_core_settings_deinit(), done);
}

TEST_F(SettingsFile, HasOneLineAKey) {
    ASSERT_EQ(StringSetting::set("name", "\"x\""), done);
    ASSERT_EQ(IntSetting::set("count", 5), done);
    ASSERT_EQ(IntSetting::setDefault("count", 6), done);
    ASSERT_EQ(JsonSetting::setDefault("json", "{\"a\": 1}"), done);
    EXPECT_EQ(readFile(folder_.settings()), R"({
  "format": 1,
  "version": 0,
  "previous_version": 0,
  "values": {
    "count": {"type":"int","value":5,"default":6},
    "json": {"type":"json","default":"{\"a\": 1}"},
    "name": {"type":"string","value":"\"x\""}
  }
}
)");
}

TEST_F(SettingsFile, IsMadeByTheFirstChangeAndByNoRead) {
    int number = 0;
    EXPECT_EQ(IntSetting::get("key", number), absent);
    EXPECT_FALSE(std::filesystem::exists(folder_.path()));
    ASSERT_EQ(IntSetting::set("key", 1), done);
    EXPECT_TRUE(std::filesystem::exists(folder_.settings()));
}

TEST_F(SettingsFile, LeavesNoUnfinishedOneBeside) {
    ASSERT_EQ(IntSetting::set("key", 1), done);
    std::vector<std::string> names;
    for (auto const &entry : std::filesystem::directory_iterator(folder_.path())) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{"settings.json", "settings.json.lock"}));
}

TEST_F(SettingsFile, IsNotWrittenWhenNothingChanges) {
    ASSERT_EQ(IntSetting::set("key", 1), done);
    ino_t const before = numberOf(folder_.settings());
    ASSERT_EQ(IntSetting::set("key", 1), done);
    ASSERT_EQ(IntSetting::copy("key", "key"), done);
    EXPECT_EQ(korvo_core_settings_delete_key("other"), absent);
    EXPECT_EQ(numberOf(folder_.settings()), before);
    ASSERT_EQ(IntSetting::set("key", 2), done);
    EXPECT_NE(numberOf(folder_.settings()), before);
}

TEST_F(SettingsFile, IsReadAgainWhenItWasReplaced) {
    ASSERT_EQ(IntSetting::set("key", 1), done);
    std::string text = readFile(folder_.settings());
    text.replace(text.find("\"value\":1"), 9, "\"value\":8");
    writeFile(folder_.settings() + ".mine", text);
    std::filesystem::rename(folder_.settings() + ".mine", folder_.settings());
    EXPECT_EQ(intOf("key"), 8);
    std::filesystem::remove(folder_.settings());
    int number = 0;
    EXPECT_EQ(IntSetting::get("key", number), absent);
}

TEST_F(SettingsFile, MayBeWrittenByPeople) {
    writeFile(folder_.settings(),
              R"( {"values":{"b":{"value":2.0,"type":"int"},"d":{"type":"double","default":3},
        "j":{"type":"json","value":[1,"x"]},"k":{"type":"json","value":"\"x\""}},"format":1} )");
    EXPECT_EQ(intOf("b"), 2);
    double number = 0;
    EXPECT_EQ(DoubleSetting::get("d", number), done);
    EXPECT_EQ(number, 3);
    std::string text;
    EXPECT_EQ(JsonSetting::get("j", text), done);
    EXPECT_EQ(text, "[1,\"x\"]");
    EXPECT_EQ(JsonSetting::get("k", text), done);
    EXPECT_EQ(text, "\"x\"");
    EXPECT_EQ(isNew(), 0);
}

TEST_F(SettingsFile, IsNewForTheProcessThatBeganIt) {
    ASSERT_EQ(korvo_core_settings_init(), done);
    EXPECT_EQ(isNew(), 1);
    ASSERT_EQ(IntSetting::set("key", 1), done);
    EXPECT_EQ(isNew(), 1);
    ASSERT_EQ(korvo_core_settings_deinit(), done);
    ASSERT_EQ(korvo_core_settings_init(), done);
    EXPECT_EQ(isNew(), 0);
    ASSERT_EQ(korvo_core_settings_deinit(), done);
    EXPECT_EQ(korvo_core_settings_is_new_file(nullptr), KORVO_CORE_STATUS_INVALID_PARAMS);
}

TEST_F(SettingsFile, StaysTheSameUntilTheLastDeinit) {
    ASSERT_EQ(korvo_core_settings_init(), done);
    ASSERT_EQ(korvo_core_settings_init(), done);
    EnvironmentVariable const elsewhere("KORVO_STATE_DIR", folder_.path() + "/elsewhere");
    ASSERT_EQ(korvo_core_settings_deinit(), done);
    EXPECT_EQ(settingsPath(), folder_.settings());
    ASSERT_EQ(korvo_core_settings_deinit(), done);
    EXPECT_EQ(settingsPath(), folder_.path() + "/elsewhere/settings.json");
    // More often than init: no harm.
    EXPECT_EQ(korvo_core_settings_deinit(), done);
}

TEST_F(SettingsFile, IsInTheUsersStateFolderByDefault) {
    EnvironmentVariable const none("KORVO_STATE_DIR", "");
    {
        EnvironmentVariable const state("XDG_STATE_HOME", folder_.path() + "/x");
        forgetSettings();
        EXPECT_EQ(settingsPath(), folder_.path() + "/x/korvo/settings.json");
    }
    EnvironmentVariable const home("HOME", folder_.path() + "/h");
    {
        // Only absolute paths count there.
        EnvironmentVariable const state("XDG_STATE_HOME", "x");
        forgetSettings();
        testing::internal::CaptureStderr();
        EXPECT_EQ(settingsPath(), folder_.path() + "/h/.local/state/korvo/settings.json");
        forgetSettings();
        EXPECT_EQ(settingsPath(), folder_.path() + "/h/.local/state/korvo/settings.json");
        std::string const said = testing::internal::GetCapturedStderr();
        std::size_t const told = said.find("XDG_STATE_HOME is ignored: it names no absolute path");
        ASSERT_NE(told, std::string::npos) << said;
        EXPECT_EQ(said.find("XDG_STATE_HOME", told + 1), std::string::npos) << said;
    }
    EnvironmentVariable const state("XDG_STATE_HOME", std::nullopt);
    forgetSettings();
    ASSERT_EQ(IntSetting::set("key", 1), done);
    EXPECT_TRUE(std::filesystem::exists(folder_.path() + "/h/.local/state/korvo/settings.json"));
    EXPECT_EQ(modeOf(folder_.path() + "/h/.local/state"), 0700U);
    forgetSettings();
}

TEST_F(SettingsFile, MayBeNamedFromTheCurrentFolder) {
    EnvironmentVariable const relative("KORVO_STATE_DIR", "some-state");
    forgetSettings();
    EXPECT_EQ(settingsPath(), std::filesystem::current_path().string() + "/some-state/settings.json");
}

TEST_F(SettingsFile, WithoutAFolderFailsWithAMessage) {
    EnvironmentVariable const none("KORVO_STATE_DIR", std::nullopt);
    EnvironmentVariable const state("XDG_STATE_HOME", std::nullopt);
    EnvironmentVariable const home("HOME", std::nullopt);
    forgetSettings();
    testing::internal::CaptureStderr();
    for (korvo_core_status const status : statusesOfAll()) {
        EXPECT_EQ(status, unusable);
    }
    EXPECT_EQ(korvo_core_settings_does_key_exist("key"), 0);
    EXPECT_EQ(korvo_core_settings_get_all_keys(), nullptr);
    EXPECT_EQ(korvo_core_settings_get_keys_starting_with(""), nullptr);
    EXPECT_EQ(korvo_core_debug_get_setting_path(), nullptr);
    EXPECT_EQ(korvo_core_configuration_init(), unusable);
    std::string const log = testing::internal::GetCapturedStderr();
    EXPECT_NE(
        log.find(
            "korvo_core_settings_init failed: there is no folder for settings: neither KORVO_STATE_DIR nor "
            "HOME is set"),
        std::string::npos)
        << log;
}

TEST_F(SettingsFile, InAPlaceThatIsNoFolderFailsWithAMessage) {
    writeFile(folder_.path(), "a file");
    testing::internal::CaptureStderr();
    for (korvo_core_status const status : statusesOfAll()) {
        EXPECT_EQ(status, unusable);
    }
    std::string const log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("cannot make or open the state folder " + folder_.path() +
                       ": Not a directory; create it, or name another one in KORVO_STATE_DIR"),
              std::string::npos)
        << log;
    EXPECT_EQ(readFile(folder_.path()), "a file");
}

TEST_F(SettingsFile, InAFolderThatCannotBeMadeFailsOnlyForWriters) {
    // Nobody makes folders there, root included.
    EnvironmentVariable const nowhere("KORVO_STATE_DIR", "/proc/korvo-test");
    forgetSettings();
    testing::internal::CaptureStderr();
    EXPECT_EQ(korvo_core_settings_init(), unusable);
    EXPECT_EQ(IntSetting::set("key", 1), unusable);
    int number = 0;
    EXPECT_EQ(IntSetting::get("key", number), absent);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("/proc/korvo-test"), std::string::npos);
    forgetSettings();
}

TEST_F(SettingsFile, InAFolderThatMayNotBeMadeSaysWhy) {
    std::filesystem::create_directories(folder_.path());
    ASSERT_EQ(chmod(folder_.path().c_str(), S_IRUSR | S_IXUSR), 0);
    std::string const below = folder_.path() + "/missing/state";
    EnvironmentVariable const nowhere("KORVO_STATE_DIR", below);
    forgetSettings();
    testing::internal::CaptureStderr();
    EXPECT_EQ(resultInChild([] {
                  if (!giveUpPrivileges()) {
                      return 1;
                  }
                  return IntSetting::set("key", 1) == unusable ? 0 : 2;
              }),
              0);
    std::string const log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("cannot make or open the state folder " + below +
                       ": Permission denied; create it, or name another one in KORVO_STATE_DIR"),
              std::string::npos)
        << log;
    forgetSettings();
}

TEST_F(SettingsFile, ThatIsAFolderOrAPipeFailsWithAMessage) {
    std::filesystem::create_directories(folder_.settings());
    testing::internal::CaptureStderr();
    for (korvo_core_status const status : statusesOfAll()) {
        EXPECT_EQ(status, unusable);
    }
    std::filesystem::remove(folder_.settings());
    ASSERT_EQ(mkfifo(folder_.settings().c_str(), 0600), 0);
    for (korvo_core_status const status : statusesOfAll()) {
        EXPECT_EQ(status, unusable);
    }
    std::string const log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("cannot read " + folder_.settings() + ": it is no file"), std::string::npos) << log;
}

TEST_F(SettingsFile, IsWhatItWasWhenTheDiskIsFull) {
    ASSERT_EQ(StringSetting::set("key", "before"), done);
    std::string const before = readFile(folder_.settings());
    EXPECT_EQ(resultInChild([] {
                  // As on a full disk, the file is written up to here and no further.
                  (void)signal(SIGXFSZ, SIG_IGN);
                  rlimit const small = {1000, 1000};
                  if (setrlimit(RLIMIT_FSIZE, &small) != 0) {
                      return 1;
                  }
                  (void)!freopen("/dev/null", "w", stderr);
                  if (StringSetting::set("key", std::string(5000, 'x')) != unusable) {
                      return 2;
                  }
                  std::string text;
                  if (StringSetting::get("key", text) != done || text != "before") {
                      return 3;
                  }
                  return StringSetting::set("key", "before") == done ? 0 : 4;
              }),
              0);
    EXPECT_EQ(readFile(folder_.settings()), before);
    EXPECT_FALSE(std::filesystem::exists(folder_.settings() + ".new"));
}

TEST_F(SettingsFile, IsMadeAnewOverWhatACrashHasLeft) {
    writeFile(folder_.settings() + ".new", "{\"format\": 1, \"val");
    ASSERT_EQ(IntSetting::set("key", 1), done);
    forgetSettings();
    EXPECT_EQ(intOf("key"), 1);
}

TEST_F(SettingsFile, IsToldWholeByTheDump) {
    ASSERT_EQ(IntSetting::set("count", 5), done);
    ASSERT_EQ(StringSetting::set("name", "x\ny"), done);
    ASSERT_EQ(StringSetting::setDefault("name", "z"), done);
    testing::internal::CaptureStderr();
    korvo_core_debug_settings_dump();
    std::string const log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("settings of " + folder_.settings() + ": 2 keys, version 0\n"), std::string::npos)
        << log;
    EXPECT_NE(log.find("setting count (int): 5\n"), std::string::npos) << log;
    EXPECT_NE(log.find("setting name (string): \"x\\ny\", by default \"z\"\n"), std::string::npos) << log;
}

TEST_F(SettingsVersion, IsKeptWithTheOneBefore) {
    unsigned int version = 77;
    unsigned int previous = 77;
    ASSERT_EQ(korvo_core_settings_get_versions(&version, &previous), done);
    EXPECT_EQ(version, 0U);
    EXPECT_EQ(previous, 0U);
    unsigned int old = 77;
    ASSERT_EQ(korvo_core_settings_get_and_set_version(&old, 3), done);
    EXPECT_EQ(old, 0U);
    ASSERT_EQ(korvo_core_settings_get_and_set_version(&old, 4294967295U), done);
    EXPECT_EQ(old, 3U);
    forgetSettings();
    ASSERT_EQ(korvo_core_settings_get_versions(&version, &previous), done);
    EXPECT_EQ(version, 4294967295U);
    EXPECT_EQ(previous, 3U);
    ASSERT_EQ(korvo_core_settings_get_and_set_version(&old, 4294967295U), done);
    EXPECT_EQ(old, 4294967295U);
    ASSERT_EQ(korvo_core_settings_get_versions(&version, &previous), done);
    EXPECT_EQ(previous, 4294967295U);
}

TEST_F(SettingsVersion, HasNothingToDoWithTheKeys) {
    ASSERT_EQ(IntSetting::set("key", 1), done);
    unsigned int old = 0;
    ASSERT_EQ(korvo_core_settings_get_and_set_version(&old, 3), done);
    EXPECT_EQ(intOf("key"), 1);
    ASSERT_EQ(korvo_core_settings_delete_key("key"), done);
    unsigned int version = 0;
    unsigned int previous = 0;
    ASSERT_EQ(korvo_core_settings_get_versions(&version, &previous), done);
    EXPECT_EQ(version, 3U);
}

TEST_F(SettingsVersion, NeedsPlacesForItsResults) {
    unsigned int number = 77;
    EXPECT_EQ(korvo_core_settings_get_and_set_version(nullptr, 3), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_settings_get_versions(nullptr, &number), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(korvo_core_settings_get_versions(&number, nullptr), KORVO_CORE_STATUS_INVALID_PARAMS);
    EXPECT_EQ(number, 77U);
}

TEST_F(DamagedSettings, ArePutAsideWithAMessage) {
    struct {
        char const *text;
        char const *why;
    } const damaged[] = {
        {"", "incomplete JSON"},
        {"{\"format\": 1, \"values\": {\"a\": {\"type\": \"in", "incomplete JSON"},
        {"\x01garbage\xff", "syntax error"},
        {"[]", "it is no object"},
        {"{}", "it has no member \"format\""},
        {R"({"format": "1"})", "\"format\" is no whole number"},
        {R"({"format": 0})", "\"format\" is 0"},
        {R"({"format": 1, "version": -1})", "\"version\" is no whole number from 0 to 4294967295"},
        {R"({"format": 1, "previous_version": 4294967296})", "\"previous_version\" is no whole number"},
        {R"({"format": 1, "vlaues": {}})", "it has an unknown member \"vlaues\""},
        {R"({"format": 1, "values": []})", "\"values\" is no object"},
        {R"({"format": 1, "values": {"k": 5}})", "key \"k\" is no object"},
        {R"({"format": 1, "values": {"k": {"value": 5}}})", "key \"k\" has no type"},
        {R"({"format": 1, "values": {"k": {"type": "integer", "value": 5}}})",
         "type \"integer\", which is none"},
        {R"({"format": 1, "values": {"k": {"type": "int"}}})", "has neither \"value\" nor \"default\""},
        {R"({"format": 1, "values": {"k": {"type": "int", "vlaue": 5}}})", "has an unknown member \"vlaue\""},
        {R"({"format": 1, "values": {"k": {"type": "int", "value": 5.5}}})",
         "\"value\" of key \"k\" is no whole number of 32 bits (its type is int)"},
        {R"({"format": 1, "values": {"k": {"type": "int", "default": 2147483648}}})",
         "\"default\" of key \"k\""},
        {R"({"format": 1, "values": {"k": {"type": "bool", "value": 1}}})", "is neither true nor false"},
        {R"({"format": 1, "values": {"k": {"type": "double", "value": "1"}}})", "is no number"},
        {R"({"format": 1, "values": {"k": {"type": "string", "value": 1}}})", "is no text"},
        {R"({"format": 1, "values": {"k": {"type": "string", "value": "a\u0000b"}}})",
         "holds a NUL character"},
        {R"({"format": 1, "values": {"a\u0000b": {"type": "int", "value": 1}}})",
         "a key holds a NUL character"},
        {R"({"format": 1, "values": {"k": {"type": "json", "value": "{"}}})", "does not hold JSON"},
        {R"({"format": 1, "values": {"k": {"type": "arrayofint", "value": 1}}})", "is no list"},
        {R"({"format": 1, "values": {"k": {"type": "arrayofint", "value": [1, null]}}})",
         "is no whole number"},
        {R"({"format": 1, "values": {"k": {"type": "int", "value": 1}, "k": {"type": "int", "value": 2}}})",
         "a name stands twice"},
    };
    unsigned int number = 0;
    for (auto const &sample : damaged) {
        ++number;
        writeFile(folder_.settings(), sample.text);
        forgetSettings();
        testing::internal::CaptureStderr();
        // The first look at it may be a write.
        int found = 0;
        if (number % 2 == 0) {
            EXPECT_EQ(IntSetting::set("new", 1), done) << sample.text;
        } else {
            EXPECT_EQ(IntSetting::get("new", found), absent) << sample.text;
        }
        std::string const log = testing::internal::GetCapturedStderr();
        std::string const kept = folder_.settings() + ".damaged-" + std::to_string(number);
        EXPECT_NE(log.find("the settings file " + folder_.settings() + " is damaged: "), std::string::npos)
            << log;
        EXPECT_NE(log.find(sample.why), std::string::npos) << sample.text << '\n' << log;
        EXPECT_NE(log.find("; it is kept as " + kept + ", and a new one is begun\n"), std::string::npos)
            << log;
        EXPECT_EQ(readFile(kept), sample.text);
        EXPECT_EQ(isNew(), 1);
        EXPECT_EQ(IntSetting::set("key", 5), done);
        EXPECT_EQ(intOf("key"), 5);
        std::filesystem::remove(folder_.settings());
    }
}

TEST_F(DamagedSettings, ArePutAsideByInit) {
    writeFile(folder_.settings(), "{");
    testing::internal::CaptureStderr();
    EXPECT_EQ(korvo_core_settings_init(), done);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("is damaged"), std::string::npos);
    EXPECT_EQ(isNew(), 1);
    EXPECT_TRUE(std::filesystem::exists(folder_.settings()));
    EXPECT_EQ(readFile(folder_.settings() + ".damaged-1"), "{");
    EXPECT_EQ(korvo_core_settings_deinit(), done);
}

TEST_F(DamagedSettings, StayWhereTheyCannotBePutAside) {
    // A lock file that cannot be opened stands for a folder that cannot be written to.
    writeFile(folder_.settings(), "{");
    std::filesystem::create_directory(folder_.settings() + ".lock");
    testing::internal::CaptureStderr();
    int number = 0;
    EXPECT_EQ(IntSetting::get("key", number), unusable);
    EXPECT_EQ(IntSetting::set("key", 1), unusable);
    std::string const log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("is damaged: incomplete JSON (at byte 1); it cannot be put aside: "),
              std::string::npos)
        << log;
    EXPECT_EQ(readFile(folder_.settings()), "{");
}

TEST_F(DamagedSettings, AreNotThoseOfANewerProgram) {
    std::string const newer = R"({"format": 2, "something": "else"})";
    writeFile(folder_.settings(), newer);
    testing::internal::CaptureStderr();
    for (korvo_core_status const status : statusesOfAll()) {
        EXPECT_EQ(status, unusable);
    }
    std::string const log = testing::internal::GetCapturedStderr();
    EXPECT_NE(log.find("cannot use " + folder_.settings() + ": it has the format 2"), std::string::npos)
        << log;
    EXPECT_EQ(readFile(folder_.settings()), newer);
}

TEST_F(DamagedSettings, AreNotThoseThatAreTooLong) {
    writeFile(folder_.settings(), R"({"format": 1})" + std::string(16 * 1024 * 1024, ' '));
    testing::internal::CaptureStderr();
    int number = 0;
    EXPECT_EQ(IntSetting::get("key", number), unusable);
    EXPECT_EQ(IntSetting::set("key", 1), unusable);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("it has more than 16777216 bytes"),
              std::string::npos);
    EXPECT_TRUE(std::filesystem::exists(folder_.settings()));
}
