#include <sqlite3.h>

#include <array>
#include <stdexcept>

#include "sandbox/store/store.h"

namespace tavrix::sandbox {
namespace {

// The record as JSON, and beside it the texts too large to rewrite at every change of a status.
constexpr const char* schema = R"sql(
create table if not exists setting (name text primary key, value text not null) without rowid;
create table if not exists token (reference text primary key, record text not null);
create table if not exists authentication (reference text primary key, record text not null);
create table if not exists session (reference text primary key, record text not null, upo text not null);
create table if not exists invoice (reference text primary key, record text not null,
    encrypted blob not null, xml blob not null, upo text not null);
)sql";

// "TVRX" in SQLite's field for the owner of a file.
constexpr int application_id = 0x54565258;

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using DatabaseHandle = std::unique_ptr<sqlite3, CloseDatabase>;
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

class SqliteStore : public Store {
  public:
    explicit SqliteStore(const std::string& file) {
        sqlite3* opened = nullptr;
        const int result = sqlite3_open_v2(
            file.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
            nullptr);
        database_.reset(opened);
        if (result != SQLITE_OK) fail("open " + file);
        // Exclusive: two sandboxes over one file would hand out answers that contradict each other.
        run("pragma locking_mode = exclusive");
        run("pragma journal_mode = wal");
        run("pragma synchronous = normal");
        const int owner = number("pragma application_id");
        if (owner != application_id && number("select count(*) from sqlite_master") != 0)
            throw std::runtime_error(file + " is not a file of this sandbox");
        run(("pragma application_id = " + std::to_string(application_id)).c_str());
        run(schema);
        save_setting_ = prepare("insert or replace into setting values (?, ?)");
        read_setting_ = prepare("select value from setting where name = ?");
        save_token_ = prepare("insert or replace into token values (?, ?)");
        save_authentication_ = prepare("insert or replace into authentication values (?, ?)");
        // An upsert keeps the row's number, and with it the order of creation.
        save_session_ = prepare(
            "insert into session values (?, ?, ?) on conflict (reference) do update set "
            "record = excluded.record, upo = excluded.upo");
        save_invoice_ = prepare(
            "insert into invoice values (?, ?, ?, ?, ?) on conflict (reference) do update set "
            "record = excluded.record, encrypted = excluded.encrypted, xml = excluded.xml, "
            "upo = excluded.upo");
    }

    void begin() override { in_request_ = true; }

    void commit() override {
        in_request_ = false;
        if (!in_transaction_) return;
        in_transaction_ = false;
        try {
            run("commit");
        } catch (...) {
            // A transaction left open would fail every request after this one.
            sqlite3_exec(database_.get(), "rollback", nullptr, nullptr, nullptr);
            throw;
        }
    }

    void save(const KsefToken& token) override {
        write(save_token_, {token.reference, dump(to_record(token))});
    }
    void save(const Authentication& authentication) override {
        write(save_authentication_, {authentication.reference, dump(to_record(authentication))});
    }
    void save(const Session& session) override {
        write(save_session_, {session.reference, dump(to_record(session)), session.upo});
    }
    void save(const Invoice& invoice) override {
        write(save_invoice_, {invoice.reference, dump(to_record(invoice)), invoice.encrypted,
                              invoice.xml, invoice.upo});
    }
    void save_setting(std::string_view name, std::string_view value) override {
        write(save_setting_, {name, value});
    }

    std::optional<std::string> setting(std::string_view name) override {
        bind(read_setting_, {name});
        std::optional<std::string> value;
        if (sqlite3_step(read_setting_.get()) == SQLITE_ROW) value = text(read_setting_, 0);
        sqlite3_reset(read_setting_.get());
        return value;
    }

    void clear() override {
        start_transaction();
        for (const char* table : {"token", "authentication", "session", "invoice"})
            run((std::string("delete from ") + table).c_str());
    }

    void load(State& state) override {
        each("select record from token order by rowid", [&](const StatementHandle& row) {
            KsefToken token = token_from_record(parse_json(text(row, 0)));
            state.tokens[token.reference] = std::move(token);
        });
        each("select record from authentication order by rowid", [&](const StatementHandle& row) {
            state.add(authentication_from_record(parse_json(text(row, 0))));
        });
        each("select record, upo from session order by rowid", [&](const StatementHandle& row) {
            Session session = session_from_record(parse_json(text(row, 0)));
            session.upo = text(row, 1);
            state.add(std::move(session));
        });
        each("select record, encrypted, xml, upo from invoice order by rowid",
             [&](const StatementHandle& row) {
                 Invoice invoice = invoice_from_record(parse_json(text(row, 0)));
                 invoice.encrypted = text(row, 1);
                 invoice.xml = text(row, 2);
                 invoice.upo = text(row, 3);
                 enter(state, std::move(invoice));
             });
    }

  private:
    /// The counts of a session follow from its invoices and are not stored twice.
    static void enter(State& state, Invoice invoice) {
        const auto session = state.sessions.find(invoice.session_reference);
        if (session != state.sessions.end()) {
            session->second.invoices.push_back(invoice.reference);
            if (invoice.stage == InvoiceStage::finished)
                ++(invoice.status.code == 200 ? session->second.successful
                                              : session->second.failed);
        }
        state.add(std::move(invoice));
    }

    [[noreturn]] void fail(const std::string& what) {
        throw std::runtime_error("the database could not " + what + ": " +
                                 sqlite3_errmsg(database_.get()));
    }

    void run(const char* statement) {
        if (sqlite3_exec(database_.get(), statement, nullptr, nullptr, nullptr) != SQLITE_OK)
            fail(std::string("run \"") + statement + "\"");
    }

    StatementHandle prepare(const char* statement) {
        sqlite3_stmt* prepared = nullptr;
        if (sqlite3_prepare_v2(database_.get(), statement, -1, &prepared, nullptr) != SQLITE_OK)
            fail(std::string("prepare \"") + statement + "\"");
        return StatementHandle(prepared);
    }

    int number(const char* query) {
        const StatementHandle statement = prepare(query);
        return sqlite3_step(statement.get()) == SQLITE_ROW ? sqlite3_column_int(statement.get(), 0)
                                                           : 0;
    }

    void bind(const StatementHandle& statement, std::initializer_list<std::string_view> values) {
        int position = 0;
        for (const std::string_view value : values) {
            // Binding as text keeps the bytes as they are; nothing here is compared or converted.
            if (sqlite3_bind_text(statement.get(), ++position, value.data() ? value.data() : "",
                                  int(value.size()), SQLITE_STATIC) != SQLITE_OK)
                fail("bind a value");
        }
    }

    void start_transaction() {
        if (in_transaction_ || !in_request_) return;
        run("begin immediate");
        in_transaction_ = true;
    }

    void write(const StatementHandle& statement, std::initializer_list<std::string_view> values) {
        start_transaction();
        bind(statement, values);
        const int result = sqlite3_step(statement.get());
        sqlite3_reset(statement.get());
        sqlite3_clear_bindings(statement.get());
        if (result != SQLITE_DONE) fail("write a record");
    }

    static std::string text(const StatementHandle& row, int column) {
        const auto* data = static_cast<const char*>(sqlite3_column_blob(row.get(), column));
        const int size = sqlite3_column_bytes(row.get(), column);
        return data == nullptr ? std::string() : std::string(data, std::size_t(size));
    }

    template <typename Visit>
    void each(const char* query, Visit visit) {
        const StatementHandle statement = prepare(query);
        int result = SQLITE_ROW;
        while ((result = sqlite3_step(statement.get())) == SQLITE_ROW) visit(statement);
        if (result != SQLITE_DONE) fail("read its records");
    }

    DatabaseHandle database_;
    StatementHandle save_setting_, read_setting_, save_token_, save_authentication_, save_session_,
        save_invoice_;
    bool in_request_ = false;
    bool in_transaction_ = false;
};

}  // namespace

std::unique_ptr<Store> open_sqlite_store(const std::string& file) {
    return std::make_unique<SqliteStore>(file);
}

}  // namespace tavrix::sandbox
