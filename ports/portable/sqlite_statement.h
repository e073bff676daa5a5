#pragma once

#include <sqlite3.h>

#include <string>

#include "ports/database.h"

namespace tavrix::ports {

/// Throws the connection's last error as base::AutomationError.
[[noreturn]] void throw_sqlite_error(sqlite3* connection);

/// One prepared statement, finalised with its scope.
class SqliteStatement {
  public:
    SqliteStatement(sqlite3* connection, const std::string& sql);
    ~SqliteStatement() { sqlite3_finalize(statement_); }
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    /// Parameters count from 1.
    void bind(int parameter, const Value& value);
    /// True when there is a row.
    bool step();
    /// The value as SQLite holds it: null, integer, double, text or bytes.
    Value column(int index) const;
    sqlite3_stmt* get() const noexcept { return statement_; }

  private:
    sqlite3* connection_;
    sqlite3_stmt* statement_ = nullptr;
};

}  // namespace tavrix::ports
