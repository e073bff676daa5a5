#include "ports/portable/sqlite_statement.h"

#include "base/error.h"

namespace tavrix::ports {
namespace {

class Bind {
  public:
    Bind(sqlite3_stmt* statement, int parameter) : statement_(statement), parameter_(parameter) {}

    int operator()(std::monostate) const { return sqlite3_bind_null(statement_, parameter_); }
    int operator()(bool value) const {
        return sqlite3_bind_int(statement_, parameter_, value ? 1 : 0);
    }
    int operator()(std::int64_t value) const {
        return sqlite3_bind_int64(statement_, parameter_, value);
    }
    int operator()(double value) const {
        return sqlite3_bind_double(statement_, parameter_, value);
    }
    int operator()(const base::DateTime& value) const {
        return (*this)(base::format_date_time(value));
    }
    int operator()(const base::Text& value) const {
        return sqlite3_bind_text64(statement_, parameter_,
                                   reinterpret_cast<const char*>(value.c_str()), value.size() * 2,
                                   SQLITE_TRANSIENT, SQLITE_UTF16);
    }
    int operator()(const base::Bytes& value) const {
        return value.empty() ? sqlite3_bind_zeroblob(statement_, parameter_, 0)
                             : sqlite3_bind_blob64(statement_, parameter_, value.data(),
                                                   value.size(), SQLITE_TRANSIENT);
    }

  private:
    sqlite3_stmt* statement_;
    int parameter_;
};

}  // namespace

void throw_sqlite_error(sqlite3* connection) {
    const std::string words = sqlite3_errmsg(connection);
    const auto number = words.starts_with("no such table") ? base::ErrorNumber::table_not_found
                                                           : base::ErrorNumber::database_failed;
    throw base::AutomationError(number, u"Database", base::from_utf8(words));
}

SqliteStatement::SqliteStatement(sqlite3* connection, const std::string& sql)
    : connection_(connection) {
    const char* rest = nullptr;
    if (sqlite3_prepare_v2(connection, sql.c_str(), static_cast<int>(sql.size() + 1), &statement_,
                           &rest) != SQLITE_OK) {
        throw_sqlite_error(connection);
    }
}

void SqliteStatement::bind(int parameter, const Value& value) {
    if (std::visit(Bind(statement_, parameter), value) != SQLITE_OK)
        throw_sqlite_error(connection_);
}

bool SqliteStatement::step() {
    const int code = sqlite3_step(statement_);
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    throw_sqlite_error(connection_);
}

Value SqliteStatement::column(int index) const {
    switch (sqlite3_column_type(statement_, index)) {
        case SQLITE_NULL:
            return {};
        case SQLITE_INTEGER:
            return static_cast<std::int64_t>(sqlite3_column_int64(statement_, index));
        case SQLITE_FLOAT:
            return sqlite3_column_double(statement_, index);
        case SQLITE_TEXT: {
            const auto* units =
                static_cast<const char16_t*>(sqlite3_column_text16(statement_, index));
            return base::Text(
                units, static_cast<std::size_t>(sqlite3_column_bytes16(statement_, index)) / 2);
        }
        default: {
            const auto* bytes =
                static_cast<const std::uint8_t*>(sqlite3_column_blob(statement_, index));
            return base::Bytes(bytes, bytes + sqlite3_column_bytes(statement_, index));
        }
    }
}

}  // namespace tavrix::ports
