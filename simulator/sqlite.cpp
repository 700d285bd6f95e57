// SPDX-License-Identifier: Apache-2.0
#include "simulator/sqlite.h"

namespace simulator::sqlite {

Database::Database(std::string const &path) {
    // A relative name gets a folder before it, so that none has a meaning of its own for SQLite (":memory:").
    std::string const file = path.empty() ? ":memory:" : path.front() == '/' ? path : "./" + path;
    sqlite3 *handle = nullptr;
    int const opened = sqlite3_open_v2(
        file.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    // There is a handle also after a failure, to ask for the reason.
    handle_.reset(handle);
    if (handle == nullptr) {
        throw Error(SQLITE_NOMEM, "out of memory");
    }
    if (opened != SQLITE_OK) {
        fail();
    }
    sqlite3_extended_result_codes(handle, 1);
}

void Database::execute(char const *statements) {
    if (sqlite3_exec(handle(), statements, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail();
    }
}

int Database::readNumber(char const *query) {
    Statement statement(*this, query);
    return statement.step() ? static_cast<int>(statement.number(0)) : 0;
}

void Database::fail() const {
    int const primary = sqlite3_extended_errcode(handle()) & 0xff;
    throw Error(primary, sqlite3_errmsg(handle()));
}

Statement::Statement(Database &database, char const *text) : database_(database) {
    sqlite3_stmt *handle = nullptr;
    if (sqlite3_prepare_v2(database.handle(), text, -1, &handle, nullptr) != SQLITE_OK) {
        database.fail();
    }
    handle_.reset(handle);
}

bool Statement::step() {
    int const stepped = sqlite3_step(handle_.get());
    if (stepped == SQLITE_ROW) {
        return true;
    }
    if (stepped != SQLITE_DONE) {
        // The reason is read before the reset, which ends the statement's transaction.
        int const primary = stepped & 0xff;
        Error const error(primary, sqlite3_errmsg(database_.handle()));
        sqlite3_reset(handle_.get());
        throw error;
    }
    sqlite3_reset(handle_.get());
    return false;
}

void Statement::run() {
    while (step()) {
    }
}

std::string_view Statement::text(int column) const {
    void const *const bytes = sqlite3_column_blob(handle_.get(), column);
    auto const size = static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column));
    return bytes == nullptr ? std::string_view() : std::string_view(static_cast<char const *>(bytes), size);
}

void Statement::bind(int n, std::uint64_t value) {
    if (sqlite3_bind_int64(handle_.get(), n, static_cast<sqlite3_int64>(value)) != SQLITE_OK) {
        database_.fail();
    }
}

void Statement::bind(int n, std::string const &value) {
    if (sqlite3_bind_text64(handle_.get(), n, value.data(), value.size(), nullptr, SQLITE_UTF8) !=
        SQLITE_OK) {
        database_.fail();
    }
}

}  // namespace simulator::sqlite
