#pragma once

#include <cstddef>

namespace tavrix::mail::mime {

/// The value of a hexadecimal digit in either case; -1 for anything else.
constexpr int hex_value(char c) noexcept {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

/// The byte that two digits at `at` of `text` write; -1 when they are not there.
template <typename Text>
constexpr int hex_byte(const Text& text, std::size_t at) noexcept {
    if (at + 2 > text.size()) return -1;
    const int high = hex_value(text[at]);
    const int low = hex_value(text[at + 1]);
    return high < 0 || low < 0 ? -1 : high * 16 + low;
}

}  // namespace tavrix::mail::mime
