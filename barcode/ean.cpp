#include "barcode/ean.h"

#include <algorithm>
#include <array>

namespace tavrix::barcode {
namespace {

// The characters of the font "code ean13".
constexpr char16_t start_guard_ean8 = u':';
constexpr char16_t centre_guard = u'*';
constexpr char16_t end_guard = u'+';
constexpr char16_t add_on_start = u'[';
constexpr char16_t add_on_separator = u'\\';

enum class NumberSet : char16_t { a = u'A', b = u'K', c = u'a' };

constexpr int value_of(char16_t digit) noexcept {
    return digit - u'0';
}

void append(base::Text& symbol, char16_t digit, NumberSet set) {
    symbol += static_cast<char16_t>(static_cast<char16_t>(set) + value_of(digit));
}

/// Which left-half digits come from number set A, the first one in the highest of six bits; the
/// rest comes from set B. By the leading digit: GS1 General Specifications, figure 5.2.1.3.
constexpr std::array<std::uint8_t, 10> leading_digit_parity = {
    0b111111, 0b110100, 0b110010, 0b110001, 0b101100,
    0b100110, 0b100011, 0b101010, 0b101001, 0b100101,
};

/// The same for the five digits of an add-on, by its check value 0 to 9 (figure 5.2.2.2), and for
/// the two digits, by 10 more than their value modulo 4 (figure 5.2.2.1): two keys that never meet
/// make one table.
constexpr std::array<std::uint8_t, 14> add_on_parity = {
    0b00111, 0b01011, 0b01101, 0b01110, 0b10011, 0b11001, 0b11100,
    0b10101, 0b10110, 0b11010, 0b11000, 0b10000, 0b01000, 0b00000,
};
constexpr std::size_t two_digit_keys = 10;

constexpr bool from_set_a(std::uint8_t parity, std::size_t positions, std::size_t position) {
    return ((parity >> (positions - 1 - position)) & 1) != 0;
}

std::size_t add_on_key(base::TextView digits) noexcept {
    if (digits.size() == 2) {
        const int number = value_of(digits[0]) * 10 + value_of(digits[1]);
        return static_cast<std::size_t>(number % 4) + two_digit_keys;
    }
    const int odd = value_of(digits[0]) + value_of(digits[2]) + value_of(digits[4]);
    const int even = value_of(digits[1]) + value_of(digits[3]);
    return static_cast<std::size_t>((3 * odd + 9 * even) % 10);
}

}  // namespace

bool all_digits(base::TextView text) noexcept {
    return std::all_of(text.begin(), text.end(),
                       [](char16_t character) { return character >= u'0' && character <= u'9'; });
}

char16_t gs1_check_digit(base::TextView digits) noexcept {
    int sum = 0;
    int weight = 3;
    for (std::size_t i = digits.size(); i > 0; --i) {
        sum += value_of(digits[i - 1]) * weight;
        weight = 4 - weight;
    }
    return static_cast<char16_t>(u'0' + (10 - sum % 10) % 10);
}

base::Text encode_ean8(base::TextView digits) {
    if (digits.size() != 7 || !all_digits(digits)) return {};
    base::Text symbol;
    symbol.reserve(11);
    symbol += start_guard_ean8;
    for (const char16_t digit : digits.substr(0, 4)) append(symbol, digit, NumberSet::a);
    symbol += centre_guard;
    for (const char16_t digit : digits.substr(4)) append(symbol, digit, NumberSet::c);
    append(symbol, gs1_check_digit(digits), NumberSet::c);
    symbol += end_guard;
    return symbol;
}

base::Text encode_ean13(base::TextView digits) {
    if (digits.size() != 12 || !all_digits(digits)) return {};
    const base::TextView left = digits.substr(1, 6);
    const std::uint8_t parity =
        leading_digit_parity[static_cast<std::size_t>(value_of(digits.front()))];
    base::Text symbol;
    symbol.reserve(15);
    symbol += digits.front();
    for (std::size_t i = 0; i < left.size(); ++i) {
        append(symbol, left[i], from_set_a(parity, left.size(), i) ? NumberSet::a : NumberSet::b);
    }
    symbol += centre_guard;
    for (const char16_t digit : digits.substr(7)) append(symbol, digit, NumberSet::c);
    append(symbol, gs1_check_digit(digits), NumberSet::c);
    symbol += end_guard;
    return symbol;
}

base::Text encode_add_on(base::TextView digits) {
    if ((digits.size() != 2 && digits.size() != 5) || !all_digits(digits)) return {};
    const std::uint8_t parity = add_on_parity[add_on_key(digits)];
    base::Text symbol;
    symbol.reserve(2 * digits.size());
    symbol += add_on_start;
    for (std::size_t i = 0; i < digits.size(); ++i) {
        // The table's rows are five positions wide, for two digits too.
        append(symbol, digits[i], from_set_a(parity, 5, i) ? NumberSet::a : NumberSet::b);
        if (i + 1 < digits.size()) symbol += add_on_separator;
    }
    return symbol;
}

base::Text binary_byte(std::uint8_t value) {
    base::Text bits(8, u'0');
    for (std::size_t i = bits.size(); i > 0; --i, value >>= 1) {
        if ((value & 1) != 0) bits[i - 1] = u'1';
    }
    return bits;
}

}  // namespace tavrix::barcode
