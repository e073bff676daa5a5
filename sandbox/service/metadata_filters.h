// What a metadata query asks for: the filters of its body, read strictly.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "sandbox/exchange/exchange.h"
#include "sandbox/store/model.h"

namespace tavrix::sandbox {

/// `dateRange` of a query.
struct DateRange {
    /// `Issue`, `Invoicing` or `PermanentStorage`.
    std::string type;
    Instant from;
    Instant to;
    /// The calendar day `to` was written with; issue dates have no time of day.
    std::string last_day;
    /// `restrictToPermanentStorageHwmDate`, which other types ignore.
    bool restricted = false;

    /// The date of an invoice that the range is about, and that results are sorted by.
    Instant moment_of(const Invoice& invoice) const;
    bool admits(const Invoice& invoice) const;
};

/// Refusal 21405 for a range that cannot be read, runs backwards or is longer than three months.
DateRange read_date_range(const Json& body, Instant now);

using Condition = std::function<bool(const Invoice&, const FormCode&)>;

/// The filters beside subject and dates. Refusal 21405 for a value the contract does not know.
std::vector<Condition> read_conditions(const Json& body);

}  // namespace tavrix::sandbox
