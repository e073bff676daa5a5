#include "ports/code_page.h"

#include <algorithm>
#include <array>

#include "base/error.h"

namespace tavrix::ports {

namespace {

[[noreturn]] void fail(base::Text what) {
    throw base::AutomationError(base::ErrorNumber::component_failed, u"CodePage",
                                u"Treść nie jest ciągiem bajtów: " + std::move(what));
}

[[noreturn]] void fail_at(base::TextView text, std::size_t at) {
    constexpr base::TextView digits = u"0123456789ABCDEF";
    base::Text code;
    for (int shift = 12; shift >= 0; shift -= 4) code += digits[(text[at] >> shift) & 15];
    fail(u"znak U+" + code + u" na pozycji " + base::to_decimal(static_cast<std::int64_t>(at) + 1));
}

std::optional<base::Bytes> bytes_of_latin_1_utf8(base::TextView text) {
    if (std::ranges::any_of(text, [](char16_t c) { return c > 0xFF; })) return std::nullopt;
    const std::string bytes(text.begin(), text.end());
    if (base::to_utf8(base::from_utf8(bytes)) != bytes) return std::nullopt;
    return base::Bytes(bytes.begin(), bytes.end());
}

// True for a code page that has a character of Latin-1 under another byte, as the Baltic and the
// Hebrew one do: Latin-1 and decoded text then differ, and are told apart by what they hold.
bool moves_latin_1(const CodePage& code_page) {
    for (char16_t c = 0x80; c <= 0xFF; ++c) {
        const auto byte = code_page.byte_of(c);
        if (byte && *byte != c) return true;
    }
    return false;
}

base::Bytes bytes_of_decoded(const CodePage& code_page, base::TextView text) {
    base::Bytes bytes = code_page.to_bytes(text);
    if (code_page.to_text(bytes) != text) fail(u"strona kodowa systemu nie ma wszystkich znaków");
    return bytes;
}

}  // namespace

base::Bytes bytes_one_per_character(const CodePage& code_page, base::TextView text) {
    if (!code_page.is_single_byte() || moves_latin_1(code_page)) {
        if (auto bytes = bytes_of_latin_1_utf8(text)) return std::move(*bytes);
    }
    if (!code_page.is_single_byte()) return bytes_of_decoded(code_page, text);
    // Invoices are megabytes of few different characters, so the answers are looked up once.
    constexpr std::uint16_t unknown = 0x100;
    constexpr std::size_t remembered = 0x2200;
    std::array<std::uint16_t, remembered> memory;
    memory.fill(unknown);

    const auto byte_at = [&](std::size_t at) -> std::uint8_t {
        const char16_t c = text[at];
        if (const auto byte = code_page.byte_of(c)) return *byte;
        if (c > 0xFF) fail_at(text, at);
        return static_cast<std::uint8_t>(c);
    };

    base::Bytes bytes(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c < 0x80) {
            bytes[i] = static_cast<std::uint8_t>(c);
        } else if (c < remembered) {
            if (memory[c] == unknown) memory[c] = byte_at(i);
            bytes[i] = static_cast<std::uint8_t>(memory[c]);
        } else {
            bytes[i] = byte_at(i);
        }
    }
    return bytes;
}

}  // namespace tavrix::ports
