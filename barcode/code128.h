#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "base/text.h"

namespace tavrix::barcode {

// Code 128, ISO/IEC 15417: 2007. Symbol characters are named by their values 0 to 106.

namespace code128 {
inline constexpr int values = 107;
inline constexpr int code_c = 99;
inline constexpr int code_b = 100;
inline constexpr int code_a = 101;
inline constexpr int start_b = 104;
inline constexpr int start_c = 105;
inline constexpr int stop = 106;
/// The check character is the weighted sum modulo this.
inline constexpr int modulus = 103;
}  // namespace code128

/// The byte in the system's ANSI code page that the font "CODE 128" draws as `value`.
constexpr std::uint8_t code128_font_byte(int value) noexcept {
    return static_cast<std::uint8_t>(value < 95 ? value + 32 : value + 100);
}

/// The values of the whole symbol: start character, data and switches, check character, stop
/// character. Set C begins where four digits follow and is kept while two follow; a character that
/// no set has is left out, and in set C the one behind it too.
std::vector<std::uint8_t> encode_code128(base::TextView text);

/// The symbol for printing in the font; `font_characters` holds one for each value. Whenever a
/// character is appended, the text so far first loses the spaces at both of its ends: value 0,
/// whose font character is a space, is lost in front of anything else. Hosts know the text in this
/// form.
base::Text code128_trimmed_text(std::span<const std::uint8_t> values,
                                std::span<const char16_t, code128::values> font_characters);

/// The same with every value kept.
base::Text code128_text(std::span<const std::uint8_t> values,
                        std::span<const char16_t, code128::values> font_characters);

/// The font characters of a code page in the order of the values.
std::array<char16_t, code128::values> code128_font_characters(std::span<const char16_t, 256> ansi);

}  // namespace tavrix::barcode
