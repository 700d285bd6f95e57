// SPDX-License-Identifier: Apache-2.0
// Settings, the configuration and lists, while each allocation and each system call fails in turn.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

#include "korvo_core.h"
#include "processes/environment_variable.h"
#include "processes/temporary_folder.h"
#include "support/every_call.h"
#include "support/rounds.h"

namespace torture {

namespace {

constexpr auto done = KORVO_CORE_STATUS_NO_ERROR;
constexpr auto no_memory = KORVO_CORE_STATUS_ALLOC_FAILED;
constexpr auto absent = KORVO_CORE_STATUS_SETTING_NOT_PRESENT;
constexpr auto unusable = KORVO_CORE_STATUS_INTERNAL_EXCEPTION_CAUGHT;

constexpr char damaged_text[] = "{ this is damaged";
constexpr char configured_text[] =
    R"({"format": 1, "values": {"name": {"type": "string", "value": "configured"}}})";

/// The state folder of a round. Nothing of the test's own fails or is recorded.
class StateFolder {
  public:
    StateFolder() {
        live_blocks::Unnoticed const unnoticed;
        {
            // Each change waits for the disk, and there are thousands: in memory, where there is such a folder.
            std::optional<processes::EnvironmentVariable> in_memory;
            if (access("/dev/shm", W_OK | X_OK) == 0) {
                in_memory.emplace("TMPDIR", "/dev/shm");
            }
            folder_.emplace();
        }
        variable_.emplace("KORVO_STATE_DIR", folder_->path());
        write("configuration.json", configured_text);
        forget();
    }
    ~StateFolder() {
        forget();
        live_blocks::Unnoticed const unnoticed;
        variable_.reset();
        folder_.reset();
    }
    StateFolder(StateFolder const &) = delete;
    StateFolder &operator=(StateFolder const &) = delete;

    void write(char const *name, char const *text) const {
        live_blocks::Unnoticed const unnoticed;
        std::ofstream(folder_->path() + "/" + name, std::ios::trunc) << text;
    }
    std::vector<std::string> names() const {
        live_blocks::Unnoticed const unnoticed;
        std::vector<std::string> names;
        for (auto const &entry : std::filesystem::directory_iterator(folder_->path())) {
            names.push_back(entry.path().filename().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    std::string text(char const *name) const {
        live_blocks::Unnoticed const unnoticed;
        std::ifstream file(folder_->path() + "/" + name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    /// What is held of the files is dropped.
    static void forget() {
        EXPECT_EQ(korvo_core_settings_deinit(), done);
        EXPECT_EQ(korvo_core_configuration_deinit(), done);
    }

    std::optional<processes::TemporaryFolder> folder_;
    std::optional<processes::EnvironmentVariable> variable_;
};

/// What is in the file is what the statuses said, and whatever fails has failed with `failure`.
template <typename Failing>
void useSettings(Failing &failing, korvo_core_status failure) {
    StateFolder const folder;
    auto const is_allowed = [&](korvo_core_status status) {
        return status == done || (status == failure && failing.hasFailed());
    };
    // Whether the key has this value, as far as that can be told.
    auto const expect_value = [&](korvo_core_status written, int before, int value) {
        int found = -1;
        korvo_core_status const status = korvo_core_settings_get_int_value("key", &found);
        EXPECT_TRUE(is_allowed(status)) << status;
        if (status == done) {
            EXPECT_TRUE(found == value || (written != done && found == before)) << found;
        }
    };

    failing.start();
    korvo_core_status const opened = korvo_core_settings_init();
    EXPECT_TRUE(is_allowed(opened)) << opened;

    korvo_core_status const first = korvo_core_settings_set_int_value("key", 1);
    EXPECT_TRUE(is_allowed(first)) << first;
    if (first != done) {
        failing.stop();
        EXPECT_EQ(korvo_core_settings_set_int_value("key", 1), done);
    }
    korvo_core_status const second = korvo_core_settings_set_int_value("key", 2);
    EXPECT_TRUE(is_allowed(second)) << second;
    expect_value(second, 1, 2);

    char first_element[] = "one";
    char second_element[] = "two";
    char *elements[] = {first_element, second_element, nullptr};
    korvo_core_status const listed = korvo_core_settings_set_arrayofstring_value("list", elements);
    EXPECT_TRUE(is_allowed(listed)) << listed;
    char **list = nullptr;
    unsigned int count = 0;
    korvo_core_status const got = korvo_core_settings_get_arrayofstring_value("list", &list, &count);
    EXPECT_TRUE(is_allowed(got) || (listed != done && got == absent)) << got;
    if (got == done) {
        EXPECT_EQ(count, 2U);
        EXPECT_STREQ(list[1], "two");
        korvo_core_free_string_array(list);
    } else {
        EXPECT_EQ(list, nullptr);
    }
    int number = 7;
    int *numbers[] = {&number, nullptr};
    korvo_core_status const numbered = korvo_core_settings_set_arrayofint_value("numbers", numbers);
    EXPECT_TRUE(is_allowed(numbered)) << numbered;
    int **found_numbers = nullptr;
    korvo_core_status const read =
        korvo_core_settings_get_arrayofint_value("numbers", &found_numbers, &count);
    EXPECT_TRUE(is_allowed(read) || (numbered != done && read == absent)) << read;
    if (read == done) {
        EXPECT_EQ(*found_numbers[0], 7);
        korvo_core_free_int_array(found_numbers);
    }
    korvo_core_free_string_array(korvo_core_settings_get_all_keys());
    char *name = nullptr;
    korvo_core_status const configured = korvo_core_configuration_get_string_value("name", &name);
    EXPECT_TRUE(is_allowed(configured)) << configured;
    if (configured == done) {
        EXPECT_STREQ(name, "configured");
    }
    std::free(name);

    // A damaged file is put aside, or stays what it is.
    folder.write("settings.json", damaged_text);
    korvo_core_status const after_damage = korvo_core_settings_get_int_value("key", &number);
    EXPECT_TRUE(after_damage == absent || (after_damage == failure && failing.hasFailed())) << after_damage;
    korvo_core_status const begun = korvo_core_settings_set_int_value("key", 3);
    EXPECT_TRUE(is_allowed(begun)) << begun;
    failing.stop();

    EXPECT_EQ(korvo_core_settings_set_int_value("key", 4), done);
    EXPECT_EQ(korvo_core_settings_get_int_value("key", &number), done);
    EXPECT_EQ(number, 4);
    live_blocks::Unnoticed const unnoticed;
    EXPECT_EQ(folder.text("settings.json.damaged-1"), damaged_text);
    EXPECT_EQ(folder.names(), (std::vector<std::string>{"configuration.json", "settings.json",
                                                        "settings.json.damaged-1", "settings.json.lock"}));
}

/// With the same words as a failing allocation. It is armed from the beginning.
class FailingCallInTurn {
  public:
    explicit FailingCallInTurn(FailingCall &failing) : failing_(failing) {}
    void start() const {}
    void stop() const { failing_.stop(); }
    bool hasFailed() const { return failing_.hasFailed(); }

  private:
    FailingCall &failing_;
};

class FaultInTurn {
  public:
    explicit FaultInTurn(Fault &fault) : fault_(fault) {}
    void start() const { fault_.start(); }
    void stop() const { fault_.stop(); }
    bool hasFailed() const { return fault_.failed() != 0; }

  private:
    Fault &fault_;
};

void useWhileCallFails(FailingCall &failing) {
    FailingCallInTurn in_turn(failing);
    useSettings(in_turn, unusable);
}

std::vector<CallThatFails> const calls = {
    {"flock", {ENOLCK, EINTR}},
    {"fsync", {EIO}},
    {"renameat", {EACCES}},
    {"unlinkat", {EACCES}},
    {"read", {EIO, EINTR, one_byte}},
    {"write", {ENOSPC, EINTR, one_byte}},
#if __WORDSIZE == 64
    {"open", {EMFILE, EACCES}},
    {"openat", {ENOSPC, EMFILE}},
    {"stat", {EIO}},
    {"fstat", {EIO}},
    {"fstatat", {EIO}},
#endif
};

class SettingsWhoseSystemCallsFail : public ::testing::TestWithParam<CallThatFails> {};

INSTANTIATE_TEST_SUITE_P(, SettingsWhoseSystemCallsFail, ::testing::ValuesIn(calls),
                         [](auto const &tested) { return tested.param.function; });

TEST_P(SettingsWhoseSystemCallsFail, AreWhatTheStatusesSaid) {
    openLog();
    EXPECT_GT(failEveryCall(GetParam(), useWhileCallFails), 0U) << "it is never called";
}

TEST(SettingsWithoutMemory, AreWhatTheStatusesSaid) {
    openLog();
    failEveryAllocation("settings", [](Fault &fault) {
        FaultInTurn in_turn(fault);
        useSettings(in_turn, no_memory);
    });
}

/// Makes a list, looks at it and frees it.
template <typename Element>
void makeList(Element **(*alloc)(unsigned int), void (*free)(Element **), Fault &fault) {
    Element **const list = alloc(3);
    EXPECT_TRUE(list != nullptr || fault.failed() != 0);
    free(list);
}

TEST(ListsWithoutMemory, AreWholeOrNull) {
    openLog();
    failEveryAllocation("lists", [](Fault &fault) {
        fault.start();
        makeList(korvo_core_alloc_bool_array, korvo_core_free_bool_array, fault);
        makeList(korvo_core_alloc_uint_array, korvo_core_free_uint_array, fault);
        makeList(korvo_core_alloc_int_array, korvo_core_free_int_array, fault);
        makeList(korvo_core_alloc_double_array, korvo_core_free_double_array, fault);
        makeList(korvo_core_alloc_string_array, korvo_core_free_string_array, fault);
        fault.stop();
    });
}

}  // namespace

}  // namespace torture
