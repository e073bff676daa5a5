#pragma once

#include <cstdint>
#include <optional>

#include "base/text.h"

namespace tavrix::base {

/// A calendar date and time of day without a time zone; local time wherever a host sees it.
struct DateTime {
    int year = 1899;
    int month = 12;
    int day = 30;
    int hour = 0;
    int minute = 0;
    int second = 0;

    friend auto operator<=>(const DateTime&, const DateTime&) = default;
};

/// Days since 1970-01-01 in the proleptic Gregorian calendar.
std::int64_t days_from_civil(int year, int month, int day) noexcept;
/// The date that lies `days` after 1970-01-01.
DateTime civil_from_days(std::int64_t days) noexcept;

/// Automation's DATE: days since 1899-12-30, the time of day as the fraction; rounded to whole
/// seconds.
DateTime from_automation_date(double days) noexcept;
double to_automation_date(const DateTime& moment) noexcept;

/// "YYYY-MM-DD".
Text format_date(const DateTime& moment);
/// "YYYY-MM-DD HH:MM:SS".
Text format_date_time(const DateTime& moment);
/// Reads "YYYY-MM-DD", also followed by " " or "T" and "HH:MM[:SS[.fraction]]". Nothing for
/// anything else.
std::optional<DateTime> parse_date_time(TextView text) noexcept;

}  // namespace tavrix::base
