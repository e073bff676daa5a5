#include "mail/mime/charset.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "mail/mime/header.h"

namespace tavrix::mail::mime {
namespace {

// Code pages by Windows' own numbers.
constexpr std::uint32_t windows_1250 = 1250;
constexpr std::uint32_t iso_8859_1 = 28591;
constexpr std::uint32_t iso_8859_2 = 28592;
constexpr std::uint32_t utf_8 = 65001;
constexpr std::uint32_t utf_16le = 1200;
constexpr std::uint32_t utf_16be = 1201;

struct Name {
    std::string_view name;
    std::uint32_t code_page;
};

// Names without their hyphens, in lower case; see also the families below. US-ASCII is not here:
// what is more than ASCII has no set then.
constexpr Name names[] = {
    {"utf8", utf_8},        {"unicode11utf8", utf_8},
    {"utf16", utf_16be},    {"utf16be", utf_16be},
    {"utf16le", utf_16le},  {"unicode", utf_16le},
    {"utf7", 65000},        {"latin1", iso_8859_1},
    {"l1", iso_8859_1},     {"latin2", iso_8859_2},
    {"l2", iso_8859_2},     {"latin9", 28605},
    {"koi8r", 20866},       {"koi8u", 21866},
    {"gb2312", 936},        {"gbk", 936},
    {"gb18030", 54936},     {"big5", 950},
    {"shiftjis", 932},      {"sjis", 932},
    {"iso2022jp", 50220},   {"eucjp", 51932},
    {"euckr", 51949},       {"ksc56011987", 949},
    {"csiso2022jp", 50220}, {"csisolatin2", iso_8859_2},
};

// "windows-1250", "x-cp1250", "ibm852": the page's own number follows.
constexpr std::string_view numbered_families[] = {"windows", "win", "xcp", "cp", "ibm"};

// The sets in which one character takes several bytes or an escape sequence.
constexpr std::uint32_t of_several_bytes[] = {932,   936,   949,   950,  54936,
                                              50220, 51932, 51949, 65000};

std::uint32_t number_in(std::string_view digits) {
    std::uint32_t number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return read.ec == std::errc() && read.ptr == digits.data() + digits.size() ? number : 0;
}

// 0 for none that is known.
std::uint32_t code_page_of(std::string_view charset) {
    std::string name;
    // RFC 2231 allows a language behind an asterisk.
    for (const char c : lower_case(charset.substr(0, charset.find('*')))) {
        if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) name += c;
    }
    for (const Name& known : names) {
        if (name == known.name) return known.code_page;
    }
    if (name.starts_with("iso8859")) {
        const std::uint32_t part = number_in(std::string_view(name).substr(7));
        return part >= 1 && part <= 16 ? 28590 + part : 0;
    }
    for (const std::string_view family : numbered_families) {
        if (!name.starts_with(family)) continue;
        if (const std::uint32_t number = number_in(std::string_view(name).substr(family.size()))) {
            return number;
        }
    }
    return 0;
}

bool is_ascii(std::string_view bytes) {
    std::size_t at = 0;
    for (; at + 8 <= bytes.size(); at += 8) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, bytes.data() + at, 8);
        if ((eight & 0x8080808080808080) != 0) return false;
    }
    return std::ranges::all_of(bytes.substr(at), [](char c) { return (c & 0x80) == 0; });
}

bool has_windows_bytes(std::string_view bytes) {
    return std::ranges::any_of(bytes, [](char c) {
        const auto byte = static_cast<std::uint8_t>(c);
        return byte >= 0x80 && byte <= 0x9F;
    });
}

// Nothing that is beyond ASCII but the letters of Polish in windows-1250.
bool is_polish_1250(std::string_view bytes) {
    constexpr std::string_view letters =
        "\xA5\xC6\xCA\xA3\xD1\xD3\x8C\x8F\xAF\xB9\xE6\xEA\xB3\xF1\xF3\x9C\x9F\xBF";
    return std::ranges::all_of(bytes, [&](char c) {
        return (c & 0x80) == 0 || letters.find(c) != std::string_view::npos;
    });
}

// What says it is UTF-16 and has no zero byte, as blanks and most letters have, is something else.
bool may_be_utf_16(std::string_view bytes) {
    return bytes.size() % 2 == 0 && bytes.find('\0') != std::string_view::npos;
}

base::Text decode_utf_16(std::string_view bytes, bool is_big_endian) {
    const bool has_mark = bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE");
    if (has_mark) is_big_endian = bytes.front() == '\xFE';
    base::Text text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = has_mark ? 2 : 0; i + 1 < bytes.size(); i += 2) {
        const auto high = static_cast<std::uint8_t>(bytes[is_big_endian ? i : i + 1]);
        const auto low = static_cast<std::uint8_t>(bytes[is_big_endian ? i + 1 : i]);
        text += static_cast<char16_t>(high << 8 | low);
    }
    return text;
}

}  // namespace

base::Text decode_text(std::string_view bytes, std::string_view charset,
                       const ports::CodePage& code_page) {
    std::uint32_t number = code_page_of(charset);
    if (std::ranges::find(of_several_bytes, number) != std::end(of_several_bytes)) {
        if (auto text = code_page.decode(number, base::bytes_of(bytes))) return std::move(*text);
        number = 0;
    }
    if (number == utf_16le || number == utf_16be) {
        if (may_be_utf_16(bytes)) return decode_utf_16(bytes, number == utf_16be);
        number = 0;
    }
    if (is_ascii(bytes)) return {bytes.begin(), bytes.end()};
    if (auto text = base::from_valid_utf8(bytes)) return std::move(*text);
    if (number == utf_8 && !is_polish_1250(bytes)) return base::from_utf8(bytes);
    const bool takes_1250 = number == 0 || number == utf_8 || number == iso_8859_1 ||
                            (number == iso_8859_2 && has_windows_bytes(bytes));
    if (!takes_1250) {
        if (auto text = code_page.decode(number, base::bytes_of(bytes))) return std::move(*text);
    }
    return code_page.decode(windows_1250, base::bytes_of(bytes)).value_or(base::Text());
}

}  // namespace tavrix::mail::mime
