#pragma once

#include "ports/database.h"
#include "windows/late_bound.h"

namespace tavrix::windows {

// ADO turns texts into numbers and dates, and dates into texts, by the regional settings of whoever
// is logged on: "1234,50" in a decimal column becomes 123450 under English ones, without an error.
// Hence nothing that it would have to convert is left to it.

/// The field's value in the current row, as ports::Recordset::field promises it.
ports::Value value_in(const LateBound& field);

/// `value` in the type that the field holds. Throws base::AutomationError for a text that the
/// field's type cannot take.
Variant variant_for(const LateBound& field, const ports::Value& value);

/// How many UTF-16 units of text the field takes.
std::size_t capacity_of(const LateBound& field);

}  // namespace tavrix::windows
