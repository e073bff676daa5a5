#pragma once

#include <optional>
#include <vector>

#include "ports/portable/tsql/single_row.h"
#include "windows/late_bound.h"

namespace tavrix::windows {

/// A field and what was put into it, as ADO holds it in the field's own type.
struct AssignedField {
    base::Text name;
    Variant value;
};

/// True when ADO finds each row again by a key. Where the provider names none (no primary key or
/// unique index, and always through ODBC), ADO takes all the columns that were read for one, and an
/// update reaches every row that holds the same in them: in documents that were never sent, every
/// other one of that day.
///
/// A key of which only a part was read is as bad. So of the key columns among those that were read
/// only `row`'s own is trusted, where the statement is one for a single row.
bool finds_rows_by_key(const LateBound& recordset,
                       const std::optional<ports::tsql::SingleRow>& row);

/// Writes the fields of one row with one statement, whatever ADO knows of its key. Whether the row
/// is there must be looked up: triggers and the server's settings change the count of rows that
/// comes back.
void update_row(const LateBound& connection, const ports::tsql::SingleRow& row,
                const std::vector<AssignedField>& fields);

}  // namespace tavrix::windows
