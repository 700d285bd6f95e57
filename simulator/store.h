// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_STORE_H
#define KORVO_SIMULATOR_STORE_H

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/sqlite.h"

namespace simulator {

/// The store cannot be opened or did not take a change. what() is for people.
class StoreError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The catalogue on disk. Each change is one transaction that is written when the function returns; a change that
/// throws StoreError has left the file as it was.
///
/// A process that is killed loses no change. After a power failure the last changes may be missing, but the store is
/// whole. A store belongs to one process: whoever opens it second is refused.
class Store {
  public:
    enum class Table { actions, triggers };

    /// Opens or makes the store in this file, or one in memory for an empty path. Throws StoreError for a file that
    /// cannot be opened, is no store, is of a newer version or belongs to a running process. A file that others can read or
    /// write is made private, which is told in a remark; one that cannot be is refused.
    using Remark = std::function<void(std::string const &)>;
    explicit Store(std::string const &path, Remark const &remark = nullptr);

    /// Calls the function with each entry, identifiers ascending. `filters` is empty for triggers.
    using Entry = std::function<void(std::uint32_t id, std::uint32_t type, std::string_view settings,
                                     std::string_view filters)>;
    void readEntries(Table table, Entry const &entry);
    using Association = std::function<void(std::uint32_t trigger_id, std::uint32_t action_id)>;
    void readAssociations(Association const &association);

    /// Adds an entry and gives its identifier, which no entry of this table has ever had. The first is 1.
    std::uint32_t addAction(std::uint32_t type, std::string const &settings, std::string const &filters);
    std::uint32_t addTrigger(std::uint32_t type, std::string const &settings);

    void setSettings(Table table, std::uint32_t id, std::string const &settings);
    void setFilters(std::uint32_t action_id, std::string const &filters);
    /// Removes an entry with its associations.
    void remove(Table table, std::uint32_t id);

    void addAssociation(std::uint32_t trigger_id, std::uint32_t action_id);
    void removeAssociation(std::uint32_t trigger_id, std::uint32_t action_id);

    struct Row {
        std::uint32_t id;
        std::uint32_t type;
        std::string settings;
        /// Empty for triggers.
        std::string filters;
    };
    struct Rows {
        std::vector<Row> actions;
        std::vector<Row> triggers;
        std::vector<std::pair<std::uint32_t, std::uint32_t>> associations;
    };
    /// Takes these entries, with their identifiers, in place of all that there are. Identifiers that were given out
    /// before stay used.
    void replace(Rows const &rows);

    using TraceRow = std::function<void(std::uint64_t id, std::uint32_t outcome, std::string_view text)>;
    /// Calls the function with each trace, identifiers ascending.
    void readTraces(TraceRow const &row);

    struct StoredTrace {
        std::uint64_t id;
        std::uint32_t outcome;
        std::string text;
    };
    /// Takes traces away, which may be missing, and adds others.
    void changeTraces(std::vector<StoredTrace> const &added, std::vector<std::uint64_t> const &removed);

    /// Whether all is gone at the end.
    bool inMemory() const { return in_memory_; }

  private:
    struct Statements;

    template <typename Changes>
    void inTransaction(Changes make);

    std::uint32_t add(sqlite::Statement &statement);

    bool in_memory_;
    std::string name_;
    sqlite::Database database_;
    struct DeleteStatements {
        void operator()(Statements *statements) const;
    };
    std::unique_ptr<Statements, DeleteStatements> statements_;
};

}  // namespace simulator

#endif
