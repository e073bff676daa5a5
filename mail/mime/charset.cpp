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

struct Name {
    std::string_view name;
    std::uint32_t code_page;
};

// Names without their hyphens, in lower case; see also the families below. US-ASCII is not here:
// what is more than ASCII has no set then.
constexpr Name names[] = {
    {"utf8", utf_8},        {"unicode11utf8", utf_8},
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

}  // namespace

base::Text decode_text(std::string_view bytes, std::string_view charset,
                       const ports::CodePage& code_page) {
    std::uint32_t number = code_page_of(charset);
    if (std::ranges::find(of_several_bytes, number) != std::end(of_several_bytes)) {
        if (auto text = code_page.decode(number, base::bytes_of(bytes))) return std::move(*text);
        number = 0;
    }
    if (is_ascii(bytes)) return {bytes.begin(), bytes.end()};
    if (auto text = base::from_valid_utf8(bytes)) return std::move(*text);
    if (number == utf_8) return base::from_utf8(bytes);
    const bool takes_1250 =
        number == 0 || number == iso_8859_1 || (number == iso_8859_2 && has_windows_bytes(bytes));
    if (!takes_1250) {
        if (auto text = code_page.decode(number, base::bytes_of(bytes))) return std::move(*text);
    }
    return code_page.decode(windows_1250, base::bytes_of(bytes)).value_or(base::Text());
}

}  // namespace tavrix::mail::mime
