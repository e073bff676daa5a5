#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tavrix::base {

/// Text as the host passes it: UTF-16 code units, unpaired surrogates included.
using Text = std::u16string;
using TextView = std::u16string_view;
using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

/// UTF-8 of `text`. An unpaired surrogate becomes U+FFFD.
std::string to_utf8(TextView text);
/// UTF-16 of UTF-8 `bytes`. Every malformed sequence becomes one U+FFFD (Unicode 15, 3.9, "maximal
/// subpart").
Text from_utf8(std::string_view bytes);

/// One character in lower case; Latin-1 and Latin Extended-A letters, hence all Polish ones.
char16_t lower(char16_t character) noexcept;
/// The other way round.
char16_t upper(char16_t character) noexcept;
/// True when both texts differ in letter case at most.
bool equal_case_blind(TextView left, TextView right) noexcept;
/// Position of `needle` in `text` from `start`, ignoring letter case; npos when absent. Linear in
/// practice.
std::size_t find_case_blind(TextView text, TextView needle, std::size_t start = 0) noexcept;

/// `text` without the spaces (U+0020 only, as the hosts' own Trim does) at both ends.
TextView trim(TextView text) noexcept;
/// The pieces between separators; a text without one is a single piece, the empty text one empty
/// piece.
std::vector<Text> split(TextView text, char16_t separator);
/// Every non-overlapping `from`, left to right, replaced by `to`. Linear. `from` must not be empty.
Text replace_all(TextView text, TextView from, TextView to);
/// `text` without any character that occurs in `characters`.
Text remove_characters(TextView text, TextView characters);

/// Decimal digits without padding.
Text to_decimal(std::int64_t number);

inline ByteView bytes_of(std::string_view text) noexcept {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
inline std::string_view chars_of(ByteView bytes) noexcept {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace tavrix::base
