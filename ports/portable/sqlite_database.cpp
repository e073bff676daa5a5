#include "ports/portable/sqlite_database.h"

#include <sqlite3.h>

#include <algorithm>
#include <exception>

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

std::int64_t SqliteConnection::execute(base::TextView sql, std::span<const Value> parameters) {
    const tsql::Translation translation = tsql::translate(base::to_utf8(sql));
    if (translation.parameters != parameters.size()) {
        fail(base::ErrorNumber::database_failed, u"Each ? of a statement wants one value.");
    }
    SqliteStatement statement(handle_, translation.sql);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        statement.bind(static_cast<int>(i) + 1, as_stored(parameters[i]));
    }
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
    if (translation.parameters != 0)
        fail(base::ErrorNumber::database_failed, u"A query takes no values.");
    table_ = translation.row_table;
    SqliteStatement statement(connection_->handle(), translation.sql);
    const int hidden = table_.empty() ? 0 : 1;
    const int count = sqlite3_column_count(statement.get());
    for (int i = hidden; i < count; ++i) {
        columns_.emplace_back(sqlite3_column_name(statement.get(), i),
                              sqlite3_column_decltype(statement.get(), i));
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

void SqliteRecordset::require_table() const {
    if (table_.empty())
        fail(base::ErrorNumber::database_failed, u"The recordset cannot be updated.");
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
    const std::size_t column = column_index(name);
    set_field_at(column, fitting(value, columns_[column]));
}

std::size_t SqliteRecordset::capacity(base::TextView name) {
    return columns_[column_index(name)].length;
}

Value SqliteRecordset::field_at(std::size_t column) {
    const Row& row = current_row();
    const Value& stored = row.changed.at(column) ? *row.changed[column] : row.original.at(column);
    return as_kind(stored, columns_[column].kind);
}

void SqliteRecordset::set_field_at(std::size_t column, const Value& value) {
    require_table();
    Row& row = current_row();
    row.changed.at(column) = as_stored(value);
    row.is_touched = true;
}

void SqliteRecordset::add_new() {
    require_table();
    Row row;
    row.is_touched = true;
    row.original.resize(columns_.size());
    row.changed.resize(columns_.size());
    rows_.push_back(std::move(row));
    position_ = rows_.size() - 1;
}

void SqliteRecordset::delete_row() {
    require_table();
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
    try {
        write_changes();
    } catch (const base::AutomationError&) {
        cancel_batch();
        throw;
    }
}

void SqliteRecordset::write_changes() {
    std::exception_ptr first_failure;
    const auto attempt = [&](auto write) {
        try {
            write();
            return true;
        } catch (const base::AutomationError&) {
            if (!first_failure) first_failure = std::current_exception();
            return false;
        }
    };
    std::erase_if(deleted_, [&](const DeletedRow& deleted) {
        return attempt([&] { run_for_row("delete from " + quoted_name(table_), {}, deleted.row); });
    });
    for (Row& row : rows_) {
        if (row.is_touched) attempt([&] { write_row(row); });
    }
    if (first_failure) std::rethrow_exception(first_failure);
}

void SqliteRecordset::write_row(Row& row) {
    if (row.id) {
        update_row(row);
    } else if (!table_.empty()) {
        insert_row(row);
    }
    for (std::size_t i = 0; i < row.changed.size(); ++i) {
        if (row.changed[i]) row.original[i] = std::move(*row.changed[i]);
        row.changed[i].reset();
    }
    row.is_touched = false;
}

void SqliteRecordset::update_row(const Row& row) {
    std::string assignments;
    std::vector<Value> values;
    for (std::size_t i = 0; i < row.changed.size(); ++i) {
        if (!row.changed[i]) continue;
        assignments += (assignments.empty() ? "" : ", ") + quoted_name(columns_[i].name) + " = ?";
        values.push_back(*row.changed[i]);
    }
    if (values.empty()) return;
    run_for_row("update " + quoted_name(table_) + " set " + assignments, std::move(values), row);
}

void SqliteRecordset::run_for_row(const std::string& statement, std::vector<Value> values,
                                  const Row& row) {
    const Condition condition = condition_of(row);
    values.insert(values.end(), condition.values.begin(), condition.values.end());
    SqliteStatement prepared(connection_->handle(), statement + " where " + condition.sql);
    for (std::size_t i = 0; i < values.size(); ++i) {
        prepared.bind(static_cast<int>(i) + 1, values[i]);
    }
    prepared.step();
    check_reached(sqlite3_changes(connection_->handle()));
}

SqliteRecordset::Condition SqliteRecordset::condition_of(const Row& row) const {
    return {"rowid = ?", {*row.id}};
}

void SqliteRecordset::check_reached(int count) {
    if (count > 0) return;
    fail(base::ErrorNumber::row_changed,
         u"Row cannot be located for updating. Some values may have been changed since it was "
         u"last read.");
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
    row.id = sqlite3_last_insert_rowid(connection_->handle());
}

base::Text SqliteDatabase::name() {
    const char* const file = sqlite3_db_filename(connection_->handle(), "main");
    return file == nullptr ? base::Text() : base::from_utf8(file);
}

}  // namespace tavrix::ports
