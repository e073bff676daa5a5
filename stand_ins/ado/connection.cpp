#include "stand_ins/ado/connection.h"

#include "com/dispatch_object.h"
#include "com/guid.h"
#include "com/signature.h"
#include "ports/portable/tsql/translate.h"
#include "stand_ins/ado/recordset.h"

namespace tavrix::ado {
namespace {

using com::by_reference;
using com::by_value;
using com::method;
using com::property;
using com::read_only;

constexpr base::TextView connection_source = u"ADODB.Connection";

constexpr auto connection_members = com::members(
    property<&Connection::connection_string, &Connection::set_connection_string>(
        0, u"ConnectionString", u"Parametry połączenia; plik w Data Source."),
    method<&Connection::Open>(1, u"Open", u"Otwiera plik bazy danych.",
                              by_value(u"ConnectionString"), by_value(u"UserID"),
                              by_value(u"Password"), by_value(u"Options")),
    method<&Connection::Close>(2, u"Close", u"Zamyka połączenie."),
    method<&Connection::Execute>(3, u"Execute", u"Wykonuje polecenie SQL.",
                                 by_value(u"CommandText"), by_reference(u"RecordsAffected"),
                                 by_value(u"Options")),
    method<&Connection::BeginTrans>(4, u"BeginTrans", u"Zaczyna transakcję; wynik to jej poziom."),
    method<&Connection::CommitTrans>(5, u"CommitTrans", u"Zatwierdza transakcję."),
    method<&Connection::RollbackTrans>(6, u"RollbackTrans", u"Cofa transakcję."),
    read_only<&Connection::state>(7, u"State", u"0 zamknięte, 1 otwarte, 2 otwierane."),
    property<&Connection::cursor_location, &Connection::set_cursor_location>(
        8, u"CursorLocation", u"2 serwer, 3 klient."),
    property<&Connection::command_timeout, &Connection::set_command_timeout>(
        9, u"CommandTimeout", u"Sekundy; bez znaczenia."),
    read_only<&Connection::errors>(10, u"Errors", u"Błędy ostatniej operacji."),
    method<&Connection::Cancel>(11, u"Cancel", u"Przerywa otwieranie."),
    property<&Connection::connection_timeout, &Connection::set_connection_timeout>(
        12, u"ConnectionTimeout", u"Sekundy; bez znaczenia."));

// Settings of the server's that make no difference to SQLite.
bool is_session_setting(base::TextView sql) {
    return base::equal_case_blind(base::trim(sql).substr(0, 4), u"set ");
}

}  // namespace

Connection::~Connection() {
    // Recordsets may keep the file open longer; their transaction must not outlive the connection.
    try {
        if (in_transaction_) RollbackTrans();
    } catch (const base::AutomationError&) {
    }
}

void Connection::Open(const std::optional<base::Text>& connection_string,
                      const std::optional<base::Text>&, const std::optional<base::Text>&,
                      const std::optional<std::int32_t>& options) {
    if (database_) raise(AdoError::object_open, connection_source);
    if (connection_string) connection_string_ = *connection_string;
    const bool asynchronously = (options.value_or(0) & async_connect) != 0;
    recorded_later(asynchronously, [&] {
        const base::Text file = value_of_key(connection_string_, u"Data Source");
        if (file.empty())
            raise(AdoError::unspecified, connection_source, u"Data Source names no file.");
        habits_ = habits_in(connection_string_);
        if (asynchronously && habits_.never_connects) return connecting_.begin();
        database_ = ports::SqliteConnection::open(base::to_utf8(file));
    });
}

void Connection::Close() {
    database(AdoError::object_closed);
    if (in_transaction_) raise(AdoError::in_transaction, connection_source);
    database_.reset();
}

windows::ComPointer<IDispatch> Connection::Execute(const base::Text& sql,
                                                   std::optional<std::int32_t>& records_affected,
                                                   const std::optional<std::int32_t>& options) {
    const auto database = this->database(AdoError::object_closed);
    return recorded([&]() -> windows::ComPointer<IDispatch> {
        require_free();
        if (is_session_setting(sql)) return {};
        if (base::equal_case_blind(sql, u"begin transaction")) {
            BeginTrans();
            return {};
        }
        if (base::equal_case_blind(sql, u"if @@trancount > 0 rollback transaction")) {
            if (in_transaction_) RollbackTrans();
            return {};
        }
        auto rows = std::make_shared<Recordset>();
        if (ports::tsql::translate(base::to_utf8(sql)).is_query) {
            rows->open_on(shared_from_this(), sql);
            executed_ = rows;
            records_affected = -1;
        } else {
            records_affected = static_cast<std::int32_t>(database->execute(sql));
        }
        if ((options.value_or(0) & execute_no_records) != 0) return {};
        return com::make_object(recordset_class, std::move(rows));
    });
}

std::int32_t Connection::BeginTrans() {
    const auto& database = this->database(AdoError::object_closed);
    if (in_transaction_) raise(AdoError::transaction_exists, connection_source);
    recorded([&] { database->execute_script("begin immediate"); });
    in_transaction_ = true;
    return 1;
}

void Connection::CommitTrans() {
    end("commit");
}

void Connection::RollbackTrans() {
    end("rollback");
}

void Connection::end(const char* statement) {
    const auto& database = this->database(AdoError::object_closed);
    if (!in_transaction_) raise(AdoError::no_transaction, connection_source);
    recorded([&] { database->execute_script(statement); });
    in_transaction_ = false;
}

std::int32_t Connection::state() const {
    if (connecting_.is_going_on()) return object_state::connecting;
    return database_ ? object_state::open : object_state::closed;
}

void Connection::set_connection_string(const base::Text& value) {
    if (database_) raise(AdoError::object_open, connection_source);
    connection_string_ = value;
}

windows::ComPointer<IDispatch> Connection::errors() const {
    return com::make_object(errors_class, errors_);
}

const std::shared_ptr<ports::SqliteConnection>& Connection::database(AdoError when_closed) const {
    if (!database_) raise(when_closed, connection_source);
    return database_;
}

void Connection::require_free() const {
    const auto rows = executed_.lock();
    if (!in_transaction_ || !rows || rows->state() == object_state::closed || rows->at_end())
        return;
    raise(AdoError::unspecified, connection_source,
          u"Cannot create new connection because in manual or distributed transaction mode.");
}

void Connection::meet_trouble(base::TextView source) {
    if (habits_.deadlocks > 0) {
        --habits_.deadlocks;
        raise(AdoError::unspecified, connection_source,
              u"Transaction (Process ID 51) was deadlocked on lock resources with another process "
              u"and has been chosen as the deadlock victim. Rerun the transaction.");
    }
    if (habits_.timeouts > 0) {
        --habits_.timeouts;
        raise(AdoError::timed_out, connection_source);
    }
}

constexpr com::ClassTable connection_class = {
    .class_id = com::guid("CA80A531-859E-4E57-9732-DA2C51DCF0BB"),
    .interface_id = com::guid("A9A6C9E4-1E31-4B0B-A624-4C9974A78056"),
    .name = u"Connection",
    .help = u"Tavrix: połączenie ADO z plikiem SQLite (do prób)",
    .members = connection_members,
};

windows::ComPointer<IDispatch> create_connection() {
    return com::make_object(connection_class, std::make_shared<Connection>());
}

}  // namespace tavrix::ado
