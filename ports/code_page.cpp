#include "ports/code_page.h"

#include <array>

namespace tavrix::ports {

base::Bytes bytes_one_per_character(const CodePage& code_page, base::TextView text) {
    if (!code_page.is_single_byte()) return code_page.to_bytes(text);
    // Invoices are megabytes of few different characters, so the answers are looked up once.
    constexpr std::uint16_t unknown = 0x100;
    constexpr std::size_t remembered = 0x2200;
    std::array<std::uint16_t, remembered> memory;
    memory.fill(unknown);

    const auto byte_for = [&](char16_t c) -> std::uint8_t {
        if (const auto byte = code_page.byte_of(c)) return *byte;
        return c <= 0xFF ? static_cast<std::uint8_t>(c) : std::uint8_t{'?'};
    };

    base::Bytes bytes(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char16_t c = text[i];
        if (c < 0x80) {
            bytes[i] = static_cast<std::uint8_t>(c);
        } else if (c < remembered) {
            if (memory[c] == unknown) memory[c] = byte_for(c);
            bytes[i] = static_cast<std::uint8_t>(memory[c]);
        } else {
            bytes[i] = byte_for(c);
        }
    }
    return bytes;
}

}  // namespace tavrix::ports
