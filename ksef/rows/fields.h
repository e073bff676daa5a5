#pragma once

#include "ports/database.h"

namespace tavrix::ksef {

/// As much of a description as its column takes, no character cut in two. A long one must not cost
/// what is written with it.
base::TextView fitting(ports::Recordset& rows, base::TextView column, base::TextView text);

/// A text as a literal of a statement: in quotation marks, those inside doubled, so that a value
/// from outside stays a value.
base::Text sql_literal(base::TextView text);

}  // namespace tavrix::ksef
