#include "base/date_time.h"

#include <cmath>
#include <cstdio>

namespace tavrix::base {
namespace {

// 1899-12-30, day 0 of an automation DATE, counted from 1970-01-01.
constexpr std::int64_t automation_epoch_days = -25569;
constexpr std::int64_t seconds_per_day = 86400;

std::int64_t floor_divide(std::int64_t a, std::int64_t b) {
    return a / b - (a % b < 0 ? 1 : 0);
}

// Reads exactly `digits` decimal digits at `at`; advances it. -1 when there are not as many.
int read_number(TextView text, std::size_t& at, std::size_t digits) {
    if (at + digits > text.size()) return -1;
    int value = 0;
    for (std::size_t i = 0; i < digits; ++i) {
        const char16_t c = text[at + i];
        if (c < u'0' || c > u'9') return -1;
        value = value * 10 + (c - u'0');
    }
    at += digits;
    return value;
}

bool read_character(TextView text, std::size_t& at, char16_t wanted) {
    if (at >= text.size() || text[at] != wanted) return false;
    ++at;
    return true;
}

Text narrow_text(const char* text) {
    return {text, text + std::char_traits<char>::length(text)};
}

}  // namespace

// Both conversions count in eras of 400 years that begin on 1 March, so that the leap day is a
// year's last.
std::int64_t days_from_civil(int year, int month, int day) noexcept {
    const std::int64_t y = month <= 2 ? std::int64_t{year} - 1 : year;
    const std::int64_t era = floor_divide(y, 400);
    const std::int64_t year_of_era = y - era * 400;
    const std::int64_t day_of_year = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const std::int64_t day_of_era =
        year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
    return era * 146097 + day_of_era - 719468;
}

DateTime civil_from_days(std::int64_t days) noexcept {
    days += 719468;
    const std::int64_t era = floor_divide(days, 146097);
    const std::int64_t day_of_era = days - era * 146097;
    const std::int64_t year_of_era =
        (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
    const std::int64_t day_of_year =
        day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const std::int64_t shifted_month = (5 * day_of_year + 2) / 153;
    DateTime date;
    date.day = static_cast<int>(day_of_year - (153 * shifted_month + 2) / 5 + 1);
    date.month = static_cast<int>(shifted_month < 10 ? shifted_month + 3 : shifted_month - 9);
    date.year = static_cast<int>(year_of_era + era * 400 + (date.month <= 2 ? 1 : 0));
    return date;
}

DateTime from_automation_date(double days) noexcept {
    // The integer part is the day and the fraction's magnitude the time, also before day 0.
    const double whole = std::trunc(days);
    auto day = static_cast<std::int64_t>(whole);
    auto seconds = static_cast<std::int64_t>(
        std::llround(std::fabs(days - whole) * static_cast<double>(seconds_per_day)));
    if (seconds == seconds_per_day) {
        seconds = 0;
        ++day;
    }
    DateTime moment = civil_from_days(day + automation_epoch_days);
    moment.hour = static_cast<int>(seconds / 3600);
    moment.minute = static_cast<int>(seconds / 60 % 60);
    moment.second = static_cast<int>(seconds % 60);
    return moment;
}

double to_automation_date(const DateTime& moment) noexcept {
    const auto day = static_cast<double>(days_from_civil(moment.year, moment.month, moment.day) -
                                         automation_epoch_days);
    const double fraction = (moment.hour * 3600 + moment.minute * 60 + moment.second) /
                            static_cast<double>(seconds_per_day);
    return day < 0 ? day - fraction : day + fraction;
}

Text format_date(const DateTime& moment) {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d", moment.year, moment.month, moment.day);
    return narrow_text(buffer);
}

Text format_date_time(const DateTime& moment) {
    char buffer[80];
    std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d %02d:%02d:%02d", moment.year, moment.month,
                  moment.day, moment.hour, moment.minute, moment.second);
    return narrow_text(buffer);
}

std::optional<DateTime> parse_date_time(TextView text) noexcept {
    DateTime moment;
    std::size_t at = 0;
    moment.year = read_number(text, at, 4);
    if (moment.year < 0 || !read_character(text, at, u'-')) return std::nullopt;
    moment.month = read_number(text, at, 2);
    if (moment.month < 1 || moment.month > 12 || !read_character(text, at, u'-'))
        return std::nullopt;
    moment.day = read_number(text, at, 2);
    const DateTime normalised =
        civil_from_days(days_from_civil(moment.year, moment.month, 1) + moment.day - 1);
    if (moment.day < 1 || normalised.month != moment.month) return std::nullopt;
    if (at == text.size()) return moment;

    if (!read_character(text, at, u' ') && !read_character(text, at, u'T')) return std::nullopt;
    moment.hour = read_number(text, at, 2);
    if (moment.hour < 0 || moment.hour > 23 || !read_character(text, at, u':')) return std::nullopt;
    moment.minute = read_number(text, at, 2);
    if (moment.minute < 0 || moment.minute > 59) return std::nullopt;
    if (at == text.size()) return moment;
    if (!read_character(text, at, u':')) return std::nullopt;
    moment.second = read_number(text, at, 2);
    if (moment.second < 0 || moment.second > 59) return std::nullopt;
    if (at == text.size()) return moment;
    if (!read_character(text, at, u'.') || at == text.size()) return std::nullopt;
    while (at < text.size()) {
        if (read_number(text, at, 1) < 0) return std::nullopt;
    }
    return moment;
}

}  // namespace tavrix::base
