#pragma once

#include <memory>
#include <optional>

#include "base/value.h"

namespace tavrix::ports {

/// A field's value.
using Value = base::Value;

/// The value as a host's string conversion gives it: null and empty are "", numbers decimal with a
/// point, true "True", dates "YYYY-MM-DD HH:MM:SS" (without a midnight's time), bytes read as
/// UTF-16.
base::Text text_of(const Value& value);
/// The value as a date: a date itself, a text that reads as one, a number as an automation DATE.
/// Nothing for null and for what is no date.
std::optional<base::DateTime> date_of(const Value& value);
/// A number written with a decimal point or comma, with a point: "-1234.50". Nothing for anything
/// else, digits in groups among it: which of the two marks groups them is anybody's guess.
std::optional<base::Text> plain_number(base::TextView text);

/// The rows of one query, static, with batch-optimistic locking: changes stay in the recordset
/// until update_batch writes them. Field names are compared without regard to letter case.
/// Every function throws base::AutomationError with the database's own description on failure.
class Recordset {
  public:
    /// The capacity of a field that takes any text.
    static constexpr std::size_t unlimited = static_cast<std::size_t>(-1);

    virtual ~Recordset() = default;
    /// True when there is no current row; true from the start for a query without rows.
    virtual bool at_end() = 0;
    virtual void move_next() = 0;
    /// The blanks that fill a column of fixed length up are left out.
    virtual Value field(base::TextView name) = 0;
    /// Text becomes a number or a date where the column holds such, with a decimal comma as with a
    /// point and whatever the user's regional settings are; dates become "YYYY-MM-DD HH:MM:SS" in a
    /// column of texts. Text longer than the field's capacity is refused.
    virtual void set_field(base::TextView name, const Value& value) = 0;
    /// How many UTF-16 units of text the field takes.
    virtual std::size_t capacity(base::TextView name) = 0;
    /// Begins a new row, which becomes the current one.
    virtual void add_new() = 0;
    /// Writes each changed row for itself. What somebody else wrote into the row meanwhile is
    /// overwritten; a row that is gone fails. After a failure no change is left pending, so that
    /// the next row of a walk is not held up by this one.
    virtual void update_batch() = 0;
};

/// The host's open connection. Never opened or closed here. SQL is in the SQL Server dialect.
class Database {
  public:
    virtual ~Database() = default;
    virtual std::unique_ptr<Recordset> open(base::TextView sql) = 0;
    virtual void execute(base::TextView sql) = 0;
    /// Tells this database apart from others, as far as the connection says; "" when it does not.
    virtual base::Text name() = 0;
};

}  // namespace tavrix::ports
