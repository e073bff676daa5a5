#pragma once

#include <array>

#include "base/text.h"

namespace tavrix::base {

namespace detail {

/// Above every value that a letter can have.
inline constexpr std::uint32_t no_base64_letter = 0x80000000;

/// The value of each letter (RFC 4648, section 4), shifted to where the n-th letter of a block has
/// it: the block's three bytes are then the four values together.
inline constexpr auto base64_values = [] {
    constexpr std::string_view letters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::array<std::array<std::uint32_t, 256>, 4> values{};
    for (std::size_t place = 0; place < 4; ++place) {
        values[place].fill(no_base64_letter);
        for (std::uint32_t i = 0; i < 64; ++i) {
            values[place][static_cast<std::uint8_t>(letters[i])] = i << (18 - 6 * place);
        }
    }
    return values;
}();

}  // namespace detail

/// 0 to 63, or more when `letter` is none of the 64.
constexpr std::uint32_t base64_value(char16_t letter) noexcept {
    return letter > 0xFF ? detail::no_base64_letter : detail::base64_values[3][letter];
}

/// Decodes the blocks of four letters that `text` begins with, up to the first character that is no
/// letter. `out` has room for three bytes of each four characters and is moved behind what was
/// written. Gives how many characters were taken.
template <typename Character>
std::size_t decode_base64_blocks(std::basic_string_view<Character> text,
                                 std::uint8_t*& out) noexcept {
    const auto& values = detail::base64_values;
    const auto index = [](Character c) {
        if constexpr (sizeof(Character) == 1) return static_cast<std::uint8_t>(c);
        // A character beyond Latin-1 stands for one that is no letter.
        else
            return static_cast<std::uint8_t>(c > 0xFF ? 0 : c);
    };
    std::size_t at = 0;
    std::uint8_t* to = out;
    for (; at + 4 <= text.size(); at += 4, to += 3) {
        const std::uint32_t block = values[0][index(text[at])] | values[1][index(text[at + 1])] |
                                    values[2][index(text[at + 2])] | values[3][index(text[at + 3])];
        if (block >= detail::no_base64_letter) break;
        to[0] = static_cast<std::uint8_t>(block >> 16);
        to[1] = static_cast<std::uint8_t>(block >> 8);
        to[2] = static_cast<std::uint8_t>(block);
    }
    out = to;
    return at;
}

}  // namespace tavrix::base
