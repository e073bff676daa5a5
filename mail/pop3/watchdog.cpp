#include "mail/pop3/watchdog.h"

#include "mail/pop3/run_result.h"

namespace tavrix::mail {
namespace {

base::DateTime minute_after(const base::DateTime& moment) {
    constexpr int minutes_of_day = 24 * 60;
    const int minutes = moment.hour * 60 + moment.minute + 1;
    const std::int64_t day = base::days_from_civil(moment.year, moment.month, moment.day);
    base::DateTime later = base::civil_from_days(day + minutes / minutes_of_day);
    later.hour = minutes % minutes_of_day / 60;
    later.minute = minutes % 60;
    later.second = moment.second;
    return later;
}

}  // namespace

Watchdog::Watchdog(const base::DateTime& start) : deadline_(minute_after(start)) {}

std::optional<std::int32_t> Watchdog::look(const base::DateTime& now) const {
    if (base::format_date(now) != base::format_date(deadline_)) return run_result::date_changed;
    if (now > deadline_) return run_result::timed_out;
    return std::nullopt;
}

}  // namespace tavrix::mail
