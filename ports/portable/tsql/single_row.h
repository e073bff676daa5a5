#pragma once

#include <optional>

#include "base/text.h"

namespace tavrix::ports::tsql {

/// Which row a select reads, as another statement names it.
struct SingleRow {
    base::Text table;      ///< as the statement writes it, names that need brackets in brackets
    base::Text condition;  ///< "ddout_id=1001"
    base::Text column;     ///< the condition's, as the statement writes it
};

/// The row of "select ... from TABLE where COLUMN = INTEGER", whatever is selected. Nothing for any
/// statement that says more, or less, or is not understood: what is written on such a condition
/// must not reach a row that the statement did not mean.
std::optional<SingleRow> single_row_of(base::TextView sql);

}  // namespace tavrix::ports::tsql
