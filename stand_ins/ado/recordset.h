#pragma once

#include <memory>

#include "stand_ins/ado/connection.h"
#include "stand_ins/ado/cursor_rows.h"

namespace tavrix::ado {

/// ADODB.Recordset. Under batch-optimistic locking changes wait for UpdateBatch, which writes row
/// by row: those that fail stay pending. Under optimistic locking Update, or leaving the row,
/// writes it at once; any other locking is read-only, and so is whatever static cursor the server
/// keeps.
class Recordset : public std::enable_shared_from_this<Recordset> {
  public:
    void Open(const std::optional<base::Text>& sql,
              const std::optional<windows::Variant>& connection,
              const std::optional<std::int32_t>& cursor, const std::optional<std::int32_t>& lock,
              const std::optional<std::int32_t>& options);
    void Close();
    void Cancel() {
        executing_.cancel();
        fetching_.cancel();
    }
    /// The next rows, at most `count`, and moves behind them: columns, then rows.
    windows::Variant GetRows(const std::optional<std::int32_t>& count);
    void AddNew();
    void Update();
    void UpdateBatch(const std::optional<std::int32_t>& affected);
    void CancelUpdate();
    void CancelBatch(const std::optional<std::int32_t>& affected);
    void Delete(const std::optional<std::int32_t>& affected);
    void MoveFirst();
    void MoveLast();
    void MoveNext();
    void MovePrevious();
    void Move(std::int32_t count);

    bool at_beginning();
    bool at_end();
    std::int32_t record_count();
    std::int32_t state() const {
        if (executing_.is_going_on()) return object_state::executing;
        if (!rows_) return object_state::closed;
        return object_state::open | (fetching_.is_going_on() ? object_state::fetching : 0);
    }
    std::int32_t edit() const { return edit_; }
    base::Text sql() const { return sql_; }
    void set_sql(const base::Text& value);
    windows::ComPointer<IDispatch> active_connection() const;
    void set_active_connection(const windows::Variant& value);
    std::int32_t location() const { return location_; }
    void set_location(std::int32_t value);
    /// 0 for no limit.
    std::int32_t most_rows() const { return most_rows_; }
    void set_most_rows(std::int32_t value);
    std::int32_t cursor() const { return cursor_; }
    void set_cursor(std::int32_t value);
    std::int32_t lock() const { return lock_; }
    void set_lock(std::int32_t value);
    windows::ComPointer<IDispatch> fields();
    windows::ComPointer<IDispatch> properties();
    /// Counts from 1; below 0 for no row.
    std::int32_t absolute_position();
    void set_absolute_position(std::int32_t position);

    /// Opens as Connection.Execute does: forward only, read only.
    void open_on(std::shared_ptr<Connection> connection, const base::Text& sql);
    /// The rows; throws when the recordset is closed.
    CursorRows& rows();
    const Habits& habits() const { return connection_->habits(); }
    windows::Variant value(std::size_t column);
    void set_value(std::size_t column, const ports::Value& value);

  private:
    void open();
    void write();
    void require_closed() const;
    void require_updatable();
    /// Leaves the current row: an edit of it is finished first.
    void finish_edit();
    void require_row();
    void wait_for_rows() const;
    std::int64_t row_count();
    /// -1 is before the first row, the number of rows behind the last.
    void go_to(std::int64_t position);

    std::shared_ptr<Connection> connection_;
    std::unique_ptr<CursorRows> rows_;
    base::Text sql_;
    std::int64_t position_ = -1;
    /// On the place of a row that was just deleted, until a move.
    bool on_deleted_ = false;
    std::int32_t edit_ = edit_mode::none;
    std::int32_t location_ = cursor_location::server;
    std::int32_t cursor_ = cursor_type::forward_only;
    std::int32_t lock_ = lock_type::read_only;
    std::int32_t most_rows_ = 0;
    SilentWork executing_;
    SilentWork fetching_;
};

extern const com::ClassTable recordset_class;
windows::ComPointer<IDispatch> create_recordset();

}  // namespace tavrix::ado
