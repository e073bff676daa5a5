#pragma once

#include <string>

#include "ports/database.h"

namespace tavrix::ports {

/// What a column's declaration says of its values; SQLite itself would store anything in any
/// column.
enum class ColumnKind { as_stored, boolean, number, date, text, fixed_text };

/// One result column as its table declares it.
struct SqliteColumn {
    /// `declared` may be null: a computed column has no declaration.
    SqliteColumn(const char* utf8_name, const char* declared);

    base::Text name;
    /// In capitals, without a length: "NVARCHAR", "DATETIME"; "" for a computed column.
    std::string declared_type;
    ColumnKind kind;
    /// Of texts, as declared; Recordset::unlimited without a length.
    std::size_t length = Recordset::unlimited;
};

/// A stored value as a column of that kind shows it: the text of a date column as a date when it
/// reads as one.
Value as_kind(const Value& stored, ColumnKind kind);
/// The other way: what SQLite holds after such a value was bound.
Value as_stored(const Value& value);
/// A value for the column, converted as Recordset::set_field promises. Throws
/// base::AutomationError when the column does not take it.
Value fitting(const Value& value, const SqliteColumn& column);

}  // namespace tavrix::ports
