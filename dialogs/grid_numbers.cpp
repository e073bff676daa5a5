#include "dialogs/grid_numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace tavrix::dialogs {
namespace {

using base::TextView;

constexpr TextView blanks = u" \t\u00A0\u2007\u2009\u202F";
constexpr TextView minus_signs = u"-\u2212\u2013";
constexpr TextView separators = u" \u00A0\u2007\u2009\u202F'\u2019.,";
constexpr TextView units[] = {u"zł.", u"zł", u"pln", u"eur", u"usd", u"chf",
                              u"gbp", u"€",  u"$",   u"£",   u"%"};

bool is_one_of(char16_t character, TextView characters) noexcept {
    return characters.find(character) != TextView::npos;
}

bool is_digit(char16_t character) noexcept {
    return character >= u'0' && character <= u'9';
}

TextView without_blanks_around(TextView text) noexcept {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == TextView::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// Takes one unit off either end; false when there is none.
bool take_unit(TextView& text) noexcept {
    for (const TextView unit : units) {
        if (text.size() <= unit.size()) continue;
        const std::size_t rest = text.size() - unit.size();
        if (base::equal_case_blind(text.substr(rest), unit)) {
            text = without_blanks_around(text.substr(0, rest));
            return true;
        }
        if (base::equal_case_blind(text.substr(0, unit.size()), unit)) {
            text = without_blanks_around(text.substr(unit.size()));
            return true;
        }
    }
    return false;
}

/// Takes one sign off; whether it says that the number is negative, nothing when there is none.
std::optional<bool> take_sign(TextView& text) noexcept {
    if (text.size() < 2) return std::nullopt;
    const auto rest = [&](std::size_t first, std::size_t size) {
        text = without_blanks_around(text.substr(first, size));
    };
    if (text.front() == u'(' && text.back() == u')') {
        rest(1, text.size() - 2);
        return true;
    }
    if (is_one_of(text.front(), minus_signs) || text.front() == u'+') {
        const bool is_negative = text.front() != u'+';
        rest(1, text.size() - 1);
        return is_negative;
    }
    if (is_one_of(text.back(), minus_signs)) {
        rest(0, text.size() - 1);
        return true;
    }
    return std::nullopt;
}

/// Where the fraction's comma or dot stands; the text's length when there is none.
std::size_t decimal_place(TextView digits) noexcept {
    const std::size_t last = digits.find_last_of(u".,");
    if (last == TextView::npos) return digits.size();
    const bool is_repeated = digits.find(digits[last]) != last;
    return is_repeated ? digits.size() : last;
}

/// The digits in groups of three behind the first, which may be shorter; nothing when they are not.
std::optional<std::string> ungrouped(TextView whole) {
    std::string digits;
    char16_t separator = 0;
    std::size_t in_group = 0;
    for (const char16_t character : whole) {
        if (is_digit(character)) {
            digits += static_cast<char>(character);
            if (++in_group > 3 && separator != 0) return std::nullopt;
            continue;
        }
        const bool is_first = separator == 0;
        if (!is_one_of(character, separators) || (!is_first && character != separator) ||
            (is_first ? in_group == 0 || in_group > 3 : in_group != 3)) {
            return std::nullopt;
        }
        separator = character;
        in_group = 0;
    }
    if (separator != 0 && in_group != 3) return std::nullopt;
    return digits;
}

/// Takes off "E+15" or "E-05", which programs put behind large and small numbers.
std::string take_power_of_ten(TextView& text) {
    const std::size_t place = text.find_first_of(u"Ee");
    if (place == TextView::npos) return {};
    const TextView power = text.substr(place + 1);
    if (power.size() < 3 || power.size() > 4 || (power[0] != u'+' && power[0] != u'-') ||
        !std::ranges::all_of(power.substr(1), is_digit)) {
        return {};
    }
    text = text.substr(0, place);
    return "e" + std::string(power.begin(), power.end());
}

std::optional<double> unsigned_number(TextView text) {
    const std::string power = take_power_of_ten(text);
    const std::size_t decimal = decimal_place(text);
    std::optional<std::string> digits = ungrouped(text.substr(0, decimal));
    if (!digits) return std::nullopt;
    const TextView fraction = decimal < text.size() ? text.substr(decimal + 1) : TextView();
    if (!std::ranges::all_of(fraction, is_digit)) return std::nullopt;
    if (digits->empty() && fraction.empty()) return std::nullopt;
    *digits += '.';
    for (const char16_t digit : fraction) *digits += static_cast<char>(digit);
    *digits += power;
    double value = 0;
    const char* const end = digits->data() + digits->size();
    const auto [stopped, error] = std::from_chars(digits->data(), end, value);
    if (error != std::errc() || value >= largest_amount) return std::nullopt;
    return value;
}

struct NumberOfValue {
    std::optional<double> operator()(std::int64_t value) const {
        return static_cast<double>(value);
    }
    std::optional<double> operator()(double value) const {
        if (!(std::fabs(value) < largest_amount)) return std::nullopt;
        return value;
    }
    std::optional<double> operator()(const base::Text& value) const {
        return number_of(TextView(value));
    }
    std::optional<double> operator()(const auto&) const { return std::nullopt; }
};

}  // namespace

std::optional<double> number_of(TextView text) {
    text = without_blanks_around(text);
    // "-5 zł", "zł -5" and "(5 zł)": the sign and the unit stand in either order.
    const bool has_unit = take_unit(text);
    const std::optional<bool> is_negative = take_sign(text);
    if (!has_unit) take_unit(text);
    if (text.empty() || !(is_digit(text.front()) || is_one_of(text.front(), u".,"))) {
        return std::nullopt;
    }
    const std::optional<double> value = unsigned_number(text);
    return value && is_negative.value_or(false) ? -*value : value;
}

std::optional<double> number_of(const base::Value& value) {
    return std::visit(NumberOfValue{}, value);
}

}  // namespace tavrix::dialogs
