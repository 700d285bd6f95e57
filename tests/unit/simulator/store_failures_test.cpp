// SPDX-License-Identifier: Apache-2.0
// A disk that fails at each of SQLite's calls in turn. What was answered with 0 is there after a restart, what was
// answered with 9 is not, and the store takes changes again as soon as the disk does.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "examples.h"
#include "kept.h"
#include "support.h"

namespace {

/// Whether the next ROLLBACK fails.
bool rollback_fails = false;

}  // namespace

/// SQLite's own, but for that: no file that fails keeps SQLite from undoing.
extern "C" __attribute__((visibility("default"))) int sqlite3_exec(sqlite3 *database, char const *statements,
                                                                   int (*take)(void *, int, char **, char **),
                                                                   void *context, char **error) {
    static auto *const original = reinterpret_cast<decltype(&sqlite3_exec)>(dlsym(RTLD_NEXT, "sqlite3_exec"));
    if (rollback_fails && std::string_view(statements) == "ROLLBACK") {
        rollback_fails = false;
        return SQLITE_NOMEM;
    }
    return original(database, statements, take, context, error);
}

namespace simulator::tests {

namespace {

/// While one of these lives, SQLite's files are reached through it. Calls of a file can be made to fail.
class FailingDisk {
  public:
    FailingDisk() : real_(sqlite3_vfs_find(nullptr)), own_(*real_) {
        own_.zName = "failing";
        own_.pNext = nullptr;
        own_.szOsFile = static_cast<int>(sizeof(File)) + real_->szOsFile;
        own_.pAppData = this;
        own_.xOpen = open;
        sqlite3_vfs_register(&own_, /*make default*/ 1);
    }
    ~FailingDisk() {
        sqlite3_vfs_unregister(&own_);
        sqlite3_vfs_register(real_, /*make default*/ 1);
    }
    FailingDisk(FailingDisk const &) = delete;
    FailingDisk &operator=(FailingDisk const &) = delete;

    /// The nth call from here on fails (1 is the next), and so do those after it, `count` in all. 0 ends that.
    void fail(std::size_t nth, std::size_t count) {
        until_failure_ = nth;
        left_to_fail_ = count;
        failed_ = 0;
    }
    std::size_t failed() const { return failed_; }

  private:
    /// SQLite's structure, the disk, and behind them the real file.
    struct File {
        sqlite3_file base;
        FailingDisk *disk;

        sqlite3_file *real() { return reinterpret_cast<sqlite3_file *>(this + 1); }
    };
    static File &at(sqlite3_file *file) { return *reinterpret_cast<File *>(file); }

    bool fails() {
        if (until_failure_ > 1) {
            --until_failure_;
            return false;
        }
        if (until_failure_ == 0 || left_to_fail_ == 0) {
            return false;
        }
        --left_to_fail_;
        ++failed_;
        return true;
    }

    static int open(sqlite3_vfs *own, sqlite3_filename name, sqlite3_file *file, int flags, int *given) {
        auto *const disk = static_cast<FailingDisk *>(own->pAppData);
        File &opened = *new (file) File{{nullptr}, disk};
        if (disk->fails()) {
            return SQLITE_CANTOPEN;
        }
        int const result = disk->real_->xOpen(disk->real_, name, opened.real(), flags, given);
        // Version 1: a store that is open alone needs no shared memory.
        static sqlite3_io_methods const methods = {
            1,       close,  read,       write,   truncate, sync,    size,    lock,    unlock, locked,
            control, sector, properties, nullptr, nullptr,  nullptr, nullptr, nullptr, nullptr};
        opened.base.pMethods = opened.real()->pMethods == nullptr ? nullptr : &methods;
        return result;
    }
    static int close(sqlite3_file *file) { return at(file).real()->pMethods->xClose(at(file).real()); }
    static int read(sqlite3_file *file, void *data, int amount, sqlite3_int64 from) {
        if (at(file).disk->fails()) {
            return SQLITE_IOERR_READ;
        }
        return at(file).real()->pMethods->xRead(at(file).real(), data, amount, from);
    }
    static int write(sqlite3_file *file, void const *data, int amount, sqlite3_int64 at_byte) {
        if (at(file).disk->fails()) {
            // Half of it got there.
            (void)at(file).real()->pMethods->xWrite(at(file).real(), data, amount / 2, at_byte);
            return SQLITE_FULL;
        }
        return at(file).real()->pMethods->xWrite(at(file).real(), data, amount, at_byte);
    }
    static int truncate(sqlite3_file *file, sqlite3_int64 to) {
        return at(file).disk->fails() ? SQLITE_IOERR_TRUNCATE
                                      : at(file).real()->pMethods->xTruncate(at(file).real(), to);
    }
    static int sync(sqlite3_file *file, int flags) {
        return at(file).disk->fails() ? SQLITE_IOERR_FSYNC
                                      : at(file).real()->pMethods->xSync(at(file).real(), flags);
    }
    static int size(sqlite3_file *file, sqlite3_int64 *bytes) {
        if (at(file).disk->fails()) {
            return SQLITE_IOERR_FSTAT;
        }
        return at(file).real()->pMethods->xFileSize(at(file).real(), bytes);
    }
    static int lock(sqlite3_file *file, int kind) {
        if (at(file).disk->fails()) {
            return SQLITE_IOERR_LOCK;
        }
        return at(file).real()->pMethods->xLock(at(file).real(), kind);
    }
    static int unlock(sqlite3_file *file, int kind) {
        if (at(file).disk->fails()) {
            return SQLITE_IOERR_UNLOCK;
        }
        return at(file).real()->pMethods->xUnlock(at(file).real(), kind);
    }
    static int locked(sqlite3_file *file, int *is_locked) {
        return at(file).real()->pMethods->xCheckReservedLock(at(file).real(), is_locked);
    }
    static int control(sqlite3_file *file, int operation, void *argument) {
        return at(file).real()->pMethods->xFileControl(at(file).real(), operation, argument);
    }
    static int sector(sqlite3_file *file) { return at(file).real()->pMethods->xSectorSize(at(file).real()); }
    static int properties(sqlite3_file *file) {
        return at(file).real()->pMethods->xDeviceCharacteristics(at(file).real());
    }

    sqlite3_vfs *real_;
    sqlite3_vfs own_;
    std::size_t until_failure_ = 0;
    std::size_t left_to_fail_ = 0;
    std::size_t failed_ = 0;
};

/// The methods that change what the store holds.
bool changes(std::string const &method) {
    return method.rfind("Get_", 0) != 0 && method != "__get_target_version__" && method != "Onvif_event";
}

}  // namespace

TEST(StoreFailures, TheStoreHoldsWhatTheAnswersSaid) {
    constexpr std::size_t for_ever = 1'000'000;
    FailingDisk disk;
    std::size_t failures = 0;
    std::size_t refusals = 0;
    for (std::size_t const in_a_row : {std::size_t{1}, std::size_t{2}, std::size_t{3}, for_ever}) {
        for (Example const &example : examples) {
            if (!changes(example.method)) {
                continue;
            }
            SCOPED_TRACE(std::string(example.method) + ", failures in a row: " + std::to_string(in_a_row));
            TemporaryFolder const folder;
            std::string const path = folder / "store";
            auto bench = std::make_unique<Bench>(path);
            for (char const *const command : preparation) {
                ASSERT_EQ(bench->status(command), 0) << command;
            }
            auto const before = keptBy(bench->engine);
            for (std::size_t nth = 1;; ++nth) {
                disk.fail(nth, in_a_row);
                auto const status = bench->status(commandText(example));
                bool const failed = disk.failed() != 0;
                disk.fail(0, 0);
                failures += failed ? 1 : 0;
                ASSERT_EQ(keptIn(bench->store), keptBy(bench->engine)) << "call " << nth;
                if (status == 0) {
                    break;
                }
                ++refusals;
                ASSERT_TRUE(failed);
                ASSERT_EQ(status, 9);
                ASSERT_EQ(keptBy(bench->engine), before) << "call " << nth;
            }
            ASSERT_EQ(bench->status(R"({"command":"Create_wiper_action","action_name":"later"})"), 0);
            auto const after = keptBy(bench->engine);
            bench.reset();
            EXPECT_EQ(keptIn(path), after);
        }
    }
    EXPECT_GT(failures, 100U);
    EXPECT_GT(refusals, 100U);
}

TEST(StoreFailures, AStoreThatFailsWhileItIsOpenedIsWholeAfterwards) {
    FailingDisk disk;
    for (std::size_t nth = 1;; ++nth) {
        SCOPED_TRACE("call " + std::to_string(nth));
        TemporaryFolder const folder;
        std::string const path = folder / "store";
        disk.fail(nth, 1);
        bool opened = false;
        try {
            Store const store(path);
            opened = true;
        } catch (StoreError const &) {
            // The disk works again the next time.
        }
        bool const failed = disk.failed() != 0;
        disk.fail(0, 0);
        ASSERT_TRUE(opened || failed);
        {
            Store store(path);
            ASSERT_EQ(store.addTrigger(1, "timer"), 1U);
        }
        Store again(path);
        std::size_t found = 0;
        again.readEntries(Store::Table::triggers, [&found](std::uint32_t, std::uint32_t, std::string_view,
                                                           std::string_view) { ++found; });
        ASSERT_EQ(found, 1U);
        if (!failed) {
            break;
        }
    }
}

TEST(StoreFailures, AChangeThatCannotBeUndoneAtOnceIsUndoneBeforeTheNextOne) {
    TemporaryFolder const folder;
    std::string const path = folder / "store";
    {
        Store store(path);
        store.addTrigger(1, "old");
        // The same identifier twice, which is found when the first row is there already.
        Store::Rows const rows{{}, {{7, 1, "new", ""}, {7, 1, "again", ""}}, {}};
        rollback_fails = true;
        EXPECT_THROW(store.replace(rows), StoreError);
        EXPECT_FALSE(rollback_fails) << "nothing was undone";
        rollback_fails = false;
        EXPECT_EQ(store.addTrigger(1, "next"), 2U);
    }
    Store again(path);
    std::vector<std::string> found;
    again.readEntries(Store::Table::triggers,
                      [&found](std::uint32_t, std::uint32_t, std::string_view settings, std::string_view) {
                          found.emplace_back(settings);
                      });
    EXPECT_EQ(found, (std::vector<std::string>{"old", "next"}));
}

TEST(StoreFailures, ACatalogueIsReplacedAsAWholeOrNotAtAll) {
    Store::Rows const rows{{{7, 7, R"({"action_name":"new"})", "{}"}, {9, 8, R"({"action_name":"n"})", "{}"}},
                           {{5, 1, R"({"trigger_name":"t","timer_seconds":1})", ""}},
                           {{5, 7}, {5, 9}}};
    auto const read = [](Store &store) {
        std::vector<std::string> all;
        for (Store::Table const table : {Store::Table::actions, Store::Table::triggers}) {
            store.readEntries(table, [&all](std::uint32_t id, std::uint32_t type, std::string_view settings,
                                            std::string_view) {
                all.push_back(std::to_string(id) + " " + std::to_string(type) + std::string(settings));
            });
        }
        store.readAssociations([&all](std::uint32_t trigger_id, std::uint32_t action_id) {
            all.push_back(std::to_string(trigger_id) + "-" + std::to_string(action_id));
        });
        return all;
    };
    FailingDisk disk;
    std::size_t failures = 0;
    for (std::size_t const in_a_row : {1U, 2U, 3U, 1'000'000U}) {
        for (std::size_t nth = 1;; ++nth) {
            SCOPED_TRACE("call " + std::to_string(nth) + ", failures in a row: " + std::to_string(in_a_row));
            TemporaryFolder const folder;
            std::string const path = folder / "store";
            auto store = std::make_unique<Store>(path);
            store->addTrigger(1, "old");
            store->changeTraces({{1, 0, "first"}, {2, 0, "second"}}, {});
            auto const before = read(*store);
            bool replaced = false;
            bool traced = false;
            disk.fail(nth, in_a_row);
            try {
                store->replace(rows);
                replaced = true;
                store->changeTraces({{3, 0, "third"}}, {1});
                traced = true;
            } catch (StoreError const &error) {
                EXPECT_NE(std::strstr(error.what(), "did not take the change: "), nullptr) << error.what();
            }
            bool const failed = disk.failed() != 0;
            disk.fail(0, 0);
            failures += failed ? 1U : 0U;
            ASSERT_TRUE(failed || traced);
            auto const after = read(*store);
            ASSERT_EQ(after == before, !replaced);
            ASSERT_EQ(after.size(), replaced ? 5U : 1U);
            // Also when it is closed, and by the next one.
            store->addTrigger(1, "later");
            auto const later = read(*store);
            ASSERT_EQ(later.size(), after.size() + 1);
            store = nullptr;
            Store again(path);
            ASSERT_EQ(read(again), later);
            std::string traces;
            again.readTraces([&traces](std::uint64_t, std::uint32_t, std::string_view text) {
                traces += std::string(text) + " ";
            });
            ASSERT_EQ(traces, traced ? "second third " : "first second ");
            if (!failed) {
                break;
            }
        }
    }
    EXPECT_GT(failures, 20U);
}

}  // namespace simulator::tests
