#include "base/text.h"

#include "base/secret.h"

namespace tavrix::base {
namespace {

constexpr char32_t replacement = 0xFFFD;

bool is_high_surrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool is_low_surrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

template <typename Utf8>
void append_utf8(Utf8& out, char32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

template <typename Utf16>
void append_utf16(Utf16& out, char32_t code) {
    if (code < 0x10000) {
        out += static_cast<char16_t>(code);
    } else {
        out += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
        out += static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF));
    }
}

// What may follow a lead byte (Unicode 15, table 3-7): how many bytes, and the range of the first
// of them.
struct Lead {
    int continuation_count;
    std::uint8_t first_low;
    std::uint8_t first_high;
    std::uint8_t payload_mask;
};

Lead lead_of(std::uint8_t byte) {
    if (byte < 0x80) return {0, 0, 0, 0x7F};
    if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF, 0x1F};
    if (byte == 0xE0) return {2, 0xA0, 0xBF, 0x0F};
    if (byte == 0xED) return {2, 0x80, 0x9F, 0x0F};
    if (byte >= 0xE1 && byte <= 0xEF) return {2, 0x80, 0xBF, 0x0F};
    if (byte == 0xF0) return {3, 0x90, 0xBF, 0x07};
    if (byte == 0xF4) return {3, 0x80, 0x8F, 0x07};
    if (byte >= 0xF1 && byte <= 0xF3) return {3, 0x80, 0xBF, 0x07};
    return {-1, 0, 0, 0};
}

template <typename Utf8>
Utf8 utf8_as(TextView text) {
    Utf8 out;
    out.reserve(text.size() + text.size() / 8);
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t unit = text[i];
        if (is_high_surrogate(unit) && i + 1 < text.size() && is_low_surrogate(text[i + 1])) {
            append_utf8(out, 0x10000 + ((char32_t{unit} - 0xD800) << 10) + (text[i + 1] - 0xDC00u));
            ++i;
        } else {
            append_utf8(out,
                        is_high_surrogate(unit) || is_low_surrogate(unit) ? replacement : unit);
        }
    }
    return out;
}

template <typename Utf16>
Utf16 utf16_as(std::string_view bytes, bool& well_formed) {
    Utf16 out;
    out.reserve(bytes.size());
    std::size_t i = 0;
    while (i < bytes.size()) {
        const auto first = static_cast<std::uint8_t>(bytes[i++]);
        const Lead lead = lead_of(first);
        char32_t code = first & lead.payload_mask;
        bool whole = lead.continuation_count >= 0;
        for (int k = 0; k < lead.continuation_count; ++k) {
            const auto next =
                i < bytes.size() ? static_cast<std::uint8_t>(bytes[i]) : std::uint8_t{0};
            const std::uint8_t low = k == 0 ? lead.first_low : std::uint8_t{0x80};
            const std::uint8_t high = k == 0 ? lead.first_high : std::uint8_t{0xBF};
            if (next < low || next > high) {
                whole = false;
                break;
            }
            code = (code << 6) | (next & 0x3Fu);
            ++i;
        }
        append_utf16(out, whole ? code : replacement);
        well_formed = well_formed && whole;
    }
    return out;
}

}  // namespace

std::string to_utf8(TextView text) {
    return utf8_as<std::string>(text);
}

SecretUtf8 to_secret_utf8(TextView text) {
    return utf8_as<SecretUtf8>(text);
}

Text from_utf8(std::string_view bytes) {
    bool well_formed = true;
    return utf16_as<Text>(bytes, well_formed);
}

std::optional<Text> from_valid_utf8(std::string_view bytes) {
    bool well_formed = true;
    Text text = utf16_as<Text>(bytes, well_formed);
    return well_formed ? std::optional(std::move(text)) : std::nullopt;
}

SecretText from_secret_utf8(std::string_view bytes) {
    bool well_formed = true;
    return utf16_as<SecretText>(bytes, well_formed);
}

char16_t upper(char16_t c) noexcept {
    // In every pair the upper-case letter stands before the lower-case one: 32 places in the first
    // two blocks, one place in the third.
    if (c >= 32 && lower(static_cast<char16_t>(c - 32)) == c) return static_cast<char16_t>(c - 32);
    if (c >= 1 && lower(static_cast<char16_t>(c - 1)) == c) return static_cast<char16_t>(c - 1);
    return c;
}

std::size_t find_case_blind(TextView text, TextView needle, std::size_t start) noexcept {
    if (needle.size() > text.size()) return TextView::npos;
    for (std::size_t i = start; i + needle.size() <= text.size(); ++i) {
        if (equal_case_blind(text.substr(i, needle.size()), needle)) return i;
    }
    return TextView::npos;
}

TextView trim(TextView text) noexcept {
    const std::size_t first = text.find_first_not_of(u' ');
    if (first == TextView::npos) return {};
    return text.substr(first, text.find_last_not_of(u' ') - first + 1);
}

std::vector<Text> split(TextView text, char16_t separator) {
    std::vector<Text> pieces;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find(separator, start);
        pieces.emplace_back(text.substr(start, end == TextView::npos ? end : end - start));
        if (end == TextView::npos) return pieces;
        start = end + 1;
    }
}

Text replace_all(TextView text, TextView from, TextView to) {
    Text out;
    out.reserve(text.size());
    std::size_t start = 0;
    for (;;) {
        const std::size_t found = text.find(from, start);
        out += text.substr(start, found == TextView::npos ? found : found - start);
        if (found == TextView::npos) return out;
        out += to;
        start = found + from.size();
    }
}

Text remove_characters(TextView text, TextView characters) {
    Text out;
    out.reserve(text.size());
    for (const char16_t c : text) {
        if (characters.find(c) == TextView::npos) out += c;
    }
    return out;
}

Text to_decimal(std::int64_t number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

}  // namespace tavrix::base
