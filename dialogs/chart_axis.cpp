#include "dialogs/chart_axis.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace tavrix::dialogs {
namespace {

using base::Text;

constexpr char16_t no_break_space = u'\u00A0';
constexpr double first_in_powers_of_ten = 1e15;
constexpr int most_decimals = 12;

/// Not by the process's locale, which is the host's.
std::string plain_number(double value, int decimals) {
    char digits[64];
    const auto [end, error] =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
    return error == std::errc() ? std::string(digits, end) : std::string("0");
}

Text in_powers_of_ten(double value) {
    char digits[64];
    const auto [end, error] =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::scientific, 2);
    Text text = base::from_utf8(std::string(digits, error == std::errc() ? end : digits));
    std::ranges::replace(text, u'.', u',');
    std::ranges::replace(text, u'e', u'E');
    return text;
}

/// The smallest of 1, 2, 5 times a power of ten that is not below `least`.
double round_step(double least) {
    const double power = std::pow(10.0, std::floor(std::log10(least)));
    // What rounding made of a step that is round already.
    constexpr double slack = 1 - 1e-9;
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= least * slack) return factor * power;
    }
    return 10 * power;
}

int decimals_of(double step) {
    constexpr double slack = 1e-9;
    return std::clamp(static_cast<int>(-std::floor(std::log10(step) + slack)), 0, most_decimals);
}

}  // namespace

Text polish_number(double value, int decimals) {
    if (std::fabs(value) >= first_in_powers_of_ten) return in_powers_of_ten(value);
    std::string plain = plain_number(std::fabs(value), decimals);
    const bool is_zero = plain.find_first_not_of("0.") == std::string::npos;
    const std::size_t whole = std::min(plain.find('.'), plain.size());
    Text text;
    // The typographic minus is as wide as a digit, but not every font of an old system has it.
    if (value < 0 && !is_zero) text += u'-';
    for (std::size_t i = 0; i < plain.size(); ++i) {
        if (i > 0 && i < whole && (whole - i) % 3 == 0) text += no_break_space;
        text += plain[i] == '.' ? u',' : static_cast<char16_t>(plain[i]);
    }
    return text;
}

Text trimmed_number(double value, int most_decimals) {
    Text text = polish_number(value, most_decimals);
    if (most_decimals == 0 || text.find(u'E') != Text::npos) return text;
    text.erase(text.find_last_not_of(u'0') + 1);
    if (text.back() == u',') text.pop_back();
    return text;
}

Text short_number(double value) {
    return trimmed_number(value, std::fabs(value) < 1 ? 6 : 2);
}

Text ChartAxis::label(std::int64_t tick) const {
    return polish_number(at(tick) / unit, decimals_of(step / unit));
}

ChartAxis make_axis(double low, double high, int most_steps) {
    const double largest = std::max(std::fabs(low), std::fabs(high));
    constexpr double equal_share = 1e-9;
    constexpr double nearly_nothing = 1e-9;
    if (largest < nearly_nothing) {
        low = 0;
        high = 1;
    } else if (high - low <= largest * equal_share) {
        low -= largest / 10;
        high += largest / 10;
    }
    ChartAxis axis;
    axis.step = round_step((high - low) / std::max(1, most_steps));
    axis.first = static_cast<std::int64_t>(std::floor(low / axis.step + equal_share));
    axis.last = static_cast<std::int64_t>(std::ceil(high / axis.step - equal_share));
    const double end = std::max(std::fabs(axis.low()), std::fabs(axis.high()));
    constexpr double first_in_millions = 1e7;
    constexpr double first_in_milliards = 1e10;
    if (end >= first_in_milliards) {
        axis.unit = 1e9;
        axis.unit_name = u"mld";
    } else if (end >= first_in_millions) {
        axis.unit = 1e6;
        axis.unit_name = u"mln";
    }
    return axis;
}

}  // namespace tavrix::dialogs
