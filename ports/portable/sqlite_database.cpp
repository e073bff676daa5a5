#include "ports/portable/sqlite_database.h"

#include <sqlite3.h>

#include <algorithm>

#include "base/error.h"
#include "ports/portable/sqlite_statement.h"
#include "ports/portable/tsql/functions.h"
#include "ports/portable/tsql/translate.h"

namespace tavrix::ports {
namespace {

constexpr int busy_timeout_ms = 5000;

[[noreturn]] void fail(base::ErrorNumber number, base::TextView description) {
    throw base::AutomationError(number, u"Database", base::Text(description));
}

void expect_one_row(sqlite3* connection) {
    if (sqlite3_changes(connection) == 1) return;
    fail(base::ErrorNumber::row_changed,
         u"Row cannot be located for updating. Some values may have been changed since it was "
         u"last read.");
}

std::string quoted_name(const std::string& name) {
    std::string quoted = "\"";
    for (const char c : name) {
        quoted += c;
        if (c == '"') quoted += c;
    }
    return quoted + '"';
}

std::string quoted_name(base::TextView name) {
    return quoted_name(base::to_utf8(name));
}

std::string normalised_type(const char* declared) {
    std::string type = declared == nullptr ? "" : declared;
    if (const std::size_t length = type.find('('); length != std::string::npos) type.erase(length);
    while (!type.empty() && type.back() == ' ') type.pop_back();
    for (char& c : type) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
    }
    return type;
}

// Begins at once so that what the batch compared cannot change before it writes; rolls back unless
// committed.
class Transaction {
  public:
    explicit Transaction(SqliteConnection& connection)
        : connection_(connection), outermost_(sqlite3_get_autocommit(connection.handle()) != 0) {
        connection_.execute_script(outermost_ ? "begin immediate" : "savepoint batch");
    }
    ~Transaction() {
        if (done_) return;
        sqlite3_exec(connection_.handle(),
                     outermost_ ? "rollback" : "rollback to batch; release batch", nullptr, nullptr,
                     nullptr);
    }
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit() {
        connection_.execute_script(outermost_ ? "commit" : "release batch");
        done_ = true;
    }

  private:
    SqliteConnection& connection_;
    bool outermost_;
    bool done_ = false;
};

}  // namespace

std::shared_ptr<SqliteConnection> SqliteConnection::open(const std::string& utf8_path,
                                                         bool create) {
    sqlite3* handle = nullptr;
    const int code =
        sqlite3_open_v2(utf8_path.c_str(), &handle,
                        SQLITE_OPEN_READWRITE | (create ? SQLITE_OPEN_CREATE : 0), nullptr);
    std::shared_ptr<SqliteConnection> connection(new SqliteConnection(handle));
    if (code != SQLITE_OK) throw_sqlite_error(handle);
    // A name that no table has must be an error, not a text.
    sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_busy_timeout(handle, busy_timeout_ms);
    tsql::register_functions(handle);
    return connection;
}

SqliteConnection::~SqliteConnection() {
    sqlite3_close_v2(handle_);
}

std::unique_ptr<SqliteRecordset> SqliteConnection::open_recordset(base::TextView sql) {
    return std::make_unique<SqliteRecordset>(shared_from_this(), sql);
}

std::int64_t SqliteConnection::execute(base::TextView sql) {
    SqliteStatement statement(handle_, tsql::translate(base::to_utf8(sql)).sql);
    while (statement.step()) {
    }
    return sqlite3_changes64(handle_);
}

void SqliteConnection::execute_script(const std::string& sqlite_sql) {
    if (sqlite3_exec(handle_, sqlite_sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw_sqlite_error(handle_);
    }
}

SqliteRecordset::SqliteRecordset(std::shared_ptr<SqliteConnection> connection, base::TextView sql)
    : connection_(std::move(connection)) {
    const tsql::Translation translation = tsql::translate(base::to_utf8(sql));
    if (!translation.is_query)
        fail(base::ErrorNumber::database_failed, u"The statement gives no rows.");
    table_ = translation.row_table;
    SqliteStatement statement(connection_->handle(), translation.sql);
    const int hidden = table_.empty() ? 0 : 1;
    const int count = sqlite3_column_count(statement.get());
    for (int i = hidden; i < count; ++i) {
        SqliteColumn column{base::from_utf8(sqlite3_column_name(statement.get(), i)),
                            normalised_type(sqlite3_column_decltype(statement.get(), i))};
        columns_.push_back(std::move(column));
    }
    while (statement.step()) {
        Row row;
        if (hidden == 1) row.id = sqlite3_column_int64(statement.get(), 0);
        for (int i = hidden; i < count; ++i) {
            row.original.push_back(statement.column(i));
        }
        row.changed.resize(columns_.size());
        rows_.push_back(std::move(row));
    }
}

SqliteRecordset::Row& SqliteRecordset::current_row() {
    if (at_end()) {
        fail(base::ErrorNumber::no_current_row,
             u"Either BOF or EOF is True, or the current record has been deleted.");
    }
    return rows_[position_];
}

void SqliteRecordset::move_next() {
    current_row();
    ++position_;
}

std::size_t SqliteRecordset::column_index(base::TextView name) const {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        if (base::equal_case_blind(columns_[i].name, name)) return i;
    }
    fail(base::ErrorNumber::item_not_found,
         u"Item cannot be found in the collection corresponding to the requested name or ordinal.");
}

Value SqliteRecordset::field(base::TextView name) {
    return field_at(column_index(name));
}

void SqliteRecordset::set_field(base::TextView name, const Value& value) {
    set_field_at(column_index(name), value);
}

Value SqliteRecordset::field_at(std::size_t column) {
    const Row& row = current_row();
    const Value& stored = row.changed.at(column) ? *row.changed[column] : row.original.at(column);
    return as_kind(stored, kind_of_declared_type(columns_[column].declared_type));
}

void SqliteRecordset::set_field_at(std::size_t column, const Value& value) {
    if (table_.empty())
        fail(base::ErrorNumber::database_failed, u"The recordset cannot be updated.");
    current_row().changed.at(column) = as_stored(value);
}

void SqliteRecordset::add_new() {
    if (table_.empty())
        fail(base::ErrorNumber::database_failed, u"The recordset cannot be updated.");
    Row row;
    row.original.resize(columns_.size());
    row.changed.resize(columns_.size());
    rows_.push_back(std::move(row));
    position_ = rows_.size() - 1;
}

void SqliteRecordset::delete_row() {
    if (table_.empty())
        fail(base::ErrorNumber::database_failed, u"The recordset cannot be updated.");
    Row& row = current_row();
    if (row.id) deleted_.push_back({position_, std::move(row)});
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(position_));
}

void SqliteRecordset::cancel_row() {
    Row& row = current_row();
    if (row.id || table_.empty()) {
        std::ranges::fill(row.changed, std::nullopt);
    } else {
        rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(position_));
    }
}

bool SqliteRecordset::has_changes() const noexcept {
    if (!deleted_.empty()) return true;
    for (const Row& row : rows_) {
        if (!row.id && !table_.empty()) return true;
        for (const auto& value : row.changed) {
            if (value) return true;
        }
    }
    return false;
}

void SqliteRecordset::cancel_batch() {
    std::erase_if(rows_, [&](const Row& row) { return !row.id && !table_.empty(); });
    // The last one out is the first one back, so that every index is right again.
    for (; !deleted_.empty(); deleted_.pop_back()) {
        DeletedRow& deleted = deleted_.back();
        rows_.insert(
            rows_.begin() + static_cast<std::ptrdiff_t>(std::min(deleted.index, rows_.size())),
            std::move(deleted.row));
    }
    for (Row& row : rows_) std::ranges::fill(row.changed, std::nullopt);
}

void SqliteRecordset::update_batch() {
    if (!has_changes()) return;
    Transaction transaction(*connection_);
    for (const DeletedRow& deleted : deleted_) delete_stored_row(deleted.row);
    std::vector<std::pair<std::size_t, std::int64_t>> added;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        if (rows_[i].id) {
            update_row(rows_[i]);
        } else {
            insert_row(rows_[i]);
            added.emplace_back(i, sqlite3_last_insert_rowid(connection_->handle()));
        }
    }
    transaction.commit();
    deleted_.clear();
    for (const auto& [index, id] : added) rows_[index].id = id;
    for (Row& row : rows_) {
        for (std::size_t i = 0; i < row.changed.size(); ++i) {
            if (row.changed[i]) row.original[i] = std::move(*row.changed[i]);
            row.changed[i].reset();
        }
    }
}

void SqliteRecordset::update_row(const Row& row) {
    std::string assignments;
    std::string unchanged;
    std::vector<const Value*> values;
    std::vector<const Value*> originals;
    for (std::size_t i = 0; i < row.changed.size(); ++i) {
        if (!row.changed[i]) continue;
        const std::string name = quoted_name(columns_[i].name);
        assignments += (assignments.empty() ? "" : ", ") + name + " = ?";
        unchanged += " and " + name + " is ?";
        values.push_back(&*row.changed[i]);
        originals.push_back(&row.original[i]);
    }
    if (values.empty()) return;
    SqliteStatement statement(
        connection_->handle(),
        "update " + quoted_name(table_) + " set " + assignments + " where rowid = ?" + unchanged);
    int parameter = 0;
    for (const Value* value : values) statement.bind(++parameter, *value);
    statement.bind(++parameter, *row.id);
    for (const Value* value : originals) statement.bind(++parameter, *value);
    statement.step();
    expect_one_row(connection_->handle());
}

void SqliteRecordset::delete_stored_row(const Row& row) {
    SqliteStatement statement(connection_->handle(),
                              "delete from " + quoted_name(table_) + " where rowid = ?");
    statement.bind(1, *row.id);
    statement.step();
    expect_one_row(connection_->handle());
}

void SqliteRecordset::insert_row(Row& row) {
    std::string names;
    std::string marks;
    std::vector<const Value*> values;
    for (std::size_t i = 0; i < row.changed.size(); ++i) {
        if (!row.changed[i]) continue;
        names += (names.empty() ? "" : ", ") + quoted_name(columns_[i].name);
        marks += marks.empty() ? "?" : ", ?";
        values.push_back(&*row.changed[i]);
    }
    const std::string table = quoted_name(table_);
    SqliteStatement statement(
        connection_->handle(),
        values.empty() ? "insert into " + table + " default values"
                       : "insert into " + table + " (" + names + ") values (" + marks + ")");
    int parameter = 0;
    for (const Value* value : values) statement.bind(++parameter, *value);
    statement.step();
}

}  // namespace tavrix::ports
