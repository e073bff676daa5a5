#include <sqlite3.h>

#include <stdexcept>

#include "sandbox/store/store.h"

namespace tavrix::sandbox {
namespace {

// "TVRX" in SQLite's field for the owner of a file.
constexpr int application_id = 0x54565258;
// How records are laid out in the file. A file of another layout is refused: read as an empty one
// it would hide what was acknowledged.
constexpr int layout = 2;

struct CloseDatabase {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
};
struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using DatabaseHandle = std::unique_ptr<sqlite3, CloseDatabase>;
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

std::string text(sqlite3_stmt* row, int column) {
    const auto* data = static_cast<const char*>(sqlite3_column_blob(row, column));
    const int size = sqlite3_column_bytes(row, column);
    return data == nullptr ? std::string() : std::string(data, std::size_t(size));
}

class SqliteStore : public Store {
  public:
    explicit SqliteStore(const std::string& file) {
        sqlite3* opened = nullptr;
        constexpr int mode = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
        const int result = sqlite3_open_v2(file.c_str(), &opened, mode, nullptr);
        database_.reset(opened);
        if (result != SQLITE_OK) fail("open " + file);
        // Exclusive: two sandboxes over one file would hand out answers that contradict each other.
        run("pragma locking_mode = exclusive");
        run("pragma journal_mode = wal");
        run("pragma synchronous = normal");
        const int owner = number("pragma application_id");
        if (owner != application_id && number("select count(*) from sqlite_master") != 0)
            throw std::runtime_error(file + " is not a file of this sandbox");
        if (owner == application_id && number("pragma user_version") != layout)
            throw std::runtime_error(file +
                                     " was written by another version of the sandbox; give that "
                                     "version the folder, or this one a new folder");
        run("pragma application_id = " + std::to_string(application_id));
        run("pragma user_version = " + std::to_string(layout));
        run("create table if not exists record "
            "(kind text not null, key text not null, value text not null, unique (kind, key))");
        // An upsert keeps the row's number, and with it the order of creation.
        write_ = prepare(
            "insert into record values (?, ?, ?) "
            "on conflict (kind, key) do update set value = excluded.value");
        read_ = prepare("select value from record where kind = ? and key = ?");
        forget_ = prepare("delete from record where kind = ? and key = ?");
        forget_kind_ = prepare("delete from record where kind = ?");
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

    void write(std::string_view kind, std::string_view key, std::string_view value) override {
        change(write_, {kind, key, value});
    }
    void forget(std::string_view kind, std::string_view key) override {
        change(forget_, {kind, key});
    }
    void forget(std::string_view kind) override { change(forget_kind_, {kind}); }

    std::optional<std::string> read(std::string_view kind, std::string_view key) override {
        bind(read_, {kind, key});
        std::optional<std::string> value;
        const int result = sqlite3_step(read_.get());
        if (result == SQLITE_ROW) value = text(read_.get(), 0);
        sqlite3_reset(read_.get());
        if (result != SQLITE_ROW && result != SQLITE_DONE) fail("read a record");
        return value;
    }

    void each(std::string_view kind, const Visit& visit) override {
        const auto rows = prepare("select key, value from record where kind = ? order by rowid");
        bind(rows, {kind});
        int result = SQLITE_ROW;
        while ((result = sqlite3_step(rows.get())) == SQLITE_ROW)
            visit(text(rows.get(), 0), text(rows.get(), 1));
        if (result != SQLITE_DONE) fail("read its records");
    }

  private:
    [[noreturn]] void fail(const std::string& what) {
        if (sqlite3_errcode(database_.get()) == SQLITE_BUSY)
            throw std::runtime_error(std::string(sqlite3_db_filename(database_.get(), "main")) +
                                     " is in use by another sandbox; end that one, or give this "
                                     "one a folder of its own");
        throw std::runtime_error("the database could not " + what + ": " +
                                 sqlite3_errmsg(database_.get()));
    }

    void run(const std::string& statement) {
        if (sqlite3_exec(database_.get(), statement.c_str(), nullptr, nullptr, nullptr) !=
            SQLITE_OK)
            fail("run \"" + statement + "\"");
    }

    StatementHandle prepare(const std::string& statement) {
        sqlite3_stmt* prepared = nullptr;
        if (sqlite3_prepare_v2(database_.get(), statement.c_str(), -1, &prepared, nullptr) !=
            SQLITE_OK)
            fail("prepare \"" + statement + "\"");
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

    /// A transaction starts with the first change of a request, if there is one.
    void change(const StatementHandle& statement, std::initializer_list<std::string_view> values) {
        if (in_request_ && !in_transaction_) {
            run("begin immediate");
            in_transaction_ = true;
        }
        bind(statement, values);
        const int result = sqlite3_step(statement.get());
        sqlite3_reset(statement.get());
        sqlite3_clear_bindings(statement.get());
        if (result != SQLITE_DONE) fail("change a record");
    }

    DatabaseHandle database_;
    StatementHandle write_, read_, forget_, forget_kind_;
    bool in_request_ = false;
    bool in_transaction_ = false;
};

}  // namespace

std::unique_ptr<Store> open_sqlite_store(const std::string& file) {
    return std::make_unique<SqliteStore>(file);
}

}  // namespace tavrix::sandbox
