#pragma once

#include <array>
#include <optional>

#include "base/text.h"

namespace tavrix::base {

/// Code page 1250 (Windows, Central European): the character of each byte. The five bytes that the
/// code page leaves undefined (81, 83, 88, 90, 98) stand for the control characters of the same
/// value, as Windows has it, so that every byte has a character and every character of the table
/// exactly one byte. Source: Unicode's vendor mapping table CP1250, version 2.01, and its best-fit
/// companion for the five.
extern const std::array<char16_t, 256> windows_1250;

/// The byte of `character`, or nothing when the code page has none.
std::optional<std::uint8_t> windows_1250_byte(char16_t character) noexcept;

}  // namespace tavrix::base
