// SPDX-License-Identifier: Apache-2.0
// Settings that several processes and threads use, and that survive the death of one in the middle of a write.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <set>
#include <thread>

#include "development/child_process.h"
#include "development/setting_functions.h"
#include "development/test_state_folder.h"

namespace {

constexpr korvo_core_status done = KORVO_CORE_STATUS_NO_ERROR;

class SharedSettings : public SettingsTest {};

/// A number that a process and its children share.
class SharedNumber {
  public:
    SharedNumber()
        : place_(mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                      -1, 0)),
          number_(new (place_) std::atomic<int>(0)) {}
    ~SharedNumber() { (void)munmap(place_, sizeof(std::atomic<int>)); }

    SharedNumber(SharedNumber const &) = delete;
    SharedNumber &operator=(SharedNumber const &) = delete;

    std::atomic<int> &operator*() { return *number_; }

  private:
    void *place_;
    std::atomic<int> *number_;
};

std::string keyOf(int writer, int number) {
    return "writer " + std::to_string(writer) + "." + std::to_string(number);
}

/// Sets, changes and deletes keys of its own; returns false when a call failed.
bool writeOwnKeys(int writer, int rounds) {
    for (int number = 0; number < rounds; ++number) {
        std::string const key = keyOf(writer, number);
        if (IntSetting::set(key.c_str(), number) != done ||
            IntSetting::set(key.c_str(), number * 2) != done) {
            return false;
        }
        if (number % 2 == 1 && korvo_core_settings_delete_key(key.c_str()) != done) {
            return false;
        }
    }
    return true;
}

void expectOwnKeys(int writer, int rounds) {
    for (int number = 0; number < rounds; ++number) {
        int found = 0;
        std::string const key = keyOf(writer, number);
        if (number % 2 == 1) {
            EXPECT_EQ(korvo_core_settings_does_key_exist(key.c_str()), 0) << key;
        } else {
            EXPECT_EQ(IntSetting::get(key.c_str(), found), done) << key;
            EXPECT_EQ(found, number * 2) << key;
        }
    }
}

}  // namespace

TEST_F(SharedSettings, LoseNothingWhenProcessesWriteAtOnce) {
    constexpr int writers = 3;
    constexpr int rounds = 40;
    std::vector<pid_t> children;
    for (int writer = 0; writer < writers; ++writer) {
        pid_t const child = fork();
        if (child == 0) {
            (void)alarm(100);
            _exit(writeOwnKeys(writer, rounds) ? 0 : 1);
        }
        ASSERT_GT(child, 0);
        children.push_back(child);
    }
    for (pid_t const child : children) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    for (int writer = 0; writer < writers; ++writer) {
        expectOwnKeys(writer, rounds);
    }
}

TEST_F(SharedSettings, LoseNothingWhenThreadsWriteAtOnce) {
    constexpr int writers = 3;
    constexpr int rounds = 20;
    std::atomic<int> failures{0};
    std::atomic<bool> are_writing{true};
    std::thread reader([&] {
        ASSERT_EQ(StringSetting::set("constant", "text"), done);
        while (are_writing) {
            std::string text;
            if (StringSetting::get("constant", text) != done || text != "text") {
                ++failures;
            }
            korvo_core_free_string_array(korvo_core_settings_get_all_keys());
            if (korvo_core_settings_init() != done || korvo_core_settings_deinit() != done) {
                ++failures;
            }
        }
    });
    std::vector<std::thread> threads;
    for (int writer = 0; writer < writers; ++writer) {
        threads.emplace_back([&failures, writer] {
            if (!writeOwnKeys(writer, rounds)) {
                ++failures;
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    are_writing = false;
    reader.join();
    EXPECT_EQ(failures, 0);
    for (int writer = 0; writer < writers; ++writer) {
        expectOwnKeys(writer, rounds);
    }
}

TEST_F(SharedSettings, GiveEachOldVersionToOneProcessOnly) {
    constexpr unsigned int processes = 4;
    constexpr unsigned int rounds = 15;
    // Each process stores numbers of its own. Every number but the last one is then somebody's old version.
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::vector<pid_t> children;
    for (unsigned int process = 0; process < processes; ++process) {
        pid_t const child = fork();
        if (child == 0) {
            (void)alarm(100);
            for (unsigned int round = 1; round <= rounds; ++round) {
                unsigned int old = 0;
                if (korvo_core_settings_get_and_set_version(&old, process * 1000 + round) != done) {
                    _exit(1);
                }
                (void)!write(ends[1], &old, sizeof old);
            }
            _exit(0);
        }
        children.push_back(child);
    }
    for (pid_t const child : children) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    (void)close(ends[1]);
    std::multiset<unsigned int> seen;
    unsigned int old = 0;
    while (read(ends[0], &old, sizeof old) == sizeof old) {
        seen.insert(old);
    }
    (void)close(ends[0]);
    unsigned int version = 0;
    unsigned int previous = 0;
    ASSERT_EQ(korvo_core_settings_get_versions(&version, &previous), done);
    EXPECT_EQ(seen.count(previous), 1U);
    seen.insert(version);
    std::multiset<unsigned int> expected{0};
    for (unsigned int process = 0; process < processes; ++process) {
        for (unsigned int round = 1; round <= rounds; ++round) {
            expected.insert(process * 1000 + round);
        }
    }
    EXPECT_EQ(seen, expected);
}

TEST_F(SharedSettings, AreNewForOneOfSeveralProcessesThatStartAtOnce) {
    constexpr int processes = 4;
    SharedNumber began;
    std::vector<pid_t> children;
    for (int process = 0; process < processes; ++process) {
        pid_t const child = fork();
        if (child == 0) {
            (void)alarm(20);
            unsigned char is_new = 77;
            if (korvo_core_settings_init() != done || korvo_core_settings_is_new_file(&is_new) != done) {
                _exit(1);
            }
            *began += is_new;
            _exit(0);
        }
        children.push_back(child);
    }
    for (pid_t const child : children) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    EXPECT_EQ(*began, 1);
}

TEST_F(SharedSettings, AreWholeWheneverAWriterIsKilled) {
    // A list that is long enough for a write to be interrupted, and that shows whether it is of one piece.
    constexpr std::size_t length = 20000;
    SharedNumber acknowledged;
    std::minstd_rand random(20240229);
    ASSERT_EQ(StringSetting::set("other", "untouched"), done);
    auto const start = std::chrono::steady_clock::now();
    ASSERT_EQ(ListOfIntsSetting::set("numbers", std::vector<int>(length, 0)), done);
    std::chrono::nanoseconds const one_write = std::chrono::steady_clock::now() - start;
    for (int round = 0; round < 30; ++round) {
        ChildProcess writer([&](std::function<void()> const &ready) {
            for (bool is_first = true;; is_first = false) {
                int const number = *acknowledged + 1;
                if (ListOfIntsSetting::set("numbers", std::vector<int>(length, number)) != done) {
                    _exit(1);
                }
                *acknowledged = number;
                if (is_first) {
                    ready();
                }
            }
        });
        ASSERT_TRUE(writer.isReady());
        // Anywhere in the next two writes.
        std::this_thread::sleep_for(one_write * 2 * (random() % 1000) / 1000);
        writer.kill();
        int const least = *acknowledged;
        std::vector<int> found;
        testing::internal::CaptureStderr();
        ASSERT_EQ(ListOfIntsSetting::get("numbers", found), done);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        ASSERT_EQ(found.size(), length);
        EXPECT_EQ(std::count(found.begin(), found.end(), found[0]), static_cast<std::ptrdiff_t>(length));
        // What was acknowledged is there; the write after it may be.
        EXPECT_GE(found[0], least);
        EXPECT_LE(found[0], least + 1);
        *acknowledged = found[0];
        std::string other;
        EXPECT_EQ(StringSetting::get("other", other), done);
        EXPECT_EQ(other, "untouched");
    }
}

TEST_F(SharedSettings, AreFreeForTheChildOfAParentThatIsWriting) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "a lock of the sanitizer's allocator, taken by a writer at the moment of the fork, stays "
                    "taken in the child";
#endif
    std::atomic<bool> are_writing{true};
    std::vector<std::thread> threads;
    for (int writer = 0; writer < 2; ++writer) {
        threads.emplace_back([&are_writing, writer] {
            for (int number = 0; are_writing; ++number) {
                (void)IntSetting::set(("parent " + std::to_string(writer)).c_str(), number);
                int found = 0;
                (void)IntSetting::get("parent 0", found);
            }
        });
    }
    for (int round = 0; round < 20; ++round) {
        EXPECT_EQ(
            resultInChild([round] {
                int found = -1;
                if (IntSetting::set("child", round) != done || IntSetting::get("child", found) != done) {
                    return 1;
                }
                return found == round ? 0 : 2;
            }),
            0);
        int found = -1;
        EXPECT_EQ(IntSetting::get("child", found), done);
        EXPECT_EQ(found, round);
    }
    are_writing = false;
    for (std::thread &thread : threads) {
        thread.join();
    }
}

TEST_F(SharedSettings, AreNotLockedByALingeringChild) {
    ASSERT_EQ(IntSetting::set("key", 1), done);
    std::atomic<bool> are_writing{true};
    std::thread writer([&are_writing] {
        for (int number = 0; are_writing; ++number) {
            (void)IntSetting::set("thread", number);
        }
    });
    ChildProcess lingering([](std::function<void()> const &ready) {
        ready();
        (void)pause();
    });
    ASSERT_TRUE(lingering.isReady());
    are_writing = false;
    writer.join();
    EXPECT_EQ(IntSetting::set("key", 2), done);
}
