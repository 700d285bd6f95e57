// SPDX-License-Identifier: Apache-2.0
#include "simulator/store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "simulator/schema.h"

namespace simulator {

namespace {

/// Settings hold passwords, so a store is for its owner only. SQLite gives its side files the same mode.
void makePrivate(std::string const &path, std::string const &name, Store::Remark const &remark) {
    int const file = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0) {
        // Opening the database gives the reason.
        return;
    }
    struct stat found {};
    bool const is_open = ::fstat(file, &found) == 0 && S_ISREG(found.st_mode) && (found.st_mode & 077) != 0;
    bool const is_closed = is_open && ::fchmod(file, 0600) == 0;
    // Where nobody else holds the file open: closing a descriptor takes all locks of the process from a file.
    ::close(file);
    if (!is_open) {
        return;
    }
    char mode[8];
    (void)std::snprintf(mode, sizeof mode, "%04o", static_cast<unsigned int>(found.st_mode & 07777));
    if (!is_closed) {
        throw StoreError(
            "the store " + name + " has mode " + mode +
            ", so that others can read or change it, and its mode cannot be set. Make it yours and "
            "give it mode 0600, or name another file; this one was not changed.");
    }
    if (remark) {
        remark("the store " + name + " had mode " + mode +
               ", so that others could read or change it; it has mode 0600 now");
    }
}

sqlite::Database open(std::string const &path, std::string const &name, Store::Remark const &remark) {
    if (!path.empty()) {
        makePrivate(path, name, remark);
    }
    try {
        return sqlite::Database(path);
    } catch (sqlite::Error const &error) {
        throw StoreError("cannot open the store " + name + ": " + error.what() +
                         ". Name a file in a folder that exists and that you may write to.");
    }
}

/// The version of a store that is there, 0 for a new one; throws for anything else. Only reads.
int versionOf(sqlite::Database &database, std::string const &name) {
    int const application = database.readNumber("PRAGMA application_id");
    int const version = database.readNumber("PRAGMA user_version");
    if (application == 0 && version == 0 && database.readNumber("SELECT count(*) FROM sqlite_schema") == 0) {
        return 0;
    }
    if (application != store_application_id) {
        throw StoreError("the store " + name +
                         " is a database of another program. Name another file; this one was not changed.");
    }
    if (version < 1 || version > store_version) {
        throw StoreError("the store " + name + " has version " + std::to_string(version) +
                         ", and this program knows versions up to " + std::to_string(store_version) +
                         ". Use the program that wrote it, or name another file; this one was not changed.");
    }
    return version;
}

void prepare(sqlite::Database &database, std::string const &name) {
    // The file belongs to this process until the database is closed. Without that a second process would answer from
    // its own memory what the first one has changed.
    database.execute("PRAGMA locking_mode = EXCLUSIVE");
    int const version = versionOf(database, name);
    // The write-ahead log needs no flush of the disk for each change, and a killed process loses nothing in it.
    database.execute("PRAGMA journal_mode = WAL");
    database.execute("PRAGMA synchronous = NORMAL");
    database.execute("PRAGMA foreign_keys = ON");
    database.execute("BEGIN EXCLUSIVE");
    if (version < 1) {
        database.execute(store_schema);
        database.execute(("PRAGMA application_id = " + std::to_string(store_application_id)).c_str());
    }
    if (version < 2) {
        database.execute(store_schema_2);
    }
    if (version < store_version) {
        database.execute(("PRAGMA user_version = " + std::to_string(store_version)).c_str());
    }
    database.execute("COMMIT");
}

std::string reason(sqlite::Error const &error, std::string const &name) {
    switch (error.code()) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return "the store " + name +
                   " is in use by another process. Stop that one, or name another file.";
        case SQLITE_NOTADB:
            return "the store " + name +
                   " is no SQLite database. Name another file; this one was not changed.";
        default:
            return "cannot use the store " + name + ": " + error.what();
    }
}

}  // namespace

struct Store::Statements {
    explicit Statements(sqlite::Database &database)
        : read_actions(database, "SELECT id, type, settings, filters FROM actions ORDER BY id"),
          read_triggers(database, "SELECT id, type, settings, '' FROM triggers ORDER BY id"),
          read_associations(database, "SELECT trigger_id, action_id FROM associations"),
          add_action(database,
                     "INSERT INTO actions (type, settings, filters) SELECT ?, ?, ? WHERE 4294967295 > "
                     "coalesce((SELECT seq FROM sqlite_sequence WHERE name = 'actions'), 0)"),
          add_trigger(database,
                      "INSERT INTO triggers (type, settings) SELECT ?, ? WHERE 4294967295 > "
                      "coalesce((SELECT seq FROM sqlite_sequence WHERE name = 'triggers'), 0)"),
          set_action(database, "UPDATE actions SET settings = ? WHERE id = ?"),
          set_trigger(database, "UPDATE triggers SET settings = ? WHERE id = ?"),
          set_filters(database, "UPDATE actions SET filters = ? WHERE id = ?"),
          remove_action(database, "DELETE FROM actions WHERE id = ?"),
          remove_trigger(database, "DELETE FROM triggers WHERE id = ?"),
          add_association(database, "INSERT INTO associations (trigger_id, action_id) VALUES (?, ?)"),
          remove_association(database, "DELETE FROM associations WHERE trigger_id = ? AND action_id = ?"),
          put_action(database, "INSERT INTO actions (id, type, settings, filters) VALUES (?, ?, ?, ?)"),
          put_trigger(database, "INSERT INTO triggers (id, type, settings) VALUES (?, ?, ?)"),
          read_traces(database, "SELECT id, outcome, trace FROM traces ORDER BY id"),
          add_trace(database, "INSERT INTO traces (id, outcome, trace) VALUES (?, ?, ?)"),
          remove_trace(database, "DELETE FROM traces WHERE id = ?") {}

    sqlite::Statement read_actions;
    sqlite::Statement read_triggers;
    sqlite::Statement read_associations;
    sqlite::Statement add_action;
    sqlite::Statement add_trigger;
    sqlite::Statement set_action;
    sqlite::Statement set_trigger;
    sqlite::Statement set_filters;
    sqlite::Statement remove_action;
    sqlite::Statement remove_trigger;
    sqlite::Statement add_association;
    sqlite::Statement remove_association;
    sqlite::Statement put_action;
    sqlite::Statement put_trigger;
    sqlite::Statement read_traces;
    sqlite::Statement add_trace;
    sqlite::Statement remove_trace;
};

void Store::DeleteStatements::operator()(Statements *statements) const {
    delete statements;
}

namespace {

/// Takes back a transaction that could not be ended; all that follows would be lost with it.
void endTransaction(sqlite::Database &database) {
    if (sqlite3_get_autocommit(database.handle()) == 0) {
        database.execute("ROLLBACK");
    }
}

/// Runs one change, with SQLite's errors as the store's.
template <typename Change>
auto change(sqlite::Database &database, std::string const &name, Change make) {
    try {
        endTransaction(database);
        return make();
    } catch (sqlite::Error const &error) {
        throw StoreError("the store " + name + " did not take the change: " + error.what());
    }
}

}  // namespace

template <typename Changes>
void Store::inTransaction(Changes make) {
    database_.execute("BEGIN");
    try {
        make();
        database_.execute("COMMIT");
    } catch (...) {
        try {
            endTransaction(database_);
        } catch (sqlite::Error const &) {
            // The next change tries it again, before anything else.
        }
        throw;
    }
}

Store::Store(std::string const &path, Remark const &remark)
    : in_memory_(path.empty()),
      name_(path.empty() ? "in memory" : "\"" + path + "\""),
      database_(open(path, name_, remark)) {
    try {
        prepare(database_, name_);
        statements_.reset(new Statements(database_));
    } catch (sqlite::Error const &error) {
        throw StoreError(reason(error, name_));
    }
}

void Store::readEntries(Table table, Entry const &entry) {
    auto &rows = table == Table::actions ? statements_->read_actions : statements_->read_triggers;
    try {
        for (rows.with(); rows.step();) {
            entry(static_cast<std::uint32_t>(rows.number(0)), static_cast<std::uint32_t>(rows.number(1)),
                  rows.text(2), rows.text(3));
        }
    } catch (sqlite::Error const &error) {
        throw StoreError(reason(error, name_));
    }
}

void Store::readAssociations(Association const &association) {
    auto &rows = statements_->read_associations;
    try {
        for (rows.with(); rows.step();) {
            association(static_cast<std::uint32_t>(rows.number(0)),
                        static_cast<std::uint32_t>(rows.number(1)));
        }
    } catch (sqlite::Error const &error) {
        throw StoreError(reason(error, name_));
    }
}

// Each change of the catalogue is one statement, and by that a transaction that SQLite itself begins and ends.
std::uint32_t Store::add(sqlite::Statement &statement) {
    statement.run();
    if (database_.changes() == 0) {
        throw StoreError("the store " + name_ +
                         " has given out every identifier there is. Start with a new file.");
    }
    return static_cast<std::uint32_t>(database_.lastInsertId());
}

std::uint32_t Store::addAction(std::uint32_t type, std::string const &settings, std::string const &filters) {
    return change(database_, name_,
                  [&] { return add(statements_->add_action.with(type, settings, filters)); });
}

std::uint32_t Store::addTrigger(std::uint32_t type, std::string const &settings) {
    return change(database_, name_, [&] { return add(statements_->add_trigger.with(type, settings)); });
}

void Store::replace(Rows const &rows) {
    change(database_, name_, [&] {
        inTransaction([&] {
            database_.execute("DELETE FROM associations; DELETE FROM actions; DELETE FROM triggers");
            for (Row const &row : rows.actions) {
                statements_->put_action.with(row.id, row.type, row.settings, row.filters).run();
            }
            for (Row const &row : rows.triggers) {
                statements_->put_trigger.with(row.id, row.type, row.settings).run();
            }
            for (auto const &[trigger_id, action_id] : rows.associations) {
                statements_->add_association.with(trigger_id, action_id).run();
            }
        });
    });
}

void Store::readTraces(TraceRow const &row) {
    auto &rows = statements_->read_traces;
    try {
        for (rows.with(); rows.step();) {
            row(static_cast<std::uint64_t>(rows.number(0)), static_cast<std::uint32_t>(rows.number(1)),
                rows.text(2));
        }
    } catch (sqlite::Error const &error) {
        throw StoreError(reason(error, name_));
    }
}

void Store::changeTraces(std::vector<StoredTrace> const &added, std::vector<std::uint64_t> const &removed) {
    change(database_, name_, [&] {
        inTransaction([&] {
            for (std::uint64_t const id : removed) {
                statements_->remove_trace.with(id).run();
            }
            for (StoredTrace const &trace : added) {
                statements_->add_trace.with(trace.id, trace.outcome, trace.text).run();
            }
        });
    });
}

void Store::setSettings(Table table, std::uint32_t id, std::string const &settings) {
    auto &statement = table == Table::actions ? statements_->set_action : statements_->set_trigger;
    change(database_, name_, [&] { statement.with(settings, id).run(); });
}

void Store::setFilters(std::uint32_t action_id, std::string const &filters) {
    change(database_, name_, [&] { statements_->set_filters.with(filters, action_id).run(); });
}

void Store::remove(Table table, std::uint32_t id) {
    auto &statement = table == Table::actions ? statements_->remove_action : statements_->remove_trigger;
    change(database_, name_, [&] { statement.with(id).run(); });
}

void Store::addAssociation(std::uint32_t trigger_id, std::uint32_t action_id) {
    change(database_, name_, [&] { statements_->add_association.with(trigger_id, action_id).run(); });
}

void Store::removeAssociation(std::uint32_t trigger_id, std::uint32_t action_id) {
    change(database_, name_, [&] { statements_->remove_association.with(trigger_id, action_id).run(); });
}

}  // namespace simulator
