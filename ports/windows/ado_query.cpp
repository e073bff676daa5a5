#include <algorithm>
#include <mutex>
#include <utility>

#include "base/error.h"
#include "ports/windows/adapters.h"
#include "ports/windows/ado_constants.h"
#include "windows/late_bound.h"
#include "windows/variant_value.h"

namespace tavrix::windows {
namespace {

// Numbers of the ADO type library.
constexpr std::int32_t query_async_connect = 0x10;    // adAsyncConnect
constexpr std::int32_t query_async_execute = 0x10;    // adAsyncExecute
constexpr std::int32_t query_async_fetch = 0x20;      // adAsyncFetch
constexpr std::int32_t query_read_only = 1;           // adLockReadOnly, adModeRead
constexpr std::int32_t query_never_prompt = 4;        // adPromptNever
constexpr std::int64_t query_state_open = 1;          // adStateOpen
constexpr std::int64_t query_state_busy = 2 | 4 | 8;  // connecting, executing, fetching

constexpr std::int32_t query_connect_timeout_s = 15;
constexpr std::int32_t query_setup_timeout_s = 5;
constexpr std::int32_t query_run_timeout_s = 30;

template <typename Action>
void query_attempt(Action action) noexcept {
    try {
        action();
    } catch (...) {
        // Asked for, not counted on: providers differ, and a connection may be gone.
    }
}

std::int64_t query_number(const Variant& variant) {
    const base::Value value = value_of(variant.get());
    const auto* number = std::get_if<std::int64_t>(&value);
    return number == nullptr ? 0 : *number;
}

std::int64_t query_state(const LateBound& object) {
    return query_number(object.get(u"State"));
}

// What is begun does not throw: it leaves its errors here. Warnings have numbers above 0.
bool has_query_error(const LateBound& connection) {
    const LateBound errors = connection.object(u"Errors");
    const auto count = static_cast<std::int32_t>(query_number(errors.get(u"Count")));
    for (std::int32_t i = 0; i < count; ++i) {
        if (query_number(errors.object(u"Item", i).get(u"Number")) < 0) return true;
    }
    return false;
}

[[noreturn]] void throw_query_errors(const LateBound& connection) {
    constexpr std::int32_t most = 3;
    base::Text words;
    query_attempt([&] {
        const LateBound errors = connection.object(u"Errors");
        const auto count =
            std::min(static_cast<std::int32_t>(query_number(errors.get(u"Count"))), most);
        for (std::int32_t i = 0; i < count; ++i) {
            const LateBound error = errors.object(u"Item", i);
            if (!words.empty()) words += u'\n';
            words += ports::text_of(value_of(error.get(u"Description").get()));
        }
    });
    throw base::AutomationError(base::ErrorNumber::database_failed, u"ADODB", words);
}

// Amounts do not go through floating point, and a single is as short as it was written.
base::Value query_cell(const VARIANT& variant) {
    const VARIANT seen = look_through(variant);
    if (seen.vt != VT_CY && seen.vt != VT_DECIMAL && seen.vt != VT_R4) return value_of(seen);
    constexpr LCID polish = 0x0415;
    Variant text;
    const HRESULT code = VariantChangeTypeEx(text.address(), const_cast<VARIANT*>(&seen), polish,
                                             VARIANT_NOUSEROVERRIDE, VT_BSTR);
    return FAILED(code) ? value_of(seen) : value_of(text.get());
}

// Columns and rows, in this order, as GetRows gives them.
std::vector<std::vector<base::Value>> query_rows(const VARIANT& table) {
    std::vector<std::vector<base::Value>> rows;
    if (table.vt != (VT_ARRAY | VT_VARIANT) || SafeArrayGetDim(table.parray) != 2) return rows;
    const ULONG columns = table.parray->rgsabound[1].cElements;
    const ULONG count = table.parray->rgsabound[0].cElements;
    const SafeArrayAccess access(table.parray);
    const auto* cells = static_cast<const VARIANT*>(access.data());
    if (cells == nullptr) return rows;
    for (ULONG row = 0; row < count; ++row) {
        auto& values = rows.emplace_back();
        for (ULONG column = 0; column < columns; ++column) values.push_back(query_cell(*cells++));
    }
    return rows;
}

// Connections that are still busy when nobody needs them any more. To release one would wait for
// its server, so that each is looked at now and then by its own thread's messages until it has
// ended. Never destroyed: when the process ends, ADO is gone.
struct LeftBehind {
    UINT_PTR timer;
    DWORD thread;
    LateBound connection;
    LateBound rows;
};
struct LeftBehindList {
    std::mutex lock;
    std::vector<LeftBehind> entries;
};
LeftBehindList& left_behind() {
    static auto* const list = new LeftBehindList;
    return *list;
}

bool query_is_busy(const LateBound& connection, const LateBound& rows) noexcept {
    bool busy = false;
    query_attempt([&] {
        busy = (connection && (query_state(connection) & query_state_busy) != 0) ||
               (rows && (query_state(rows) & query_state_busy) != 0);
    });
    return busy;
}

void CALLBACK look_at_left_behind(HWND, UINT, UINT_PTR timer, DWORD) noexcept {
    query_attempt([&] {
        // Asked and released without the lock: ADO may deliver messages meanwhile.
        LeftBehind taken{};
        {
            LeftBehindList& list = left_behind();
            const std::lock_guard guard(list.lock);
            const auto found = std::ranges::find_if(list.entries, [&](const LeftBehind& entry) {
                return entry.timer == timer && entry.thread == GetCurrentThreadId();
            });
            if (found == list.entries.end()) return;
            taken = std::move(*found);
            list.entries.erase(found);
        }
        if (query_is_busy(taken.connection, taken.rows)) {
            LeftBehindList& list = left_behind();
            const std::lock_guard guard(list.lock);
            list.entries.push_back(std::move(taken));
        } else {
            KillTimer(nullptr, timer);
        }
    });
}

class AdoQuery final : public ports::QueryConnection {
  public:
    ~AdoQuery() override {
        if (!connection_) return;
        if (!is_rolling_back_) cancel();
        if (query_is_busy(connection_, rows_)) {
            leave_behind();
        } else {
            close();
        }
    }

    void open(const base::SecretText& connection) override {
        connection_ = LateBound::create(u"ADODB.Connection");
        connection_.put(u"ConnectionTimeout", query_connect_timeout_s);
        connection_.put(u"ConnectionString", connection.view());
        query_attempt([&] { connection_.put(u"Mode", query_read_only); });
        // ODBC would open a window of its own.
        query_attempt([&] {
            connection_.object(u"Properties")
                .object(u"Item", u"Prompt")
                .put(u"Value", query_never_prompt);
        });
        connection_.call(u"Open", Variant::missing(), Variant::missing(), Variant::missing(),
                         query_async_connect);
    }

    bool done() override {
        const std::int64_t state = query_state(rows_ ? rows_ : connection_);
        if ((state & query_state_busy) != 0) return false;
        const bool is_open = (state & query_state_open) != 0;
        // A query without rows leaves them closed. A connection may open with complaints.
        const bool failed =
            is_executing_ ? has_query_error(connection_) || (!is_open && !rows_) : !is_open;
        if (failed) throw_query_errors(connection_);
        return true;
    }

    void set_up() override {
        begin_statement(u"set xact_abort on set lock_timeout 5000 set textsize 65536");
    }

    void begin_transaction() override { begin_statement(u"begin transaction"); }

    // Only rows that ADO itself keeps are fetched while the window goes on; those that the server
    // keeps are waited for one by one.
    void execute(base::TextView sql, std::size_t row_limit) override {
        connection_.put(u"CommandTimeout", query_run_timeout_s);
        connection_.object(u"Errors").call(u"Clear");
        rows_ = LateBound::create(u"ADODB.Recordset");
        rows_.put(u"CursorLocation", use_client);
        rows_.put(u"MaxRecords", static_cast<std::int32_t>(row_limit));
        // The first rows, fifty otherwise, are waited for.
        query_attempt([&] {
            rows_.object(u"Properties").object(u"Item", u"Initial Fetch Size").put(u"Value", 1);
        });
        rows_.call(u"Open", sql, ComPointer<IDispatch>(connection_.dispatch()), open_static,
                   query_read_only, command_text | query_async_execute | query_async_fetch);
    }

    std::vector<base::Text> columns() override {
        if ((query_state(rows_) & query_state_open) == 0) return {};
        const LateBound fields = rows_.object(u"Fields");
        const auto count = static_cast<std::int32_t>(query_number(fields.get(u"Count")));
        std::vector<base::Text> names;
        for (std::int32_t i = 0; i < count; ++i) {
            names.push_back(ports::text_of(value_of(fields.object(u"Item", i).get(u"Name").get())));
        }
        return names;
    }

    std::vector<std::vector<base::Value>> rows(std::size_t count) override {
        if (value_of(rows_.get(u"EOF").get()) == base::Value(true)) return {};
        return query_rows(rows_.call(u"GetRows", static_cast<std::int32_t>(count)).get());
    }

    void cancel() noexcept override {
        if (rows_) query_attempt([&] { rows_.call(u"Cancel"); });
        if (connection_) query_attempt([&] { connection_.call(u"Cancel"); });
    }

    void roll_back() noexcept override {
        if (rows_) query_attempt([&] { rows_.call(u"Close"); });
        rows_ = LateBound();
        is_rolling_back_ = true;
        // The server may have done it itself.
        query_attempt([&] { begin_statement(u"if @@trancount > 0 rollback transaction"); });
    }

    void close() noexcept override {
        if (rows_) query_attempt([&] { rows_.call(u"Close"); });
        rows_ = LateBound();
        if (connection_) query_attempt([&] { connection_.call(u"Close"); });
        connection_ = LateBound();
    }

  private:
    void begin_statement(base::TextView sql) {
        is_executing_ = true;
        connection_.put(u"CommandTimeout", query_setup_timeout_s);
        connection_.object(u"Errors").call(u"Clear");
        connection_.call(u"Execute", sql, Variant::missing(),
                         command_text | no_records | query_async_execute);
    }

    void leave_behind() noexcept {
        constexpr UINT between_looks_ms = 500;
        query_attempt([&] {
            LeftBehindList& list = left_behind();
            const std::lock_guard guard(list.lock);
            list.entries.reserve(list.entries.size() + 1);
            const UINT_PTR timer = SetTimer(nullptr, 0, between_looks_ms, &look_at_left_behind);
            list.entries.push_back(
                {timer, GetCurrentThreadId(), std::move(connection_), std::move(rows_)});
        });
    }

    LateBound connection_;
    LateBound rows_;
    bool is_executing_ = false;
    bool is_rolling_back_ = false;
};

}  // namespace
}  // namespace tavrix::windows

namespace tavrix::ports {

std::unique_ptr<QueryConnection> make_ado_query() {
    return std::make_unique<windows::AdoQuery>();
}

}  // namespace tavrix::ports
