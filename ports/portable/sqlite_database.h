#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "ports/portable/sqlite_column.h"

struct sqlite3;

namespace tavrix::ports {

class SqliteConnection;

/// The rows of one query with the batch-optimistic behaviour that hosts know from ADO: all rows are
/// read at once, changes are kept until they are written, each row by a statement of its own. Rows
/// of several tables, grouped or distinct are read-only.
class SqliteRecordset : public Recordset {
  public:
    SqliteRecordset(std::shared_ptr<SqliteConnection> connection, base::TextView sql);

    bool at_end() override { return position_ >= rows_.size(); }
    void move_next() override;
    Value field(base::TextView name) override;
    void set_field(base::TextView name, const Value& value) override;
    std::size_t capacity(base::TextView name) override;
    void add_new() override;
    void update_batch() override;

    const std::vector<SqliteColumn>& columns() const noexcept { return columns_; }
    std::size_t row_count() const noexcept { return rows_.size(); }
    std::size_t position() const noexcept { return position_; }
    /// Any value; one past the last row or beyond is the end.
    void move_to(std::size_t position) noexcept { position_ = position; }
    Value field_at(std::size_t column);
    /// Takes any value, as SQLite does.
    void set_field_at(std::size_t column, const Value& value);
    /// The column's index; throws item_not_found.
    std::size_t column_index(base::TextView name) const;
    /// Takes the current row out; the next one becomes current. The table loses it with
    /// update_batch.
    void delete_row();
    /// Forgets every change of the current row; a row that was only added goes away.
    void cancel_row();
    /// Forgets every change that is not written: added rows go, deleted ones come back.
    void cancel_batch();
    /// Writes what can be written; a row that fails stays changed. Throws the first failure.
    void write_changes();

  protected:
    struct Row {
        std::optional<std::int64_t> id;  // none while only added
        std::vector<Value> original;     // as stored, so that like is compared with like
        std::vector<std::optional<Value>> changed;
        bool is_touched = false;  // so that a walk which writes row by row is not a look at all
    };
    /// What follows "where", with a "?" for each value.
    struct Condition {
        std::string sql;
        std::vector<Value> values;
    };

    /// How the row that was read is found again when it is written: by its rowid.
    virtual Condition condition_of(const Row& row) const;
    /// Judges how many rows a statement for one row has reached: throws row_changed for none.
    virtual void check_reached(int count);

    const std::string& table() const noexcept { return table_; }
    SqliteConnection& connection() const noexcept { return *connection_; }

  private:
    /// A row that was taken out, and the index from which.
    struct DeletedRow {
        std::size_t index;
        Row row;
    };

    Row& current_row();
    void require_table() const;
    void write_row(Row& row);
    void insert_row(Row& row);
    void update_row(const Row& row);
    void run_for_row(const std::string& statement, std::vector<Value> values, const Row& row);

    std::shared_ptr<SqliteConnection> connection_;
    std::string table_;
    std::vector<SqliteColumn> columns_;
    std::vector<Row> rows_;
    std::vector<DeletedRow> deleted_;
    std::size_t position_ = 0;
};

/// A SQLite file that takes SQL Server statements. Columns declared as dates give dates, BIT gives
/// bool, text types give text whatever SQLite stored.
class SqliteConnection : public std::enable_shared_from_this<SqliteConnection> {
  public:
    /// Opens an existing file, or creates it when `create` is set. Throws base::AutomationError.
    static std::shared_ptr<SqliteConnection> open(const std::string& utf8_path,
                                                  bool create = false);
    ~SqliteConnection();
    SqliteConnection(const SqliteConnection&) = delete;
    SqliteConnection& operator=(const SqliteConnection&) = delete;

    std::unique_ptr<SqliteRecordset> open_recordset(base::TextView sql);
    /// Runs a statement that gives no rows, with a value for each "?" in it; returns how many rows
    /// it changed.
    std::int64_t execute(base::TextView sql, std::span<const Value> parameters = {});
    /// Runs SQLite's own statements, several allowed: schemas, transactions.
    void execute_script(const std::string& sqlite_sql);
    sqlite3* handle() const noexcept { return handle_; }

  private:
    explicit SqliteConnection(sqlite3* handle) : handle_(handle) {}
    sqlite3* handle_;
};

/// The Database port over such a connection.
class SqliteDatabase final : public Database {
  public:
    explicit SqliteDatabase(std::shared_ptr<SqliteConnection> connection)
        : connection_(std::move(connection)) {}
    std::unique_ptr<Recordset> open(base::TextView sql) override {
        return connection_->open_recordset(sql);
    }
    void execute(base::TextView sql) override { connection_->execute(sql); }
    /// The file's full path; "" in memory.
    base::Text name() override;

  private:
    std::shared_ptr<SqliteConnection> connection_;
};

}  // namespace tavrix::ports
