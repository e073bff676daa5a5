#pragma once

#include <optional>

#include "base/text.h"

namespace tavrix::dialogs {

/// Why a text is not taken, and the part of it that is to blame.
struct Refusal {
    base::Text words;  ///< Polish, with the line and the place in it, both from 1
    std::size_t position = 0;
    std::size_t length = 0;
};

/// Nothing when `sql` is one SQL Server statement that only reads: it begins with SELECT or WITH
/// (SELECT also behind parentheses) and no word outside texts, quoted names and comments writes,
/// runs a procedure, reaches another server, locks what it reads or begins a second statement. SQL
/// Server needs no semicolon between two statements, so that a second SELECT is only taken behind
/// UNION, EXCEPT, INTERSECT or in parentheses.
///
/// A fence against slips and tricks, not a right: only a login that may do no more than read is
/// one.
std::optional<Refusal> refusal_of(base::TextView sql);

}  // namespace tavrix::dialogs
