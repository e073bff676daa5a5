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

/// The rows of one query, static, with batch-optimistic locking: changes stay in the recordset
/// until update_batch writes them all. Field names are compared without regard to letter case.
/// Every function throws base::AutomationError with the database's own description on failure.
class Recordset {
  public:
    virtual ~Recordset() = default;
    /// True when there is no current row; true from the start for a query without rows.
    virtual bool at_end() = 0;
    virtual void move_next() = 0;
    virtual Value field(base::TextView name) = 0;
    virtual void set_field(base::TextView name, const Value& value) = 0;
    /// Begins a new row, which becomes the current one.
    virtual void add_new() = 0;
    virtual void update_batch() = 0;
};

/// The host's open connection. Never opened or closed here. SQL is in the SQL Server dialect.
class Database {
  public:
    virtual ~Database() = default;
    virtual std::unique_ptr<Recordset> open(base::TextView sql) = 0;
    virtual void execute(base::TextView sql) = 0;
};

}  // namespace tavrix::ports
