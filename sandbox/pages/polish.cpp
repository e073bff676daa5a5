#include "sandbox/pages/polish.h"

#include <algorithm>
#include <cstdio>
#include <optional>

namespace tavrix::sandbox {
namespace {

constexpr const char* hard_blank = "\xC2\xA0";
constexpr std::string_view digits = "0123456789";

struct Decimal {
    std::string sign, whole, fraction;
};

/// A plain decimal number, `-12.5`; nothing for any other text.
std::optional<Decimal> decimal_of(std::string_view text) {
    Decimal number;
    if (text.starts_with('-')) {
        number.sign = "-";
        text.remove_prefix(1);
    }
    const std::size_t point = std::min(text.find('.'), text.size());
    number.whole = text.substr(0, point);
    number.fraction = text.substr(std::min(point + 1, text.size()));
    if (number.whole.empty() ||
        (number.whole + number.fraction).find_first_not_of(digits) != std::string::npos)
        return std::nullopt;
    return number;
}

std::string grouped(std::string whole) {
    for (std::size_t at = whole.size(); at > 3; at -= 3) whole.insert(at - 3, hard_blank);
    return whole;
}

std::string joined(const Decimal& number) {
    return number.sign + grouped(number.whole) +
           (number.fraction.empty() ? "" : "," + number.fraction);
}

bool only_digits(std::string_view text) {
    return text.find_first_not_of(digits) == std::string_view::npos;
}

}  // namespace

std::string amount_text(std::string_view amount) {
    auto number = decimal_of(amount);
    if (!number) return std::string(amount);
    while (number->fraction.size() < 2) number->fraction += '0';
    return joined(*number);
}

std::string money_text(std::string_view amount, const std::string& currency) {
    if (amount.empty()) return {};
    return amount_text(amount) + hard_blank + (currency == "PLN" ? "zł" : currency);
}

std::string money_text(double amount, const std::string& currency) {
    char text[400];
    std::snprintf(text, sizeof text, "%.2f", amount);
    return money_text(std::string_view(text), currency);
}

std::string quantity_text(std::string_view quantity) {
    auto number = decimal_of(quantity);
    if (!number) return std::string(quantity);
    number->fraction.erase(number->fraction.find_last_not_of('0') + 1);
    return joined(*number);
}

std::string count_text(std::uint64_t count) {
    return grouped(std::to_string(count));
}

std::string size_text(std::int64_t bytes) {
    return count_text(std::uint64_t(bytes)) + hard_blank + "B";
}

std::string milliseconds_text(double milliseconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", milliseconds);
    std::replace(std::begin(text), std::end(text), '.', ',');
    return text;
}

std::string date_text(std::string_view date) {
    if (date.size() != 10 || date[4] != '-' || date[7] != '-') return std::string(date);
    const std::string year(date.substr(0, 4)), month(date.substr(5, 2)), day(date.substr(8));
    if (!only_digits(year + month + day)) return std::string(date);
    return day + "." + month + "." + year;
}

std::string moment_text(Instant moment) {
    const std::string text = polish_time_text(moment);
    return date_text(std::string_view(text).substr(0, 10)) + "," + hard_blank + text.substr(11, 8);
}

std::string account_text(std::string_view account) {
    std::string bare(account);
    std::erase_if(bare, [](char c) { return c == ' ' || c == '-'; });
    const bool polish = bare.size() == 26 && only_digits(bare);
    const bool international =
        bare.size() >= 15 && bare.size() <= 34 && std::all_of(bare.begin(), bare.end(), [](char c) {
            return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z');
        });
    if (!polish && !international) return std::string(account);
    // Without the country's code the two check digits stand alone.
    std::string text = bare.substr(0, polish ? 2 : 4);
    for (std::size_t at = text.size(); at < bare.size(); at += 4)
        text += hard_blank + bare.substr(at, 4);
    return text;
}

}  // namespace tavrix::sandbox
