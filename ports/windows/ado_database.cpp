#include "ports/windows/ado_database.h"

#include <algorithm>

#include "base/error.h"
#include "ports/windows/ado_constants.h"
#include "ports/windows/ado_field.h"
#include "ports/windows/ado_row.h"
#include "windows/variant_value.h"

namespace tavrix::windows {
namespace {

// Numbers of the ADO type library.
constexpr std::int32_t lock_batch_optimistic = 4;  // adLockBatchOptimistic
constexpr std::int32_t criteria_key = 0;           // adCriteriaKey

LateBound open_rows(const LateBound& connection, base::TextView sql) {
    LateBound rows = LateBound::create(u"ADODB.Recordset");
    // A static cursor of the server cannot be updated; the client's can.
    rows.put(u"CursorLocation", use_client);
    rows.call(u"Open", sql, ComPointer<IDispatch>(connection.dispatch()), open_static,
              lock_batch_optimistic, command_text);
    try {
        // The row is found by its key alone. Otherwise the values that were read are compared too,
        // and a stored time with milliseconds never equals itself under newer providers.
        rows.object(u"Properties").object(u"Item", u"Update Criteria").put(u"Value", criteria_key);
    } catch (const base::AutomationError&) {
        // Reading needs no criteria, and writing is looked after.
    }
    return rows;
}

void close(const LateBound& rows) noexcept {
    // Closing refuses a row that is still being edited; releasing the recordset then drops it.
    try {
        rows.call(u"Close");
    } catch (...) {
    }
}

// Failures after which the row may hold what was written: counts of triggers or no counts at all
// (row_changed, or unspecified), and a connection that broke off too early or too late. A deadlock
// and a time-out are among them, which are worth a second try.
bool may_be_written(const base::AutomationError& error) {
    switch (static_cast<std::uint32_t>(error.number())) {
        case static_cast<std::uint32_t>(base::ErrorNumber::row_changed):
        case 0x80004005:  // E_FAIL
        case 0x80040E31:  // DB_E_ABORTLIMITREACHED, a time-out
            return true;
        default:
            return false;
    }
}

// Blanks at the end are no difference to SQL Server either, whose columns may be filled up with
// them.
ports::Value comparable(ports::Value value) {
    if (auto* text = std::get_if<base::Text>(&value)) {
        text->resize(text->find_last_not_of(u' ') + 1);
    }
    return value;
}

class AdoRecordset final : public ports::Recordset {
  public:
    AdoRecordset(const LateBound& connection, base::TextView sql)
        : connection_(connection), sql_(sql), row_(ports::tsql::single_row_of(sql)) {
        open();
    }
    ~AdoRecordset() override { close(recordset_); }

    bool at_end() override { return recordset_.get(u"EOF").get().boolVal != VARIANT_FALSE; }
    void move_next() override {
        leave_row();
        recordset_.call(u"MoveNext");
    }
    ports::Value field(base::TextView name) override { return value_in(item(name)); }
    void set_field(base::TextView name, const ports::Value& value) override {
        const LateBound field = item(name);
        field.put(u"Value", variant_for(field, value));
        const auto is_it = [&](const base::Text& other) {
            return base::equal_case_blind(other, name);
        };
        if (std::ranges::none_of(assigned_, is_it)) assigned_.emplace_back(name);
    }
    std::size_t capacity(base::TextView name) override { return capacity_of(item(name)); }
    void add_new() override {
        leave_row();
        recordset_.call(u"AddNew");
        is_new_ = true;
    }

    void update_batch() override {
        const std::vector<AssignedField> assigned = take_assigned();
        const bool is_one_row = row_ && !is_new_ && !others_wait_;
        if ((!is_new_ || others_wait_) && !finds_rows_by_key(recordset_, row_)) {
            if (!is_one_row) {
                give_up();
                throw base::AutomationError(
                    base::ErrorNumber::database_failed, u"Database",
                    u"The table has no primary key or unique index, so its rows cannot be told "
                    u"apart: " +
                        sql_);
            }
            constexpr int attempts = 2;
            return write_by_statement(assigned, attempts);
        }
        try {
            recordset_.call(u"UpdateBatch");
            is_new_ = others_wait_ = false;
        } catch (const base::AutomationError& error) {
            if (!is_one_row || !may_be_written(error)) {
                give_up();
                throw;
            }
            if (!stands_written(assigned)) write_by_statement(assigned, 1);
        }
    }

  private:
    void open() {
        recordset_ = open_rows(connection_, sql_);
        fields_ = recordset_.object(u"Fields");
        is_new_ = others_wait_ = false;
    }

    LateBound item(base::TextView name) const { return fields_.object(u"Item", name); }

    void leave_row() {
        others_wait_ = others_wait_ || is_new_ || !assigned_.empty();
        assigned_.clear();
        is_new_ = false;
    }

    std::vector<AssignedField> take_assigned() {
        std::vector<AssignedField> fields;
        for (base::Text& name : assigned_) {
            Variant value = item(name).get(u"Value");
            fields.push_back({std::move(name), std::move(value)});
        }
        assigned_.clear();
        return fields;
    }

    // A statement that raises nothing has reached the row if there is one, whatever a trigger or
    // the column's code page made of the values since.
    void write_by_statement(const std::vector<AssignedField>& assigned, int attempts) {
        if (assigned.empty()) return;
        for (;;) {
            try {
                update_row(connection_, *row_, assigned);
                break;
            } catch (const base::AutomationError& error) {
                give_up();
                if (!may_be_written(error)) throw;
                if (stands_written(assigned)) return;
                if (--attempts == 0) throw;
            }
        }
        read_again();
        if (!at_end()) return;
        throw base::AutomationError(
            base::ErrorNumber::row_changed, u"Database",
            u"There is no such row any more: " + row_->table + u" where " + row_->condition);
    }

    void read_again() {
        close(recordset_);
        open();
    }

    // Whether a write that was reported as failed has happened after all: reads the row anew and
    // compares. Times are left out, because a column may keep less of one than was written.
    bool stands_written(const std::vector<AssignedField>& assigned) {
        read_again();
        if (at_end()) return false;
        bool compared = false;
        for (const AssignedField& field : assigned) {
            const ports::Value written = value_of(field.value.get());
            if (std::holds_alternative<base::DateTime>(written)) continue;
            const ports::Value stored = value_of(item(field.name).get(u"Value").get());
            if (comparable(stored) != comparable(written)) return false;
            compared = true;
        }
        return compared;
    }

    // What stays pending would be sent again, and fail again, with the next row of a walk.
    void give_up() {
        try {
            const Variant position = recordset_.get(u"AbsolutePosition");
            recordset_.call(u"CancelBatch");
            // A walk goes on where it was; a row that was only added is nowhere any more.
            if (!is_new_) {
                recordset_.put(u"AbsolutePosition", Variant::copy_of(position.get()));
            }
        } catch (const base::AutomationError&) {
            // What the write failed with is what the caller is told.
        }
        is_new_ = others_wait_ = false;
    }

    LateBound connection_;
    base::Text sql_;
    std::optional<ports::tsql::SingleRow> row_;
    LateBound recordset_;
    LateBound fields_;
    std::vector<base::Text> assigned_;  // names of the current row's fields that were set
    bool is_new_ = false;
    bool others_wait_ = false;  // changes of rows that the walk has left
};

}  // namespace

std::unique_ptr<ports::Recordset> AdoDatabase::open(base::TextView sql) {
    if (!connection_) connection_.call(u"Open");
    return std::make_unique<AdoRecordset>(connection_, sql);
}

void AdoDatabase::execute(base::TextView sql) {
    connection_.call(u"Execute", sql, Variant::missing(), command_text | no_records);
}

base::Text AdoDatabase::name() {
    // Not every provider says either.
    const auto told = [](const auto& read) {
        try {
            return ports::text_of(value_of(read().get()));
        } catch (const base::AutomationError&) {
            return base::Text();
        }
    };
    const base::Text source = told([&] {
        return connection_.object(u"Properties").object(u"Item", u"Data Source").get(u"Value");
    });
    return source + u' ' + told([&] { return connection_.get(u"DefaultDatabase"); });
}

}  // namespace tavrix::windows
