#include "sandbox/basics/ksef_number.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <regex>

#include "sandbox/basics/crypto.h"

namespace tavrix::sandbox {
namespace {

std::string checksum_text(std::string_view text) {
    std::array<char, 3> digits{};
    std::snprintf(digits.data(), digits.size(), "%02X", crc8(text));
    return digits.data();
}

bool is_digit(char c) {
    return c >= '0' && c <= '9';
}
bool is_upper_hex(char c) {
    return is_digit(c) || (c >= 'A' && c <= 'F');
}

}  // namespace

std::uint8_t crc8(std::string_view text) {
    unsigned crc = 0;
    for (const unsigned char byte : text) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) crc = (crc & 0x80) != 0 ? (crc << 1) ^ 0x07 : crc << 1;
        crc &= 0xFF;
    }
    return static_cast<std::uint8_t>(crc);
}

std::string make_ksef_number(std::string_view nip, std::string_view compact_date,
                             std::string_view technical_part) {
    std::string number(nip);
    number.append("-").append(compact_date).append("-").append(technical_part);
    return number + "-" + checksum_text(number);
}

bool has_ksef_number_form(std::string_view text) {
    // Source: the schema KsefNumber of the contract.
    static const std::regex form(
        R"([1-9](\d[1-9]|[1-9]\d)\d{7}-(20[2-9][0-9]|2[1-9]\d{2}|[3-9]\d{3})(0[1-9]|1[0-2]))"
        R"((0[1-9]|[12]\d|3[01])-[0-9A-F]{6}-?[0-9A-F]{6}-[0-9A-F]{2})");
    return text.size() <= 36 && std::regex_match(text.begin(), text.end(), form);
}

std::string make_reference_number(std::string_view compact_date, std::string_view kind) {
    std::string number(compact_date);
    number.append("-").append(kind).append("-").append(random_hex(10)).append("-");
    number.append(random_hex(10));
    return number + "-" + checksum_text(number);
}

bool is_reference_number(std::string_view text) {
    return text.size() == 36;
}

bool has_reference_form(std::string_view text) {
    constexpr std::string_view form = "dddddddd-KK-hhhhhhhhhh-hhhhhhhhhh-hh";
    if (text.size() != form.size() || !text.starts_with("20")) return false;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const char c = text[i];
        if ((form[i] == 'd' && !is_digit(c)) || (form[i] == 'h' && !is_upper_hex(c)) ||
            (form[i] == 'K' && !is_digit(c) && (c < 'A' || c > 'Z')) ||
            (form[i] == '-' && c != '-'))
            return false;
    }
    return true;
}

bool is_nip(std::string_view text) {
    // Pattern of the contract and of the invoice schema: [1-9]((\d[1-9])|([1-9]\d))\d{7}
    return text.size() == 10 && std::all_of(text.begin(), text.end(), is_digit) && text[0] != '0' &&
           (text[1] != '0' || text[2] != '0');
}

bool is_internal_id(std::string_view text) {
    return text.size() == 16 && is_nip(text.substr(0, 10)) && text[10] == '-' &&
           std::all_of(text.begin() + 11, text.end(), is_digit);
}

}  // namespace tavrix::sandbox
