#include "stand_ins/ado/recordset.h"

#include <algorithm>

#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"
#include "stand_ins/ado/column_type.h"
#include "stand_ins/ado/fields.h"
#include "stand_ins/ado/properties.h"

namespace tavrix::ado {
namespace {

using com::by_value;
using com::method;
using com::property;
using com::read_only;

constexpr base::TextView recordset_source = u"ADODB.Recordset";

constexpr auto recordset_members = com::members(
    read_only<&Recordset::fields>(0, u"Fields", u"Kolumny bieżącego wiersza."),
    method<&Recordset::Open>(1, u"Open", u"Czyta wiersze zapytania.", by_value(u"Source"),
                             by_value(u"ActiveConnection"), by_value(u"CursorType"),
                             by_value(u"LockType"), by_value(u"Options")),
    method<&Recordset::Close>(2, u"Close", u"Zamyka; niezapisane zmiany przepadają."),
    method<&Recordset::AddNew>(3, u"AddNew", u"Zaczyna nowy wiersz."),
    method<&Recordset::Update>(4, u"Update", u"Kończy edycję wiersza."),
    method<&Recordset::UpdateBatch>(5, u"UpdateBatch", u"Zapisuje zmienione wiersze, każdy osobno.",
                                    by_value(u"AffectRecords")),
    method<&Recordset::CancelUpdate>(6, u"CancelUpdate", u"Cofa zmiany bieżącego wiersza."),
    method<&Recordset::CancelBatch>(7, u"CancelBatch", u"Cofa wszystkie niezapisane zmiany.",
                                    by_value(u"AffectRecords")),
    method<&Recordset::Delete>(8, u"Delete", u"Usuwa bieżący wiersz.", by_value(u"AffectRecords")),
    method<&Recordset::MoveFirst>(9, u"MoveFirst", u"Pierwszy wiersz."),
    method<&Recordset::MoveLast>(10, u"MoveLast", u"Ostatni wiersz."),
    method<&Recordset::MoveNext>(11, u"MoveNext", u"Następny wiersz."),
    method<&Recordset::MovePrevious>(12, u"MovePrevious", u"Poprzedni wiersz."),
    method<&Recordset::Move>(13, u"Move", u"Przesuwa o podaną liczbę wierszy.",
                             by_value(u"NumRecords")),
    read_only<&Recordset::at_beginning>(14, u"BOF", u"Przed pierwszym wierszem."),
    read_only<&Recordset::at_end>(15, u"EOF", u"Za ostatnim wierszem."),
    read_only<&Recordset::record_count>(16, u"RecordCount",
                                        u"Liczba wierszy; -1, gdy kursor idzie tylko w przód."),
    read_only<&Recordset::state>(17, u"State", u"0 zamknięty, 1 otwarty."),
    read_only<&Recordset::edit>(18, u"EditMode", u"0 bez zmian, 1 zmieniany, 2 nowy wiersz."),
    property<&Recordset::sql, &Recordset::set_sql>(19, u"Source", u"Treść zapytania."),
    property<&Recordset::active_connection, &Recordset::set_active_connection>(
        20, u"ActiveConnection", u"Połączenie."),
    property<&Recordset::location, &Recordset::set_location>(21, u"CursorLocation",
                                                             u"2 serwer, 3 klient."),
    property<&Recordset::cursor, &Recordset::set_cursor>(22, u"CursorType",
                                                         u"0 w przód, 3 statyczny."),
    property<&Recordset::lock, &Recordset::set_lock>(
        23, u"LockType", u"1 odczyt, 3 zapis od razu, 4 zapis zbiorczy."),
    read_only<&Recordset::properties>(24, u"Properties", u"Właściwości dostawcy."),
    property<&Recordset::absolute_position, &Recordset::set_absolute_position>(
        25, u"AbsolutePosition", u"Numer wiersza, od 1."),
    method<&Recordset::Cancel>(26, u"Cancel", u"Przerywa zapytanie."),
    method<&Recordset::GetRows>(27, u"GetRows", u"Następne wiersze w tablicy.", by_value(u"Rows")),
    property<&Recordset::most_rows, &Recordset::set_most_rows>(28, u"MaxRecords",
                                                               u"Najwięcej wierszy; 0 wszystkie."));

}  // namespace

void Recordset::Open(const std::optional<base::Text>& sql,
                     const std::optional<windows::Variant>& connection,
                     const std::optional<std::int32_t>& cursor,
                     const std::optional<std::int32_t>& lock,
                     const std::optional<std::int32_t>& options) {
    require_closed();
    if (sql) sql_ = *sql;
    if (connection) set_active_connection(*connection);
    if (cursor) cursor_ = *cursor;
    if (lock) lock_ = *lock;
    const bool asynchronously = (options.value_or(0) & async_execute) != 0;
    if (asynchronously && connection_ && habits().never_executes) return executing_.begin();
    if (!asynchronously || !connection_) return open();
    connection_->recorded_later(true, [this] { open(); });
    const bool fetches = (options.value_or(0) & async_fetch) != 0;
    // Only the client's cursor engine has a thread for it.
    if (fetches && rows_ && location_ == cursor_location::client && habits().never_fetches) {
        fetching_.begin();
    }
}

void Recordset::open_on(std::shared_ptr<Connection> connection, const base::Text& sql) {
    connection_ = std::move(connection);
    sql_ = sql;
    open();
}

void Recordset::open() {
    if (!connection_) raise(AdoError::invalid_connection, recordset_source);
    if (sql_.empty()) raise(AdoError::invalid_argument, recordset_source);
    const auto& database = connection_->database(AdoError::invalid_connection);
    rows_ = connection_->recorded([&] {
        connection_->require_free();
        return std::make_unique<CursorRows>(database, sql_, connection_->habits());
    });
    if (location_ == cursor_location::client || cursor_ > cursor_type::forward_only) {
        cursor_ = cursor_type::static_rows;
    }
    // Without a word, as ADO does it.
    if (location_ != cursor_location::client && cursor_ == cursor_type::static_rows) {
        lock_ = lock_type::read_only;
    }
    edit_ = edit_mode::none;
    go_to(rows_->row_count() > 0 ? 0 : -1);
}

void Recordset::Close() {
    rows();
    if (edit_ != edit_mode::none && lock_ != lock_type::batch_optimistic) {
        raise(AdoError::illegal_operation, recordset_source);
    }
    rows_.reset();
    edit_ = edit_mode::none;
}

void Recordset::AddNew() {
    finish_edit();
    require_updatable();
    connection_->recorded([&] { rows().add_new(); });
    go_to(static_cast<std::int64_t>(rows().position()));
    edit_ = edit_mode::added;
}

void Recordset::Update() {
    require_updatable();
    if (lock_ != lock_type::batch_optimistic) {
        write();
    }
    edit_ = edit_mode::none;
}

void Recordset::UpdateBatch(const std::optional<std::int32_t>&) {
    require_updatable();
    edit_ = edit_mode::none;
    write();
}

void Recordset::write() {
    connection_->recorded([&] {
        connection_->meet_trouble(recordset_source);
        rows().write_changes();
    });
}

void Recordset::CancelUpdate() {
    require_updatable();
    if (edit_ == edit_mode::none) return;
    rows().cancel_row();
    edit_ = edit_mode::none;
    go_to(std::min<std::int64_t>(position_, static_cast<std::int64_t>(rows().row_count()) - 1));
}

void Recordset::CancelBatch(const std::optional<std::int32_t>&) {
    require_updatable();
    rows().cancel_batch();
    edit_ = edit_mode::none;
    go_to(rows().row_count() > 0 ? 0 : -1);
}

void Recordset::Delete(const std::optional<std::int32_t>&) {
    require_updatable();
    require_row();
    rows().delete_row();
    edit_ = edit_mode::none;
    if (lock_ != lock_type::batch_optimistic) {
        write();
    }
    // The place of the deleted row lies between its neighbours: the next row is one MoveNext away.
    go_to(position_ - 1);
    on_deleted_ = true;
}

void Recordset::MoveFirst() {
    finish_edit();
    if (rows().row_count() == 0) raise(AdoError::no_current_row, recordset_source);
    go_to(0);
}

void Recordset::MoveLast() {
    finish_edit();
    if (rows().row_count() == 0) raise(AdoError::no_current_row, recordset_source);
    go_to(static_cast<std::int64_t>(rows().row_count()) - 1);
}

void Recordset::MoveNext() {
    Move(1);
}

void Recordset::MovePrevious() {
    Move(-1);
}

void Recordset::Move(std::int32_t count) {
    finish_edit();
    if (count < 0 && cursor_ == cursor_type::forward_only)
        raise(AdoError::illegal_operation, recordset_source);
    if ((count > 0 && at_end()) || (count < 0 && at_beginning())) {
        raise(AdoError::no_current_row, recordset_source);
    }
    go_to(position_ + count);
}

bool Recordset::at_beginning() {
    const bool empty = row_count() == 0;
    return !on_deleted_ && (empty || position_ < 0);
}

void Recordset::wait_for_rows() const {
    constexpr DWORD too_long_ms = 15'000;
    if (connection_ && habits().never_fetches) Sleep(too_long_ms);
}

bool Recordset::at_end() {
    const std::int64_t count = row_count();
    return !on_deleted_ && (count == 0 || position_ >= count);
}

void Recordset::require_row() {
    if (on_deleted_ || at_beginning() || at_end())
        raise(AdoError::no_current_row, recordset_source);
}

std::int32_t Recordset::record_count() {
    const auto count = static_cast<std::int32_t>(rows().row_count());
    return cursor_ == cursor_type::forward_only ? -1 : count;
}

void Recordset::set_sql(const base::Text& value) {
    require_closed();
    sql_ = value;
}

windows::ComPointer<IDispatch> Recordset::active_connection() const {
    if (!connection_) return {};
    return com::make_object(connection_class, connection_);
}

void Recordset::set_active_connection(const windows::Variant& value) {
    require_closed();
    const windows::ComPointer<IDispatch> object = windows::object_of(value.get());
    if (object) {
        connection_ = com::DispatchObject::target_of<Connection>(object.get(), connection_class);
        if (!connection_) raise(AdoError::invalid_argument, recordset_source);
    } else if (const VARIANT seen = windows::look_through(value.get()); seen.vt == VT_BSTR) {
        connection_ = std::make_shared<Connection>();
        connection_->Open(base::Text(windows::view_of(seen.bstrVal)), {}, {}, {});
    } else {
        connection_.reset();
    }
}

void Recordset::set_location(std::int32_t value) {
    require_closed();
    location_ = value;
}

void Recordset::set_cursor(std::int32_t value) {
    require_closed();
    cursor_ = value;
}

void Recordset::set_lock(std::int32_t value) {
    require_closed();
    lock_ = value;
}

windows::ComPointer<IDispatch> Recordset::fields() {
    return com::make_object(fields_class, std::make_shared<Fields>(shared_from_this()));
}

windows::ComPointer<IDispatch> Recordset::properties() {
    rows();
    const auto self = shared_from_this();
    std::vector<Property> properties;
    properties.emplace_back(u"Hidden Columns", [self] {
        return ports::Value(std::int64_t{self->rows().hidden_columns()});
    });
    // Of the client's cursor engine, hence only where it has the rows.
    if (location_ == cursor_location::client) {
        properties.emplace_back(
            u"Update Criteria",
            [self] { return ports::Value(std::int64_t{self->rows().criteria()}); },
            [self](const ports::Value& value) {
                const auto* criteria = std::get_if<std::int64_t>(&value);
                if (criteria == nullptr || *criteria < 0 || *criteria > 3) {
                    raise(AdoError::invalid_argument, recordset_source);
                }
                self->rows().set_criteria(static_cast<std::int32_t>(*criteria));
            });
    }
    return com::make_object(properties_class, std::make_shared<Properties>(std::move(properties)));
}

std::int32_t Recordset::absolute_position() {
    return at_beginning() ? -2 : at_end() ? -3 : static_cast<std::int32_t>(position_ + 1);
}

void Recordset::set_absolute_position(std::int32_t position) {
    finish_edit();
    if (position < 1 || position > static_cast<std::int64_t>(rows().row_count())) {
        raise(AdoError::invalid_argument, recordset_source);
    }
    go_to(position - 1);
}

void Recordset::set_most_rows(std::int32_t value) {
    require_closed();
    most_rows_ = value;
}

std::int64_t Recordset::row_count() {
    const auto count = static_cast<std::int64_t>(rows().row_count());
    return most_rows_ > 0 ? std::min<std::int64_t>(count, most_rows_) : count;
}

windows::Variant Recordset::GetRows(const std::optional<std::int32_t>& count) {
    wait_for_rows();
    require_row();
    const std::int64_t left = row_count() - position_;
    const auto given =
        static_cast<ULONG>(count && *count > 0 ? std::min<std::int64_t>(left, *count) : left);
    const auto columns = static_cast<ULONG>(rows().columns().size());
    SAFEARRAYBOUND bounds[] = {{columns, 0}, {given, 0}};
    windows::SafeArray table(SafeArrayCreate(VT_VARIANT, 2, bounds));
    if (!table) throw std::bad_alloc();
    {
        const windows::SafeArrayAccess access(table.get());
        auto* cell = static_cast<VARIANT*>(access.data());
        for (ULONG row = 0; row < given; ++row) {
            for (ULONG column = 0; column < columns; ++column) *cell++ = value(column).release();
            go_to(position_ + 1);
        }
    }
    return {std::move(table), VT_VARIANT};
}

CursorRows& Recordset::rows() {
    if (!rows_) raise(AdoError::object_closed, recordset_source);
    return *rows_;
}

windows::Variant Recordset::value(std::size_t column) {
    require_row();
    return shown(rows().field_at(column), rows().columns().at(column), habits());
}

void Recordset::set_value(std::size_t column, const ports::Value& value) {
    require_updatable();
    require_row();
    connection_->recorded(
        [&] { rows().set_field_at(column, taken(value, rows().columns().at(column), habits())); });
    if (edit_ == edit_mode::none) edit_ = edit_mode::in_progress;
}

void Recordset::require_closed() const {
    if (rows_) raise(AdoError::object_open, recordset_source);
}

void Recordset::require_updatable() {
    rows();
    if (lock_ != lock_type::optimistic && lock_ != lock_type::batch_optimistic) {
        raise(AdoError::not_updatable, recordset_source);
    }
}

void Recordset::finish_edit() {
    rows();
    if (edit_ != edit_mode::none) Update();
}

void Recordset::go_to(std::int64_t position) {
    const auto count = static_cast<std::int64_t>(rows().row_count());
    on_deleted_ = false;
    position_ = std::clamp<std::int64_t>(position, -1, count);
    rows().move_to(position_ < 0 ? rows().row_count() : static_cast<std::size_t>(position_));
}

constexpr com::ClassTable recordset_class = {
    .class_id = com::guid("E3444CC3-F043-49C4-9794-7A2F2FC8D211"),
    .interface_id = com::guid("5CDFD796-ADA4-4395-87DE-C3B158F510D8"),
    .name = u"Recordset",
    .help = u"Tavrix: wiersze ADO z pliku SQLite (do prób)",
    .members = recordset_members,
};

windows::ComPointer<IDispatch> create_recordset() {
    return com::make_object(recordset_class, std::make_shared<Recordset>());
}

}  // namespace tavrix::ado
