#include "sandbox/basics/clock.h"

#include <array>
#include <cstdio>

namespace tavrix::sandbox {
namespace {

using std::chrono::days;
using std::chrono::floor;
using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;

struct Broken {
    int year;
    unsigned month, day;
    int hour, minute, second;
    int ticks;
};

Broken broken_down(Instant moment) {
    const auto day = floor<days>(moment);
    const std::chrono::year_month_day date{day};
    const Ticks rest = moment - day;
    const auto whole = std::chrono::duration_cast<seconds>(rest);
    return {int(date.year()),           unsigned(date.month()),       unsigned(date.day()),
            int(whole.count() / 3600),  int(whole.count() / 60 % 60), int(whole.count() % 60),
            int((rest - whole).count())};
}

/// Central European Time: summer time from the last Sunday of March to that of October, both at
/// 01:00 UTC (directive 2000/84/EC).
hours polish_offset(Instant moment) {
    using namespace std::chrono;
    const year y = year_month_day{floor<days>(moment)}.year();
    const sys_days from{y / March / Sunday[last]};
    const sys_days to{y / October / Sunday[last]};
    return moment >= from + 1h && moment < to + 1h ? hours(2) : hours(1);
}

template <std::size_t size, typename... Values>
std::string print(const char* format, Values... values) {
    std::array<char, size> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return text.data();
}

int power_of_ten(int exponent) {
    int result = 1;
    while (exponent-- > 0) result *= 10;
    return result;
}

Instant months_later(Instant moment, int months) {
    const auto day = floor<days>(moment);
    auto date = std::chrono::year_month_day{day} + std::chrono::months(months);
    if (!date.ok()) date = date.year() / date.month() / std::chrono::last;
    return std::chrono::sys_days{date} + (moment - day);
}

/// What a text says, and whether it says where.
struct Written {
    Instant moment;
    bool with_offset = false;
};

/// Reads exactly `count` digits, or fails.
std::optional<int> digits(std::string_view text, std::size_t at, std::size_t count) {
    if (text.size() < at + count) return std::nullopt;
    int value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        if (text[i] < '0' || text[i] > '9') return std::nullopt;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

std::optional<Written> parse(std::string_view text) {
    const auto year = digits(text, 0, 4), month = digits(text, 5, 2), day = digits(text, 8, 2);
    if (!year || !month || !day || text[4] != '-' || text[7] != '-') return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(*year),
                                           std::chrono::month(unsigned(*month)),
                                           std::chrono::day(unsigned(*day))};
    if (!date.ok()) return std::nullopt;
    Instant result = std::chrono::sys_days(date);
    if (text.size() == 10) return Written{result};

    const auto hour = digits(text, 11, 2), minute = digits(text, 14, 2),
               second = digits(text, 17, 2);
    if (!hour || !minute || !second || *hour > 23 || *minute > 59 || *second > 59 ||
        text[10] != 'T' || text[13] != ':' || text[16] != ':')
        return std::nullopt;
    result += hours(*hour) + minutes(*minute) + seconds(*second);

    std::size_t at = 19;
    if (at < text.size() && text[at] == '.') {
        int unit = 1'000'000;
        for (++at; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at, unit /= 10)
            result += Ticks((text[at] - '0') * unit);
    }
    if (at == text.size()) return Written{result};
    if (text.substr(at) == "Z") return Written{result, true};

    const auto offset_hours = digits(text, at + 1, 2), offset_minutes = digits(text, at + 4, 2);
    if (!offset_hours || !offset_minutes || text[at + 3] != ':' || text.size() != at + 6)
        return std::nullopt;
    const minutes offset = hours(*offset_hours) + minutes(*offset_minutes);
    if (text[at] == '+') return Written{result - offset, true};
    if (text[at] == '-') return Written{result + offset, true};
    return std::nullopt;
}

}  // namespace

Instant Clock::now() const {
    const Instant base = start_ ? *start_ : floor<Ticks>(std::chrono::system_clock::now());
    return base + Ticks(advanced_);
}

std::string TimeFormat::text(Instant moment) const {
    const Broken at = broken_down(moment);
    std::string result = print<40>("%04d-%02u-%02uT%02d:%02d:%02d", at.year, at.month, at.day,
                                   at.hour, at.minute, at.second);
    std::string fraction = print<16>("%07d", at.ticks).substr(0, std::size_t(fraction_digits));
    if (trim_zeros) fraction.erase(fraction.find_last_not_of('0') + 1);
    if (!fraction.empty()) result += "." + fraction;
    return result + "+00:00";
}

Instant TimeFormat::truncate(Instant moment) const {
    const auto since = moment.time_since_epoch();
    return Instant(since - since % unit());
}

Ticks TimeFormat::unit() const {
    return Ticks(power_of_ten(7 - fraction_digits));
}

std::string polish_time_text(Instant moment) {
    const hours offset = polish_offset(moment);
    const Broken at = broken_down(moment + offset);
    return print<64>("%04d-%02u-%02uT%02d:%02d:%02d.%03d+%02d:00", at.year, at.month, at.day,
                     at.hour, at.minute, at.second, at.ticks / 10'000, int(offset.count()));
}

std::string polish_date_text(Instant moment) {
    const Broken at = broken_down(moment + polish_offset(moment));
    return print<32>("%04d-%02u-%02u", at.year, at.month, at.day);
}

std::string polish_compact_date(Instant moment) {
    const Broken at = broken_down(moment + polish_offset(moment));
    return print<32>("%04d%02u%02u", at.year, at.month, at.day);
}

std::int64_t unix_ms(Instant moment) {
    return floor<std::chrono::milliseconds>(moment.time_since_epoch()).count();
}

std::optional<Instant> parse_instant(std::string_view text) {
    const auto written = parse(text);
    return written ? std::optional(written->moment) : std::nullopt;
}

std::optional<Instant> parse_polish_instant(std::string_view text) {
    const auto written = parse(text);
    if (!written) return std::nullopt;
    if (written->with_offset) return written->moment;
    const Instant in_winter = written->moment - hours(1);
    return polish_offset(in_winter) == hours(1) ? in_winter : written->moment - hours(2);
}

bool within_months(Instant from, Instant to, int months) {
    return to <= months_later(from, months) ||
           to + polish_offset(to) <= months_later(from + polish_offset(from), months);
}

}  // namespace tavrix::sandbox
