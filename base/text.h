#pragma once

#include <cstdint>
#include <optional>
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
/// The same of well-formed UTF-8; nothing for anything else.
std::optional<Text> from_valid_utf8(std::string_view bytes);

/// One character in lower case; Latin-1 and Latin Extended-A letters, hence all Polish ones.
constexpr char16_t lower(char16_t c) noexcept {
    if (c >= u'A' && c <= u'Z') return static_cast<char16_t>(c + 32);
    if (c >= 0xC0 && c <= 0xDE && c != 0xD7) return static_cast<char16_t>(c + 32);
    // Latin Extended-A alternates upper and lower, with the phase changing twice; U+0130, U+0131,
    // U+0138 and U+0149 have no partner beside them.
    if ((c >= 0x100 && c <= 0x12F) || (c >= 0x132 && c <= 0x137) || (c >= 0x14A && c <= 0x177)) {
        return static_cast<char16_t>(c | 1);
    }
    if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) {
        return static_cast<char16_t>((c & 1) != 0 ? c + 1 : c);
    }
    return c;
}
/// The other way round.
char16_t upper(char16_t character) noexcept;
/// True when both texts differ in letter case at most.
constexpr bool equal_case_blind(TextView left, TextView right) noexcept {
    if (left.size() != right.size()) return false;
    for (std::size_t i = 0; i < left.size(); ++i) {
        if (left[i] != right[i] && lower(left[i]) != lower(right[i])) return false;
    }
    return true;
}
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
