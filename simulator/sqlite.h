// SPDX-License-Identifier: Apache-2.0
#ifndef KORVO_SIMULATOR_SQLITE_H
#define KORVO_SIMULATOR_SQLITE_H

// The few things that the store needs of SQLite, with errors as exceptions.

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace simulator::sqlite {

class Error : public std::runtime_error {
  public:
    Error(int code, std::string const &text) : std::runtime_error(text), code_(code) {}

    /// The primary result code, SQLITE_BUSY for example.
    int code() const { return code_; }

  private:
    int code_;
};

class Database {
  public:
    /// Opens the file, which is made when it does not exist, or a database in memory for an empty path.
    explicit Database(std::string const &path);

    void execute(char const *statements);
    int readNumber(char const *query);
    /// How many rows the last statement has changed.
    int changes() const { return sqlite3_changes(handle_.get()); }
    std::int64_t lastInsertId() const { return sqlite3_last_insert_rowid(handle_.get()); }

    sqlite3 *handle() const { return handle_.get(); }
    [[noreturn]] void fail() const;

  private:
    struct Close {
        // The second form of closing waits for statements that are still there, so their order does not matter.
        void operator()(sqlite3 *handle) const { sqlite3_close_v2(handle); }
    };
    std::unique_ptr<sqlite3, Close> handle_;
};

/// A prepared statement that is used again and again.
class Statement {
  public:
    Statement(Database &database, char const *text);

    /// Starts anew with these parameters, in order. Texts are not copied: they must live until the last step().
    template <typename... Parameters>
    Statement &with(Parameters const &...parameters) {
        sqlite3_reset(handle_.get());
        int n = 0;
        (bind(++n, parameters), ...);
        return *this;
    }

    /// Goes to the next row; false when there is none.
    bool step();

    /// Runs a statement that gives no rows.
    void run();

    std::int64_t number(int column) const { return sqlite3_column_int64(handle_.get(), column); }
    /// Valid until the next step.
    std::string_view text(int column) const;

  private:
    void bind(int n, std::uint32_t value) { bind(n, std::uint64_t{value}); }
    void bind(int n, std::uint64_t value);
    void bind(int n, std::string const &value);

    struct Finalize {
        void operator()(sqlite3_stmt *handle) const { sqlite3_finalize(handle); }
    };
    Database &database_;
    std::unique_ptr<sqlite3_stmt, Finalize> handle_;
};

}  // namespace simulator::sqlite

#endif
