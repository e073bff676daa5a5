#pragma once

#include <optional>

#include "base/value.h"

namespace tavrix::dialogs {

// A decimal's range; no amount reaches it.
inline constexpr double largest_amount = 1e28;

/// The number that a grid shows as `text`, in Poland's way of writing or in any that cannot be
/// mistaken: thousands apart by blanks, dots, commas or apostrophes, three digits each; a comma or
/// a dot before the fraction (the last of the two, where there are both); a minus in front or
/// behind, or parentheses; zł, PLN, EUR, USD, CHF, GBP, €, $, £ or % on either side; "E+15" behind
/// the number. Nothing for anything else,
/// dates and "12 szt." among it, and for what no amount reaches (1E28, a decimal's range).
std::optional<double> number_of(base::TextView text);

/// The same of what a cell holds. Null, a date and a truth value are no numbers.
std::optional<double> number_of(const base::Value& value);

}  // namespace tavrix::dialogs
