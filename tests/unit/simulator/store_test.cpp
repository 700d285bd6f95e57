// SPDX-License-Identifier: Apache-2.0
#include "simulator/store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "no_room.h"
#include "processes/kill.h"
#include "support.h"

namespace simulator::tests {

namespace {

using testing::HasSubstr;

/// What a file that cannot be used as a store is refused with.
std::string refusal(std::string const &path) {
    try {
        Store store(path);
    } catch (StoreError const &error) {
        return error.what();
    }
    return "no refusal";
}

void changeDatabase(std::string const &path, char const *statements) {
    sqlite::Database(path).execute(statements);
}

std::vector<std::string> entries(Store &store, Store::Table table) {
    std::vector<std::string> found;
    store.readEntries(table, [&](std::uint32_t id, std::uint32_t type, std::string_view settings,
                                 std::string_view filters) {
        found.push_back(std::to_string(id) + " " + std::to_string(type) + " " + std::string(settings) + " " +
                        std::string(filters));
    });
    return found;
}

}  // namespace

TEST(Store, KeepsEntriesAndAssociations) {
    TemporaryFolder const folder;
    {
        Store store(folder / "store");
        EXPECT_EQ(store.addAction(2, "{\"a\":1}", "{}"), 1U);
        EXPECT_EQ(store.addAction(9, "second", "{}"), 2U);
        EXPECT_EQ(store.addTrigger(1, "timer"), 1U);
        store.setSettings(Store::Table::actions, 2, "changed");
        store.setFilters(2, "filters");
        store.addAssociation(1, 2);
    }
    Store store(folder / "store");
    EXPECT_THAT(entries(store, Store::Table::actions),
                testing::ElementsAre("1 2 {\"a\":1} {}", "2 9 changed filters"));
    EXPECT_THAT(entries(store, Store::Table::triggers), testing::ElementsAre("1 1 timer "));
    std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;
    store.readAssociations([&](std::uint32_t trigger_id, std::uint32_t action_id) {
        pairs.emplace_back(trigger_id, action_id);
    });
    EXPECT_THAT(pairs, testing::ElementsAre(std::make_pair(1U, 2U)));
}

TEST(Store, NeverGivesOutAnIdentifierAgain) {
    TemporaryFolder const folder;
    {
        Store store(folder / "store");
        EXPECT_EQ(store.addAction(2, "", ""), 1U);
        EXPECT_EQ(store.addAction(2, "", ""), 2U);
        store.remove(Store::Table::actions, 2);
    }
    {
        Store store(folder / "store");
        EXPECT_EQ(store.addAction(2, "", ""), 3U);
        store.remove(Store::Table::actions, 3);
        store.remove(Store::Table::actions, 1);
    }
    Store store(folder / "store");
    EXPECT_EQ(store.addAction(2, "", ""), 4U);
}

TEST(Store, RefusesANewEntryWhenIdentifiersAreUsedUp) {
    TemporaryFolder const folder;
    { Store store(folder / "store"); }
    changeDatabase(folder / "store", "INSERT INTO actions VALUES (4294967294, 2, '{}', '{}')");
    Store store(folder / "store");
    EXPECT_EQ(store.addAction(2, "", ""), 4294967295U);
    EXPECT_THROW(store.addAction(2, "", ""), StoreError);
    EXPECT_EQ(entries(store, Store::Table::actions).size(), 2U);
    EXPECT_EQ(store.addTrigger(1, ""), 1U);
}

TEST(Store, KeepsWhatWasAnsweredWhenTheProcessIsKilled) {
    TemporaryFolder const folder;
    pid_t const child = fork();
    if (child == 0) {
        Store store(folder / "store");
        store.addAction(2, "kept", "{}");
        processes::kill(::getpid());
    }
    int how = 0;
    ASSERT_EQ(::waitpid(child, &how, 0), child);
    ASSERT_TRUE(WIFSIGNALED(how));
    Store store(folder / "store");
    EXPECT_THAT(entries(store, Store::Table::actions), testing::ElementsAre("1 2 kept {}"));
}

TEST(Store, BelongsToOneProcess) {
    TemporaryFolder const folder;
    std::string const path = folder / "store";
    int opened[2];
    int release[2];
    ASSERT_EQ(::pipe(opened), 0);
    ASSERT_EQ(::pipe(release), 0);
    pid_t const child = fork();
    if (child == 0) {
        ::close(opened[0]);
        ::close(release[1]);
        Store const store(path);
        char byte = 'x';
        bool const good = ::write(opened[1], &byte, 1) == 1 && ::read(release[0], &byte, 1) == 0;
        ::_exit(good ? 0 : 1);
    }
    ::close(opened[1]);
    ::close(release[0]);
    char byte = 0;
    ASSERT_EQ(::read(opened[0], &byte, 1), 1);
    EXPECT_THAT(refusal(path), HasSubstr("is in use by another process"));
    ::close(release[1]);
    ::close(opened[0]);
    int how = 0;
    ASSERT_EQ(::waitpid(child, &how, 0), child);
    EXPECT_TRUE(WIFEXITED(how) && WEXITSTATUS(how) == 0);
    EXPECT_EQ(refusal(path), "no refusal");
}

TEST(Store, IsNotOpenedTwiceInOneProcessEither) {
    TemporaryFolder const folder;
    Store const first(folder / "store");
    EXPECT_THAT(refusal(folder / "store"), HasSubstr("is in use by another process"));
}

TEST(Store, IsForItsOwnerOnly) {
    TemporaryFolder const folder;
    Store const store(folder / "store");
    struct stat status {};
    for (std::string const &name : folder.names()) {
        ASSERT_EQ(::stat((folder / name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0600U) << name;
    }
}

TEST(Store, IsMadePrivateWithALineWhenOthersCanReachIt) {
    TemporaryFolder const folder;
    std::string const path = folder / "store";
    { Store const store(path); }
    for (mode_t const mode : {0666U, 0604U, 0640U}) {
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
        std::vector<std::string> remarks;
        {
            Store const store(path, [&remarks](std::string const &remark) { remarks.push_back(remark); });
        }
        struct stat status {};
        ASSERT_EQ(::stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0600U);
        ASSERT_EQ(remarks.size(), 1U);
        EXPECT_THAT(remarks[0], HasSubstr("others could read or change it"));
    }
    Store const store(path, [](std::string const &remark) { ADD_FAILURE() << remark; });
}

TEST(Store, RefusesWhatIsNoStoreAndLeavesItAlone) {
    TemporaryFolder const folder;
    std::string const text =
        "This is a letter, and it is long enough to be taken for a database by its size alone.\n";
    std::string letter;
    for (int n = 0; n < 20; ++n) {
        letter += text;
    }
    writeFile(folder / "letter", letter);
    EXPECT_THAT(refusal(folder / "letter"), HasSubstr("is no SQLite database"));
    EXPECT_EQ(readFile(folder / "letter"), letter);

    changeDatabase(folder / "other", "CREATE TABLE songs (name TEXT)");
    std::string const other = readFile(folder / "other");
    EXPECT_THAT(refusal(folder / "other"), HasSubstr("is a database of another program"));
    EXPECT_EQ(readFile(folder / "other"), other);
}

TEST(Store, RefusesOneOfANewerVersionAndLeavesItAlone) {
    TemporaryFolder const folder;
    { Store store(folder / "store"); }
    changeDatabase(folder / "store", "PRAGMA user_version = 3");
    std::string const newer = readFile(folder / "store");
    EXPECT_THAT(refusal(folder / "store"),
                HasSubstr("has version 3, and this program knows versions up to 2"));
    EXPECT_EQ(readFile(folder / "store"), newer);
}

TEST(Store, OfTheFirstVersionIsUpgradedInPlace) {
    TemporaryFolder const folder;
    {
        Store store(folder / "store");
        store.addAction(7, R"({"action_name":"a"})", "{}");
    }
    changeDatabase(folder / "store", "DROP TABLE traces; PRAGMA user_version = 1");
    for (int again = 0; again < 2; ++again) {
        Store store(folder / "store");
        unsigned int actions = 0;
        store.readEntries(Store::Table::actions, [&](auto...) { ++actions; });
        EXPECT_EQ(actions, 1U);
        store.changeTraces({{5U + static_cast<unsigned int>(again), 2, "{}"}}, {});
        unsigned int traces = 0;
        store.readTraces([&](auto...) { ++traces; });
        EXPECT_EQ(traces, 1U + static_cast<unsigned int>(again));
    }
}

TEST(Store, SaysWhenItCannotBeOpened) {
    TemporaryFolder const folder;
    EXPECT_THAT(refusal(folder / "no-folder/store"), HasSubstr("cannot open the store"));
    EXPECT_THAT(refusal(folder.path()), HasSubstr("cannot open the store"));
}

TEST(Store, TakesNoMeaningFromSpecialNames) {
    TemporaryFolder const folder;
    auto const before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path());
    { Store store(":memory:"); }
    std::filesystem::current_path(before);
    EXPECT_THAT(folder.names(), testing::Contains(":memory:"));
}

TEST(Store, AFailedWriteLeavesStoreAndMemoryAsTheyWere) {
    TemporaryFolder const folder;
    Bench bench(folder / "store");
    ASSERT_EQ(bench.status(R"({"command":"Create_snapshot_action","action_name":"a","filename":"f"})"), 0);
    ASSERT_EQ(bench.status(R"({"command":"Create_timer_trigger","trigger_name":"t","timer_seconds":9})"), 0);
    char const *const changes[] = {
        R"({"command":"Create_snapshot_action","action_name":"b","filename":"f"})",
        R"({"command":"Create_timer_trigger","trigger_name":"u","timer_seconds":1})",
        R"({"command":"Modify_snapshot_action","action_id":1,"action_name":"b","filename":"g"})",
        R"({"command":"Modify_timer_trigger","trigger_id":1,"trigger_name":"u","timer_seconds":1})",
        R"({"command":"Set_action_filters","action_id":1,"weekday_filters":[1],"time_filters_start":[0],"time_filters_end":[0]})",
        R"({"command":"Create_association","trigger_id":1,"action_id":1})",
        R"({"command":"Delete_action","action_id":1})",
        R"({"command":"Delete_trigger","trigger_id":1})",
    };
    char const *const reads[] = {
        R"({"command":"Get_actions"})",
        R"({"command":"Get_triggers"})",
        R"({"command":"Get_snapshot_action","action_id":1})",
        R"({"command":"Get_timer_trigger","trigger_id":1})",
        R"({"command":"Get_action_filters","action_id":1})",
        R"({"command":"Get_trigger_associations","trigger_id":1})",
    };
    std::vector<std::string> before;
    for (char const *const read : reads) {
        before.push_back(bench.respond(read));
    }
    {
        NoRoom const no_room(std::filesystem::file_size(folder / "store-wal"));
        for (char const *const change : changes) {
            bench.log.lines.clear();
            EXPECT_EQ(bench.status(change), 9) << change;
            ASSERT_EQ(bench.log.lines.size(), 1U);
            EXPECT_THAT(bench.log.lines[0], HasSubstr("did not take the change"));
            EXPECT_EQ(bench.log.lines[0].substr(0, 2), "3 ");
        }
    }
    for (std::size_t n = 0; n < before.size(); ++n) {
        EXPECT_EQ(bench.respond(reads[n]), before[n]);
    }
    // With room again it goes on where it was.
    EXPECT_EQ(bench.number(changes[0], "action_id"), 2);
    for (char const *const change : changes) {
        EXPECT_EQ(bench.status(change), 0) << change;
    }
}

TEST(Store, SaysThatItIsDamagedWhereverItIsRead) {
    for (std::string const table : {"actions", "triggers", "associations", "traces"}) {
        SCOPED_TRACE(table);
        TemporaryFolder const folder;
        std::string const path = folder / "store";
        constexpr std::uint32_t count = 1000;
        {
            Store store(path);
            Store::Rows rows;
            std::vector<Store::StoredTrace> traces;
            std::string const text(100, 't');
            for (std::uint32_t n = 1; n <= count; ++n) {
                rows.actions.push_back({n, 7, text, text});
                rows.triggers.push_back({n, 1, text, ""});
                rows.associations.emplace_back(n, n);
                traces.push_back({n, 0, text});
            }
            store.replace(rows);
            store.changeTraces(traces, {});
        }
        // The trees of the table and of its index go nowhere.
        std::vector<std::size_t> pages;
        std::size_t page_size = 0;
        {
            sqlite::Database database(path);
            for (char const *const which : {"min", "max"}) {
                std::string const query = std::string("SELECT ") + which +
                                          "(rootpage) FROM sqlite_schema WHERE tbl_name = '" + table + "'";
                pages.push_back(static_cast<std::size_t>(database.readNumber(query.c_str())));
            }
            page_size = static_cast<std::size_t>(database.readNumber("PRAGMA page_size"));
        }
        std::string bytes = readFile(path);
        for (std::size_t const page : pages) {
            ASSERT_GE(bytes.size(), page * page_size);
            std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>((page - 1) * page_size), page_size,
                        '\x55');
        }
        writeFile(path, bytes);
        try {
            Store store(path);
            for (Store::Table const kind : {Store::Table::actions, Store::Table::triggers}) {
                store.readEntries(kind, [](auto...) {});
            }
            store.readAssociations([](auto...) {});
            store.readTraces([](auto...) {});
            ADD_FAILURE() << "it was read";
        } catch (StoreError const &error) {
            EXPECT_EQ(error.what(),
                      "cannot use the store \"" + path + "\": database disk image is malformed");
        }
    }
}

TEST(Store, RefusesContentsThatItDoesNotUnderstand) {
    TemporaryFolder const folder;
    struct Damage {
        char const *statement;
        char const *error;
    };
    Damage const damages[] = {
        {"INSERT INTO actions VALUES (5, 10, '{}', '{}')", "the store's action 5 has the unknown type 10"},
        {"INSERT INTO triggers VALUES (6, 3, '{}')", "the store's trigger 6 has the unknown type 3"},
        {"INSERT INTO triggers VALUES (6, 1, 'x')",
         "the store's trigger 6 cannot be read: its settings are no JSON object"},
        {"INSERT INTO actions VALUES (5, 2, '{\"action_name\":\"n\"}', '{}')",
         "the store's action 5 cannot be read: the member \"filename\" is missing"},
    };
    int n = 0;
    for (Damage const &damage : damages) {
        std::string const path = folder / std::to_string(++n);
        { Store store(path); }
        changeDatabase(path, damage.statement);
        Store store(path);
        try {
            Catalogue const catalogue(store);
            ADD_FAILURE() << damage.statement;
        } catch (StoreError const &error) {
            EXPECT_STREQ(error.what(), damage.error);
        }
    }
}

}  // namespace simulator::tests
